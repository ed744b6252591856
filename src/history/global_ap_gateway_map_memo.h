#pragma once
#include <map>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "store/address_text.h"

namespace corvane {

// MAC addresses of the gateways behind an access point, in the order in which they were learned.
struct GatewayMacs {
  MacList ip4;
  MacList ip6;
  bool IsEmpty() const { return ip4.empty() && ip6.empty(); }
  friend bool operator==(const GatewayMacs&, const GatewayMacs&) = default;
};

// Remembers the gateways last seen behind each BSSID, past the end of the process: the registry
// value GatewayMacs. For any thread; taken inside the interface lock.
class CGlobalAPGatewayMapMemo {
 public:
  using Map = std::map<WString, GatewayMacs, std::less<>>;

  static CGlobalAPGatewayMapMemo& GetInstance() {
    return Singleton<CGlobalAPGatewayMapMemo>::GetInstance();
  }

  void Load();   // once until Clear
  void Clear();  // the registry value stays
  // Writes the registry value only when the gateways of this BSSID differ from what is known.
  void Update(WStringView bssidText, const MacList& ip4, const MacList& ip6);
  // A copy of the record. An unknown BSSID gets an empty one, which is stored with the next change.
  GatewayMacs LookUp(WStringView bssidText);
  void Dump();  // to the log

 private:
  friend class Singleton<CGlobalAPGatewayMapMemo>;
  CGlobalAPGatewayMapMemo() = default;

  CCritSec m_Lock{"gateway memo", LockRank::kMaps};
  bool m_bLoaded = false;
  Map m_Records;
};

// The text of the registry value: records separated by TAB, their fields (BSSID, IPv4, IPv6) by VT,
// MACs by comma, at most 400 of each and no more than the registry gives back: the first records in
// key order fall out. An empty list leaves no field behind.
WString GatewayMapText(const CGlobalAPGatewayMapMemo::Map& records);
// Reads such a text; what can't be read is passed over.
void ParseGatewayMap(WStringView text, CGlobalAPGatewayMapMemo::Map* records);

}  // namespace corvane
