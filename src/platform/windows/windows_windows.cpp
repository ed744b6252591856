#include "platform/windows/windows_windows.h"

#include <map>
#include <mutex>

#include "platform/windows/library_call.h"

namespace corvane::platform::windows {

namespace {

::HWND Window(HWND window) { return static_cast<::HWND>(window); }

// The program's procedures by the atom of their class. Classes live as long as the process.
class Procedures {
 public:
  void Put(WORD atom, WNDPROC procedure) {
    const std::lock_guard lock(m_Mutex);
    m_ByAtom[atom] = procedure;
  }
  WNDPROC Of(::HWND window) {
    const auto atom = static_cast<WORD>(::GetClassLongPtrW(window, GCW_ATOM));
    const std::lock_guard lock(m_Mutex);
    const auto found = m_ByAtom.find(atom);
    return found == m_ByAtom.end() ? nullptr : found->second;
  }

 private:
  std::mutex m_Mutex;
  std::map<WORD, WNDPROC> m_ByAtom;
};

Procedures& TheProcedures() {
  static Procedures procedures;
  return procedures;
}

// Windows that are told of sessions, with what ends that. It has to be called before the window
// goes (WTSUnRegisterSessionNotification), once for each registration.
class SessionListeners {
 public:
  using Unregister = ::BOOL WINAPI(::HWND);

  void Add(::HWND window, Unregister* unregister) {
    const std::lock_guard lock(m_Mutex);
    m_Listeners.emplace(window, unregister);
  }
  void End(::HWND window) {
    for (;;) {
      Unregister* unregister = nullptr;
      {
        const std::lock_guard lock(m_Mutex);
        const auto found = m_Listeners.find(window);
        if (found == m_Listeners.end()) return;
        unregister = found->second;
        m_Listeners.erase(found);
      }
      try {
        OrFault([&] { return unregister(window); });
      } catch (const PlatformFault&) {  // the window goes all the same
      }
    }
  }

 private:
  std::mutex m_Mutex;
  std::multimap<::HWND, Unregister*> m_Listeners;
};

SessionListeners& TheSessionListeners() {
  static SessionListeners listeners;
  return listeners;
}

// Frames of the system lie between it and the program.
::LRESULT CALLBACK OnMessage(::HWND window, ::UINT message, ::WPARAM wParam, ::LPARAM lParam) {
  if (message == WM_DESTROY) TheSessionListeners().End(window);
  const WNDPROC procedure = TheProcedures().Of(window);
  if (!procedure) return ::DefWindowProcW(window, message, wParam, lParam);
  try {
    return procedure(window, message, wParam, lParam);
  } catch (...) {
    return 0;
  }
}

::MSG SystemMessage(const MSG& message) {
  ::MSG copy{};
  copy.hwnd = Window(message.hwnd);
  copy.message = message.message;
  copy.wParam = message.wParam;
  copy.lParam = message.lParam;
  return copy;
}

}  // namespace

HANDLE WindowsWindows::GetModuleHandleW(LPCWSTR name) {
  return ForwardOrFail("GetModuleHandleW", [&] { return ::GetModuleHandleW(Wide(name)); });
}

WORD WindowsWindows::RegisterClassExW(LPCWSTR className, WNDPROC procedure, HANDLE module) {
  ::WNDCLASSEXW description{};
  description.cbSize = sizeof(description);
  description.lpfnWndProc = &OnMessage;
  description.hInstance = static_cast<::HINSTANCE>(module);
  description.hIcon = ::LoadIconW(nullptr, reinterpret_cast<const wchar_t*>(IDI_APPLICATION));
  description.hCursor = ::LoadCursorW(nullptr, reinterpret_cast<const wchar_t*>(IDC_ARROW));
  description.hbrBackground = static_cast<::HBRUSH>(::GetStockObject(BLACK_BRUSH));
  description.lpszClassName = Wide(className);
  WORD atom = ForwardOrFail("RegisterClassExW", [&] { return ::RegisterClassExW(&description); });
  ::WNDCLASSEXW registered{};
  registered.cbSize = sizeof(registered);
  if (atom == 0) {  // GetClassInfoExW gives the atom of one that is registered already
    atom = static_cast<WORD>(
        ::GetClassInfoExW(description.hInstance, description.lpszClassName, &registered));
  }
  if (atom != 0) TheProcedures().Put(atom, procedure);
  return atom;
}

HWND WindowsWindows::CreateWindowExW(DWORD extendedStyle, LPCWSTR className, LPCWSTR title,
                                     DWORD style, HANDLE module) {
  return ForwardOrFail("CreateWindowExW", [&] {
    return ::CreateWindowExW(extendedStyle, Wide(className), Wide(title), style, 0, 0, 0, 0,
                             nullptr, nullptr, static_cast<::HINSTANCE>(module), nullptr);
  });
}

// Its result tells whether the window was visible before, and no error.
BOOL WindowsWindows::ShowWindow(HWND window, int command) {
  return Forward("ShowWindow", [&] { return ::ShowWindow(Window(window), command); });
}

BOOL WindowsWindows::UpdateWindow(HWND window) {
  return ForwardOrFail("UpdateWindow", [&] { return ::UpdateWindow(Window(window)); });
}

LRESULT WindowsWindows::DefWindowProcW(HWND window, unsigned message, WPARAM wParam,
                                       LPARAM lParam) {
  return Forward("DefWindowProcW",
                 [&] { return ::DefWindowProcW(Window(window), message, wParam, lParam); });
}

void WindowsWindows::PostQuitMessage(int exitCode) {
  Forward("PostQuitMessage", [&] { ::PostQuitMessage(exitCode); });
}

// Waits so that it ends, too, when the thread is given up. What other threads send is handled
// within, by the window's procedure.
int WindowsWindows::GetMessageW(MSG* message) {
  EnterGate("GetMessageW");
  HANDLE giveUp = WindowsThreads::OwnGiveUpEvent();
  const ::DWORD count = giveUp && !WindowsThreads::IsAbandoned() ? 1 : 0;
  ::MSG next{};
  while (!OrFault([&] { return ::PeekMessageW(&next, nullptr, 0, 0, PM_REMOVE); })) {
    WindowsThreads::ThrowIfAbandoned();
    ::DWORD error = ERROR_SUCCESS;
    const ::DWORD result = OrFault([&] {
      const ::DWORD waited =
          ::MsgWaitForMultipleObjectsEx(count, &giveUp, INFINITE, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
      error = ::GetLastError();
      return waited;
    });
    if (result == WAIT_FAILED) {
      WindowsThreads::KeepLastError(error);
      return -1;
    }
  }
  *message = {next.hwnd, next.message, next.wParam, next.lParam};
  return next.message == WM_QUIT ? 0 : 1;
}

BOOL WindowsWindows::TranslateMessage(const MSG* message) {
  const ::MSG copy = SystemMessage(*message);
  return Forward("TranslateMessage", [&] { return ::TranslateMessage(&copy); });
}

LRESULT WindowsWindows::DispatchMessageW(const MSG* message) {
  const ::MSG copy = SystemMessage(*message);
  return Forward("DispatchMessageW", [&] { return ::DispatchMessageW(&copy); });
}

LRESULT WindowsWindows::SendMessageW(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) {
  return Forward("SendMessageW",
                 [&] { return ::SendMessageW(Window(window), message, wParam, lParam); });
}

BOOL WindowsWindows::PostMessageA(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) {
  return ForwardOrFail("PostMessageA",
                       [&] { return ::PostMessageA(Window(window), message, wParam, lParam); });
}

HWND WindowsWindows::FindWindowW(LPCWSTR className, LPCWSTR title) {
  return ForwardOrFail("FindWindowW", [&] { return ::FindWindowW(Wide(className), Wide(title)); });
}

// Ends with the window.
BOOL WindowsWindows::WTSRegisterSessionNotification(HWND window, DWORD flags) {
  const BOOL done = ForwardOrFailIfFound("WTSRegisterSessionNotification",
                                         CORVANE_FIND(m_Sessions, WTSRegisterSessionNotification),
                                         Window(window), flags);
  const auto unregister = CORVANE_FIND(m_Sessions, WTSUnRegisterSessionNotification);
  if (done && unregister) TheSessionListeners().Add(Window(window), unregister);
  return done;
}

HANDLE WindowsWindows::RegisterSuspendResumeNotification(HANDLE recipient, DWORD flags) {
  using Call = void* WINAPI(HANDLE, ::DWORD);  // since Windows 8
  return ForwardOrFailIfFound("RegisterSuspendResumeNotification",
                              m_Users.Find<Call>("RegisterSuspendResumeNotification"), recipient,
                              flags);
}

BOOL WindowsWindows::UnregisterSuspendResumeNotification(HANDLE registration) {
  using Call = ::BOOL WINAPI(HANDLE);
  return ForwardOrFailIfFound("UnregisterSuspendResumeNotification",
                              m_Users.Find<Call>("UnregisterSuspendResumeNotification"),
                              registration);
}

}  // namespace corvane::platform::windows
