// Events about the connection that do not belong to a decision: whether its two ends match, and how
// well it is heard.

#include "elements/phy_level.h"
#include "foundation/log_lines.h"
#include "service/main_worker.h"

namespace corvane {

namespace {

constexpr std::uint64_t kEventLog = DBG(16) | DBG(21) | DBG(31);

}  // namespace

void CQUAYMainWorker::HandleQUAYSpecialEtwEvents(CWlanBssEntry* entry, const char* context) {
  if (!m_pInterface->IsConnected()) {
    ReportNoConnection(context);
  } else if (entry) {
    CompareCapabilities(*entry, context);
    ReportSignal(*entry, context);
  }
}

void CQUAYMainWorker::CompareCapabilities(CWlanBssEntry& entry, const char* context) {
  const auto association = m_pInterface->GetConnAttrs().wlanAssociationAttributes;
  CapabilityMismatch ends;
  ends.adapterClass = m_pInterface->AdapterClassText();
  ends.apClass = entry.GetPhyMode();
  ends.capability1 = PhyLevelOf(ends.adapterClass);
  ends.capability2 = PhyLevelOf(ends.apClass);
  ends.score = entry.GetScore(false, m_pInterface->GetScoreContext());
  ends.ssid = entry.m_SSIDW;
  ends.bssid = entry.m_BSSIDText;
  ends.txKbps = association.ulTxRate;
  ends.rxKbps = association.ulRxRate;

  const auto note = [&](const char16_t* relation, const char16_t* remark = u"") {
    LOG_ADAPTER(m_ConfigIdx, kEventLog,
                u"\n[%i] CQUAYMainWorker::HandleQUAYSpecialEtwEvents[%S]: %s<nic,ap>: %s %s %s%s\n",
                m_ConfigIdx, context,
                *remark             ? u"IGNORE CAP MISMATCH"
                : *relation == u'=' ? u"CAP MATCH"
                                    : u"CAP MISMATCH",
                ends.adapterClass, relation, ends.apClass, remark);
  };
  switch (ComparePhys(ends.adapterClass, ends.apClass, entry.GetFrequencyKhz())) {
    case PhyMatch::kSame:
      note(u"==");
      m_pConfig->m_Etw.CapabilityMismatchClearLast(ends.ssid, ends.bssid, ends.adapterClass,
                                                   ends.apClass);
      break;
    case PhyMatch::kAccessPointBetter:
      note(u"<");
      m_pConfig->m_Etw.CapabilityMismatchAPBetter(ends);
      break;
    case PhyMatch::kAdapterBetter:
      note(u">");
      m_pConfig->m_Etw.CapabilityMismatchWifiBetter(ends);
      break;
    case PhyMatch::kAdapterBetterInVain:
      note(u">", u" [2.4Ghz]");
      break;
  }
}

// The quality is that of the scan when the association's figure is missing or known to be the
// worse.
void CQUAYMainWorker::ReportSignal(CWlanBssEntry& entry, const char* context) {
  const PolicyMemory& policy = m_pInterface->Policy();
  const bool missing = policy.m_assoc_lq == -1;
  const bool ofScan = policy.m_peg_active || missing;
  const std::uint32_t quality =
      ofScan ? entry.GetLQ() : static_cast<std::uint32_t>(policy.m_assoc_lq);
  LOG_ADAPTER(m_ConfigIdx, kEventLog,
              u"\n[%i] CQUAYMainWorker::HandleQUAYSpecialEtwEvents[%S]: SQ %lu %s\n", m_ConfigIdx,
              context, quality,
              policy.m_peg_active ? u"[PEG to BSS]"
              : missing           ? u"[PEG but IF-SQ missing]"
                                  : u"[No PEG]");
  const auto association = m_pInterface->GetConnAttrs().wlanAssociationAttributes;
  m_pConfig->m_Etw.APConnected(entry.m_SSIDW, entry.m_BSSIDText, association.ulTxRate,
                               association.ulRxRate,
                               entry.GetScore(false, m_pInterface->GetScoreContext()), quality,
                               WString(m_pInterface->AdapterClassText()), entry.GetPhyMode());
}

void CQUAYMainWorker::ReportNoConnection(const char* context) {
  constexpr char16_t kNowhere[] = u"disconnected";
  LOG_ADAPTER(m_ConfigIdx, kEventLog,
              u"\n[%i] CQUAYMainWorker::HandleQUAYSpecialEtwEvents[%S]: CAP MATCH<nic,ap>: %s, "
              u"disconnected\n",
              m_ConfigIdx, context, m_pInterface->IsHECapable() ? u"AX" : u"!AX");
  m_pConfig->m_Etw.CapabilityMismatchClearLast(kNowhere, u"00-00-00-00-00-00",
                                               WString(m_pInterface->AdapterClassText()), kNowhere);
  m_pConfig->m_Etw.APDisconnected();
}

}  // namespace corvane
