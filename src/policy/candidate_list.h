#pragma once
#include "store/ap_list_row.h"
#include "wlan/wlan_interface.h"

namespace corvane {

// Entries that count in this round: in the newest scan, missing for fewer than 3, or connected.
BssEntryList EntriesInRange(CWlanInterface& adapter);
BssEntryList EntriesInRange(CWlanInterface& adapter, bool connected, const MacAddress& bssid);

// Removes what may not be a candidate, the rows of the deny list among it, and sorts, best first;
// equal entries end up in the reverse of their earlier order. What is removed is told to those who
// watch `adapter`, by its index, and goes to *passedOver.
void KeepCandidates(BssEntryList* entries, const ApListRows& denied, const ScoreContext& scores,
                    int adapter, std::vector<PassedOver>* passedOver);
void SortCandidates(BssEntryList* entries, bool preferPrivate, const ScoreContext& scores);
// Keeps the access points of one network (the case of ASCII letters makes no difference), and those
// that a row of the allow list names.
void KeepNetwork(BssEntryList* entries, WStringView ssid, int adapter,
                 std::vector<PassedOver>* passedOver);
void KeepAllowed(BssEntryList* entries, const ApListRows& rows, int adapter,
                 std::vector<PassedOver>* passedOver);
// What `all` has beyond the candidates, less the networks that the system's filters deny; by score,
// then by quality.
BssEntryList OtherEntries(const BssEntryList& all, const BssEntryList& candidates,
                          const ScoreContext& scores);

// The names of the networks in the list as a JSON array: the connected one first and once, every
// other entry's as it comes. *connectedFound tells whether the connected one is in the list.
WString NetworksInRangeJson(const BssEntryList& entries, WStringView connectedSsid,
                            bool* connectedFound);

// Bluetooth activity lasts until this tick; 0 for none.
constexpr bool IsBluetoothActive(std::uint64_t endTick, std::uint64_t now) {
  return endTick != 0 && endTick > now;
}

}  // namespace corvane
