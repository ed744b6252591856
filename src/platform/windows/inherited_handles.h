#pragma once
#include <array>
#include <vector>

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

// How a child is started that inherits its standard handles and no others
// (PROC_THREAD_ATTRIBUTE_HANDLE_LIST). Without any of them, and where the system has no such list
// to give, it inherits nothing.
class InheritedHandles {
 public:
  // The record is copied.
  InheritedHandles(const ::STARTUPINFOW& startup, bool inherit);
  ~InheritedHandles();
  InheritedHandles(const InheritedHandles&) = delete;
  InheritedHandles& operator=(const InheritedHandles&) = delete;

  ::BOOL Any() const { return m_Startup.lpAttributeList != nullptr; }
  // To be started with EXTENDED_STARTUPINFO_PRESENT.
  ::STARTUPINFOW* Startup() { return &m_Startup.StartupInfo; }

 private:
  ::STARTUPINFOEXW m_Startup{};
  std::array<HANDLE, 3> m_Handles{};  // read when the child is started
  std::vector<std::max_align_t> m_List;
};

}  // namespace corvane::platform::windows
