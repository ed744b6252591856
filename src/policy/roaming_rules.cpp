#include "policy/roaming_rules.h"

#include "foundation/log_lines.h"

namespace corvane {

namespace {

constexpr std::uint64_t kRoamLog = DBG(24);

bool IsGateway(int index, const char* family, const MacList& gateways, const MacAddress& bssid) {
  for (std::size_t i = 0; i < gateways.size(); ++i) {
    if (gateways[i] != bssid) continue;
    LOG_ADAPTER(
        index, kRoamLog,
        u"[%i] CheckGatewayDaisyChainForRoaming: [%i][%S] MATCH: %s == [BSSID] %s - return true\n",
        index, i, family, MacText(gateways[i]), MacText(bssid));
    return true;
  }
  return false;
}

bool SameSize(int index, const char* family, const MacList& current, const MacList& candidate) {
  if (current.size() == candidate.size()) return true;
  LOG_ADAPTER(index, kRoamLog,
              u"[%i] CheckGatewaysMatchesForRoaming:[%S] LIST SIZE MISMATCH: [current] %u != %u "
              u"[candidate] - "
              u"return false\n",
              index, family, current.size(), candidate.size());
  return false;
}

bool SameMacs(int index, const char* family, const MacList& current, const MacList& candidate) {
  for (std::size_t i = 0; i < current.size(); ++i) {
    if (current[i] == candidate[i]) continue;
    LOG_ADAPTER(
        index, kRoamLog,
        u"[%i] CheckGatewaysMatchesForRoaming: [%i][%S] MISMATCH: [current] %s != %s [candidate] - "
        u"return false\n",
        index, i, family, MacText(current[i]), MacText(candidate[i]));
    return false;
  }
  return true;
}

}  // namespace

bool CheckGatewayDaisyChainForRoaming(int index, const MacList& ip4, const MacList& ip6,
                                      const MacAddress& bssid) {
  return IsGateway(index, "IP4", ip4, bssid) || IsGateway(index, "IP6", ip6, bssid);
}

bool CheckGatewaysMatchesForRoaming(int index, const MacList& currentIp4, const MacList& currentIp6,
                                    const MacList& candidateIp4, const MacList& candidateIp6) {
  if (!SameSize(index, "IP4", currentIp4, candidateIp4) ||
      !SameSize(index, "IP6", currentIp6, candidateIp6) ||
      !SameMacs(index, "IP4", currentIp4, candidateIp4) ||
      !SameMacs(index, "IP6", currentIp6, candidateIp6)) {
    return false;
  }
  LOG_ADAPTER(index, kRoamLog, u"[%i] CheckGatewaysMatchesForRoaming: returning true\n", index);
  return true;
}

bool IsRoam(const RoamFacts& facts, const std::function<GatewayMacs()>& remembered) {
  const auto& [ip4, ip6] = facts.current;
  if (facts.sameSsid) return true;
  if (!facts.gatewayRoaming) return false;
  if (CheckGatewayDaisyChainForRoaming(facts.index, ip4, ip6, facts.bssid)) return true;
  const GatewayMacs behind = facts.candidate.IsEmpty() ? remembered() : facts.candidate;
  return !behind.IsEmpty() &&
         CheckGatewaysMatchesForRoaming(facts.index, ip4, ip6, behind.ip4, behind.ip6);
}

}  // namespace corvane
