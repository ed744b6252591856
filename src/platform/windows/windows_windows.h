#pragma once
#include "platform/window_api.h"
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

// Windows and their messages. A window procedure lets no exception out into the system: a thread
// that was given up ends behind the message that it was handling.
class WindowsWindows final : public WindowApi {
 public:
  WindowsWindows() = default;
  explicit WindowsWindows(SystemLibrary::Resolver resolver)
      : m_Sessions(resolver), m_Users(resolver) {}

  HANDLE GetModuleHandleW(LPCWSTR name) override;
  WORD RegisterClassExW(LPCWSTR className, WNDPROC procedure, HANDLE module) override;
  HWND CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style,
                       HANDLE module) override;
  BOOL ShowWindow(HWND window, int command) override;
  BOOL UpdateWindow(HWND window) override;
  LRESULT DefWindowProcW(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) override;
  void PostQuitMessage(int exitCode) override;
  int GetMessageW(MSG* message) override;
  BOOL TranslateMessage(const MSG* message) override;
  LRESULT DispatchMessageW(const MSG* message) override;
  LRESULT SendMessageW(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) override;
  BOOL PostMessageA(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) override;
  HWND FindWindowW(LPCWSTR className, LPCWSTR title) override;
  BOOL WTSRegisterSessionNotification(HWND window, DWORD flags) override;
  HANDLE RegisterSuspendResumeNotification(HANDLE recipient, DWORD flags) override;
  BOOL UnregisterSuspendResumeNotification(HANDLE registration) override;

 private:
  const SystemLibrary m_Sessions{L"wtsapi32.dll"};
  const SystemLibrary m_Users{L"user32.dll"};
};

}  // namespace corvane::platform::windows
