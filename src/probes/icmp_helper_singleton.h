#pragma once
#include <cstdint>
#include <string>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "platform/socket_api.h"
#include "probes/temporary_route.h"

namespace corvane {

// Measures what a link carries: floods the gateway with large ICMP packets for a while and reads
// how much the adapter really sent.
class CICMPHelperSingleton {
 public:
  static CICMPHelperSingleton& GetInstance() {
    return Singleton<CICMPHelperSingleton>::GetInstance();
  }

  // Mbps; 0.0 on any failure. `host` is the gateway in text, `maskText` the subnet's IPv4 mask
  // (empty: 255.255.255.0), `family` AF_INET or AF_INET6. With more than one connected adapter the
  // packets go through a route of their own. What goes wrong is printed, not logged: whoever asks
  // for a diagnosis reads it there. Blocks for the whole time; one blast at a time.
  double blast(std::uint32_t ifIndex, const std::string& host, const std::string& maskText,
               platform::WORD family, double seconds, std::uint32_t connectedCount);

 private:
  friend class Singleton<CICMPHelperSingleton>;
  CICMPHelperSingleton() = default;

  struct Target {
    platform::SOCKADDR_INET address;
    std::string maskText;
    std::uint32_t ifIndex = 0;
    double seconds = 0.0;
    std::uint32_t connectedCount = 0;
  };
  double Blast(const Target& target, const platform::SOCKADDR_INET& local);
  bool AddRoute(const Target& target);

  CCritSec m_Lock{"blast", LockRank::kNone};
  CTemporaryRoute m_Route;  // what the platform did not let go is tried again by the next blast
};

}  // namespace corvane
