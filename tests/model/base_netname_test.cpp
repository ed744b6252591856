#include "model/base_netname.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(StripBandWord, RemovesTheFirstWordThatHitsEverywhere) {
  const std::pair<WStringView, WStringView> cases[] = {
      {u"Home-5G", u"Home"},
      {u"Home-2.4GHz", u"Home"},
      {u"Home 5G ", u"Home"},
      {u"Casa5Gente", u"Casaente"},
      {u"Net-5g-2g", u"Net-2g"},
      {u"a5gb5g", u"ab"},
      {u"5", u"5"},
      {u"5g", u""},
      {u"", u""},
      {u"-5GHz", u""},
      {u"2.4G net", u" net"},
      {u"Home \t", u"Home \t"},  // untouched: no word
      {u"x-2ghz\v\f\r\n", u"x"},
      {u"Caf\u00C9-5G", u"Caf\u00C9"},
  };
  for (const auto& [text, expected] : cases) {
    WString name(text);
    StripBandWord(&name);
    EXPECT_EQ(Narrow(name), Narrow(expected)) << Narrow(text);
  }
}

}  // namespace
}  // namespace corvane
