#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/wlan_types.h"

namespace corvane::lab {

// The rules by which peers choose an access point, as models of what is known of them. Each knows
// what a program on the PC would know: its link, and what its own scans hear.

// The link of the adapter as it is now.
struct PeerLink {
  int accessPoint = -1;  // by its position in the world
  std::string ssid;
  double dbm = 0.0;
  int band = 0;  // 2, 5 or 6
};

// What a scan has heard of an access point whose network the PC has a profile of.
struct PeerEntry {
  int accessPoint = -1;
  std::string ssid;
  double dbm = 0.0;
  int band = 0;
  // Of the newest generation that both sides speak.
  platform::LONG phy = 0;
  int widthMhz = 20, streams = 1;
  std::optional<int> utilisation;     // of the load element, 0 to 255
  std::optional<int> mobilityDomain;  // of fast transition
};

class PeerRule {
 public:
  virtual ~PeerRule() = default;
  // Once a second while the adapter is connected: whether to scan now. Never while a scan runs.
  virtual bool WantsScan(std::uint64_t ms, const PeerLink& link) = 0;
  // A scan has ended: the access point to go to, or nothing.
  virtual std::optional<int> Choose(std::uint64_t ms, const PeerLink& link,
                                    const std::vector<PeerEntry>& heard) = 0;
  // The connect that it asked for has failed: it leaves that one alone for a time that grows.
  void OnFailed(std::uint64_t ms, int accessPoint);

 protected:
  // How long it leaves one alone after the first failure, the second and so on.
  explicit PeerRule(std::vector<std::uint64_t> pausesMs) : m_PausesMs(std::move(pausesMs)) {}
  bool IsBlocked(std::uint64_t ms, int accessPoint) const;

 private:
  struct Failures {
    std::size_t count = 0;
    std::uint64_t untilMs = 0;
  };
  const std::vector<std::uint64_t> m_PausesMs;
  std::map<int, Failures> m_Failures;
};

// The strongest of all known networks, each 30 s, when it is 6 dB stronger.
std::unique_ptr<PeerRule> StrongestRule();
// wpa_supplicant's, with the background scans that NetworkManager asks for: each 30 s below -65
// dBm, else each 300 s; with one access point in sight below -70 dBm, else once a day.
std::unique_ptr<PeerRule> SupplicantRule();
// iwd's: it looks around when the signal has been below -70 dBm (2.4 GHz) or -76 dBm for 5 s, and
// again after 60 s.
std::unique_ptr<PeerRule> IwdRule();

// The pure parts, for whoever looks at them one by one.

// The supplicant's estimate of a link's throughput in kbit/s: by one stream, even between the rows
// of its table.
double EstimateKbps(const PeerEntry& entry);
// Whether the supplicant ranks `a` above `b`.
bool SupplicantPrefers(const PeerEntry& a, const PeerEntry& b);
// Whether the supplicant leaves `current` for the one that it ranks first.
bool SupplicantRoams(const PeerEntry& current, const PeerEntry& selected);
// iwd's rank of an access point; `mobilityDomain` is that of the link.
double IwdRank(const PeerEntry& entry, std::optional<int> mobilityDomain);

}  // namespace corvane::lab
