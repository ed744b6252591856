#include "monitors/utils.h"

#include <cstddef>
#include <cstring>
#include <vector>

#include "platform/ip_helper_api.h"
#include "support/platform_test.h"

namespace corvane {
namespace {

using platform::MIB_IFROW;
using platform::MIB_IFTABLE;

class Table : public platform::IpHelperApi {
 public:
  platform::DWORD GetIfTable(MIB_IFTABLE* table, platform::ULONG* size, platform::BOOL) override {
    ++calls;
    if (fault) throw platform::PlatformFault{0xC0000005};
    const auto needed = static_cast<platform::ULONG>(offsetof(MIB_IFTABLE, table) +
                                                     rows.size() * sizeof(MIB_IFROW));
    if (growing) rows.emplace_back();
    if (*size < needed || growing) {
      *size = needed;
      return platform::ERROR_INSUFFICIENT_BUFFER;
    }
    table->dwNumEntries = claimedRows ? claimedRows : static_cast<platform::DWORD>(rows.size());
    std::memcpy(static_cast<void*>(table->table), rows.data(), rows.size() * sizeof(MIB_IFROW));
    return platform::ERROR_SUCCESS;
  }

  MIB_IFROW& Add(platform::DWORD index, WStringView name, std::string_view description) {
    MIB_IFROW& row = rows.emplace_back();
    row.dwIndex = index;
    name.copy(row.wszName, std::size(row.wszName));
    description.copy(reinterpret_cast<char*>(row.bDescr), std::size(row.bDescr));
    row.dwDescrLen = static_cast<platform::DWORD>(description.size());
    return row;
  }

  std::vector<MIB_IFROW> rows;
  platform::DWORD claimedRows = 0;
  bool fault = false;
  bool growing = false;
  int calls = 0;
};

class UtilsTest : public testing::Test {
 protected:
  static std::string Description(std::uint32_t index) {
    WString text;
    return CUtils::GetDescriptionForIfIndex(index, &text) ? Narrow(text) : "(none)";
  }

  Table table;
  test::BasicPlatform os{&table};
};

TEST_F(UtilsTest, FindsTheIndexByTheGuidInTheName) {
  table.Add(3, u"\\DEVICE\\TCPIP_", "");
  table.Add(4, u"\\DEVICE\\TCPIP_{AAAA}-x", "");
  table.Add(5, u"\\DEVICE\\TCPIP_{AAAA}", "");
  table.Add(6, u"{AAAA}", "");
  table.Add(7, std::u16string(254, u'x') + u"{}", "");  // fills the field, no NUL
  EXPECT_EQ(CUtils::GetIfIndexFromGUIDStr(u"{AAAA}"), 5u);
  EXPECT_EQ(CUtils::GetIfIndexFromGUIDStr(u"{}"), 7u);
  EXPECT_EQ(CUtils::GetIfIndexFromGUIDStr(u""), 0xFFFFFFFFu);
  EXPECT_EQ(CUtils::GetIfIndexFromGUIDStr(u"{BBBB}"), 0xFFFFFFFFu);
}

TEST_F(UtilsTest, DescriptionsOfOneModelAreNumbered) {
  table.Add(10, u"", "Wireless/AC");
  table.Add(11, u"", "Other");
  table.Add(12, u"", "Wireless/AC");
  table.Add(13, u"", std::string_view("Wireless/AC\0", 12));  // counts its NUL
  MIB_IFROW& full = table.Add(14, u"", std::string(256, 'd'));
  full.dwDescrLen = 70'000;
  EXPECT_EQ(Description(10), "Wireless_AC");
  EXPECT_EQ(Description(11), "Other");
  EXPECT_EQ(Description(12), "Wireless_AC#1");
  EXPECT_EQ(Description(13), "Wireless_AC#2");
  EXPECT_EQ(Description(14), std::string(256, 'd'));
  EXPECT_EQ(Description(15), "(none)");
}

TEST_F(UtilsTest, MacTextNeedsSixBytes) {
  MIB_IFROW& row = table.Add(1, u"", "");
  const platform::BYTE mac[] = {0x02, 0x1A, 0x2B, 0xCC, 0xDD, 0xFE, 0x77, 0x88};
  std::copy(std::begin(mac), std::end(mac), row.bPhysAddr);
  row.dwPhysAddrLen = 6;
  WString text;
  EXPECT_TRUE(CUtils::GetMacStrForIfIndex(1, &text));
  EXPECT_EQ(Narrow(text), "02-1a-2b-cc-dd-fe");
  table.rows[0].dwPhysAddrLen = 5;
  EXPECT_FALSE(CUtils::GetMacStrForIfIndex(1, &text));
  EXPECT_FALSE(CUtils::GetMacStrForIfIndex(2, &text));
}

TEST_F(UtilsTest, ATableThatLiesOrFailsHasNoMoreRowsThanItsBytes) {
  table.Add(1, u"", "one");
  EXPECT_EQ(Description(1), "one");
  EXPECT_EQ(table.calls, 1);
  table.claimedRows = 1'000'000;
  EXPECT_EQ(Description(2), "(none)");
  table.claimedRows = 0;
  table.Add(2, u"", "two");
  EXPECT_EQ(Description(2), "two");
  table.growing = true;
  EXPECT_EQ(Description(2), "(none)");
  table.growing = false;
  table.fault = true;
  EXPECT_EQ(Description(2), "(none)");
}

}  // namespace
}  // namespace corvane
