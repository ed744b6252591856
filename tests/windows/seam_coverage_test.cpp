// Every operation of the seam is the Windows backend's own: none is left to the default that
// answers "not implemented".

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "platform/text_file.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_registry.h"
#include "platform/windows/windows_threads.h"
#include "support/source_dir.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;

namespace {

using Operations = std::map<std::string, std::set<std::string>>;  // by the service's class

std::string Code(const std::filesystem::path& file) {
  return std::regex_replace(ReadTextFile(file.string()), std::regex("//[^\n]*"), "");
}

// What `pattern` finds in each class whose head `head` matches; both have the name as first group.
Operations Find(const std::string& folder, const std::string& ending, const std::regex& head,
                const std::regex& pattern) {
  Operations found;
  for (const auto& entry : std::filesystem::directory_iterator(SourceDir() + folder)) {
    if (!entry.path().string().ends_with(ending)) continue;
    const std::string code = Code(entry.path());
    for (std::sregex_iterator at(code.begin(), code.end(), head), end; at != end; ++at) {
      const auto from = static_cast<std::size_t>(at->position());
      const std::string body = code.substr(from, code.find("\n};", from) - from);
      auto& names = found[(*at)[1]];
      for (std::sregex_iterator one(body.begin(), body.end(), pattern), last; one != last; ++one) {
        names.insert((*one)[1]);
      }
    }
  }
  return found;
}

}  // namespace

TEST(WindowsSeam, LeavesNoOperationToItsDefault) {
  // Those with a body in the header do nothing on purpose.
  const Operations seam = Find("/src/platform", "_api.h", std::regex(R"(class (\w+Api) \{)"),
                               std::regex(R"(virtual [^;{~]*?\b(\w+)\([^;{]*\);)"));
  const Operations own = Find("/src/platform/windows", ".h",
                              std::regex(R"(class \w+ final : public (?:\w+::)*(\w+Api) \{)"),
                              std::regex(R"(\b(\w+)\([^;{]*\)\s*override)"));
  EXPECT_GE(seam.size(), 21u);
  std::size_t count = 0;
  for (const auto& [service, operations] : seam) {
    const auto backend = own.find(service);
    ASSERT_NE(backend, own.end()) << service << " has no class";
    for (const std::string& operation : operations) {
      EXPECT_TRUE(backend->second.contains(operation)) << service << "::" << operation;
      ++count;
    }
  }
  EXPECT_GT(count, 180u);
}

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
  try {
    EXPECT_NE(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, nowhere, 0, KEY_READ, &key), 0);
  } catch (const PlatformFault& fault) {
    EXPECT_EQ(fault.code, EXCEPTION_ACCESS_VIOLATION);
  }
  EXPECT_EQ(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"SOFTWARE", 0, KEY_READ, &key), 0);
  EXPECT_EQ(registry.RegCloseKey(key), 0);
}

}  // namespace corvane::test
