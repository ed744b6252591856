#pragma once
#include <cstdint>
#include <list>
#include <string>
#include <unordered_map>

#include "foundation/text.h"
#include "store/address_text.h"

namespace corvane {

// The address that stands for every BSS of an SSID.
inline constexpr MacAddress kAnyMac = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

// One row of the deny or the allow list: an SSID and one of its BSSes, or all of them.
struct ApListRow {
  WString ssid;
  std::string bssid;  // as it was written: "any" or six hexadecimal pairs
  MacAddress mac{};   // kAnyMac for a wildcard; zero when `bssid` was neither

  // Four leading 0xFF are enough.
  bool IsWildcard() const {
    return mac[0] == 0xFF && mac[1] == 0xFF && mac[2] == 0xFF && mac[3] == 0xFF;
  }
  bool NamesBssid(const MacAddress& address) const { return IsWildcard() || mac == address; }
};
using ApListRows = std::list<ApListRow>;

// One row of the preferred list.
struct PreferredApRow : ApListRow {
  std::uint32_t min_lq = 0;  // link quality (0 to 100) from which the row counts
};
using PreferredApRows = std::list<PreferredApRow>;

// Some row names this BSS; the case of ASCII letters in an SSID makes no difference.
bool IsListed(const ApListRows& rows, WStringView ssid, const MacAddress& mac);

// The rows of a list by SSID, for who asks about many access points; IsListed by another way. The
// rows must stay while it is used.
class ApListIndex {
 public:
  explicit ApListIndex(const ApListRows& rows);
  bool IsListed(WStringView ssid, const MacAddress& mac) const;

 private:
  struct FoldedHash {
    std::size_t operator()(WStringView ssid) const;
  };
  struct FoldedEqual {
    bool operator()(WStringView a, WStringView b) const { return EqualsIgnoreCase(a, b); }
  };
  std::unordered_multimap<WStringView, const ApListRow*, FoldedHash, FoldedEqual> m_Rows;
};

}  // namespace corvane
