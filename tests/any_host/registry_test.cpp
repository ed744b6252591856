// The registry of the host.

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <thread>

#include "any_host/host_kernel.h"

namespace corvane::test {

using namespace platform;

namespace {

constexpr LPCWSTR kKey = u"SOFTWARE\\CorvaneTest";

const BYTE* Data(const void* data) { return static_cast<const BYTE*>(data); }

// With its terminator: the system adds one that its caller has left out.
std::string Text(const std::u16string& text) {
  return {reinterpret_cast<const char*>(text.c_str()), text.size() * 2 + 2};
}

constexpr auto Is(DWORD code) { return static_cast<LSTATUS>(code); }

}  // namespace

class HostRegistryOfAny : public testing::Test, protected HostRegistry {
 protected:
  ~HostRegistryOfAny() override { EXPECT_EQ(OpenHandles(), 0u); }

  HKEY Open(LPCWSTR path, REGSAM access, LSTATUS expected = 0) {
    HKEY key = nullptr;
    EXPECT_EQ(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, access, &key), expected);
    return key;
  }
  HKEY Create(LPCWSTR path, REGSAM access = KEY_ALL_ACCESS) {
    HKEY key = nullptr;
    EXPECT_EQ(registry.RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, access, &key), 0);
    return key;
  }
  void SetDword(LPCWSTR path, LPCWSTR name, DWORD value) {
    const HKEY key = Create(path);
    EXPECT_EQ(registry.RegSetValueExW(key, name, REG_DWORD, Data(&value), 4), 0);
    registry.RegCloseKey(key);
  }
  // The value's bytes; none when it is missing.
  std::optional<std::string> Get(HKEY key, LPCWSTR name, DWORD* type = nullptr) {
    std::string data(1 << 16, '\0');
    auto size = static_cast<DWORD>(data.size());
    if (registry.RegQueryValueExW(key, name, type, reinterpret_cast<BYTE*>(data.data()), &size) !=
        0) {
      return std::nullopt;
    }
    data.resize(size);
    return data;
  }
};

TEST_F(HostRegistryOfAny, KeepsTypesAndBytes) {
  const struct {
    const char* what;
    DWORD type;
    std::string data;
  } kCases[] = {
      {"dword", REG_DWORD, {'\xFF', '\xFF', '\xFF', '\xFF'}},
      {"qword of the sign bit", REG_QWORD, std::string("\1\0\0\0\0\0\0\x80", 8)},
      {"text", REG_SZ, Text(u"Caf\u00E9 \U0001F4F6 \u65E5")},
      {"empty text", REG_SZ, Text(u"")},
      {"long text", REG_SZ, Text(std::u16string(10'000, u'\u00E9'))},
      {"half a surrogate pair", REG_SZ,
       Text(u"a\xD83D"
            u"b")},
      {"byte order mark", REG_SZ, Text(u"\xFEFFx")},
      {"dword of three bytes", REG_DWORD, "abc"},
      {"binary", REG_BINARY, std::string("\0\1\2", 3)},
      {"empty binary", REG_BINARY, ""},
      {"text with quotes", REG_SZ, Text(u"'); DROP TABLE registry; --")},
  };
  const auto name = [](const auto& one) {
    return std::u16string(one.what, one.what + std::strlen(one.what));
  };
  HKEY key = Create(kKey, KEY_WRITE);
  for (const auto& one : kCases) {
    EXPECT_EQ(registry.RegSetValueExW(key, name(one).c_str(), one.type, Data(one.data.data()),
                                      static_cast<DWORD>(one.data.size())),
              0)
        << one.what;
  }
  registry.RegCloseKey(key);
  key = Open(kKey, KEY_READ);
  for (const auto& one : kCases) {
    DWORD type = 0;
    EXPECT_TRUE(Get(key, name(one).c_str(), &type) == one.data) << one.what;
    EXPECT_EQ(type, one.type) << one.what;
  }
  DWORD keys = 9, values = 0;
  EXPECT_EQ(registry.RegQueryInfoKeyW(key, &keys, &values), 0);
  EXPECT_EQ(keys, 0u);
  EXPECT_EQ(values, std::size(kCases));
  registry.RegCloseKey(key);
}

TEST_F(HostRegistryOfAny, FollowsTheRulesOfKeys) {
  Open(kKey, KEY_WRITE, Is(ERROR_FILE_NOT_FOUND));
  const HKEY key = Create(u"SOFTWARE\\CorvaneTest\\Inner", KEY_READ);
  // Parents are there too, and case makes no difference; a path may start from an open key.
  registry.RegCloseKey(Open(u"software\\CORVANETEST", KEY_READ));
  HKEY below = nullptr;
  EXPECT_EQ(registry.RegCreateKeyExW(key, u"{GUID}", KEY_ALL_ACCESS, &below), 0);
  const DWORD one = 1, two = 2;
  EXPECT_EQ(registry.RegSetValueExW(key, u"x", REG_DWORD, Data(&one), 4), Is(ERROR_ACCESS_DENIED));
  EXPECT_EQ(registry.RegSetValueExW(below, u"ScanInterval", REG_DWORD, Data(&one), 4), 0);
  EXPECT_EQ(registry.RegSetValueExW(below, u"SCANINTERVAL", REG_DWORD, Data(&two), 4), 0);
  DWORD size = 2, type = 0;
  BYTE buffer[4] = {};
  EXPECT_EQ(registry.RegQueryValueExW(below, u"scaninterval", &type, buffer, &size),
            Is(ERROR_MORE_DATA));
  EXPECT_EQ(size, 4u);
  size = 0;
  EXPECT_EQ(registry.RegQueryValueExW(below, u"scaninterval", &type, nullptr, &size), 0);
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(type, REG_DWORD);
  EXPECT_EQ(registry.RegQueryValueExW(below, u"scaninterval", &type, buffer, &size), 0);
  EXPECT_EQ(buffer[0], 2);
  EXPECT_EQ(registry.RegQueryValueExW(below, u"none", &type, nullptr, nullptr),
            Is(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(registry.RegDeleteValueW(below, u"scanINTERVAL"), 0);
  EXPECT_EQ(registry.RegDeleteValueW(below, u"scanINTERVAL"), Is(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(registry.RegCloseKey(below), 0);
  EXPECT_EQ(registry.RegCloseKey(below), Is(ERROR_INVALID_HANDLE));
  registry.RegCloseKey(key);
}

// Keys come in order and once, and those further below are not counted.
TEST_F(HostRegistryOfAny, EnumeratesTheKeysDirectlyBelow) {
  SetDword(u"SOFTWARE\\CorvaneTest\\Class\\0001\\Deep\\Deeper", u"v", 1);
  SetDword(u"SOFTWARE\\CorvaneTest\\Class\\0000", u"v", 1);
  SetDword(u"SOFTWARE\\CorvaneTest\\Class", u"v", 1);
  SetDword(u"SOFTWARE\\CorvaneTest\\Class]s", u"v", 1);
  SetDword(u"SOFTWARE\\CorvaneTest\\Classes\\x", u"v", 1);
  HKEY key = Open(u"SOFTWARE\\CorvaneTest\\Class", KEY_READ);
  DWORD keys = 0, values = 0;
  EXPECT_EQ(registry.RegQueryInfoKeyW(key, &keys, &values), 0);
  EXPECT_EQ(keys, 2u);
  EXPECT_EQ(values, 1u);
  std::u16string names;
  char16_t name[8] = {};
  DWORD chars = 8;
  for (DWORD i = 0; registry.RegEnumKeyExW(key, i, name, &chars) == 0; ++i, chars = 8) {
    EXPECT_EQ(chars, std::u16string_view(name).size());
    names += std::u16string(name) + u" ";
  }
  EXPECT_EQ(names, u"0000 0001 ");
  EXPECT_EQ(registry.RegEnumKeyExW(key, 2, name, &chars), Is(ERROR_NO_MORE_ITEMS));
  chars = 4;
  EXPECT_EQ(registry.RegEnumKeyExW(key, 0, name, &chars), Is(ERROR_MORE_DATA));
  registry.RegCloseKey(key);
  key = Open(u"SOFTWARE\\CorvaneTest\\Class", KEY_WRITE);
  chars = 8;
  EXPECT_EQ(registry.RegEnumKeyExW(key, 0, name, &chars), Is(ERROR_ACCESS_DENIED));
  registry.RegCloseKey(key);
  EXPECT_EQ(registry.RegQueryInfoKeyW(key, &keys, nullptr), Is(ERROR_INVALID_HANDLE));
}

TEST_F(HostRegistryOfAny, ServesReadersAndWritersOnManyThreads) {
  constexpr DWORD kLast = 60;
  SetDword(kKey, u"a", 0);
  const auto write = [&](LPCWSTR name) {
    for (DWORD i = 1; i <= kLast; ++i) SetDword(kKey, name, i);
  };
  std::thread writer(write, u"a"), second(write, u"b");
  const HKEY key = Open(kKey, KEY_READ);
  const auto number = [&](LPCWSTR name) {
    DWORD value = 0;
    const auto data = Get(key, name);
    if (data && data->size() == 4) std::memcpy(&value, data->data(), 4);
    return value;
  };
  for (DWORD seen = 0; seen < kLast;) {
    const DWORD now = number(u"a");
    EXPECT_GE(now, seen);
    seen = std::max(seen, now);
  }
  writer.join();
  second.join();
  EXPECT_EQ(number(u"b"), kLast);
  registry.RegCloseKey(key);
}

}  // namespace corvane::test
