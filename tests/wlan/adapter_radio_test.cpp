#include "wlan/adapter_radio.h"

#include "wlan/fake_wlan.h"
#include "wlan/part_fixture.h"

namespace corvane::test {
namespace {

class AdapterRadioTest : public PartTest {
 protected:
  FakeWlan& wlan = Install<FakeWlan>();
};

TEST_F(AdapterRadioTest, ClassIsThatOfTheBestPhyWhereverItStands) {
  struct Case {
    std::vector<platform::LONG> phys;
    WStringView text;
  };
  const Case cases[] = {{{10, 8}, u"ax"}, {{8, 7}, u"ac"}, {{7, 6}, u"n"},       {{6, 5}, u"g"},
                        {{5, 4}, u"b"},   {{4}, u"a"},     {{9, 42}, u"802.11"}, {{}, u"802.11"}};
  for (const Case& one : cases) {
    wlan.phys = one.phys;
    AdapterRadio radio(identity);
    radio.DetermineInterfaceCapability();
    EXPECT_EQ(radio.ClassText(), one.text);
  }
}

TEST_F(AdapterRadioTest, ClassIsPublishedOnceAndAPhyThatGoesIsKept) {
  const auto published = [this] {
    WString text;
    config->GetString(u"AdapterHighestPHYClass", &text);
    return text;
  };
  AdapterRadio radio(identity);
  radio.DetermineInterfaceCapability();
  EXPECT_EQ(published(), u"ac");
  wlan.phys = {7, 8, 10};
  radio.DetermineInterfaceCapability();
  EXPECT_EQ(radio.ClassText(), u"ax");
  EXPECT_EQ(published(), u"ac");
  wlan.phys = {6};
  wlan.claims["WlanGetInterfaceCapability"] = 0xFFFFFFFF;  // more than there is room for
  radio.DetermineInterfaceCapability();
  EXPECT_EQ(radio.ClassText(), u"ax");
}

}  // namespace
}  // namespace corvane::test
