#pragma once
#include <string>

#include "foundation/smart_obj.h"
#include "platform/types.h"

namespace corvane {

// A wake-up flag: a semaphore with the maximum count 1.
class CSemaphore : public SmartObjEx<CSemaphore, SmartObj<>> {
 public:
  CSemaphore();
  ~CSemaphore() override;
  const char* GetClassName() const override { return "CSemaphore"; }

  void IncReleaseCount();  // throws Exception, also when a wake-up already waits
  bool WaitOnSemaphore(std::uint32_t milliseconds);  // false on time-out; throws Exception
  void SetDebugName(std::string name);               // before other threads use the object

 private:
  platform::HANDLE _semaphore = nullptr;
  std::string m_DebugName = "[not assigned]";
};

}  // namespace corvane
