#include <set>
#include <utility>

#include "engine/engine_settings.h"
#include "engine/value_names.h"
#include "settings/settings_fixture.h"
#include "store/value_table.h"

namespace corvane {
namespace {

using test::kAdapter;
using test::kHome;

constexpr ValueKey kKeys[] = {ValueKey::kHome, ValueKey::kAdapter, ValueKey::kEngine};

// A row that breaks one of these is a slip of the pen.
TEST(ValueTable, RowsAreInOrderAndSayAllThatAReaderNeeds) {
  for (const ValueKey key : kKeys) {
    WString last;
    for (const ValueRow& row : ValuesOf(key)) {
      SCOPED_TRACE(Narrow(row.name));
      EXPECT_EQ(row.key, key);
      EXPECT_LT(last, ToLower(row.name)) << "rows stand by name";
      last = ToLower(row.name);
      EXPECT_FALSE(row.meaning.empty() || row.writers.empty());
      EXPECT_TRUE(key == ValueKey::kEngine || !row.readers.empty());
      EXPECT_TRUE(!row.start || IsInRange(row, *row.start));
      EXPECT_TRUE(row.written.when == StartWrite::kNever || !row.written.words.empty() ||
                  IsInRange(row, row.written.number));
      EXPECT_TRUE(!row.returns || row.start);
      const bool isSetting = row.global.store || row.adapter.store;
      EXPECT_TRUE(row.kind == ValueKind::kText || isSetting || row.atStart + row.eachRound == 0);
    }
    for (const ValueStep step : {ValueStep::kReadAtStart, ValueStep::kReadEachRound,
                                 ValueStep::kWriteFresh, ValueStep::kWriteAlways}) {
      std::set<int> places;
      for (const ValueRow* row : ValuesIn(key, step)) {
        const int place = step == ValueStep::kReadAtStart     ? row->atStart
                          : step == ValueStep::kReadEachRound ? row->eachRound
                                                              : row->written.place;
        EXPECT_EQ(place, static_cast<int>(places.size()) + 1) << Narrow(row->name);
        places.insert(place);
      }
    }
  }
}

// The engine reads its values without the table, from below.
TEST(ValueTable, TellsTheEnginesDefaults) {
  const LBSettings settings;
  const std::pair<const char16_t*, std::uint32_t> defaults[] = {
      {value::kDeviceDiscoveryTO, settings.discoveryIntervalMs},
      {value::kEnable11AD, settings.enable11ad},
      {value::kEnableOpenVpn, settings.enableOpenVpn},
      {value::kSupportOemDevice, settings.supportOemDevice},
      {value::kSvcLib_TraceEnabled, settings.traceEnabled}};
  for (const auto& [name, number] : defaults)
    EXPECT_EQ(FindValue(ValueKey::kEngine, name)->start, number) << Narrow(name);
}

// Each setting as a client or an administrator may leave it in the registry.
class StoredSettings : public test::ConfigTest {
 protected:
  // Stores what `write` does and has the settings read, as the service's rounds do.
  template <class Write>
  std::uint32_t AfterReading(const ValueRow& row, Write&& write) {
    write(row.key == ValueKey::kHome ? kHome : kAdapter);
    if (row.eachRound == 0) {
      Global().Initialize(false);  // of the next start, which brings adapters of its own
      config = OpenAdapter();
    } else if (row.key == ValueKey::kHome) {
      Global().RefreshGlobals();
    } else {
      config->RefreshFromRegistry();
    }
    return InForce(row);
  }
  std::uint32_t InForce(const ValueRow& row) {
    return row.key == ValueKey::kHome ? row.global.load(Global()) : row.adapter.load(*config);
  }
  std::uint32_t AfterNumber(const ValueRow& row, std::uint32_t number) {
    return AfterReading(row, [&](auto path) { Registry().SetDword(path, row.name, number); });
  }

  void TearDown() override {
    config.reset();
    ConfigTest::TearDown();
  }
  CSmartPointer<CQUAYInterfaceConfig> config = OpenAdapter();
};

TEST_F(StoredSettings, AreTakenCutOrRefusedAndSurviveAValueThatCannotBeRead) {
  int count = 0;
  for (const ValueKey key : {ValueKey::kHome, ValueKey::kAdapter}) {
    for (const ValueRow& row : ValuesOf(key)) {
      if (!row.global.store && !row.adapter.store) continue;
      SCOPED_TRACE(Narrow(row.name));
      ++count;
      const bool isFlag = row.kind == ValueKind::kFlag;
      const std::uint32_t most = isFlag ? 1 : row.most;
      const std::uint32_t inside = row.start == row.least ? most : row.least;
      EXPECT_EQ(AfterNumber(row, most), most);
      EXPECT_EQ(AfterNumber(row, inside), inside);
      if (isFlag) {
        EXPECT_EQ(AfterNumber(row, 0xFFFFFFFF), 1u);
      } else if (row.outside == Outside::kCut) {
        EXPECT_EQ(AfterNumber(row, most + 1), most);
        if (row.least > 0) {
          EXPECT_EQ(AfterNumber(row, row.least - 1), row.least);
        }
      } else if (row.outside == Outside::kRefused) {
        EXPECT_EQ(AfterNumber(row, most + 1), inside);
        if (row.least > 0) {
          EXPECT_EQ(AfterNumber(row, row.least - 1), inside);
        }
      }
      EXPECT_EQ(AfterNumber(row, inside), inside);
      const std::uint32_t unread = row.returns ? *row.start : inside;
      EXPECT_EQ(AfterReading(row, [&](auto path) { Registry().SetText(path, row.name, u"7"); }),
                unread);
      AfterNumber(row, inside);
      EXPECT_EQ(AfterReading(row, [&](auto path) { Registry().DeleteValue(path, row.name); }),
                unread);
    }
  }
  EXPECT_GE(count, 24);
}

}  // namespace
}  // namespace corvane
