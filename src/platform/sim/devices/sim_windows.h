#pragma once
#include <mutex>
#include <utility>
#include <vector>

#include "platform/sim/kernel/seam_gate.h"
#include "platform/window_api.h"

namespace corvane::platform {
class ThreadApi;
}

namespace corvane::platform::sim {

class SimSession;

// The window of the tray application, which is there while "Corvane_TrayApp.exe" runs in the
// session. It has FindWindowW and PostMessageA for it, and nothing of the program's own windows.
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

  BOOL PostMessageA(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) override;
  HWND FindWindowW(LPCWSTR className, LPCWSTR title) override;

  std::vector<Posted> TakeTrayMessages();

 private:
  bool TrayRuns() const;

  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  const SimSession* m_pSession;
  std::mutex m_Mutex;  // guards what follows
  std::vector<Posted> m_Posted;
};

}  // namespace corvane::platform::sim
