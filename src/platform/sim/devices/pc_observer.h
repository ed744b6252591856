#pragma once
#include <string>

#include "platform/wlan_types.h"

namespace corvane::platform::sim {

// Who caused something: the program under test through the seam, somebody else on the machine (the
// world's timeline), or the adapter's driver.
enum class Cause { kProgram, kOutside, kDriver };

// Told what happens on the simulated PC, on the thread on which it happens, with no lock of the
// devices held. `adapter` is the position in the world's list of adapters.
class IPcObserver {
 public:
  virtual ~IPcObserver() = default;
  virtual void OnScanStarted(int adapter, Cause cause, const std::string& ssid) {
    (void)adapter, (void)cause, (void)ssid;
  }
  virtual void OnScanEnded(int adapter, Cause cause, bool good) {
    (void)adapter, (void)cause, (void)good;
  }
  virtual void OnConnectStarted(int adapter, Cause cause, const std::string& ssid) {
    (void)adapter, (void)cause, (void)ssid;
  }
  // `reason` is 0 for a connection made; `bssid` as text "aa-bb-cc-dd-ee-ff".
  virtual void OnConnectEnded(int adapter, Cause cause, const std::string& ssid,
                              const std::string& bssid, DWORD reason) {
    (void)adapter, (void)cause, (void)ssid, (void)bssid, (void)reason;
  }
  virtual void OnDisconnected(int adapter, Cause cause, const std::string& ssid) {
    (void)adapter, (void)cause, (void)ssid;
  }
  virtual void OnRoamed(int adapter, Cause cause, const std::string& ssid,
                        const std::string& bssid) {
    (void)adapter, (void)cause, (void)ssid, (void)bssid;
  }
  // An entry of the world's timeline was carried out; `text` says it in a few words.
  virtual void OnTimeline(const std::string& text) { (void)text; }
  // A client of the world has read a message: a reply of the service or an event. UTF-8.
  virtual void OnClientMessage(const std::string& client, const std::string& text) {
    (void)client, (void)text;
  }
};

}  // namespace corvane::platform::sim
