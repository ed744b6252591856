// What is the Windows host's own of its registry.

#include <gtest/gtest.h>

#include "any_host/host_kernel.h"
#include "platform/windows/windows_registry.h"
#include "windows/faulty_library.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

void RemoveRegistryTestKey() {
  ::RegDeleteTreeW(static_cast<::HKEY>(HKEY_LOCAL_MACHINE), L"SOFTWARE\\CorvaneTest");
}

// The system's functions read or write what is not there.
TEST(WindowsRegistry, AFaultIsTheFailureOfThatOneOperation) {
  WindowsRegistry registry;
  HKEY root = HKEY_LOCAL_MACHINE;
  HKEY key = nullptr;
  auto* const nowhere = reinterpret_cast<char16_t*>(std::uintptr_t{0x10});
  auto* const number = reinterpret_cast<DWORD*>(nowhere);
  const std::function<void()> kOperations[] = {
      [&] { registry.RegOpenKeyExW(root, nowhere, 0, KEY_READ, &key); },
      [&] { registry.RegCreateKeyExW(root, nowhere, KEY_READ, &key); },
      [&] { registry.RegQueryValueExW(root, nowhere, nullptr, nullptr, nullptr); },
      [&] { registry.RegSetValueExW(root, nowhere, REG_SZ, nullptr, 0); },
      [&] { registry.RegDeleteValueW(root, nowhere); },
      [&] { registry.RegQueryInfoKeyW(root, number, nullptr); },
      [&] { registry.RegEnumKeyExW(root, 0, nowhere, number); },
  };
  for (const auto& operation : kOperations) {
    EXPECT_EQ(FaultCodeOf(operation), EXCEPTION_ACCESS_VIOLATION) << &operation - kOperations;
  }
  EXPECT_EQ(registry.RegOpenKeyExW(root, u"SOFTWARE", 0, KEY_READ, &key), 0);
  EXPECT_EQ(registry.RegCloseKey(key), 0);
}

}  // namespace corvane::test
