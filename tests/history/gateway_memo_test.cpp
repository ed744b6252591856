#include "history/global_ap_gateway_map_memo.h"
#include "history/global_dc_info_memo.h"
#include "store/registry.h"
#include "support/pc_fixture.h"

namespace corvane {
namespace {

constexpr MacAddress kA{0xAA, 1, 2, 3, 4, 5}, kB{0xBB, 1, 2, 3, 4, 5};
constexpr char16_t kAText[] = u"aa-01-02-03-04-05", kBText[] = u"bb-01-02-03-04-05";

WString Joined(std::initializer_list<WStringView> parts, char16_t separator) {
  WString text;
  for (const WStringView part : parts) {
    if (!text.empty()) text += separator;
    text += part;
  }
  return text;
}

class GatewayMemo : public test::KernelTest {
 protected:
  GatewayMemo() { EXPECT_TRUE(CRegistry::CreateHomeKey(kHomeKeyPath)); }

  static WString Stored(WStringView name) {
    WString text;
    CRegistry(kHomeKeyPath).GetRegistryStringValue(name, &text);
    return text;
  }
  static void Store(WStringView name, WStringView text) {
    EXPECT_TRUE(CRegistry(kHomeKeyPath).SetRegistryStringValue(name, text));
  }
  CGlobalAPGatewayMapMemo& Memo() { return CGlobalAPGatewayMapMemo::GetInstance(); }
};

TEST_F(GatewayMemo, WritesChangesOnlyAndReadsThemBackAfterARestart) {
  Memo().Load();
  Memo().Update(u"22", {kB, kA}, {kA});
  Memo().Update(u"11", {kA}, {});
  const WString written = Joined({Joined({u"11", kAText}, u'\v'),
                                  Joined({u"22", Joined({kBText, kAText}, u','), kAText}, u'\v')},
                                 u'\t');
  EXPECT_EQ(Narrow(Stored(u"GatewayMacs")), Narrow(written));

  Store(u"GatewayMacs", u"untouched");
  Memo().Update(u"11", {kA}, {});
  EXPECT_EQ(Stored(u"GatewayMacs"), u"untouched") << "the same gateways again";
  Memo().Update(u"22", {kA, kB}, {kA});
  EXPECT_NE(Stored(u"GatewayMacs"), u"untouched") << "another order is a change";

  Memo().Clear();
  EXPECT_TRUE(Memo().LookUp(u"11").IsEmpty());
  Memo().Clear();
  Memo().Load();
  EXPECT_EQ(Memo().LookUp(u"11"), (GatewayMacs{{kA}, {}}));
  EXPECT_EQ(Memo().LookUp(u"22"), (GatewayMacs{{kA, kB}, {kA}}));
  Store(u"GatewayMacs", u"");
  Memo().Load();
  EXPECT_FALSE(Memo().LookUp(u"11").IsEmpty()) << "loads once until it is cleared";
}

// An empty list leaves no field, so what is stored loses which family it was.
TEST_F(GatewayMemo, EmptyListsLeaveNoField) {
  Memo().Update(u"11", {}, {kA});
  Memo().LookUp(u"00");
  Memo().Update(u"22", {}, {});
  EXPECT_EQ(Narrow(Stored(u"GatewayMacs")),
            Narrow(Joined({u"00", Joined({u"11", kAText}, u'\v'), u"22"}, u'\t')));
  CGlobalAPGatewayMapMemo::Map read;
  ParseGatewayMap(Stored(u"GatewayMacs"), &read);
  EXPECT_EQ(read, (CGlobalAPGatewayMapMemo::Map{{u"11", {{kA}, {}}}}));
}

TEST_F(GatewayMemo, OfMoreThan400RecordsTheFirstFallOutOfTheText) {
  CGlobalAPGatewayMapMemo::Map records;
  for (int i = 0; i < 401; ++i) records[Format(u"%03i", i)] = {{kA}, {}};
  CGlobalAPGatewayMapMemo::Map read;
  ParseGatewayMap(GatewayMapText(records), &read);
  EXPECT_EQ(read.size(), 400u);
  EXPECT_EQ(read.begin()->first, u"001");
}

TEST_F(GatewayMemo, WhatDoesNotFitIntoAReadableValueFallsOutAtTheFront) {
  for (int i = 0; i < 300; ++i)
    Memo().Update(Format(u"02-00-00-00-%02x-%02x", i / 256, i % 256), {kA}, {});
  EXPECT_FALSE(Memo().LookUp(u"02-00-00-00-00-00").IsEmpty()) << "in memory all stay";
  Memo().Clear();
  Memo().Load();
  EXPECT_TRUE(Memo().LookUp(u"02-00-00-00-00-0f").IsEmpty());
  EXPECT_FALSE(Memo().LookUp(u"02-00-00-00-00-10").IsEmpty()) << "284 records of 36 characters fit";
  EXPECT_FALSE(Memo().LookUp(u"02-00-00-00-01-2b").IsEmpty());
  const MacList many(600, kA);
  EXPECT_EQ(GatewayMapText({{u"11", {many, many}}}), u"") << "no part of a record";
}

TEST_F(GatewayMemo, RowsThatCanBeReadCount) {
  const auto fields = [](std::initializer_list<WStringView> parts) { return Joined(parts, u'\v'); };
  CGlobalAPGatewayMapMemo::Map read{{u"11", {{kB}, {kB}}}};
  ParseGatewayMap(
      Joined({u"alone", fields({u"11", kAText}), u"\v\v", fields({u"22", u"zz", kAText, u"more"}),
              fields({u"33", u"1-2-3-4-5,,bb-01-02-03-04-05,1-2-3-4-5-6-7", u","}),
              fields({u"44", u"no-mac"})},
             u'\t') +
          u"\t\t\t\v",
      &read);
  EXPECT_EQ(read, (CGlobalAPGatewayMapMemo::Map{
                      {u"11", {{kA}, {}}}, {u"22", {{}, {kA}}}, {u"33", {{kB}, {}}}, {u"44", {}}}));
  ParseGatewayMap(u"", &read);
  ParseGatewayMap(WString(100'000, u'\t'), &read);
  EXPECT_EQ(read.size(), 4u);
}

TEST_F(GatewayMemo, DomainControllersAreReadOnceFromTheirValue) {
  auto& memo = CGlobalDCInfoMemo::GetInstance();
  Store(u"DCInfo", u"Office\vtrue\vdc1\tLab\vTRUE\tbare\t\tOffice\vfalse\tLab\vtrue\vdc2\vextra");
  memo.Load();
  auto records = memo.GetRecords();
  ASSERT_EQ(records.size(), 2u);
  EXPECT_FALSE(records[u"Office"].flag);
  EXPECT_EQ(records[u"Office"].text, u"dc1") << "a row without a text keeps the earlier one";
  EXPECT_TRUE(records[u"Lab"].flag);
  EXPECT_EQ(records[u"Lab"].text, u"dc2");

  Store(u"DCInfo", u"");
  memo.Load();
  EXPECT_EQ(memo.GetRecords().size(), 2u);
  memo.Clear();
  memo.Load();
  EXPECT_TRUE(memo.GetRecords().empty());
}

}  // namespace
}  // namespace corvane
