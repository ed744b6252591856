#pragma once
#include <string>

#include "foundation/smart_obj.h"
#include "platform/types.h"

namespace corvane {

// A wait that ends by the event, by an exit signal, or by a time-out.
class CWinEvent : public SmartObjEx<CWinEvent, SmartObj<>> {
 public:
  CWinEvent();  // throws Exception "CreateEvent(): failed"
  ~CWinEvent() override;
  const char* GetClassName() const override { return "CWinEvent"; }

  void SetEvent();      // throws Exception on failure
  void SetExitEvent();  // throws Exception on failure
  // True when the event fired, which resets it. False with *timedOut true at the time-out; false
  // with *timedOut false when the exit signal came, which resets that. Both set: the event wins.
  // Throws Exception when the wait itself fails.
  bool WaitOnEvent(std::uint32_t milliseconds, bool* timedOut = nullptr);
  void SetDebugName(std::string name);  // before other threads use the object

  // For waits of the platform that take the event's handle; it lives as long as the object.
  platform::HANDLE GetEventHandle() const { return _event; }
  bool ResetEvent();  // false on failure

 private:
  void Signal(platform::HANDLE handle, const char* operation, const char* member);

  platform::HANDLE _event = nullptr;
  platform::HANDLE _eventExit = nullptr;
  std::string m_DebugName = "[not assigned]";
};

}  // namespace corvane
