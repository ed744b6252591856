#pragma once
// What an adapter's present connection is.

#include <atomic>
#include <vector>

#include "monitors/ip_address.h"
#include "store/address_text.h"
#include "wlan/adapter_identity.h"

namespace corvane {

// Facts of a connection, as one query gave them.
struct ConnectionFacts {
  bool connected = false;
  WString ssid;
  platform::DOT11_SSID rawSsid;
  MacAddress bssid{};
  std::uint32_t quality = 0;  // 0 to 100
};

// The connection as marks and scores of entries take it.
struct LinkSeen {
  bool connected = false;
  MacAddress bssid{};
  std::uint32_t quality = 0;  // 0 to 100, as the association has it

  bool IsTo(const MacAddress& other) const { return connected && bssid == other; }
  friend bool operator==(const LinkSeen&, const LinkSeen&) = default;
};

// What an adapter's present connection has of addresses.
struct IPInfo {
  WString dnsSuffix;
  WString domainController;  // of the domain that the suffix names; empty where there is none
  std::vector<Ip4Address> ip4, ip4Gateways;
  std::vector<Ip6Address> ip6, ip6Gateways;
  MacList ip4GatewayMacs, ip6GatewayMacs;

  bool HasGatewayMacs() const { return !ip4GatewayMacs.empty() || !ip6GatewayMacs.empty(); }
};

// What the lock of the link guards, for a reader of more than one field.
struct LinkState {
  platform::WLAN_CONNECTION_ATTRIBUTES m_ConnAttrs;     // of the last query that was kept
  MacAddress m_connected_dot11Bssid{};                  // of the last connection round
  MacAddress m_connected_dot11Bssid_if_we_initiated{};  // zero for a connection of somebody else
  WString m_last_connected_ssid;
  IPInfo m_IPInfo;
};

// The worker and the platform's thread write it, all threads read it. Each step is one under a lock
// of its own, which is held for a copy.
class AdapterLink {
 public:
  explicit AdapterLink(const AdapterIdentity& adapter) : m_Adapter(adapter) {}

  LinkState Get() const;

  // Asks the platform; throws Exception, as a disconnected adapter makes it. With `copy` the
  // attributes stay, and a failure forgets the connection.
  void QueryCurrentConnection(platform::WLAN_CONNECTION_ATTRIBUTES* attrs, bool copy);
  bool GetConnectedSSID(ConnectionFacts* facts);  // false instead of a throw
  std::uint32_t QueryChannel();                   // throws Exception

  bool IsConnected() const { return m_bIsConnected; }
  LinkSeen Seen() const;
  void NoteDisconnected() { m_bIsConnected = false; }
  void ClearConnected();  // forgets the connected flag and the peak quality
  std::uint32_t MaxSignalQuality() const { return m_MaxSignalQuality; }
  std::uint32_t Channel() const { return m_CurrentChannel; }  // of the last QueryChannel
  platform::WLAN_CONNECTION_ATTRIBUTES ConnAttrs() const;

  MacAddress ConnectedBssid() const;
  bool SetConnectedBssid(const MacAddress& bssid);  // true: another BSSID than before
  void ClearConnectedBssid();                       // and what the connection had of addresses
  MacAddress OwnBssid() const;                      // zero for a connection of somebody else
  void SetOwnBssid(const MacAddress& bssid);

  WString LastConnectedSsid() const;
  bool SetLastConnectedSsid(WStringView ssid);  // true: another SSID than before
  // Empties it; any thread, without a lock.
  void ForgetLastConnectedSsid() { m_bLastSsidForgotten = true; }
  std::uint64_t TimeOfLastConnectedSsid() const { return m_time_of_last_connected_ssid; }
  void StampLastConnectedSsid();

  // The network list has a private network among the adapter's connections.
  bool IsConnectedToPrivateNetwork() const;

  std::uint64_t DisconnectedAgeMs() const;      // 0 while connected
  void SetDisconnectedTick(bool disconnected);  // stamps it unless it is set, or clears it

  // The score of the connection by itself, for rounds in which the model has no entry of it.
  std::int32_t BackupScore() const { return m_backup_score; }
  void SetBackupScore(std::int32_t score) { m_backup_score = score; }

  // Reads the addresses anew; may ask the network. A failed call leaves its list empty; false when
  // there is no list of adapters at all.
  bool RefreshIPInfo();
  void ForgetIPInfo();
  IPInfo Addresses() const;
  bool HasGatewayMacs() const;
  void DumpIPAddresses() const;  // to the log

 private:
  const AdapterIdentity& m_Adapter;
  mutable CCritSec m_Lock{"interface state", LockRank::kLeaf};
  LinkState m_State;                              // under m_Lock
  std::atomic<bool> m_bLastSsidForgotten{false};  // it counts as empty until it is set again
  std::atomic<bool> m_bIsConnected{false};        // the last query succeeded
  std::atomic<std::uint32_t> m_CurrentChannel{0};
  std::atomic<std::uint32_t> m_MaxSignalQuality{0};             // of the present connection
  std::atomic<std::uint64_t> m_time_of_last_connected_ssid{0};  // tick
  std::atomic<std::uint64_t> m_disconnected_tick{0};
  std::atomic<std::int32_t> m_backup_score{-1};
};

}  // namespace corvane
