#pragma once
// The networks and access points that an adapter has heard, in one tree.

#include <optional>

#include "model/wlan_network.h"
#include "report/ap_set_memo.h"
#include "store/ap_list_row.h"
#include "wlan/adapter_link.h"

namespace corvane {

// Each operation takes the interface lock, which guards the tree. Entries stay until the tree is
// dropped, and a holder keeps one beyond that.
class AdapterAir {
 public:
  AdapterAir(const AdapterIdentity& adapter, const AdapterLink& link, CCritSec& interfaceLock)
      : m_Adapter(adapter), m_Link(link), m_Lock(interfaceLock) {}

  // The networks by SSID, for who holds the lock.
  NetworkMap& Networks() { return m_Networks; }
  CCritSec& Lock() { return m_Lock; }

  bool FindBssEntry(WStringView ssid, const MacAddress& bssid, CSmartPointer<CWlanBssEntry>* entry);
  // Score of a BSS in the model: -1 without it, or the backup score while connected.
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, bool bUseBackup);
  std::int32_t GetScoreFromBssEntry(std::string* log, WStringView ssid, const MacAddress& bssid);
  std::int32_t GetScoreFromBssEntry(WStringView ssid, const MacAddress& bssid, WString* phy,
                                    std::int32_t* rssi);
  // Both BSSIDs are members of one network of this adapter.
  bool IsConnectedToNetworkWithBothBssids(const MacAddress& a, const MacAddress& b);
  BssEntryList SnapshotEntries();  // a copy of every entry of every network, in map order
  void ClearNetworks();

  // What the AP lists and the Bluetooth monitor write on the entries; each round, after discovery.
  void ApplyPreferredRows(const PreferredApRows& rows);
  void ApplyDenyRows(const ApListRows& rows);
  // Gives every entry outside the 5 GHz range the penalty that its final score takes, in points.
  void SetBTPenalty(std::int32_t value);
  // Teaches the gateways of the connection to its entry and the memo, where that is switched on.
  void GatewayRoamingCheck();
  // False when the model has no such entry; the memo learns them all the same.
  bool AssignGatewayMacsToBssEntry(const WString& ssid, const MacAddress& bssid, const MacList& ip4,
                                   const MacList& ip6);

  // The tree's version, for who holds the lock: another one after each change but those that only
  // the connection and a scan make.
  std::uint64_t Version() const { return m_Version; }
  void NoteChange() { ++m_Version, ++m_Stamp; }
  // A merge has found all as it was.
  void NoteKept() { m_bKept = true; }
  // The same as the last time when merges have found all as it was since then, and no other change
  // was made. Who asks twice without a merge in between gets another one.
  std::uint64_t TakeStamp();

  // The BSS of the connection while an adapter that is before this one is there, too; zero: alone.
  void NoteShared(const MacAddress& bssid);
  // Scores (score_update.cpp): asks for the connectivity of the connection, and scores what the
  // newest lists have by what is known then.
  void UpdateAllScores();
  // Asks, for the scores that follow. Nothing: there is internet, or nobody knows.
  std::optional<WString> AskForLackOfInternet();
  void TellOfLackOfInternet(const std::optional<WString>& ssid) const;
  void ScoreEntries(const LinkSeen& link, const ScoreContext& context);
  ScoreContext GetScoreContext() const;  // of this moment
  // 0 or 1 by what the scores saw of an access point before the tree was dropped, 0xFFFFFFFF for
  // nothing.
  std::uint32_t RememberedInternet(const WString& ssid, const WString& bssidText) {
    return m_InternetMemo.GetFlag(ssid, bssidText);
  }

 private:
  std::int32_t BackupScore(WStringView ssid,
                           const MacAddress& bssid) const;  // -1 while disconnected
  void RememberConnectivity();

  const AdapterIdentity& m_Adapter;
  const AdapterLink& m_Link;
  CCritSec& m_Lock;
  NetworkMap m_Networks;        // under m_Lock
  std::uint64_t m_Version = 0;  // under m_Lock, as the next two
  std::uint64_t m_Stamp = 0;
  bool m_bKept = false;  // by a merge since the last stamp was taken
  mutable CCritSec m_SharedLock{"shared access point", LockRank::kLeaf};
  MacAddress m_Shared{};      // under m_SharedLock
  CApSetMemo m_InternetMemo;  // the connectivity that the scores saw, over a loss of the tree
};

}  // namespace corvane
