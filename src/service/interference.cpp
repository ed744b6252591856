// The interference detector of an adapter, and the event that it raises.

#include "foundation/hosts.h"
#include "foundation/log_lines.h"
#include "notify/notification_manager.h"
#include "service/main_worker.h"

namespace corvane {

namespace {

constexpr std::uint64_t kTraceLog = DBG(48);
constexpr std::uint32_t kInterferenceSliceMs = 2000;  // between two rounds of the detector

WString Both(double first, double second) { return Format(u"%Lf,%Lf", first, second); }

}  // namespace

// Before the round's own probe: an adapter that the detector does not know yet is its next target.
void CQUAYMainWorker::AimDetector() {
  if (m_IDET == 0) return;
  CWinICMP2& detector = m_pInterface->Detector();
  if (detector.GetIfIndex() == m_pInterface->GetOsIfIndex()) return;
  detector.SetTargetInterface(m_pInterface->GetOsIfIndex(), kProbeHost);
}

void CQUAYMainWorker::ResetDetector(const char* why) {
  LOG_DEBUG(kTraceLog, u"\t[%i][If %i] %S: WinICMP FactoryReset() <--------------------------- \n",
            m_ConfigIdx, m_pInterface->GetOsIfIndex(), why);
  m_pInterface->Detector().FactoryReset();
}

// One round of the detector, if it is on, and what it tells.
void CQUAYMainWorker::ProbeLink() {
  if (m_IDET == 0) return;
  CWinICMP2& detector = m_pInterface->Detector();
  detector.TraceIPRoutersForInterference();
  if (const log::Open open(kTraceLog); open) {
    detector.LogTrace();
    if (const auto pdh = m_pInterface->Pdh()) {
      LOG_INFO(
          u"\t[%i][If %i] Tx errors: %03.3lf [%03.3lf/sec], Rx errors: %03.3lf [%03.3lf/sec]\n",
          m_ConfigIdx, m_pInterface->GetOsIfIndex(), pdh->GetTxErrors(), pdh->GetTxErrorsPerSec(),
          pdh->GetRxErrors(), pdh->GetRxErrorsPerSec());
    }
  }
  InterferenceRecord record;
  if (detector.GetResult(&record) > 0) ReportInterference(record);
}

// The same figures twice in a row are one event.
void CQUAYMainWorker::ReportInterference(const InterferenceRecord& record) {
  const auto& [first, second] = record;
  const auto event = CNotificationEvent::CreateObject();
  event->Set(u"Interference", u"Detector", u"Interface", true);
  event->m_Data1 = Format(u"%i", m_ConfigIdx);
  event->m_Data2 = Both(first.rttDeviation, second.rttDeviation);
  event->m_Data3 = Both(first.rttMean, second.rttMean);
  event->m_Data4 = Both(first.segmentDeviation, second.segmentDeviation);
  event->m_Data5 = Both(first.segmentMean, second.segmentMean);
  const auto& last = m_pLastInterferenceEvent;
  if (last && last->m_Data1 == event->m_Data1 && last->m_Data2 == event->m_Data2 &&
      last->m_Data3 == event->m_Data3 && last->m_Data4 == event->m_Data4 &&
      last->m_Data5 == event->m_Data5) {
    return;
  }
  m_pLastInterferenceEvent = event;
  CNotificationManagerSingleton::GetInstance().QueueNotification(event.get());
}

// The sleep proper. A client can end it early.
void CQUAYMainWorker::AwaitClient(std::uint32_t sleepMs) {
  if (m_IDET != 0 && m_pInterface->IsConnected()) {
    for (std::uint32_t slept = 0; slept < sleepMs && m_bRun; slept += kInterferenceSliceMs) {
      if (m_pConfig->WaitMainLoopSemaphore(kInterferenceSliceMs) || !m_bRun) return;
      ProbeLink();
    }
    return;
  }
  m_pConfig->WaitMainLoopSemaphore(sleepMs);
  if (m_Round % 2 == 1) m_pInterface->RefreshProfiledAPList();
}

}  // namespace corvane
