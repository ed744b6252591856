#pragma once
#include "platform/types.h"

namespace corvane::platform {

using HWND = void*;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using WNDPROC = LRESULT (*)(HWND window, unsigned message, WPARAM wParam, LPARAM lParam);

inline constexpr unsigned WM_DESTROY = 0x0002;
inline constexpr unsigned WM_CLOSE = 0x0010;
inline constexpr unsigned WM_QUIT = 0x0012;
inline constexpr unsigned WM_TIMECHANGE = 0x001E;
inline constexpr unsigned WM_NCDESTROY = 0x0082;
inline constexpr unsigned WM_COMMAND = 0x0111;
inline constexpr unsigned WM_POWERBROADCAST = 0x0218;
inline constexpr unsigned WM_WTSSESSION_CHANGE = 0x02B1;
// What WM_POWERBROADCAST tells, as its wParam.
inline constexpr WPARAM PBT_APMSUSPEND = 4;
inline constexpr WPARAM PBT_APMRESUMESUSPEND = 7;
inline constexpr WPARAM PBT_APMRESUMESTANDBY = 8;
inline constexpr WPARAM PBT_APMPOWERSTATUSCHANGE = 10;
inline constexpr WPARAM PBT_APMRESUMEAUTOMATIC = 18;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr int SW_HIDE = 0;
inline constexpr DWORD NOTIFY_FOR_ALL_SESSIONS = 1;
inline constexpr DWORD DEVICE_NOTIFY_WINDOW_HANDLE = 0;
inline constexpr WPARAM WTS_SESSION_LOGON = 5;
inline constexpr WPARAM WTS_SESSION_LOGOFF = 6;
inline constexpr WPARAM WTS_SESSION_LOCK = 7;
inline constexpr WPARAM WTS_SESSION_UNLOCK = 8;

struct MSG {
  HWND hwnd = nullptr;
  unsigned message = 0;
  WPARAM wParam = 0;
  LPARAM lParam = 0;
};

// Windows and their messages. A window belongs to the thread that made it: its procedure runs
// there, inside GetMessageW and DispatchMessageW. Operations that give BOOL or null leave the
// reason in ThreadApi::GetLastError().
class WindowApi {
 public:
  virtual ~WindowApi() = default;
  virtual HANDLE GetModuleHandleW(LPCWSTR name);
  // A class with the standard icon and arrow and a black brush; a name that is registered already
  // is no failure here.
  virtual WORD RegisterClassExW(LPCWSTR className, WNDPROC procedure, HANDLE module);
  virtual HWND CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title, DWORD style,
                               HANDLE module);
  virtual BOOL ShowWindow(HWND window, int command);
  virtual BOOL UpdateWindow(HWND window);
  // The default procedure: WM_CLOSE destroys the window, which gets WM_DESTROY and WM_NCDESTROY.
  virtual LRESULT DefWindowProcW(HWND window, unsigned message, WPARAM wParam, LPARAM lParam);
  virtual void PostQuitMessage(int exitCode);

  // Waits for the next message of this thread: above 0 a message, 0 for WM_QUIT, -1 on failure.
  virtual int GetMessageW(MSG* message);
  virtual BOOL TranslateMessage(const MSG* message);
  virtual LRESULT DispatchMessageW(const MSG* message);

  // Runs the procedure on the window's thread and waits for its result.
  virtual LRESULT SendMessageW(HWND window, unsigned message, WPARAM wParam, LPARAM lParam);
  virtual BOOL PostMessageA(HWND window, unsigned message, WPARAM wParam, LPARAM lParam);
  // A window of any process that this one sees.
  virtual HWND FindWindowW(LPCWSTR className, LPCWSTR title);

  // From now on the window gets WM_WTSSESSION_CHANGE, or WM_POWERBROADCAST for suspend and resume.
  virtual BOOL WTSRegisterSessionNotification(HWND window, DWORD flags);
  virtual HANDLE RegisterSuspendResumeNotification(HANDLE recipient, DWORD flags);
  virtual BOOL UnregisterSuspendResumeNotification(HANDLE registration);
};

}  // namespace corvane::platform
