#include "store/csv_helper.h"

#include "support/pc_fixture.h"

namespace corvane {
namespace {

using CsvHelper = test::KernelTest;

TEST_F(CsvHelper, StoresTheFirstFieldOrAll) {
  const auto list = CSVHelper::CreateObject(u',');
  EXPECT_EQ(list->AddString(u",,a,b", false), 1);
  EXPECT_EQ(list->AddString(u"a", false), 0);
  EXPECT_EQ(list->AddString(u"a", true), 1);
  EXPECT_EQ(list->AddString(u"", true), -1);
  EXPECT_EQ(list->AddString(u",,,", true), -1);
  EXPECT_EQ(list->AddStringAll(u",b,,a,"), 2);
  EXPECT_EQ(list->GetString(), u"a,a,b,a");
  EXPECT_EQ(*list->GetItem(2), u"b");
  EXPECT_EQ(list->GetItem(4), nullptr);
  EXPECT_EQ(list->GetItem(static_cast<std::size_t>(-1)), nullptr);
}

TEST_F(CsvHelper, DropsTheOldestBeyondTheLimit) {
  for (const bool all : {false, true}) {
    const auto list = CSVHelper::CreateObject();
    for (int i = 0; i < 400; ++i) list->AddString(Format(u"%i", i), true);
    EXPECT_EQ(*list->GetItem(0), u"0");
    if (all) {
      list->AddStringAll(u"x\ty");
    } else {
      list->AddString(u"x", true);
    }
    EXPECT_EQ(list->GetCount(), 400u);
    EXPECT_EQ(*list->GetItem(0), all ? u"2" : u"1");
    EXPECT_EQ(*list->GetItem(399), all ? u"y" : u"x");
  }
}

}  // namespace
}  // namespace corvane
