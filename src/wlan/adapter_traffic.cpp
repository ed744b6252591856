#include "wlan/adapter_traffic.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "monitors/adapters_addresses.h"
#include "platform/clock_api.h"
#include "platform/ip_types.h"
#include "platform/platform.h"
#include "probes/icmp_helper_singleton.h"
#include "rules/rate_gate.h"

namespace corvane {

namespace {

constexpr std::uint64_t kGateLog = DBG(36) | DBG(37);
constexpr std::uint64_t kBlastLog = DBG(42);
constexpr double kBlastSecs = 1.0;

std::string Narrow(const WString& address) { return WideToUtf8(address); }

}  // namespace

void AdapterTraffic::Initialize() {
  if (!m_Adapter.HasOsIfIndex()) return;
  const auto config = m_Adapter.Config();
  m_pInterfacePDH.CreateObject()->Initialize(m_Adapter.OsIfIndex(), m_Adapter.Idx(),
                                             config->m_rate_gate_high, config->m_rate_gate_low);
}

double AdapterTraffic::Mbps() const {
  return m_pInterfacePDH ? m_pInterfacePDH->GetTxMbps() + m_pInterfacePDH->GetRxMbps() : 0.0;
}

void AdapterTraffic::Poll() {
  if (m_pInterfacePDH) m_pInterfacePDH->PollPDHCollection();
}

void AdapterTraffic::ProcessIdleThresholds() {
  const CSmartPointer<CInterfacePDH> pdh = Pdh();
  if (!pdh || pdh->GetFirstIdleTick() == 0 || pdh->IsIdleSettled()) return;
  const CSmartPointer<CQUAYInterfaceConfig> config = m_Adapter.Config();

  const std::uint64_t age = Os().clock.GetTickCount64() - pdh->GetFirstIdleTick();
  const TrickleMeasure measure{static_cast<double>(age) / 1000.0, pdh->GetPercentAboveLow(),
                               pdh->GetIdleMean(), Mbps()};
  const RateGates now{config->m_rate_gate_high, config->m_rate_gate_low};
  const GateLearning learning =
      LearnRateGates(measure, now, {kRateGateHighStart, kRateGateLowStart});

  if (learning.learned) {
    config->m_rate_gate_high = learning.learned->high;
    config->m_rate_gate_low = learning.learned->low;
    LOG_ADAPTER(
        m_Adapter.Idx(), kGateLog,
        u"[%i] CWlanInterface::ProcessIdleThresholds: age %0.1lf secs, %0.1lf percent above, mean "
        u"%0.3lf: gates %0.3lf/%0.3lf --> %0.3lf/%0.3lf\n",
        m_Adapter.Idx(), measure.ageSecs, measure.percentAboveLow, measure.mean, now.high, now.low,
        learning.learned->high, learning.learned->low);
  }
  if (learning.settled) {
    pdh->SetIdleSettled(true);
    LOG_ADAPTER(
        m_Adapter.Idx(), kGateLog,
        u"[%i] CWlanInterface::ProcessIdleThresholds: age %0.1lf secs, rate %0.3lf: SETTLED\n",
        m_Adapter.Idx(), measure.ageSecs, measure.rate);
  }
}

void AdapterTraffic::ResetGates() {
  const auto config = m_Adapter.Config();
  config->m_rate_gate_high = kRateGateHighStart;
  config->m_rate_gate_low = kRateGateLowStart;
  if (m_pInterfacePDH) m_pInterfacePDH->ResetIdleMeasure(kRateGateHighStart, kRateGateLowStart);
}

void AdapterTraffic::DoBlast(CAdaptersAddresses* adapters) {
  if (!adapters) return;
  const bool done = Contained("CWlanInterface", "DoBlast", false, [&] {
    BlastGateway(*adapters);
    return true;
  });
  if (!done) m_BlastMbps = 0.0;
}

void AdapterTraffic::BlastGateway(CAdaptersAddresses& adapters) {
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
