#include "store/registry.h"

#include "support/pc_fixture.h"

namespace corvane {
namespace {

using namespace std::chrono_literals;

constexpr char16_t kPath[] = u"SOFTWARE\\OstrelNetworks\\Corvane";

class RegistryStore : public test::KernelTest, protected CRegistryHelperBase {
 protected:
  CRegistry& Open() {
    bool fresh = false;
    EXPECT_TRUE(InitializeRegistry(kPath, &fresh));
    return *GetRegistry();
  }
  void TearDown() override {
    ReleaseRegistry();
    KernelTest::TearDown();
  }
};

TEST_F(RegistryStore, TellsAFreshKeyByItsMark) {
  const struct {
    bool exists;
    int mark;  // -1: missing
    bool fresh;
  } cases[] = {
      {false, -1, true}, {true, -1, true}, {true, 0, true}, {true, 2, true}, {true, 1, false}};
  int number = 0;
  for (const auto& one : cases) {
    const WString path = Format(u"SOFTWARE\\Case%i", number++);
    if (one.exists) kernel.Registry().SetDword(path, u"Other", 1);
    if (one.mark >= 0)
      kernel.Registry().SetDword(path, u"FreshDone", static_cast<platform::DWORD>(one.mark));
    bool fresh = !one.fresh;
    EXPECT_TRUE(InitializeRegistry(path, &fresh));
    EXPECT_EQ(fresh, one.fresh) << number;
    EXPECT_TRUE(kernel.Registry().HasKey(path));
  }
}

TEST_F(RegistryStore, GivesUpAKeyThatCannotBeMade) {
  kernel.Faults().FailAlways("RegCreateKeyExW", platform::ERROR_ACCESS_DENIED);
  bool fresh = false;
  const auto before = kernel.Now();
  EXPECT_FALSE(InitializeRegistry(kPath, &fresh));
  EXPECT_TRUE(fresh);
  EXPECT_EQ(kernel.Now() - before, 80ms);  // four pauses for the open, four for the creation
  bool any = true;
  EXPECT_TRUE(InitializeRegistry({}, &any));  // the object alone
  EXPECT_FALSE(any);
}

// A registry with one key, whose handles fault when they are closed.
class FaultyKey : public platform::RegistryApi {
 public:
  platform::LSTATUS RegOpenKeyExW(platform::HKEY, platform::LPCWSTR, platform::DWORD,
                                  platform::REGSAM, platform::HKEY* key) override {
    *key = this;
    return platform::ERROR_SUCCESS;
  }
  platform::LSTATUS RegCloseKey(platform::HKEY) override {
    ++closed;
    throw platform::PlatformFault{0xC0000005};
  }
  platform::LSTATUS RegSetValueExW(platform::HKEY, platform::LPCWSTR, platform::DWORD,
                                   const platform::BYTE*, platform::DWORD) override {
    ++written;
    return platform::ERROR_SUCCESS;
  }
  int closed = 0, written = 0;
};

TEST_F(RegistryStore, FaultInClosingAKeyEndsThere) {
  const auto& key = Install<FaultyKey>();
  EXPECT_TRUE(CRegistry(WString(kPath)).SetRegistryDWORDValue(u"D", 1));
  EXPECT_EQ(key.written, 1);
  EXPECT_GT(key.closed, 0);
}

TEST_F(RegistryStore, ReadsOnlyTheTypeAndSizeAskedFor) {
  CRegistry& store = Open();
  auto& registry = kernel.Registry();
  registry.SetQword(kPath, u"Q", 0x1EF54BB2B0858);
  registry.SetText(kPath, u"S", u"text");
  std::uint32_t number = 77;
  std::uint64_t wide = 77;
  WString text = u"before";
  EXPECT_FALSE(store.GetRegistryDWORDValue(u"Q", &number));
  EXPECT_FALSE(store.GetRegistryDWORDValue(u"S", &number));
  EXPECT_FALSE(store.GetRegistryDWORDValue(u"Missing", &number));
  EXPECT_EQ(number, 77u);
  EXPECT_TRUE(store.GetRegistryQWORDValue(u"Q", &wide));
  EXPECT_EQ(wide, 0x1EF54BB2B0858u);
  EXPECT_FALSE(store.GetRegistryStringValue(u"Q", &text));
  EXPECT_EQ(text, u"before");

  // 20480 bytes are the longest text.
  EXPECT_TRUE(store.SetRegistryStringValue(u"Longest", WString(10240, u'x')));
  EXPECT_TRUE(store.SetRegistryStringValue(u"TooLong", WString(10241, u'x')));
  EXPECT_TRUE(store.GetRegistryStringValue(u"Longest", &text));
  EXPECT_EQ(text.size(), 10240u);
  EXPECT_FALSE(store.GetRegistryStringValue(u"TooLong", &text));
}

TEST_F(RegistryStore, WritesOnlyWhatDiffersAndNoTerminator) {
  CRegistry& store = Open();
  const auto writes = [&](auto&& write) {
    const std::uint64_t before = kernel.Registry().WriteCount();
    EXPECT_TRUE(write());
    return kernel.Registry().WriteCount() - before;
  };
  EXPECT_EQ(writes([&] { return store.SetRegistryDWORDValue(u"N", 0); }), 1u);
  EXPECT_EQ(writes([&] { return store.SetRegistryDWORDValue(u"N", 0); }), 0u);
  EXPECT_EQ(writes([&] { return store.SetRegistryStringValue(u"T", u""); }), 1u);
  EXPECT_EQ(writes([&] { return store.SetRegistryStringValue(u"T", u""); }), 0u);
  EXPECT_EQ(writes([&] { return store.SetRegistryStringValue(u"T", u"abc"); }), 1u);
  platform::HKEY key = nullptr;
  Os().registry.RegOpenKeyExW(platform::HKEY_LOCAL_MACHINE, kPath, 0, platform::KEY_READ, &key);
  platform::DWORD type = 0, size = 0;
  Os().registry.RegQueryValueExW(key, u"T", &type, nullptr, &size);
  Os().registry.RegCloseKey(key);
  EXPECT_EQ(size, 6u);
}

TEST_F(RegistryStore, TriesAWriteFiveTimes) {
  CRegistry& store = Open();
  for (std::uint64_t call = 1; call <= 4; ++call)
    kernel.Faults().FailCall("RegOpenKeyExW", call, 5);
  const auto before = kernel.Now();
  EXPECT_TRUE(CRegistry::WriteRegistryDWORDParameter(kPath, u"N", 3));
  EXPECT_EQ(kernel.Now() - before, 40ms);
  kernel.Faults().Clear();
  for (std::uint64_t call = 1; call <= 5; ++call)
    kernel.Faults().FailCall("RegOpenKeyExW", call, 5);
  EXPECT_FALSE(CRegistry::WriteRegistryStringParameter(kPath, u"T", u"x"));
  kernel.Faults().Clear();
  kernel.Faults().FailAlways("RegSetValueExW", 5);
  EXPECT_FALSE(store.SetRegistryDWORDValue(u"N", 4));
  EXPECT_FALSE(store.SetRegistryStringValue(u"T", u"x"));
  EXPECT_EQ(kernel.Registry().GetDword(kPath, u"N"), 3u);
}

TEST_F(RegistryStore, MarksAdaptersBySubkeyAndDeletesValues) {
  CRegistry& store = Open();
  const WString sub = WString(kPath) + u"\\{G}";
  EXPECT_FALSE(store.SetAdapterEnabled(u"{G}", 1));  // no such key
  kernel.Registry().SetDword(sub, u"Other", 1);
  EXPECT_TRUE(store.SetAdapterEnabled(u"{G}", 1));
  EXPECT_EQ(kernel.Registry().GetDword(sub, u"AdapterEnabled"), 1u);
  kernel.Registry().SetText(kPath, u"0", u"{G}");
  EXPECT_TRUE(store.DeleteRegistryValue(u"0"));
  EXPECT_TRUE(store.DeleteRegistryValue(u"0"));
  EXPECT_FALSE(kernel.Registry().GetText(kPath, u"0"));
}

}  // namespace
}  // namespace corvane
