// What the engine asks for: devices and services of drivers, and heaps.

#include <gtest/gtest.h>

#include "platform/windows/system_call.h"
#include "platform/windows/windows_driver.h"
#include "platform/windows/windows_heap.h"
#include "platform/windows/windows_services.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

TEST(WindowsDriver, AnAbsentDeviceIsNotFound) {
  WindowsThreads threads;
  WindowsDriver driver;
  EXPECT_FALSE(driver.CreateFileW(u"\\\\.\\CorvaneNoSuchDevice", GENERIC_READ, FILE_SHARE_READ));
  EXPECT_EQ(threads.GetLastError(), ERROR_FILE_NOT_FOUND);
  const HANDLE null = driver.CreateFileW(u"\\\\.\\NUL", GENERIC_READ, FILE_SHARE_READ);
  ASSERT_TRUE(null);
  DWORD returned = 1;
  EXPECT_FALSE(driver.DeviceIoControl(null, 0x222000, nullptr, 0, nullptr, 0, &returned));
  EXPECT_EQ(returned, 0u);
  EXPECT_NE(threads.GetLastError(), ERROR_SUCCESS);
  EXPECT_TRUE(driver.CloseHandle(null));
}

TEST(WindowsServices, AsksTheServiceManager) {
  WindowsThreads threads;
  WindowsServices services;
  const SC_HANDLE manager = services.OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
  ASSERT_TRUE(manager);
  EXPECT_FALSE(services.OpenServiceW(manager, u"CorvaneNoSuchService", SERVICE_ALL_ACCESS));
  EXPECT_EQ(threads.GetLastError(), ERROR_SERVICE_DOES_NOT_EXIST);
  const SC_HANDLE service = services.OpenServiceW(manager, u"RpcSs", SERVICE_ALL_ACCESS);
  ASSERT_TRUE(service);
  SERVICE_STATUS status;
  EXPECT_TRUE(services.QueryServiceStatus(service, &status));
  EXPECT_GE(status.dwCurrentState, SERVICE_STOPPED);
  if (status.dwCurrentState == SERVICE_RUNNING) {
    EXPECT_FALSE(services.StartServiceW(service, 0, nullptr));
    EXPECT_EQ(threads.GetLastError(), ERROR_SERVICE_ALREADY_RUNNING);
  }
  EXPECT_FALSE(services.StartServiceW(nullptr, 0, nullptr));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
  EXPECT_TRUE(services.CloseServiceHandle(service));
  EXPECT_TRUE(services.CloseServiceHandle(manager));
  EXPECT_FALSE(services.CloseServiceHandle(nullptr));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(WindowsHeap, BlocksStayWhereTheyAre) {
  WindowsHeap heaps;
  const HANDLE heap = heaps.HeapCreate(0, 0, 0);
  ASSERT_TRUE(heap);
  auto* const block = static_cast<unsigned char*>(heaps.HeapAlloc(heap, HEAP_ZERO_MEMORY, 112'704));
  ASSERT_TRUE(block);
  EXPECT_EQ(block[112'703], 0);
  EXPECT_TRUE(heaps.HeapFree(heap, 0, block));
  EXPECT_TRUE(heaps.HeapDestroy(heap));
}

}  // namespace corvane::test
