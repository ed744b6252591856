// The registry of Windows.

#include <gtest/gtest.h>

#include "platform/windows/win32.h"
#include "platform/windows/windows_registry.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

TEST(WindowsRegistry, KeepsTypedValuesAndNamesTheReasonOfAFailure) {
  constexpr LPCWSTR kTestKey = u"SOFTWARE\\OstrelNetworks\\CorvaneTest\\Inner";
  WindowsRegistry registry;
  HKEY key = nullptr;
  ASSERT_EQ(registry.RegCreateKeyExW(HKEY_LOCAL_MACHINE, kTestKey, KEY_ALL_ACCESS, &key), 0);
  const DWORD number = 7;
  EXPECT_EQ(
      registry.RegSetValueExW(key, u"Number", REG_DWORD, reinterpret_cast<const BYTE*>(&number), 4),
      0);
  const std::u16string text(10'000, u'\u00E9');
  const auto bytes = static_cast<DWORD>((text.size() + 1) * 2);
  EXPECT_EQ(registry.RegSetValueExW(key, u"Text", REG_SZ,
                                    reinterpret_cast<const BYTE*>(text.c_str()), bytes),
            0);
  DWORD type = 0;
  DWORD size = 2;
  DWORD read = 0;
  EXPECT_EQ(registry.RegQueryValueExW(key, u"number", &type, nullptr, &size), 0);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(type, DWORD{REG_DWORD});
  EXPECT_EQ(registry.RegQueryValueExW(key, u"Number", &type, reinterpret_cast<BYTE*>(&read), &size),
            0);
  EXPECT_EQ(read, 7u);
  size = 10;
  std::u16string room(20'000, u' ');
  auto* const buffer = reinterpret_cast<BYTE*>(room.data());
  EXPECT_EQ(registry.RegQueryValueExW(key, u"Text", &type, buffer, &size),
            LSTATUS{ERROR_MORE_DATA});
  EXPECT_EQ(size, bytes);
  EXPECT_EQ(registry.RegQueryValueExW(key, u"Text", &type, buffer, &size), 0);
  EXPECT_EQ(std::u16string_view(room.data()), text);
  DWORD keys = 9;
  DWORD values = 0;
  EXPECT_EQ(registry.RegQueryInfoKeyW(key, &keys, &values), 0);
  EXPECT_EQ(keys, 0u);
  EXPECT_EQ(values, 2u);
  EXPECT_EQ(registry.RegDeleteValueW(key, u"Text"), 0);
  EXPECT_EQ(registry.RegDeleteValueW(key, u"Text"), LSTATUS{ERROR_FILE_NOT_FOUND});
  EXPECT_EQ(registry.RegCloseKey(key), 0);

  ASSERT_EQ(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SOFTWARE\\OstrelNetworks\\CorvaneTest", 0,
                                   KEY_READ, &key),
            0);
  char16_t name[32] = {};
  DWORD chars = 32;
  EXPECT_EQ(registry.RegEnumKeyExW(key, 0, name, &chars), 0);
  EXPECT_EQ(std::u16string_view(name, chars), u"Inner");
  chars = 32;
  EXPECT_EQ(registry.RegEnumKeyExW(key, 1, name, &chars), LSTATUS{ERROR_NO_MORE_ITEMS});
  EXPECT_EQ(registry.RegCloseKey(key), 0);
  EXPECT_EQ(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SOFTWARE\\NoSuchKey", 0, KEY_READ, &key),
            LSTATUS{ERROR_FILE_NOT_FOUND});
  ::RegDeleteTreeW(static_cast<::HKEY>(HKEY_LOCAL_MACHINE),
                   L"SOFTWARE\\OstrelNetworks\\CorvaneTest");
}

// The system's function reads a text that is not there.
TEST(WindowsRegistry, AFaultIsTheFailureOfThatOneOperation) {
  WindowsRegistry registry;
  HKEY key = nullptr;
  const auto nowhere = reinterpret_cast<LPCWSTR>(std::uintptr_t{0x10});
  EXPECT_THROW(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, nowhere, 0, KEY_READ, &key),
               PlatformFault);
  EXPECT_EQ(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SOFTWARE", 0, KEY_READ, &key), 0);
  EXPECT_EQ(registry.RegCloseKey(key), 0);
}

}  // namespace corvane::test
