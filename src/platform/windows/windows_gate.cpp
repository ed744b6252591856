#include "platform/windows/windows_gate.h"

#include "platform/windows/windows_threads.h"

namespace corvane::platform::windows {

void EnterGate(const char* operation) {
  if (WindowsThreads::IsAbandoned() && !sim::NeverUnwinds(operation)) {
    WindowsThreads::ThrowIfAbandoned();
  }
}

}  // namespace corvane::platform::windows
