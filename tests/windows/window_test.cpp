// Windows and their messages.

#include <gtest/gtest.h>

#include <atomic>

#include "platform/windows/system_call.h"
#include "platform/windows/windows_windows.h"
#include "windows/faulty_library.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

constexpr DWORD kLongMs = 20'000;
constexpr unsigned kAdd = WM_USER + 1;
constexpr unsigned kThrow = WM_USER + 2;

std::atomic<unsigned> g_Power{0};

LRESULT OnTestMessage(HWND window, unsigned message, WPARAM wParam, LPARAM lParam) {
  WindowsWindows windows;
  switch (message) {
    case kAdd:
      return static_cast<LRESULT>(wParam) + lParam;
    case kThrow:
      throw 1;  // must not reach the system
    case WM_POWERBROADCAST:
      g_Power = static_cast<unsigned>(wParam);
      return TRUE;
    case WM_DESTROY:
      windows.PostQuitMessage(0);
      return 0;
  }
  return windows.DefWindowProcW(window, message, wParam, lParam);
}

// A window with its loop on a thread of the platform's.
struct Loop {
  WindowsWindows windows;
  std::atomic<HWND> window{nullptr};
  std::atomic<bool> ended{false};

  static DWORD Run(void* parameter) {
    auto& it = *static_cast<Loop*>(parameter);
    const HANDLE module = it.windows.GetModuleHandleW(nullptr);
    it.windows.RegisterClassExW(u"CorvaneTest", &OnTestMessage, module);
    it.windows.RegisterClassExW(u"CorvaneTest", &OnTestMessage, module);  // no failure
    const HWND window =
        it.windows.CreateWindowExW(0, u"CorvaneTest", u"Corvane test", WS_POPUP, module);
    it.windows.ShowWindow(window, SW_HIDE);
    it.windows.UpdateWindow(window);
    it.window = window;
    MSG message;
    while (window && it.windows.GetMessageW(&message) > 0) {
      it.windows.TranslateMessage(&message);
      it.windows.DispatchMessageW(&message);
    }
    it.ended = true;
    return 0;
  }
};

}  // namespace

TEST(WindowsWindows, AWindowHandlesWhatIsSentAndPostedAndEnds) {
  WindowsThreads threads;
  Loop loop;
  const HANDLE thread = threads.CreateThread(&Loop::Run, &loop, "window", nullptr);
  for (int i = 0; i < 1000 && !loop.window && !loop.ended; ++i) ::Sleep(10);
  ASSERT_TRUE(loop.window) << "a desktop to make a window on";
  WindowsWindows windows;
  EXPECT_EQ(windows.FindWindowW(u"CorvaneTest", u"Corvane test"), loop.window);
  EXPECT_EQ(windows.SendMessageW(loop.window, kAdd, 3, 4), 7);
  EXPECT_EQ(windows.SendMessageW(loop.window, kThrow, 0, 0), 0);
  EXPECT_TRUE(windows.PostMessageA(loop.window, WM_POWERBROADCAST, PBT_APMSUSPEND, 0));
  EXPECT_EQ(windows.SendMessageW(loop.window, kAdd, 1, 1), 2);
  for (int i = 0; i < 1000 && g_Power != PBT_APMSUSPEND; ++i) ::Sleep(10);
  EXPECT_EQ(g_Power, PBT_APMSUSPEND);
  EXPECT_TRUE(windows.WTSRegisterSessionNotification(loop.window, NOTIFY_FOR_ALL_SESSIONS));
  const HANDLE registration =
      windows.RegisterSuspendResumeNotification(loop.window, DEVICE_NOTIFY_WINDOW_HANDLE);
  if (registration) {
    EXPECT_TRUE(windows.UnregisterSuspendResumeNotification(registration));
  } else {
    EXPECT_NE(threads.GetLastError(), ERROR_SUCCESS);
  }
  EXPECT_TRUE(windows.PostMessageA(loop.window, WM_CLOSE, 0, 0));
  EXPECT_EQ(threads.WaitForSingleObject(thread, kLongMs), WAIT_OBJECT_0);
  EXPECT_TRUE(loop.ended);
  EXPECT_FALSE(windows.FindWindowW(u"CorvaneTest", u"Corvane test"));
  EXPECT_FALSE(windows.PostMessageA(loop.window, WM_CLOSE, 0, 0));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_WINDOW_HANDLE);
  threads.CloseHandle(thread);
}

TEST(WindowsWindows, AThreadThatIsGivenUpLeavesItsLoop) {
  WindowsThreads threads;
  Loop loop;
  const HANDLE thread = threads.CreateThread(&Loop::Run, &loop, "window", nullptr);
  for (int i = 0; i < 1000 && !loop.window && !loop.ended; ++i) ::Sleep(10);
  ASSERT_TRUE(loop.window) << "a desktop to make a window on";
  threads.TerminateThread(thread, 1);
  EXPECT_TRUE(threads.AwaitAbandoned(kLongMs));
  EXPECT_FALSE(loop.ended);
  threads.CloseHandle(thread);
}

TEST(WindowsWindows, AFaultOrAMissingLibraryIsTheFailureOfOneOperation) {
  const std::vector<Operation<WindowApi>> operations = {
      {"WTSRegisterSessionNotification",
       [](auto& it) { return CodeOf(it.WTSRegisterSessionNotification(nullptr, 0)); }},
      {"RegisterSuspendResumeNotification",
       [](auto& it) { return CodeOf(it.RegisterSuspendResumeNotification(nullptr, 0)); }},
      {"UnregisterSuspendResumeNotification",
       [](auto& it) { return CodeOf(it.UnregisterSuspendResumeNotification(nullptr)); }}};
  WindowsWindows missing(&FindNothing), faulting(&FindFaulting);
  ExpectFailures<WindowApi>(operations, missing, faulting);
}

namespace {

std::atomic<int> g_Registered{0};
std::atomic<bool> g_bGoneBefore{false};

::BOOL WINAPI RegisterIt(::HWND, ::DWORD) {
  ++g_Registered;
  return TRUE;
}
::BOOL WINAPI UnregisterIt(::HWND window) {
  if (!::IsWindow(window)) g_bGoneBefore = true;
  --g_Registered;
  return TRUE;
}
void* FindSessions(const char* name) {
  return std::string_view(name) == "WTSRegisterSessionNotification"
             ? reinterpret_cast<void*>(&RegisterIt)
             : reinterpret_cast<void*>(&UnregisterIt);
}

}  // namespace

// Each registration is ended before its window goes.
TEST(WindowsWindows, AWindowThatGoesIsToldOfSessionsNoMore) {
  WindowsThreads threads;
  Loop loop;
  const HANDLE thread = threads.CreateThread(&Loop::Run, &loop, "window", nullptr);
  for (int i = 0; i < 1000 && !loop.window && !loop.ended; ++i) ::Sleep(10);
  ASSERT_TRUE(loop.window) << "a desktop to make a window on";
  WindowsWindows windows(&FindSessions);
  for (int i = 0; i < 2; ++i) EXPECT_TRUE(windows.WTSRegisterSessionNotification(loop.window, 1));
  EXPECT_EQ(g_Registered, 2);
  EXPECT_TRUE(windows.PostMessageA(loop.window, WM_CLOSE, 0, 0));
  EXPECT_EQ(threads.WaitForSingleObject(thread, kLongMs), WAIT_OBJECT_0);
  EXPECT_EQ(g_Registered, 0);
  EXPECT_FALSE(g_bGoneBefore);
  threads.CloseHandle(thread);
}

}  // namespace corvane::test
