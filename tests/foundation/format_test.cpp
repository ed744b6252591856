#include "foundation/format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

#include "foundation/exception.h"

namespace corvane {
namespace {

struct Case {
  WString got;
  WStringView expected;
};

void Check(std::initializer_list<Case> cases) {
  int number = 0;
  for (const Case& c : cases) {
    EXPECT_EQ(Narrow(c.got), Narrow(c.expected)) << "case " << number;
    ++number;
  }
}

enum class Colour : std::uint16_t { kBlue = 3 };

TEST(Format, WholeNumbers) {
  const std::int32_t minimum = std::numeric_limits<std::int32_t>::min();
  const std::int64_t minimum64 = std::numeric_limits<std::int64_t>::min();
  Check({
      {Format(u"%i %d %u %lu %ld", -1, 2, 3u, std::uint32_t{4}, std::int32_t{-5}), u"-1 2 3 4 -5"},
      {Format(u"%I64u %I64d %llu %lld %zu %I64x", ~std::uint64_t{0}, minimum64, std::uint64_t{7},
              std::int64_t{-7}, std::size_t{9}, std::uint64_t{0xABCDEF0123}),
       u"18446744073709551615 -9223372036854775808 7 -7 9 abcdef0123"},
      {Format(u"%i|%ld", minimum, minimum), u"-2147483648|-2147483648"},
      // A 32-bit value keeps its 32 bits under the other sign.
      {Format(u"%u %x %lu", -1, -1, minimum), u"4294967295 ffffffff 2147483648"},
      {Format(u"%i %li", 0x80070005u, std::uint32_t{0xFFFFFFFF}), u"-2147024891 -1"},
      // A 64-bit value under a 32-bit format is not cut.
      {Format(u"%lu %i %08lx", std::uint64_t{5'000'000'000}, std::int64_t{-5'000'000'000},
              std::uint64_t{0x123456789}),
       u"5000000000 -5000000000 123456789"},
      {Format(u"%i %i %u %i", true, Colour::kBlue, std::uint8_t{200}, std::uint16_t{65535}),
       u"1 3 200 65535"},
      {Format(u"%02x-%02x-%02X %04x %08x 0x%x %#x %#X %#x %o %#o", 0x0A, 0xFF, 0xFF, 0x12, 0xBEEF,
              16, 16, 255, 0, 8, 8),
       u"0a-ff-FF 0012 0000beef 0x10 0x10 0XFF 0 10 010"},
      {Format(u"%08I64x %02u %03lu %02i", std::uint64_t{0x1F}, 5, 7u, -5), u"0000001f 05 007 -5"},
      {Format(u"[% 3u][%3u][%-3u][%+i][%+i][% i][%05i][%-05i][%5i]", 7u, 7u, 7u, 5, -5, 5, -42, -42,
              -42),
       u"[  7][  7][7  ][+5][-5][ 5][-0042][-42  ][  -42]"},
      {Format(u"[%.3i][%5.3i][%05.3i][%.0i][%-6.4x]", 7, -7, 7, 0, 0xAB),
       u"[007][ -007][  007][][00ab  ]"},
      {Format(u"[%*i][%-*i][%*i][%.*i]", 4, 7, 4, 7, -4, 7, 3, 7), u"[   7][7   ][7   ][007]"},
  });
}

TEST(Format, TextOfEitherWidth) {
  const char16_t* const none = nullptr;
  const char* const narrowNone = nullptr;
  char16_t unended[4] = {u'a', u'b', u'c', u'd'};
  char ended[6] = {'x', 'y', '\0', 'z', 'z', 'z'};
  Check({
      {Format(u"%s|%S|%hs|%ls", u"wide", "narrow", "short", u"long"), u"wide|narrow|short|long"},
      {Format(u"%s|%S", "narrow", u"wide"), u"narrow|wide"},
      {Format(u"%s %S", WString(u"w"), std::string("n")), u"w n"},
      {Format(u"[% 16s][% 10s][%16s][%-6s][%.2s][%6.2s]", u"office", "x", u"", u"ab", u"abc",
              u"abc"),
       u"[          office][         x][                ][ab    ][ab][    ab]"},
      {Format(u"%s %S", none, narrowNone), u"(null) (null)"},
      {Format(u"%s %S", unended, ended), u"abcd xy"},
      {Format(u"%c%c%C%5c|%-3c|", 'a', u'b', 99, u'd', 'e'), u"abc    d|e  |"},
  });
  EXPECT_EQ(Format(u"%S", "\xE9"), u"\u00E9");
  EXPECT_EQ(Format(u"%c%s", char16_t{0x20AC}, u"\u4E2D"), u"\u20AC\u4E2D");
  EXPECT_EQ(FormatA("%s-%S-%ls-%i", "n", u"w", u"l", 5), "n-w-l-5");
  EXPECT_EQ(FormatA("%S", u"\u20AC"), "\xAC");
  EXPECT_EQ(Format(u"%s", std::u16string(5000, u'x')).size(), 5000u);
}

TEST(Format, RealNumbersAndAddresses) {
  Check({
      {Format(u"%f %lf %Lf %0.2lf %0.1lf %5.1f %g", 0.5, -1.25, 2.5L, 3.14159, 2.96, 7.25, 0.0001),
       u"0.500000 -1.250000 2.500000 3.14 3.0   7.2 0.0001"},
      {Format(u"%03.3lf %02.lf [%8.2f] [%-8.2f] %+.1f %08.3f", 1.0, 7.6, 1.5, 1.5, 1.5, -1.5),
       u"1.000 08 [    1.50] [1.50    ] +1.5 -001.500"},
      {Format(u"%03.3Le %e", 12345.678L, 0.0), u"1.235e+04 0.000000e+00"},
      {Format(u"%f", INFINITY), u"inf"},
      {Format(u"0x%p 0x%p", reinterpret_cast<void*>(0xAB12), static_cast<void*>(nullptr)),
       u"0x000000000000AB12 0x0000000000000000"},
  });
  EXPECT_EQ(Format(u"%f", 1e308).size(), 309u + 7u);
  EXPECT_EQ(Format(u"%.999999f", 1.0).size(), 2u + 512u);
}

TEST(Format, MismatchesPrintTheValueByItsOwnType) {
  Check({
      {Format(u"%s %S %f %0.2lf", 5, -6, 7u, std::int64_t{8}), u"5 -6 7 8"},
      {Format(u"%i %u %08x [%6lu]", u"text", "narrow", u"hex", u"ab"),
       u"text narrow      hex [    ab]"},
      {Format(u"%i %s", 1.5, 2.5), u"1.500000 2.500000"},
      {Format(u"%s %p", reinterpret_cast<void*>(1), 0xABCD), u"0000000000000001 000000000000ABCD"},
      {Format(u"%i %s %lu", 1), u"1 (missing) (missing)"},
      {Format(u"one", 1, u"x"), u"one"},
      {Format(u"%*s|%i", u"no width", 3), u"no width|3"},
  });
}

TEST(Format, WhatIsNoConversionStandsAsItIs) {
  Check({
      {Format(u"100%% %"), u"100% %"},
      {Format(u"%y %q5 %n %-", 1), u"%y %q5 %n %-"},
      {Format(u"%5"), u"%5"},
      {Format(u"%ll"), u"%ll"},
      {Format(u"%y%i", 4), u"%y4"},
      {Format(u""), u""},
  });
  EXPECT_EQ(Format(u"%99999999999i", 1).size(), 4096u);
  EXPECT_EQ(Format(u"%.99999999999i", 1).size(), 512u);
  EXPECT_EQ(Format(WStringView(u"a\0%i", 4), 5), WStringView(u"a\0"
                                                             u"5",
                                                             3));
}

TEST(Exception, CarriesTheCodeAndCutsTheMessageAt255) {
  const Exception coded("WlanScan() failed: %i", 0x80070005u);
  EXPECT_STREQ(coded.what(), "WlanScan() failed: -2147024891");
  EXPECT_EQ(coded.GetCode(), 0x80070005u);

  const Exception two("step %i failed: %i", 3, 87u);
  EXPECT_STREQ(two.what(), "step 3 failed: 87");
  EXPECT_EQ(two.GetCode(), 87u);

  const Exception plain("100%i of it");
  EXPECT_STREQ(plain.what(), "100%i of it");
  EXPECT_EQ(plain.GetCode(), 0u);

  std::string text(254, 'a');
  text += "bc";
  EXPECT_EQ(Exception(text).what(), text.substr(0, 255));
}

}  // namespace
}  // namespace corvane
