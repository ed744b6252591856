// The AP lists between their files, the adapter's key and the worker.

#include <new>

#include "settings/settings_fixture.h"
#include "store/value_names.h"

namespace corvane {
namespace {

using test::kAdapter;

constexpr char16_t kDenyFile[] = u"/program/denylist_ap.json";
constexpr char16_t kDenyBackup[] = u"/program/denylist_ap_backup.json";
constexpr char16_t kAllowFile[] = u"/program/allowlist_ap.json";
constexpr char16_t kAllowBackup[] = u"/program/allowlist_ap_backup.json";
constexpr char16_t kPreferredFile[] = u"/program/preferred_ap.json";
constexpr char kBothRows[] = R"([["File","any"],["Both","any"]])";
constexpr char16_t kStoredRows[] = u"[[\"Both\",\"ANY\"],[\"Value\",\"00-11-22-33-44-55\"]]";
constexpr char16_t kMerged[] =
    u"[[\"File\",\"any\"],[\"Both\",\"any\"],[\"Value\",\"00-11-22-33-44-55\"]]";

class ApLists : public test::ConfigTest {
 protected:
  void SetUp() override { config = OpenAdapter(); }
  void TearDown() override {
    config.reset();
    ConfigTest::TearDown();
  }
  platform::sim::SimFiles& Files() { return kernel.Files(); }

  CSmartPointer<CQUAYInterfaceConfig> config;
};

TEST_F(ApLists, AbsorbTheFileAheadOfTheValueAndMoveItAway) {
  Files().Write(kDenyFile, kBothRows);
  Files().Write(kDenyBackup, "an older backup");
  Registry().SetText(kAdapter, u"DenylistJson", kStoredRows);
  EXPECT_TRUE(config->m_Denylist.LoadFromFileAndRegistry(*config));
  EXPECT_EQ(Text(u"DenylistJson"), kMerged);
  EXPECT_FALSE(Files().Read(kDenyFile));
  EXPECT_EQ(Files().Read(kDenyBackup), kBothRows);
  // Without a file the next start keeps what the value has, and writes nothing.
  const std::uint64_t writes = Registry().WriteCount();
  EXPECT_TRUE(config->m_Denylist.LoadFromFileAndRegistry(*config));
  EXPECT_EQ(config->m_Denylist.Rows().size(), 3u);
  EXPECT_EQ(Registry().WriteCount(), writes);
}

TEST_F(ApLists, WriteAllowRowsSsidFirst) {
  Files().Write(kAllowFile, "\xEF\xBB\xBF[[\"00-11-22-33-44-55\",\"Lab\"],[\"Caf\xC3\xA9\"]]");
  EXPECT_TRUE(config->m_Allowlist.LoadFromFileAndRegistry(*config));
  EXPECT_EQ(Text(u"AllowlistJson"), u"[[\"Lab\",\"00-11-22-33-44-55\"],[\"Café\",\"any\"]]");
  EXPECT_TRUE(Files().Read(kAllowBackup));
  EXPECT_TRUE(IsAllowed(config->m_Allowlist.Rows(), u"LAB", {0x00, 0x11, 0x22, 0x33, 0x44, 0x55}));
}

TEST_F(ApLists, FollowTheValueInEachRound) {
  auto& list = config->m_Denylist;
  EXPECT_FALSE(list.ReloadFromRegistry(*config));
  config->SetString(value::kDenylistJson, u"[[\"A\",\"any\"],[\"B\",\"any\"]]");
  EXPECT_TRUE(list.ReloadFromRegistry(*config));
  EXPECT_EQ(list.Rows().size(), 2u);
  config->SetString(value::kDenylistJson, u"[[\"B\",\"any\"]]");
  EXPECT_TRUE(list.ReloadFromRegistry(*config));
  EXPECT_EQ(list.ToJson(), R"([["B","any"]])");
  EXPECT_TRUE(config->SetString(value::kDenylistJson, u"no JSON"));
  EXPECT_TRUE(list.ReloadFromRegistry(*config));
  EXPECT_TRUE(list.Rows().empty());
  EXPECT_EQ(Text(u"DenylistJson"), u"no JSON");  // a reload writes nothing back
  config->SetString(value::kDenylistJson,
                    u"[[\"B\",\"any\"]]" + WString(10300, u' '));  // longer than a value may be
  list.LoadConfiguration(R"([["C","any"]])");
  EXPECT_FALSE(list.ReloadFromRegistry(*config));
  EXPECT_TRUE(list.Rows().empty());
}

// Once for lack of memory, in the middle.
class ListCutShort : public CConfigApList {
 public:
  ListCutShort() : CConfigApList(kKind) { s_Reads = 0; }

 private:
  static bool Read(std::string_view, ApListRows* rows) {
    rows->push_back({u"A", "any"});
    if (s_Reads++ == 0) throw std::bad_alloc();
    rows->push_back({u"B", "any"});
    return true;
  }
  static inline int s_Reads = 0;
  static constexpr Kind kKind{"ListCutShort", "Move", "cut", u"CutJson", Read};
};

TEST_F(ApLists, AreReadAnewAfterAReadingThatWasCutShort) {
  Registry().SetText(kAdapter, u"CutJson", u"[]");
  ListCutShort list;
  EXPECT_TRUE(list.ReloadFromRegistry(*config));
  EXPECT_EQ(list.Rows().size(), 1u);
  for (int round = 0; round < 2; ++round) {  // then from what was read before
    EXPECT_TRUE(list.ReloadFromRegistry(*config));
    EXPECT_EQ(list.Rows().size(), 2u);
  }
}

TEST_F(ApLists, LoseNothingWhenACallFails) {
  const struct {
    const char* call;
    bool absorbed, moved, written;
  } cases[] = {{"MoveFileExW", true, false, true},         {"CreateFileW", false, false, true},
               {"ReadFile", false, false, true},           {"GetFileSizeEx", false, false, true},
               {"GetModuleFileNameA", false, false, true}, {"RegSetValueExW", true, true, false}};
  for (const auto& one : cases) {
    SCOPED_TRACE(one.call);
    Files().Write(kDenyFile, kBothRows);
    Files().Remove(kDenyBackup);
    Registry().SetText(kAdapter, u"DenylistJson", u"[[\"Old\",\"any\"]]");
    kernel.Faults().FailAlways(one.call, platform::ERROR_ACCESS_DENIED);
    EXPECT_EQ(config->m_Denylist.LoadFromFileAndRegistry(*config), one.written);
    EXPECT_EQ(config->m_Denylist.Rows().size(), one.absorbed ? 3u : 1u);
    EXPECT_EQ(Files().Read(kDenyFile).has_value(), !one.moved);
    EXPECT_EQ(Files().Read(kDenyBackup).has_value(), one.moved);
    kernel.Faults().Clear();
  }
  // What could not be moved is read again, and merges.
  Files().Write(kDenyFile, kBothRows);
  EXPECT_TRUE(config->m_Denylist.LoadFromFileAndRegistry(*config));
  EXPECT_TRUE(config->m_Denylist.LoadFromFileAndRegistry(*config));
  EXPECT_EQ(config->m_Denylist.Rows().size(), 3u);
}

// Stops the program, as a kill does, at one call and all after it.
struct Killed {};
class KilledFiles : public platform::FileApi {
 public:
  explicit KilledFiles(platform::FileApi& files) : m_Files(files) {}
  platform::HANDLE CreateFileW(platform::LPCWSTR path, platform::DWORD access,
                               platform::DWORD mode) override {
    return m_Files.CreateFileW(path, access, mode);
  }
  platform::BOOL ReadFile(platform::HANDLE file, void* to, platform::DWORD size,
                          platform::DWORD* read) override {
    return m_Files.ReadFile(file, to, size, read);
  }
  platform::BOOL CloseFile(platform::HANDLE file) override { return m_Files.CloseFile(file); }
  platform::BOOL GetFileSizeEx(platform::HANDLE file, platform::ULONGLONG* size) override {
    return m_Files.GetFileSizeEx(file, size);
  }
  platform::DWORD GetModuleFileNameA(std::string* path) override {
    return m_Files.GetModuleFileNameA(path);
  }
  platform::BOOL MoveFileExW(platform::LPCWSTR, platform::LPCWSTR, platform::DWORD) override {
    throw Killed();
  }

 private:
  platform::FileApi& m_Files;
};

TEST_F(ApLists, KilledBeforeTheMoveTheValueHasTheRowsAlready) {
  Files().Write(kDenyFile, kBothRows);
  Install<KilledFiles>(kernel.Files());
  EXPECT_THROW(config->m_Denylist.LoadFromFileAndRegistry(*config), Killed);
  EXPECT_EQ(Text(u"DenylistJson"), Utf8ToWide(kBothRows));
  EXPECT_EQ(Files().Read(kDenyFile), kBothRows);
}

TEST_F(ApLists, ReadThePreferredFileWhereItLies) {
  PreferredApRows rows;
  EXPECT_FALSE(config->m_SelectArbitrary.LoadConfiguration(&rows));
  Files().Write(kPreferredFile,
                R"([["A","any",60],["A","any",60],["B","00-11-22-33-44-55",0],["short","any"]])");
  EXPECT_TRUE(config->m_SelectArbitrary.LoadConfiguration(&rows));
  EXPECT_EQ(rows.size(), 3u);
  EXPECT_TRUE(Files().Read(kPreferredFile));
  Files().Write(kPreferredFile, std::string((16 << 20) + 1, ' '));
  EXPECT_FALSE(config->m_SelectArbitrary.LoadConfiguration(&rows));
}

TEST_F(ApLists, ADeniedApIsNoLongerSuggested) {
  CApSetMemo& memo = config->m_Popup.GetMemo();
  memo.Add(false, u"Lab", u"00-11-22-33-44-55", u"", u"", CApSetMemo::kNoFlag, 50);
  memo.Add(false, u"Office", u"00-11-22-33-44-66", u"", u"", CApSetMemo::kNoFlag, 50);
  config->SetString(value::kDenylistJson,
                    u"[[\"Lab\",\"00-11-22-33-44-55\"],[\"Office\",\"any\"]]");
  config->m_Denylist.ReloadFromRegistry(*config);
  config->m_Denylist.ClearSuggestions(config->m_Popup, config->m_Etw);
  EXPECT_FALSE(memo.HasAp(u"Lab", u"00-11-22-33-44-55"));
  EXPECT_TRUE(memo.HasNetwork(u"Office"));  // "any" names no AP
}

TEST_F(ApLists, TheSystemsDenyFilterCountsAsDenied) {
  Global().SetNetworkFilters({{u"Guest", kFilterDenied}, {u"Home", kFilterPermitted}});
  EXPECT_TRUE(IsDenied({}, u"Guest", {}));
  EXPECT_FALSE(IsDenied({}, u"guest", {}));  // the platform's names are exact
  EXPECT_FALSE(IsDenied({}, u"Home", {}));
}

}  // namespace
}  // namespace corvane
