#pragma once
#include "foundation/smart_obj.h"
#include "platform/types.h"

namespace corvane {

// Takes an adapter's notifications on the platform's own thread.
class IWlanAllNotifications : public virtual ISmartObj {
 public:
  virtual void ConnectionNotification(platform::DWORD code, const void* data) = 0;
  virtual void ScanNotification(platform::DWORD code, platform::DWORD reason) = 0;
  virtual void MSMNotification(const void* data) = 0;
  virtual void MSMRadioStateNotification(const void* data) = 0;
  virtual void MSMSignalQualityNotification(platform::DWORD quality) = 0;
  virtual void MSMAdapterOperationModeNotification(platform::DWORD mode) = 0;

 protected:
  ~IWlanAllNotifications() = default;
};

}  // namespace corvane
