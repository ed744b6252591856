#include "foundation/text.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Text, Utf8AndUtf16BothWays) {
  const struct {
    std::string_view utf8;
    WStringView wide;
  } cases[] = {
      {"", u""},
      {"Office 5G", u"Office 5G"},
      {"\xC3\xA9\xDF\xBF", u"\u00E9\u07FF"},
      {"\xE0\xA0\x80\xE2\x82\xAC\xEF\xBF\xBF", u"\u0800\u20AC\uFFFF"},
      {"\xF0\x90\x80\x80\xF0\x9F\x98\x80\xF4\x8F\xBF\xBF", u"\U00010000\U0001F600\U0010FFFF"},
      {std::string_view("a\0b", 3), WStringView(u"a\0b", 3)},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Utf8ToWide(c.utf8), c.wide);
    EXPECT_EQ(WideToUtf8(c.wide), c.utf8);
  }
}

TEST(Text, EachBadByteOrUnitBecomesOneReplacement) {
  const struct {
    std::string_view utf8;
    WStringView wide;
  } cases[] = {
      {"\xFFz", u"\uFFFDz"},
      {"\x80\xBF", u"\uFFFD\uFFFD"},
      {"\xC3", u"\uFFFD"},  // ends too early
      {"\xE2\x82", u"\uFFFD\uFFFD"},
      {"\xE2\x82z", u"\uFFFD\uFFFDz"},                    // broken off
      {"\xC0\xAF\xC1\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // overlong
      {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // over U+10FFFF
      {"\xF8\x88\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Utf8ToWide(c.utf8), c.wide) << testing::PrintToString(c.utf8);

  const char16_t lone[] = {0xD800, u'a', 0xDC00, 0xD83D, 0xD83D, 0xDE00, 0xDBFF};
  EXPECT_EQ(WideToUtf8(WStringView(lone, std::size(lone))),
            "\xEF\xBF\xBD"
            "a"
            "\xEF\xBF\xBD\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD");
}

TEST(Text, BytesAndLowBytes) {
  EXPECT_EQ(Narrow(u"a\u01E9\u20AC"), "a\xE9\xAC");
  EXPECT_EQ(Widen("a\xE9"), u"a\u00E9");
  EXPECT_EQ(ToLower(u"AZ@[\u00C9"), u"az@[\u00C9");
  EXPECT_EQ(ToLower(std::string_view("Ab`{")), "ab`{");
  EXPECT_TRUE(EqualsIgnoreCase(u"OfFice", u"oFfICE"));
  EXPECT_FALSE(EqualsIgnoreCase(u"office", u"offic"));
  EXPECT_FALSE(EqualsIgnoreCase(u"[", u"{"));
}

}  // namespace
}  // namespace corvane
