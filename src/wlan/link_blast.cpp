// How much the adapter's link carries at this moment.

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "monitors/adapters_addresses.h"
#include "platform/ip_types.h"
#include "probes/icmp_helper_singleton.h"
#include "wlan/wlan_interface.h"

namespace corvane {

namespace {

constexpr std::uint64_t kBlastLog = DBG(42);
constexpr double kBlastSecs = 1.0;

std::string Narrow(const WString& address) { return WideToUtf8(address); }

}  // namespace

void CWlanInterface::DoBlast(CAdaptersAddresses* adapters) {
  if (!adapters) return;
  const bool done = Contained("CWlanInterface", "DoBlast", false, [&] {
    BlastGateway(*adapters);
    return true;
  });
  if (!done) m_BlastMbps = 0.0;
}

void CWlanInterface::BlastGateway(CAdaptersAddresses& adapters) {
  std::uint32_t total = 0, lanUp = 0;
  const std::uint32_t connected = adapters.CountConnectedAdapters(&total, &lanUp);
  const IPInfo info = m_Link.Addresses();
  auto& helper = CICMPHelperSingleton::GetInstance();
  if (!info.ip4Gateways.empty()) {
    const std::string host = Narrow(Ip4Text(info.ip4Gateways.front()));
    const std::string own = info.ip4.empty() ? "" : Narrow(Ip4Text(info.ip4.front()));
    std::string mask;
    if (!adapters.GetIP4MaskFromAdaptersInfo(static_cast<std::int32_t>(m_Adapter.OsIfIndex()), own,
                                             &mask)) {
      LOG_ERROR(
          u"CWlanInterface::DoBlast:[IfIndex=%i] asas->GetIP4MaskFromAdaptersInfo(...%S) failed\n",
          m_Adapter.OsIfIndex(), own);
      mask.clear();
    }
    m_BlastMbps =
        helper.blast(m_Adapter.OsIfIndex(), host, mask, platform::AF_INET, kBlastSecs, connected);
    LOG_DEBUG(kBlastLog, u"--------------------------> blast [%S][IP4][count=%u] results: %lf\n",
              host, connected, m_BlastMbps.load());
  } else if (!info.ip6Gateways.empty()) {
    const std::string host = Narrow(Ip6Text(info.ip6Gateways.front()));
    m_BlastMbps =
        helper.blast(m_Adapter.OsIfIndex(), host, "", platform::AF_INET6, kBlastSecs, connected);
    LOG_DEBUG(kBlastLog, u"--------------------------> blast [%S][IP6][count=%u] results: %lf\n",
              host, connected, m_BlastMbps.load());
  } else {
    LOG_ERROR(u"CWlanInterface::DoBlast:[IfIndex=%i] NO GATEWAY IP ADDRESSES?\n",
              m_Adapter.OsIfIndex());
  }
}

}  // namespace corvane
