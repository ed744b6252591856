#include "platform/sim/devices/sim_windows.h"

#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/thread_api.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD ERROR_INVALID_WINDOW_HANDLE = 1400;
constexpr DWORD ERROR_CANNOT_FIND_WND_CLASS = 1407;
constexpr char16_t kTrayProgram[] = u"Corvane_TrayApp.exe";
constexpr char16_t kTrayClass[] = u"QUAY Notification App";
constexpr char16_t kTrayTitle[] = u"Corvane Notification";
constexpr std::size_t kMaxKept = 1000;  // messages that nobody took
constexpr std::uintptr_t kHandleStep = 0x10;

// Lets the sender of a message go on, whatever becomes of the procedure.
struct Answered {
  ThreadApi& threads;
  const HANDLE done;
  ~Answered() { threads.SetEvent(done); }
};

HWND TrayWindow() { return reinterpret_cast<HWND>(std::uintptr_t{0x20134}); }

}  // namespace

SimWindows::~SimWindows() {
  for (auto& [thread, queue] : m_Queues) m_Threads.CloseHandle(queue.wake);
}

bool SimWindows::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return false;
}

bool SimWindows::Passes(const char* operation) {
  const DWORD code = m_Gate.Enter(operation);
  return code == ERROR_SUCCESS || Fail(code);
}

bool SimWindows::TrayRuns() const {
  return m_pSession && m_pSession->CountRunning(kTrayProgram) > 0;
}

SimWindows::Queue& SimWindows::QueueOf(DWORD thread) {
  Queue& queue = m_Queues[thread];
  if (!queue.wake) queue.wake = m_Threads.CreateEventW(FALSE, FALSE, "window messages");
  return queue;
}

HANDLE SimWindows::GetModuleHandleW(LPCWSTR) {
  return Passes("GetModuleHandleW") ? reinterpret_cast<HANDLE>(std::uintptr_t{0x400000}) : nullptr;
}

WORD SimWindows::RegisterClassExW(LPCWSTR className, WNDPROC procedure, HANDLE) {
  if (!Passes("RegisterClassExW")) return 0;
  if (ViewOf(className).empty() || !procedure) {
    Fail(ERROR_INVALID_PARAMETER);
    return 0;
  }
  const std::lock_guard guard(m_Mutex);
  m_Classes[FoldCase(ViewOf(className))] = procedure;
  return static_cast<WORD>(0xC000 + m_Classes.size());
}

HWND SimWindows::CreateWindowExW(DWORD, LPCWSTR className, LPCWSTR title, DWORD, HANDLE) {
  if (!Passes("CreateWindowExW")) return nullptr;
  const DWORD thread = m_Threads.GetCurrentThreadId();
  const std::lock_guard guard(m_Mutex);
  const auto known = m_Classes.find(FoldCase(ViewOf(className)));
  if (known == m_Classes.end()) {
    Fail(ERROR_CANNOT_FIND_WND_CLASS);
    return nullptr;
  }
  QueueOf(thread);
  const HWND window = reinterpret_cast<HWND>(m_LastHandle += kHandleStep);
  m_Windows[window] = {std::u16string(ViewOf(className)), std::u16string(ViewOf(title)),
                       known->second, thread};
  return window;
}

BOOL SimWindows::ShowWindow(HWND window, int) {
  return Passes("ShowWindow") && (ProcedureOf(window) || Fail(ERROR_INVALID_WINDOW_HANDLE));
}

BOOL SimWindows::UpdateWindow(HWND window) {
  return Passes("UpdateWindow") && (ProcedureOf(window) || Fail(ERROR_INVALID_WINDOW_HANDLE));
}

WNDPROC SimWindows::ProcedureOf(HWND window) const {
  const std::lock_guard guard(m_Mutex);
  const auto found = m_Windows.find(window);
  return found == m_Windows.end() ? nullptr : found->second.procedure;
}

LRESULT SimWindows::DefWindowProcW(HWND window, unsigned message, WPARAM, LPARAM) {
  if (Passes("DefWindowProcW") && message == WM_CLOSE) Destroy(window);
  return 0;
}

void SimWindows::Destroy(HWND window) {
  const WNDPROC procedure = ProcedureOf(window);
  if (!procedure) return;
  procedure(window, WM_DESTROY, 0, 0);
  procedure(window, WM_NCDESTROY, 0, 0);
  const std::lock_guard guard(m_Mutex);
  m_Windows.erase(window);
}

void SimWindows::PostQuitMessage(int) {
  if (!Passes("PostQuitMessage")) return;
  const DWORD thread = m_Threads.GetCurrentThreadId();
  const std::lock_guard guard(m_Mutex);
  QueueOf(thread).quit = true;
}

// Waits on the calling thread, which its queue wakes. A thread that is given up loses its windows.
int SimWindows::GetMessageW(MSG* message) {
  const DWORD thread = m_Threads.GetCurrentThreadId();
  try {
    std::unique_lock lock(m_Mutex);
    Queue& queue = QueueOf(thread);
    lock.unlock();
    RunSent(queue);
    if (!Passes("GetMessageW")) return -1;
    for (;;) {
      RunSent(queue);
      int result = 0;
      if (TakeMessage(queue, message, &result)) return result;
      m_Threads.WaitForSingleObject(queue.wake, INFINITE);
    }
  } catch (const ThreadAbandoned&) {
    EndThread(thread);
    throw;
  }
}

void SimWindows::RunSent(Queue& queue) {
  for (;;) {
    std::shared_ptr<Sent> sent;
    {
      const std::lock_guard guard(m_Mutex);
      if (queue.sent.empty()) return;
      sent = std::move(queue.sent.front());
      queue.sent.pop_front();
    }
    const Answered answered{m_Threads, sent->done};
    if (const WNDPROC procedure = ProcedureOf(sent->window))
      sent->result = procedure(sent->window, sent->message, sent->wParam, sent->lParam);
  }
}

bool SimWindows::TakeMessage(Queue& queue, MSG* message, int* result) {
  const std::lock_guard guard(m_Mutex);
  if (!queue.posted.empty()) {
    *message = queue.posted.front();
    queue.posted.pop_front();
    *result = 1;
    return true;
  }
  if (!queue.quit) return false;
  queue.quit = false;
  *message = {.message = WM_QUIT};
  *result = 0;
  return true;
}

void SimWindows::EndThread(DWORD thread) {
  std::deque<std::shared_ptr<Sent>> waiting;
  {
    const std::lock_guard guard(m_Mutex);
    std::erase_if(m_Windows, [&](const auto& entry) { return entry.second.thread == thread; });
    waiting.swap(m_Queues[thread].sent);
  }
  for (const auto& sent : waiting) m_Threads.SetEvent(sent->done);
}

BOOL SimWindows::TranslateMessage(const MSG*) {
  Passes("TranslateMessage");
  return FALSE;  // there is no keyboard
}

LRESULT SimWindows::DispatchMessageW(const MSG* message) {
  if (!Passes("DispatchMessageW")) return 0;
  const WNDPROC procedure = ProcedureOf(message->hwnd);
  return procedure ? procedure(message->hwnd, message->message, message->wParam, message->lParam)
                   : 0;
}

LRESULT SimWindows::SendMessageW(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) {
  if (!Passes("SendMessageW")) return 0;
  const auto sent = std::make_shared<Sent>(Sent{window, message, wParam, lParam});
  std::unique_lock lock(m_Mutex);
  const auto found = m_Windows.find(window);
  if (found == m_Windows.end()) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  if (found->second.thread == m_Threads.GetCurrentThreadId()) {
    const WNDPROC procedure = found->second.procedure;
    lock.unlock();
    return procedure(window, message, wParam, lParam);
  }
  sent->done = m_Threads.CreateEventW(TRUE, FALSE, "sent message");
  Queue& queue = QueueOf(found->second.thread);
  queue.sent.push_back(sent);
  lock.unlock();
  m_Threads.SetEvent(queue.wake);
  m_Threads.WaitForSingleObject(sent->done, INFINITE);
  m_Threads.CloseHandle(sent->done);
  return sent->result;
}

bool SimWindows::Post(HWND window, const MSG& message) {
  HANDLE wake = nullptr;
  {
    const std::lock_guard guard(m_Mutex);
    const auto found = m_Windows.find(window);
    if (found == m_Windows.end()) return false;
    Queue& queue = QueueOf(found->second.thread);
    if (queue.posted.size() < kMaxKept) queue.posted.push_back(message);
    wake = queue.wake;
  }
  m_Threads.SetEvent(wake);
  return true;
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
  if (!Passes("PostMessageA")) return FALSE;
  if (window == TrayWindow() && TrayRuns()) {
    const std::lock_guard guard(m_Mutex);
    if (m_Posted.size() < kMaxKept) m_Posted.push_back({message, wParam, lParam});
    return TRUE;
  }
  return Post(window, {window, message, wParam, lParam}) || Fail(ERROR_INVALID_WINDOW_HANDLE);
}

BOOL SimWindows::WTSRegisterSessionNotification(HWND window, DWORD) {
  if (!Passes("WTSRegisterSessionNotification")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  const auto found = m_Windows.find(window);
  if (found == m_Windows.end()) return Fail(ERROR_INVALID_WINDOW_HANDLE);
  found->second.session = true;
  return TRUE;
}

HANDLE SimWindows::RegisterSuspendResumeNotification(HANDLE recipient, DWORD flags) {
  if (!Passes("RegisterSuspendResumeNotification")) return nullptr;
  const std::lock_guard guard(m_Mutex);
  if (flags != DEVICE_NOTIFY_WINDOW_HANDLE || !m_Windows.contains(recipient)) {
    Fail(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const HANDLE registration = reinterpret_cast<HANDLE>(m_LastHandle += kHandleStep);
  m_PowerRegistrations[registration] = recipient;
  return registration;
}

// A call that fails by injection has ended the registration all the same.
BOOL SimWindows::UnregisterSuspendResumeNotification(HANDLE registration) {
  std::unique_lock lock(m_Mutex);
  const bool ended = m_PowerRegistrations.erase(registration) == 1;
  lock.unlock();
  return Passes("UnregisterSuspendResumeNotification") && (ended || Fail(ERROR_INVALID_HANDLE));
}

std::vector<SimWindows::Posted> SimWindows::TakeTrayMessages() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Posted, {});
}

void SimWindows::TellPower(WPARAM event) {
  std::vector<HWND> windows;
  {
    const std::lock_guard guard(m_Mutex);
    for (const auto& [registration, window] : m_PowerRegistrations) windows.push_back(window);
  }
  for (const HWND window : windows) Post(window, {window, WM_POWERBROADCAST, event, 0});
}

void SimWindows::TellSession(WPARAM event, DWORD sessionId) {
  std::vector<HWND> windows;
  {
    const std::lock_guard guard(m_Mutex);
    for (const auto& [window, known] : m_Windows) {
      if (known.session) windows.push_back(window);
    }
  }
  for (const HWND window : windows)
    Post(window, {window, WM_WTSSESSION_CHANGE, event, static_cast<LPARAM>(sessionId)});
}

std::size_t SimWindows::OpenWindows() const {
  const std::lock_guard guard(m_Mutex);
  return m_Windows.size() + m_PowerRegistrations.size();
}

}  // namespace corvane::platform::sim
