#pragma once
#include <atomic>
#include <cstdint>
#include <span>

#include "foundation/singleton.h"
#include "foundation/smart_obj.h"
#include "platform/event_trace_api.h"

namespace corvane {

// The registration of the event provider that all reporters share. Any thread.
class CTrellisProvider : public SmartObjEx<CTrellisProvider, SmartObj<>> {
 public:
  CTrellisProvider() : SmartObjEx("event provider") {}
  ~CTrellisProvider() override;  // unregisters
  const char* GetClassName() const override { return "CTrellisProvider"; }

  // The registration in force, made when there is none; null when that fails, and *status then says
  // why.
  static CSmartPointer<CTrellisProvider> Share(platform::HRESULT* status);
  // Gives a share back; the last one ends the registration.
  static void Leave(CSmartPointer<CTrellisProvider>* share);

  // Somebody listens at the level at which the events are wanted.
  bool IsListenedTo() const { return m_Level.load(std::memory_order_relaxed) >= kWantedLevel; }
  // `data` begins with two free places, for the metadata of provider and event.
  void Write(std::span<const std::uint8_t> metadata,
             std::span<platform::EVENT_DATA_DESCRIPTOR> data) const;

 private:
  class Registration;
  static constexpr platform::BYTE kWantedLevel = 5;

  platform::HRESULT Register();
  static void OnEnable(const platform::GUID* source, platform::DWORD isEnabled,
                       platform::BYTE level, platform::ULONGLONG anyKeyword,
                       platform::ULONGLONG allKeyword, void* filter, void* context);

  std::atomic<platform::BYTE> m_Level{0};
  platform::REGHANDLE m_hProvider = 0;
};

}  // namespace corvane
