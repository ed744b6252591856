// Learning the rate gates of a connection.

#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "wlan/rate_gate.h"
#include "wlan/wlan_interface.h"

namespace corvane {

void CWlanInterface::ProcessIdleThresholds() {
  const CSmartPointer<CInterfacePDH> pdh = Pdh();
  if (!pdh || pdh->GetFirstIdleTick() == 0 || pdh->IsIdleSettled()) return;
  const CSmartPointer<CQUAYInterfaceConfig> config = m_Adapter.Config();

  const std::uint64_t age = Os().clock.GetTickCount64() - pdh->GetFirstIdleTick();
  const TrickleMeasure measure{static_cast<double>(age) / 1000.0, pdh->GetPercentAboveLow(),
                               pdh->GetIdleMean(), GetTrafficMbps()};
  const RateGates now{config->m_rate_gate_high, config->m_rate_gate_low};
  const GateLearning learning =
      LearnRateGates(measure, now, {kRateGateHighStart, kRateGateLowStart});

  if (learning.learned) {
    config->m_rate_gate_high = learning.learned->high;
    config->m_rate_gate_low = learning.learned->low;
    LOG_ADAPTER(
        m_Adapter.Idx(), DBG(36) | DBG(37),
        u"[%i] CWlanInterface::ProcessIdleThresholds: age %0.1lf secs, %0.1lf percent above, mean "
        u"%0.3lf: gates %0.3lf/%0.3lf --> %0.3lf/%0.3lf\n",
        m_Adapter.Idx(), measure.ageSecs, measure.percentAboveLow, measure.mean, now.high, now.low,
        learning.learned->high, learning.learned->low);
  }
  if (learning.settled) {
    pdh->SetIdleSettled(true);
    LOG_ADAPTER(
        m_Adapter.Idx(), DBG(36) | DBG(37),
        u"[%i] CWlanInterface::ProcessIdleThresholds: age %0.1lf secs, rate %0.3lf: SETTLED\n",
        m_Adapter.Idx(), measure.ageSecs, measure.rate);
  }
}

}  // namespace corvane
