#include "platform/window_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HANDLE WindowApi::GetModuleHandleW(LPCWSTR) {
  SetNotImplemented();
  return nullptr;
}

WORD WindowApi::RegisterClassExW(LPCWSTR, WNDPROC, HANDLE) {
  SetNotImplemented();
  return 0;
}

HWND WindowApi::CreateWindowExW(DWORD, LPCWSTR, LPCWSTR, DWORD, HANDLE) {
  SetNotImplemented();
  return nullptr;
}

BOOL WindowApi::ShowWindow(HWND, int) {
  SetNotImplemented();
  return FALSE;
}

BOOL WindowApi::UpdateWindow(HWND) {
  SetNotImplemented();
  return FALSE;
}

LRESULT WindowApi::DefWindowProcW(HWND, unsigned, WPARAM, LPARAM) {
  SetNotImplemented();
  return 0;
}

void WindowApi::PostQuitMessage(int) {}

int WindowApi::GetMessageW(MSG*) {
  SetNotImplemented();
  return -1;
}

BOOL WindowApi::TranslateMessage(const MSG*) {
  SetNotImplemented();
  return FALSE;
}

LRESULT WindowApi::DispatchMessageW(const MSG*) {
  SetNotImplemented();
  return 0;
}

LRESULT WindowApi::SendMessageW(HWND, unsigned, WPARAM, LPARAM) {
  SetNotImplemented();
  return 0;
}

BOOL WindowApi::PostMessageA(HWND, unsigned, WPARAM, LPARAM) {
  SetNotImplemented();
  return FALSE;
}

HWND WindowApi::FindWindowW(LPCWSTR, LPCWSTR) {
  SetNotImplemented();
  return nullptr;
}

BOOL WindowApi::WTSRegisterSessionNotification(HWND, DWORD) {
  SetNotImplemented();
  return FALSE;
}

HANDLE WindowApi::RegisterSuspendResumeNotification(HANDLE, DWORD) {
  SetNotImplemented();
  return nullptr;
}

BOOL WindowApi::UnregisterSuspendResumeNotification(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

}  // namespace corvane::platform
