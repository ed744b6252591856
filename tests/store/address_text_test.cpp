#include "store/address_text.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(MacText, IsReadFieldByField) {
  const struct {
    const char16_t* text;
    bool six;
    MacAddress mac;
  } cases[] = {
      {u"00-11-22-aa-Bb-ff", true, {0x00, 0x11, 0x22, 0xAA, 0xBB, 0xFF}},
      {u"1-2-3-4-5-1ff", true, {1, 2, 3, 4, 5, 0xFF}},  // the low byte
      {u"xx-1-2-3-4-5", true, {0, 1, 2, 3, 4, 5}},
      {u"1-2-3-4-5-6-", true, {1, 2, 3, 4, 5, 6}},  // no field behind the last separator
      {u"1--3-4-5-6", true, {1, 0, 3, 4, 5, 6}},
      {u"1-2-3-4-5", false, {}},
      {u"1-2-3-4-5-6-7", false, {}},
      {u"00:11:22:33:44:55", false, {}},
      {u"", false, {}},
      {u"any", false, {}},
  };
  for (const auto& one : cases) {
    MacAddress mac{};
    EXPECT_EQ(MacStringToBinary(u'-', one.text, &mac), one.six) << Narrow(one.text);
    if (!one.six) continue;
    EXPECT_EQ(mac, one.mac) << Narrow(one.text);
  }
  EXPECT_EQ(MacText({0x0A, 0, 0xFF, 1, 2, 3}), u"0a-00-ff-01-02-03");
}

TEST(GuidText, ComesBackAndRefusesOtherShapes) {
  constexpr char16_t kText[] = u"{01234567-89AB-CDEF-0123-456789ABCDEF}";
  platform::GUID guid;
  ASSERT_TRUE(GuidFromText(kText, &guid));
  EXPECT_EQ(GuidText(guid), kText);
  for (const char16_t* text :
       {u"", u"01234567-89AB-CDEF-0123-456789ABCDEF", u"{01234567-89AB-CDEF-0123-456789ABCDEF",
        u"{01234567-89AB-CDEF-0123-456789ABCDEG}", u"{01234567x89AB-CDEF-0123-456789ABCDEF}",
        u"{01234567-89AB-CDEF-0123-456789ABCDEF} "}) {
    EXPECT_FALSE(GuidFromText(text, &guid)) << Narrow(text);
  }
}

}  // namespace
}  // namespace corvane
