#include "platform/sim/devices/sim_windows.h"

#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr char16_t kTrayProgram[] = u"Corvane_TrayApp.exe";
constexpr char16_t kTrayClass[] = u"QUAY Notification App";
constexpr char16_t kTrayTitle[] = u"Corvane Notification";
constexpr std::size_t kMaxKept = 1000;  // messages that nobody took

HWND TrayWindow() { return reinterpret_cast<HWND>(std::uintptr_t{0x20134}); }

}  // namespace

bool SimWindows::TrayRuns() const {
  return m_pSession && m_pSession->CountRunning(kTrayProgram) > 0;
}

HWND SimWindows::FindWindowW(LPCWSTR className, LPCWSTR title) {
  const DWORD code = m_Gate.Enter("FindWindowW");
  const bool found = code == ERROR_SUCCESS && TrayRuns() &&
                     FoldCase(ViewOf(className)) == FoldCase(kTrayClass) &&
                     FoldCase(ViewOf(title)) == FoldCase(kTrayTitle);
  if (found) return TrayWindow();
  m_Threads.SetLastError(code);  // a window that is not there is no failure
  return nullptr;
}

BOOL SimWindows::PostMessageA(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) {
  DWORD code = m_Gate.Enter("PostMessageA");
  if (code == ERROR_SUCCESS && (window != TrayWindow() || !TrayRuns()))
    code = ERROR_INVALID_WINDOW_HANDLE;
  if (code != ERROR_SUCCESS) {
    m_Threads.SetLastError(code);
    return FALSE;
  }
  const std::lock_guard guard(m_Mutex);
  if (m_Posted.size() < kMaxKept) m_Posted.push_back({message, wParam, lParam});
  return TRUE;
}

std::vector<SimWindows::Posted> SimWindows::TakeTrayMessages() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Posted, {});
}

}  // namespace corvane::platform::sim
