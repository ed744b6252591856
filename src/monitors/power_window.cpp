#include "monitors/power_window.h"

#include "foundation/format.h"
#include "foundation/guarded.h"
#include "platform/clock_api.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "CPowerWindow";
constexpr char16_t kWindowClass[] = u"PowWindow";
constexpr std::uint32_t kEndMs = 1000;
constexpr std::uint32_t kFailedMs = 500;  // until messages are asked for again

template <class Fn>
auto Call(const char* operation, Fn&& fn) {
  return Contained(kClassName, operation, decltype(fn()){}, fn);
}

std::string Stamp() {
  const SYSTEMTIME now = SystemTimeNow();
  return FormatA("[%02u/%02u][%02u:%02u:%02u]", now.wMonth, now.wDay, now.wHour, now.wMinute,
                 now.wSecond);
}

template <class... Args>
void Trace(const char* format, const Args&... args) {
  if (!CPowerWindow::s_bTrace) return;
  Os().console.WriteOutput(Stamp() + "[PWRW]" + FormatA(format, args...) + "\n");
}

const char* SessionEvent(WPARAM event) {
  switch (event) {
    case WTS_SESSION_LOGON:
      return "WTS_SESSION_LOGON";
    case WTS_SESSION_LOGOFF:
      return "WTS_SESSION_LOGOFF";
    case WTS_SESSION_LOCK:
      return "WTS_SESSION_LOCK";
    case WTS_SESSION_UNLOCK:
      return "WTS_SESSION_UNLOCK";
    default:
      return "[?]";
  }
}

}  // namespace

CPowerWindow::CPowerWindow() : CThread("power window") {}

CPowerWindow::~CPowerWindow() { Shutdown(); }

bool CPowerWindow::Initialize(std::uint32_t first, std::uint32_t second) {
  m_First = first;
  m_Second = second;
  return BeginThread() == 0;
}

void CPowerWindow::AddSubscriber(IPowerSubscriber* subscriber) {
  const CCritSecLock lock(m_SubscribersLock);
  s_Subscribers.emplace_back(subscriber);
}

void CPowerWindow::RemoveSubscriber(IPowerSubscriber* subscriber) {
  std::list<CSmartPointer<IPowerSubscriber>> gone;  // let go without the lock
  const CCritSecLock lock(m_SubscribersLock);
  for (auto at = s_Subscribers.begin(); at != s_Subscribers.end();) {
    const auto one = at++;
    if (one->get() == subscriber) gone.splice(gone.end(), s_Subscribers, one);
  }
}

void CPowerWindow::CloseWindow() {
  if (const HWND window = m_hWindow.exchange(nullptr)) {
    GiveBack(kClassName, "SendMessageW",
             [&] { Os().windows.SendMessageW(window, WM_CLOSE, 0, 0); });
  }
  if (const HANDLE notification = m_hNotification.exchange(nullptr)) {
    GiveBack(kClassName, "UnregisterSuspendResumeNotification",
             [&] { Os().windows.UnregisterSuspendResumeNotification(notification); });
  }
}

// A thread without a window, or one that the message does not reach, is given up.
void CPowerWindow::Shutdown() {
  std::list<CSmartPointer<IPowerSubscriber>> subscribers;
  {
    const CCritSecLock lock(m_SubscribersLock);
    subscribers.swap(s_Subscribers);
  }
  subscribers.clear();
  CloseWindow();
  StopThread(kEndMs);
}

// A stop may have come before there was a window to close.
void CPowerWindow::RunThreadLoop() {
  Call("create_window", [this] { return CreateHiddenWindow(), 0; });
  PumpMessages();
  CloseWindow();
}

// A failure to get a message is not the end: the next attempt may succeed.
void CPowerWindow::PumpMessages() {
  while (m_bRun) {
    MSG message;
    const int got = Contained(kClassName, "GetMessageW", -1,
                              [&] { return Os().windows.GetMessageW(&message); });
    if (got == 0 || message.message == WM_QUIT) return;
    if (got < 0) {
      Os().threads.Sleep(kFailedMs);
      continue;
    }
    Call("TranslateMessage", [&] { return Os().windows.TranslateMessage(&message); });
    Call("DispatchMessageW", [&] { return Os().windows.DispatchMessageW(&message); });
  }
}

void CPowerWindow::CreateHiddenWindow() {
  auto& os = Os().windows;
  const HANDLE module = Call("GetModuleHandleW", [&] { return os.GetModuleHandleW(nullptr); });
  if (!module) {
    Os().console.WriteOutput(
        Stamp() + "CPowerWindow::create_window: GetModuleHandle() failed, aborting....\n");
    return;
  }
  Call("RegisterClassExW",
       [&] { return os.RegisterClassExW(kWindowClass, &CPowerWindow::WindowProc, module); });
  const HWND window = Call("CreateWindowExW", [&] {
    return os.CreateWindowExW(0, kWindowClass, u"", WS_POPUP, module);
  });
  m_hWindow = window;
  Call("ShowWindow", [&] { return os.ShowWindow(window, SW_HIDE); });
  Call("UpdateWindow", [&] { return os.UpdateWindow(window); });
  const bool session = Call("WTSRegisterSessionNotification", [&] {
    return os.WTSRegisterSessionNotification(window, NOTIFY_FOR_ALL_SESSIONS);
  });
  Trace("WTSRegisterSessionNotification --> %i", session);
  m_hNotification = Call("RegisterSuspendResumeNotification", [&] {
    return os.RegisterSuspendResumeNotification(window, DEVICE_NOTIFY_WINDOW_HANDLE);
  });
  Trace("RegisterSuspendResumeNotification --> %i", m_hNotification.load() != nullptr);
}

// The system calls it, so that no exception may leave it.
LRESULT CPowerWindow::WindowProc(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) {
  Call("WindowProc", [&] { return GetInstance().TakeMessage(message, wParam, lParam), 0; });
  if (message == WM_DESTROY) return 0;
  return Call("DefWindowProcW",
              [&] { return Os().windows.DefWindowProcW(window, message, wParam, lParam); });
}

void CPowerWindow::TakeMessage(unsigned message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_DESTROY:
      Call("PostQuitMessage", [] { return Os().windows.PostQuitMessage(0), 0; });
      Trace("WM_DESTROY");
      return;
    case WM_CLOSE:
      Trace("WM_CLOSE [do nothing]");
      break;
    case WM_TIMECHANGE:
      Trace("WM_TIMECHANGE [suspended=%i]", s_Suspended);
      break;
    case WM_NCDESTROY:
      Trace("WM_NCDESTROY");
      break;
    case WM_POWERBROADCAST:
      Trace("WM_POWERBROADCAST --> wParam=%u", wParam);
      OnPowerBroadcast(wParam);
      break;
    case WM_WTSSESSION_CHANGE:
      Trace("WM_WTSSESSION_CHANGE --> %s, session=%i", SessionEvent(wParam), lParam);
      break;
    default:
      Trace("message=%u, wParam=%u", message, wParam);
      break;
  }
  if (s_bTrace) Os().console.FlushOutput();
}

// A machine that wakes may say so twice; the subscribers hear it once.
void CPowerWindow::OnPowerBroadcast(WPARAM event) {
  switch (event) {
    case PBT_APMSUSPEND:
      s_Suspended = true;
      ++s_SuspendedCounter;
      Tell(&IPowerSubscriber::OnSuspend);
      break;
    case PBT_APMRESUMESUSPEND:
    case PBT_APMRESUMESTANDBY:
    case PBT_APMRESUMEAUTOMATIC:
      if (!s_Suspended) break;
      s_Suspended = false;
      Tell(&IPowerSubscriber::OnResume);
      break;
    case PBT_APMPOWERSTATUSCHANGE:
      Call("GetSystemPowerStatus",
           [this] { return Os().power.GetSystemPowerStatus(&s_PowerStatus); });
      break;
    default:
      break;
  }
}

// Without the lock, so that a subscriber may be added meanwhile.
void CPowerWindow::Tell(void (IPowerSubscriber::*what)()) {
  std::list<CSmartPointer<IPowerSubscriber>> subscribers;
  {
    const CCritSecLock lock(m_SubscribersLock);
    subscribers = s_Subscribers;
  }
  for (const auto& subscriber : subscribers) (subscriber.get()->*what)();
}

}  // namespace corvane
