// What asks a console program to stop.

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "platform/windows/win32.h"
#include "platform/windows/windows_console.h"

namespace corvane::test {

using platform::windows::EndSessionWindow;
using platform::windows::WindowsConsole;

TEST(WindowsConsole, ASignOutEndsNoProgramOfTheSystemsSession) {
  EXPECT_FALSE(WindowsConsole::IsStop(CTRL_LOGOFF_EVENT, 0));
  EXPECT_TRUE(WindowsConsole::IsStop(CTRL_LOGOFF_EVENT, 1));
  EXPECT_TRUE(WindowsConsole::IsStop(CTRL_SHUTDOWN_EVENT, 0));
  EXPECT_TRUE(WindowsConsole::IsStop(CTRL_C_EVENT, 0));
}

TEST(WindowsConsole, TheEndOfTheSessionAsksForTheStopAndWaitsForIt) {
  const ::HANDLE stop = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
  for (int round = 0; round < 2; ++round) {
    auto console = std::make_unique<WindowsConsole>(stop);
    ::HWND window = nullptr;
    for (int i = 0; i < 1000 && !window; ++i, ::Sleep(10)) {
      window = ::FindWindowW(EndSessionWindow::kClass, nullptr);
    }
    ASSERT_TRUE(window) << "a desktop to make a window on";
    EXPECT_EQ(::SendMessageW(window, WM_QUERYENDSESSION, 0, 0), 1);
    ::SendMessageW(window, WM_ENDSESSION, FALSE, 0);  // somebody was against it
    EXPECT_FALSE(console->_kbhit());
    std::atomic<bool> answered{false};
    std::thread system([&] {
      ::SendMessageW(window, WM_ENDSESSION, TRUE, 0);
      answered = true;
    });
    EXPECT_EQ(::WaitForSingleObject(stop, 20'000), ::DWORD{WAIT_OBJECT_0});
    EXPECT_TRUE(console->_kbhit());
    ::Sleep(50);
    EXPECT_FALSE(answered) << "the process would end now";
    console.reset();
    system.join();
    EXPECT_FALSE(::IsWindow(window));
    ::ResetEvent(stop);
  }
  ::CloseHandle(stop);
}

}  // namespace corvane::test
