#pragma once
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/sim/kernel/seam_gate.h"
#include "platform/window_api.h"

namespace corvane::platform {
class ThreadApi;
}

namespace corvane::platform::sim {

class SimSession;

// The windows of the program, each served by the thread that made it, and the window of the tray
// application, which is there while "Corvane_TrayApp.exe" runs in the session. A failure by
// injection leaves windows, queues and messages as they are; what was sent to a window runs all the
// same, so that no sender waits for a thread whose GetMessageW fails.
class SimWindows final : public WindowApi {
 public:
  struct Posted {
    unsigned message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    friend bool operator==(const Posted&, const Posted&) = default;
  };

  // `session` null: no tray.
  SimWindows(SeamGate& gate, ThreadApi& threads, const SimSession* session)
      : m_Gate(gate), m_Threads(threads), m_pSession(session) {}
  ~SimWindows() override;

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

  std::vector<Posted> TakeTrayMessages();

  // The machine tells the windows that asked for it.
  void TellPower(WPARAM event);
  void TellSession(WPARAM event, DWORD sessionId);

  std::size_t OpenWindows() const;  // of the program, with its power registrations

 private:
  struct Window {
    std::u16string className, title;
    WNDPROC procedure = nullptr;
    DWORD thread = 0;
    bool session = false;  // hears of sessions
  };
  // A message that somebody waits for.
  struct Sent {
    HWND window = nullptr;
    unsigned message = 0;
    WPARAM wParam = 0;
    LPARAM lParam = 0;
    LRESULT result = 0;
    HANDLE done = nullptr;  // an event
  };
  // What waits for a thread that has windows or asks for messages.
  struct Queue {
    std::deque<MSG> posted;
    std::deque<std::shared_ptr<Sent>> sent;
    bool quit = false;
    HANDLE wake = nullptr;  // an event
  };

  bool Passes(const char* operation);  // otherwise the last error tells why not
  bool Fail(DWORD code);               // false
  bool TrayRuns() const;
  Queue& QueueOf(DWORD thread);  // made where it is missing; under the mutex
  WNDPROC ProcedureOf(HWND window) const;
  bool Post(HWND window, const MSG& message);
  void RunSent(Queue& queue);
  bool TakeMessage(Queue& queue, MSG* message, int* result);
  void Destroy(HWND window);
  void EndThread(DWORD thread);  // which asks for no message any more

  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  const SimSession* m_pSession;
  mutable std::mutex
      m_Mutex;  // guards what follows; not held while a procedure runs or a thread waits
  std::vector<Posted> m_Posted;
  std::map<std::u16string, WNDPROC> m_Classes;  // by folded name
  std::map<HWND, Window> m_Windows;
  std::map<HANDLE, HWND> m_PowerRegistrations;
  std::map<DWORD, Queue> m_Queues;  // by thread; they stay
  std::uintptr_t m_LastHandle = 0x30000;
};

}  // namespace corvane::platform::sim
