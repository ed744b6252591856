#include "platform/windows/end_session_window.h"

#include <system_error>

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

namespace {

constexpr ::DWORD kMostStoppingMs = 20'000;  // the system ends the process before that

}  // namespace

EndSessionWindow::EndSessionWindow(HANDLE stop, HANDLE stopped) : m_Events{stop, stopped} {
  m_Leave = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  if (!m_Leave) return;
  try {
    m_Thread = std::thread([this] { Run(); });
  } catch (const std::system_error&) {
  }
}

EndSessionWindow::~EndSessionWindow() {
  if (m_Leave) ::SetEvent(m_Leave);
  if (m_Thread.joinable()) m_Thread.join();
  if (m_Leave) ::CloseHandle(m_Leave);
}

// The window goes with its thread.
void EndSessionWindow::Run() {
  const auto onMessage = [](::HWND window, ::UINT message, ::WPARAM wParam,
                            ::LPARAM lParam) -> ::LRESULT {
    const auto* const events =
        reinterpret_cast<const Events*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_ENDSESSION && wParam != 0 && events) {
      ::SetEvent(events->stop);
      ::WaitForSingleObject(events->stopped, kMostStoppingMs);
      return 0;
    }
    return ::DefWindowProcW(window, message, wParam, lParam);
  };
  ::WNDCLASSEXW description{};
  description.cbSize = sizeof(description);
  description.lpfnWndProc = onMessage;
  description.hInstance = ::GetModuleHandleW(nullptr);
  description.lpszClassName = kClass;
  ::RegisterClassExW(&description);  // or it is from before
  // Not a message-only one, which hears of no session.
  const ::HWND window = ::CreateWindowExW(0, kClass, L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                          description.hInstance, nullptr);
  if (!window) return;
  ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<::LONG_PTR>(&m_Events));
  while (::MsgWaitForMultipleObjectsEx(1, &m_Leave, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE) ==
         WAIT_OBJECT_0 + 1) {
    ::MSG next{};
    while (::PeekMessageW(&next, nullptr, 0, 0, PM_REMOVE)) ::DispatchMessageW(&next);
  }
  ::DestroyWindow(window);
}

}  // namespace corvane::platform::windows
