#include "store/ap_list_json.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

constexpr MacAddress kMac = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55};
constexpr MacAddress kNone = {};

struct RowCase {
  const char* json;
  const char16_t* ssid;
  const char* bssid;
  MacAddress mac;
};

void ExpectOneRow(bool (*read)(std::string_view, ApListRows*), const RowCase& one) {
  SCOPED_TRACE(one.json);
  ApListRows rows;
  EXPECT_TRUE(read(one.json, &rows));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows.front().ssid, one.ssid);
  EXPECT_EQ(rows.front().bssid, one.bssid);
  EXPECT_EQ(rows.front().mac, one.mac);
}

TEST(DenyRows, TakeAnAddressOrAnyOrNeither) {
  const RowCase cases[] = {
      {R"([["Office","00-11-22-33-44-55"]])", u"Office", "00-11-22-33-44-55", kMac},
      {R"([["Caf\u00e9","aNy",7]])", u"Café", "aNy", kAnyMac},
      {R"([["A","00:11:22:33:44:55"]])", u"A", "00:11:22:33:44:55", kNone},
      {R"([["A","00-11-22-33-44"]])", u"A", "00-11-22-33-44", kNone},
      {R"([["A","00-11-22-33-44-55-66"]])", u"A", "00-11-22-33-44-55-66", kNone},
      {R"([["A","xx-11-22-33-44-55"]])", u"A", "xx-11-22-33-44-55", kMac},
      {R"([["A",""]])", u"A", "", kNone},
  };
  for (const RowCase& one : cases) ExpectOneRow(ReadDenyRows, one);
}

TEST(AllowRows, TakeTheTwoElementsInEitherOrder) {
  const RowCase cases[] = {
      {R"([["Office"]])", u"Office", "any", kAnyMac},
      {R"([["any","Office"]])", u"Office", "any", kAnyMac},
      {R"([["Office","ANY"]])", u"Office", "ANY", kAnyMac},
      {R"([["any","any"]])", u"any", "any", kAnyMac},
      {R"([["Office","00-11-22-33-44-55",1,2]])", u"Office", "00-11-22-33-44-55", kMac},
      {R"([["00-11-22-33-44-55","Office"]])", u"Office", "00-11-22-33-44-55", kMac},
      {R"([["any","00-11-22-33-44-55"]])", u"any", "00-11-22-33-44-55", kMac},
      {R"([["Office","nonsense"]])", u"Office", "nonsense", kAnyMac},
  };
  for (const RowCase& one : cases) ExpectOneRow(ReadAllowRows, one);
}

TEST(ApListText, OfAnyContentGivesTheRowsThatCanBeRead) {
  const std::string deep(200'000, '[');
  const std::string_view none[] = {"",
                                   " ",
                                   "{}",
                                   "7",
                                   "null",
                                   "[[\"A\",\"any\"]",
                                   "[[\"A\",\"any\"]] x",
                                   "[[\"A\",\"any\"],]",
                                   "[\"\\ud800\"]",
                                   std::string_view("[[\0", 3),
                                   deep};
  for (const std::string_view text : none) {
    SCOPED_TRACE(text.substr(0, 40));
    ApListRows rows;
    PreferredApRows preferred;
    EXPECT_FALSE(ReadDenyRows(text, &rows));
    EXPECT_FALSE(ReadAllowRows(text, &rows));
    EXPECT_FALSE(ReadPreferredRows(text, &preferred));
    EXPECT_TRUE(rows.empty() && preferred.empty());
  }
  // Elements of another shape are passed over, each by itself.
  constexpr char kMixed[] =
      R"([1,"x",null,{"a":1},[],["only"],[7,"any"],["A",7],["A",["any"]],["B","any",60]])";
  ApListRows deny, allow;
  PreferredApRows preferred;
  EXPECT_TRUE(ReadDenyRows(kMixed, &deny));
  EXPECT_EQ(ApListJson(deny), R"([["B","any"]])");
  EXPECT_TRUE(ReadAllowRows(kMixed, &allow));
  EXPECT_EQ(ApListJson(allow), R"([["only","any"],["B","any"]])");
  EXPECT_TRUE(ReadPreferredRows(kMixed, &preferred));
  ASSERT_EQ(preferred.size(), 1u);
  EXPECT_EQ(preferred.front().min_lq, 60u);
}

TEST(ApListText, BytesThatAreNoUtf8DoNotBreakTheList) {
  ApListRows rows;
  EXPECT_TRUE(ReadDenyRows("[[\"\xFF\xC3\",\"\x80\"],[\"A\",\"any\"]]", &rows));
  EXPECT_EQ(rows.front().ssid, u"\uFFFD\uFFFD");
  EXPECT_EQ(rows.size(), 2u);
}

TEST(ApListRows, OfOneSsidAndAddressAreOne) {
  ApListRows rows;
  ReadDenyRows(
      R"([["A","any"],["A","ANY"],["a","any"],["A","00-11-22-33-44-aa"],["A","0-11-22-33-44-AA"]])",
      &rows);
  EXPECT_EQ(ApListJson(rows), R"([["A","any"],["a","any"],["A","00-11-22-33-44-aa"]])");
  // A row that is there already still counts as taken.
  EXPECT_TRUE(ReadDenyRows(R"([["A","any"]])", &rows));
  EXPECT_EQ(rows.size(), 3u);
}

TEST(ApListRows, MatchWithoutRegardToCase) {
  ApListRows rows;
  ReadDenyRows(
      R"([["office","any"],["Lab","00-11-22-33-44-55"],["Near","ff-ff-ff-ff-00-01"],["Bad","?"]])",
      &rows);
  const auto isListed = [&rows](WStringView ssid, const MacAddress& mac) {
    const bool listed = IsListed(rows, ssid, mac);
    EXPECT_EQ(ApListIndex(rows).IsListed(ssid, mac), listed) << Narrow(ssid);
    return listed;
  };
  EXPECT_TRUE(isListed(u"OFFICE", kMac));
  EXPECT_TRUE(isListed(u"lAB", kMac));
  EXPECT_FALSE(isListed(u"Lab", {0x00, 0x11, 0x22, 0x33, 0x44, 0x56}));
  EXPECT_TRUE(isListed(u"Near", kMac));  // four 0xFF make a wildcard
  EXPECT_FALSE(isListed(u"Bad", kMac));
  EXPECT_FALSE(isListed(u"Office2", kMac));
  rows.clear();
  EXPECT_FALSE(isListed(u"office", kMac));
}

TEST(PreferredRows, RepeatAndTakeTheLowBitsOfANumber) {
  const struct {
    const char* number;
    std::uint32_t min_lq;
  } cases[] = {{"0", 0},
               {"100", 100},
               {"60.9", 60},
               {"-1", 0xFFFFFFFF},
               {"4294967297", 1},
               {"18446744073709551615", 0xFFFFFFFF},
               {"-2.5", 0xFFFFFFFE}};
  for (const auto& one : cases) {
    PreferredApRows rows;
    EXPECT_TRUE(ReadPreferredRows(std::string(R"([["A","any",)") + one.number + "]]", &rows))
        << one.number;
    EXPECT_EQ(rows.front().min_lq, one.min_lq) << one.number;
  }
  PreferredApRows rows;
  EXPECT_TRUE(ReadPreferredRows(
      R"([["A","any",1],["A","any",1],["A","any"],["A","any","1"],["A","any",1e300]])", &rows));
  EXPECT_EQ(rows.size(), 2u);
}

}  // namespace
}  // namespace corvane
