#include "report/etw_trellis.h"

#include "foundation/log_lines.h"
#include "notify/ap_summary.h"
#include "notify/notification_manager.h"
#include "report/trellis_events.h"
#include "report/trellis_provider.h"
#include "store/value_names.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint64_t kEtwLog = DBG(21);
constexpr std::uint64_t kMemoLog = DBG(8);
constexpr std::uint32_t kReasonBestNetwork = 103;  // string id
constexpr std::int32_t kForcedPercent = 100;
constexpr std::int32_t kFullQuality = 100;

const WString kDisconnectedText = u"disconnected";
const WString kNoBssid = u"00-00-00-00-00-00";

}  // namespace

bool CEtwTrellis::Report::IsRepeat(WStringView ssid, WStringView bssid) {
  if (ap.Is(ssid, bssid)) {
    ++repeats;
    return true;
  }
  ap = {WString(ssid), WString(bssid)};
  repeats = 0;
  return false;
}

CEtwTrellis::CEtwTrellis() = default;

CEtwTrellis::~CEtwTrellis() { CTrellisProvider::Leave(&m_pProvider); }

void CEtwTrellis::Start(int index, IReportConfig* config, WStringView guidText, WStringView name,
                        WStringView description) {
  m_ConfigIdx = index;
  m_Config = config;
  m_InterfaceGUID = guidText;
  m_Name = name;
  m_Description = description;
  if (m_Config->IsEtwMode() && (index == 0 || index == 1)) {
    m_Config->SetDWORD(ValueName(value::kSuggestCount), 0);
    m_Config->SetDWORD(ValueName(value::kBestCount), 0);
  }
  CTrellisProvider::Leave(&m_pProvider);
  HRESULT status = S_OK;
  m_pProvider = CTrellisProvider::Share(&status);
  if (!m_pProvider) {
    LOG_ERROR(u"[%i]CEtwTrellis::Start: EventRegister() failed 0x%08lx", index, status);
  }
}

WString CEtwTrellis::Description() const {
  WString description;
  m_Config->GetString(value::kAdapterDescription, &description);
  return description;
}

bool CEtwTrellis::HasHandle(const char* operation, const char* failed, WStringView ssid,
                            WStringView bssid) const {
  if (m_pProvider) return true;
  LOG_ERROR(u"[%i]CEtwTrellis::%S: HANDLE IS NULL! FAILED to %S: ssid=%s, bssid=%s\n", m_ConfigIdx,
            operation, failed, ssid, bssid);
  return false;
}

bool CEtwTrellis::IsSending() const {
  return (m_ConfigIdx == 0 || m_ConfigIdx == 1) && m_pProvider && m_pProvider->IsListenedTo();
}

void CEtwTrellis::CheckIndex(const char* operation) const {
  if (m_ConfigIdx == 0 || m_ConfigIdx == 1) return;
  LOG_ERROR(u"CEtwTrellis::%S: INVALID m_ConfigIdx=%i", operation, m_ConfigIdx);
}

template <class Pair, class... Values>
void CEtwTrellis::Send(const Pair& events, const Values&... values) const {
  static_assert(Pair::template Takes<Values...>(),
                "the values are not those of the event's fields");
  if (!IsSending()) return;
  const bool second = m_ConfigIdx == 1;
  constexpr std::size_t kHead = 2 + 2 + (Pair::kHasClear ? 1 : 0);
  std::array<EVENT_DATA_DESCRIPTOR, kHead + sizeof...(Values)> data{};
  data[2] = TraceDataOf(events.type.Of(second));
  data[3] = TraceDataOf(events.category);
  if constexpr (Pair::kHasClear) data[4] = TraceDataOf(events.clear.Of(second));
  std::size_t at = kHead;
  ((data[at++] = TraceDataOf(values)), ...);
  if (second) {
    m_pProvider->Write(events.metadata2, data);
  } else {
    m_pProvider->Write(events.metadata1, data);
  }
}

// ---- suggestions
// ------------------------------------------------------------------------------------

bool CEtwTrellis::SuggestAP(const ReportedAp& ap, std::int32_t percent, std::uint32_t lq,
                            const WString& suggestedSummary, const WString& currentSummary) {
  if (!HasHandle("SuggestAP", "suggest", ap.ssid, ap.bssid)) return false;
  if (m_SuggestMemo.HasNetwork(ap.ssid)) {
    m_SuggestMemo.BumpRepeats(ap.ssid, nullptr);
    LOG_ADAPTER(
        m_ConfigIdx, kEtwLog,
        u"[%i]CEtwTrellis::SuggestAP: skip repeat: ssid=%s, bssid=%s [m_consec_repeats=%u]\n",
        m_ConfigIdx, ap.ssid, ap.bssid, m_SuggestMemo.GetRepeats(ap.ssid));
    return false;
  }
  m_SuggestMemo.ResetRepeats(ap.ssid);
  const bool added =
      m_SuggestMemo.Add(false, ap.ssid.c_str(), ap.bssid.c_str(), ap.bandText.c_str(),
                        ap.channelText.c_str(), CApSetMemo::kNoFlag, 0);
  ++m_SuggestCount;
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::SuggestAP: ETW-SUGGEST[AP-Add %S]: ssid=%s, bssid=%s, pct=%i, "
              u"LQ=%lu [count=%u]\n",
              m_ConfigIdx, added ? "SUCCESS" : "FAILED", ap.ssid, ap.bssid, percent, lq,
              m_SuggestCount);

  m_Config->SetDWORD(value::kSuggestCount, m_SuggestCount);
  m_Config->SetString(value::kSuggestedNetwork, SuggestedNetworkText(ap));
  m_Config->SetString(value::kSuggestedNetworkSSID, ap.ssid);
  m_Config->SetString(value::kSuggestedNetworkBSSID, ap.bssid);
  if (percent != 0) {
    m_Config->SetSuggestedNetworkReasonPercent(percent);
  } else {
    m_Config->SetSuggestedNetworkReason(kReasonBestNetwork);
    percent = kForcedPercent;
    LOG_ADAPTER(m_ConfigIdx, kEtwLog,
                u"[%i]CEtwTrellis::SuggestAP: ETW-SUGGEST: m_last_ssid=%s, m_last_bssid=%s, FORCE "
                u"pct: 0 --> 100 "
                u"!!!!!!!!!!!!!!!!!!!!!! \n",
                m_ConfigIdx, ap.ssid, ap.bssid);
  }
  if (m_Config->IsOptimizerPresent()) {
    QueueNotification(u"Corvane", u"Suggestion", u"AP", EscapeForJson(ap.ssid), suggestedSummary,
                      currentSummary, m_InterfaceGUID, Description());
  }
  Send(trellis::kSuggest, ap.ssid, ap.bssid, m_InterfaceGUID, percent, lq);
  return true;
}

bool CEtwTrellis::NotifyAlreadyBestAP(const ReportedAp& ap) {
  if (!HasHandle("NotifyAlreadyBestAP", "notify", ap.ssid, ap.bssid)) return false;
  if (m_Best.IsRepeat(ap.ssid, ap.bssid)) {
    LOG_ADAPTER(
        m_ConfigIdx, kEtwLog,
        u"[%i]CEtwTrellis::NotifyAlreadyBestAP: skip repeat: %s, %s [m_consec_repeats_best = %u]",
        m_ConfigIdx, ap.ssid, ap.bssid, m_Best.repeats);
    return false;
  }
  m_BestBandText = ap.bandText;
  m_BestChannelText = ap.channelText;
  ++m_BestCount;
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::NotifyAlreadyBestAP: ETW-BEST: ssid=%s, bssid=%s [count=%u]",
              m_ConfigIdx, ap.ssid, ap.bssid, m_BestCount);
  m_Config->SetDWORD(ValueName(value::kBestCount), m_BestCount);
  const WString text = GetBestNetworkText();
  m_Config->SetString(value::kBestNetwork, text);
  // Some clients look for the second adapter's text under its own name, as for the count.
  if (m_ConfigIdx == 1) m_Config->SetString(ValueName(value::kBestNetwork), text);
  Send(trellis::kBest, ap.ssid, ap.bssid, m_InterfaceGUID);
  return true;
}

void CEtwTrellis::ClearSuggestedAP_If_Equal(WStringView ssid, WStringView bssid) {
  if (ssid.empty()) return;
  if (!bssid.empty()) {
    const bool removed = m_SuggestMemo.RemoveAp(ssid, bssid);
    LOG_ADAPTER(m_ConfigIdx, kMemoLog,
                removed ? u"ClearSuggestedAP_If_Equal: found & removed AP: %s [%s]\n"
                        : u"ClearSuggestedAP_If_Equal: AP not found: %s [%s]\n",
                ssid, bssid);
  } else {
    const bool removed = m_SuggestMemo.RemoveNetwork(ssid);
    LOG_ADAPTER(m_ConfigIdx, kMemoLog,
                removed ? u"ClearSuggestedAP_If_Equal: found & removed Network: %s\n"
                        : u"ClearSuggestedAP_If_Equal: Network not found: %s\n",
                ssid);
  }
}

void CEtwTrellis::ResetBest() {
  m_Best.Reset();
  m_BestBandText.clear();
  m_BestChannelText.clear();
}

WString CEtwTrellis::GetSuggestedNetworkText() {
  CApSetMemo::Newest newest;
  if (!m_SuggestMemo.GetNewest(&newest)) return {};
  return SuggestedNetworkText({newest.ssid, newest.bssid, newest.text1, newest.text2});
}

WString CEtwTrellis::GetBestNetworkText() {
  if (m_Best.ap == ApKey()) return {};
  return SuggestedNetworkText({m_Best.ap.ssid, m_Best.ap.bssid, m_BestBandText, m_BestChannelText});
}

// ---- signal quality
// ---------------------------------------------------------------------------------

bool CEtwTrellis::NotifySignalQualityBAD(const WString& ssid, const WString& bssid,
                                         const WString& channelText, std::uint32_t lq) {
  return NotifySignalQuality(true, ssid, bssid, channelText, lq);
}

bool CEtwTrellis::NotifySignalQualityGOOD(const WString& ssid, const WString& bssid,
                                          const WString& channelText, std::uint32_t lq) {
  return NotifySignalQuality(false, ssid, bssid, channelText, lq);
}

bool CEtwTrellis::NotifySignalQuality(bool bad, const WString& ssid, const WString& bssid,
                                      const WString& channelText, std::uint32_t lq) {
  const char* const operation = bad ? "NotifySignalQualityBAD" : "NotifySignalQualityGOOD";
  if (!HasHandle(operation, "notify", ssid, bssid)) return false;
  std::uint32_t count = 0;
  std::uint32_t repeats = 0;
  bool repeat = false;
  {
    const CCritSecLock lock(m_QualityLock);
    (bad ? m_Good : m_Bad).Reset();
    Report& report = bad ? m_Bad : m_Good;
    repeat = report.IsRepeat(ssid, bssid);
    repeats = report.repeats;
    std::uint32_t& counter = bad ? m_quality_bad_count : m_quality_good_count;
    if (!repeat) ++counter;
    count = counter;
  }
  if (repeat) {
    LOG_ADAPTER(m_ConfigIdx, kEtwLog,
                u"[%i]CEtwTrellis::%S: skip repeat: ssid=%s, bssid=%s [%S = %u]\n", m_ConfigIdx,
                operation, ssid, bssid,
                bad ? "m_consec_repeats_quality_bad" : "m_consec_repeats_quality_good", repeats);
    return false;
  }
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::%S: ssid=%s, bssid=%s, %s, LQ=%lu [count=%u]\n", m_ConfigIdx,
              operation, ssid, bssid, channelText, lq, count);
  m_Config->SetDWORD(
      ValueName(bad ? WStringView(value::kQualityBadCount) : value::kQualityGoodCount), count);
  m_Config->SetString(
      ValueName(bad ? WStringView(value::kQualityBadNetwork) : value::kQualityGoodNetwork), ssid);
  if (bad) {
    Send(trellis::kQualityBad, lq, ssid, bssid, m_InterfaceGUID);
  } else {
    Send(trellis::kQualityGood, lq, ssid, bssid, m_InterfaceGUID);
  }
  return true;
}

bool CEtwTrellis::NotifyClearPreviousSignalQualityBAD() {
  ApKey ap;
  {
    const CCritSecLock lock(m_QualityLock);
    ap = m_Bad.ap;
  }
  if (!HasHandle("NotifyClearPreviousSignalQualityBAD", "notify", ap.ssid, ap.bssid)) return false;
  if (ap.ssid.empty() || ap.bssid.empty()) return false;
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::NotifyClearPreviousSignalQualityBAD: ssid=%s, bssid=%s\n",
              m_ConfigIdx, ap.ssid, ap.bssid);
  Send(trellis::kQualityCleared, kFullQuality, ap.ssid, ap.bssid, m_InterfaceGUID);
  return true;
}

void CEtwTrellis::ResetQualityBad() {
  const CCritSecLock lock(m_QualityLock);
  m_Bad.Reset();
}

void CEtwTrellis::ResetQualityGood() {
  const CCritSecLock lock(m_QualityLock);
  m_Good.Reset();
}

// ---- connection
// -------------------------------------------------------------------------------------

bool CEtwTrellis::APConnected(const WString& ssid, const WString& bssid, std::uint32_t txKbps,
                              std::uint32_t rxKbps, std::int32_t score, std::uint32_t lq,
                              const WString& adapterClass, const WString& apClass) {
  if (!HasHandle("APConnected", "notify", ssid, bssid)) return false;
  if (m_Connected.IsRepeat(ssid, bssid)) {
    LOG_ADAPTER(m_ConfigIdx, kEtwLog,
                u"[%i]CEtwTrellis::APConnected: skip repeat: ssid=%s, bssid=%s "
                u"[m_consec_connected_repeats=%u]\n",
                m_ConfigIdx, ssid, bssid, m_Connected.repeats);
    return false;
  }
  ++m_connected_count;
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::APConnected: ssid=%s, bssid=%s, score=%i, LQ=%lu, classes %s, %s "
              u"[count=%u]\n",
              m_ConfigIdx, ssid, bssid, score, lq, adapterClass, apClass, m_connected_count);
  CheckIndex("APConnected");
  Send(trellis::kConnected, ssid, bssid, m_InterfaceGUID, txKbps, rxKbps, score, adapterClass,
       apClass, lq, m_Description);
  m_connected_reported = true;
  return true;
}

bool CEtwTrellis::APDisconnected() {
  if (!HasHandle("APDisconnected", "notify", m_Connected.ap.ssid, m_Connected.ap.bssid))
    return false;
  if (!m_connected_reported) {
    LOG_ADAPTER(m_ConfigIdx, kEtwLog,
                u"[%i]CEtwTrellis::APDisconnected: skip etw: no previous connection reported or "
                u"disconnect already "
                u"reported\n",
                m_ConfigIdx);
    return false;
  }
  m_connected_reported = false;
  ++m_disconnected_count;
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::APDisconnected: ssid=%s, bssid=%s [count=%u]\n", m_ConfigIdx,
              m_Connected.ap.ssid, m_Connected.ap.bssid, m_disconnected_count);
  CheckIndex("APDisconnected");
  Send(trellis::kDisconnected, m_Connected.ap.ssid, m_Connected.ap.bssid, m_InterfaceGUID);
  return true;
}

// ---- capability mismatch
// ----------------------------------------------------------------------------

bool CEtwTrellis::CapabilityMismatchAPBetter(const CapabilityMismatch& mismatch) {
  return ReportMismatch(true, mismatch);
}

bool CEtwTrellis::CapabilityMismatchWifiBetter(const CapabilityMismatch& mismatch) {
  return ReportMismatch(false, mismatch);
}

bool CEtwTrellis::ReportMismatch(bool apBetter, const CapabilityMismatch& mismatch) {
  const char* const operation =
      apBetter ? "CapabilityMismatchAPBetter" : "CapabilityMismatchWifiBetter";
  if (!HasHandle(operation, "notify", mismatch.ssid, mismatch.bssid)) return false;
  Report& report = apBetter ? m_Mismatch1 : m_Mismatch2;
  if (report.IsRepeat(mismatch.ssid, mismatch.bssid)) {
    LOG_ADAPTER(
        m_ConfigIdx, kEtwLog, u"[%i]CEtwTrellis::%S: skip repeat: ssid=%s, bssid=%s [%S=%u]\n",
        m_ConfigIdx, operation, mismatch.ssid, mismatch.bssid,
        apBetter ? "m_consec_mismatch1_repeats" : "m_consec_mismatch2_repeats", report.repeats);
    return false;
  }
  ++m_mismatch_count;
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::%S: ssid=%s, bssid=%s, nic=%s [%i], ap=%s [%i] [count=%u]\n",
              m_ConfigIdx, operation, mismatch.ssid, mismatch.bssid, mismatch.adapterClass,
              mismatch.capability1, mismatch.apClass, mismatch.capability2, m_mismatch_count);
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"\n[%i]CEtwTrellis::%S: FAKE DISCONNECT CapabilityMismatchClearLast(), BEFORE new "
              u"CAPS MISMATCH...\n",
              m_ConfigIdx, operation);
  CapabilityMismatchClearLast(kDisconnectedText, kNoBssid, mismatch.adapterClass,
                              kDisconnectedText);
  if (m_Config->IsOptimizerPresent()) {
    QueueNotification(u"Corvane", u"Hardware", apBetter ? u"UpgradeAdapter" : u"UpgradeAP",
                      m_InterfaceGUID + u"," + m_Description,
                      mismatch.bssid + u"," + EscapeForJson(mismatch.ssid),
                      Format(u"%i", mismatch.score),
                      Format(u"%lu,%lu", mismatch.txKbps, mismatch.rxKbps),
                      mismatch.adapterClass + u"," + mismatch.apClass);
  }
  CheckIndex(operation);
  const auto send = [&](const auto& events) {
    Send(events, mismatch.ssid, mismatch.bssid, m_InterfaceGUID, mismatch.adapterClass,
         mismatch.apClass);
    m_last_mismatch = events.type.Of(m_ConfigIdx == 1);
  };
  if (apBetter) {
    send(trellis::kApBetter);
  } else {
    send(trellis::kWifiBetter);
  }
  return true;
}

bool CEtwTrellis::CapabilityMismatchClear1(const WString& ssid, const WString& bssid,
                                           const WString& adapterClass, const WString& apClass) {
  return ClearMismatch(true, ssid, bssid, adapterClass, apClass);
}

bool CEtwTrellis::CapabilityMismatchClear2(const WString& ssid, const WString& bssid,
                                           const WString& adapterClass, const WString& apClass) {
  return ClearMismatch(false, ssid, bssid, adapterClass, apClass);
}

bool CEtwTrellis::ClearMismatch(bool apBetter, const WString& ssid, const WString& bssid,
                                const WString& adapterClass, const WString& apClass) {
  const char* const operation = apBetter ? "CapabilityMismatchClear1" : "CapabilityMismatchClear2";
  if (!HasHandle(operation, "clear", ssid, bssid)) return false;
  Report& report = apBetter ? m_Clear1 : m_Clear2;
  if (report.IsRepeat(ssid, bssid)) {
    LOG_ADAPTER(m_ConfigIdx, kEtwLog,
                u"[%i]CEtwTrellis::%S: skip repeat: ssid=%s, bssid=%s [%S=%u]\n", m_ConfigIdx,
                operation, ssid, bssid,
                apBetter ? "m_consec_clear_mismatch1_repeats" : "m_consec_clear_mismatch2_repeats",
                report.repeats);
    return false;
  }
  LOG_ADAPTER(m_ConfigIdx, kEtwLog, u"[%i]CEtwTrellis::%S: ssid=%s, bssid=%s, nic=%s, ap=%s\n",
              m_ConfigIdx, operation, ssid, bssid, adapterClass, apClass);
  CheckIndex(operation);
  if (apBetter) {
    Send(trellis::kClear1, ssid, bssid, m_InterfaceGUID, adapterClass, apClass);
  } else {
    Send(trellis::kClear2, ssid, bssid, m_InterfaceGUID, adapterClass, apClass);
  }
  return true;
}

bool CEtwTrellis::CapabilityMismatchClearLast(const WString& ssid, const WString& bssid,
                                              const WString& adapterClass, const WString& apClass) {
  if (!HasHandle("CapabilityMismatchClearLast", "clear", ssid, bssid)) return false;
  if (m_last_mismatch < 0) {
    LOG_ADAPTER(
        m_ConfigIdx, kEtwLog,
        u"[%i]CEtwTrellis::CapabilityMismatchClearLast: [ssid=%s, bssid=%s] NOTHING TO CLEAR!\n",
        m_ConfigIdx, ssid, bssid);
    return false;
  }
  const bool apBetter = m_last_mismatch == trellis::kApBetter.type.Of(m_ConfigIdx == 1);
  m_last_mismatch = -1;
  return apBetter ? CapabilityMismatchClear1(ssid, bssid, adapterClass, apClass)
                  : CapabilityMismatchClear2(ssid, bssid, adapterClass, apClass);
}

// ---- contention
// -------------------------------------------------------------------------------------

bool CEtwTrellis::IsContentionReported(WStringView shortSummary) const {
  return m_contention_reported && m_ContentionSummary == shortSummary;
}

bool CEtwTrellis::NotifyAPContention(const WString& ssid, const WString& bssid,
                                     std::uint32_t channel, const WString& summary,
                                     const WString& shortSummary, const WString& ssids,
                                     const WString& bssids, const WString& sqs) {
  if (!HasHandle("NotifyAPContention", "notify", ssid, bssid)) return false;
  StoreContention(ssid, bssid, channel, shortSummary);
  LogRecord(ContentionOutputs(), "<I>", u"[Adapter ", m_ConfigIdx, u"] Wifi contention for ssid ",
            ssid, u", bssid ", bssid, u", channel ", channel, u": ", summary);
  Send(trellis::kContention, ssid, bssid, channel, summary, ssids, bssids, sqs, m_InterfaceGUID);
  return true;
}

bool CEtwTrellis::NotifyNoAPContention(const WString& ssid, const WString& bssid,
                                       std::uint32_t channel) {
  if (!HasHandle("NotifyNoAPContention", "notify", ssid, bssid)) return false;
  StoreContention(ssid, bssid, channel, {});
  LogRecord(ContentionOutputs(), "<I>", u"[Adapter ", m_ConfigIdx,
            u"] NO Wifi contention for ssid ", ssid, u", bssid ", bssid, u", channel ", channel);
  Send(trellis::kNoContention, ssid, bssid, channel, m_InterfaceGUID);
  return true;
}

bool CEtwTrellis::ClearLastAPContentionNotification() {
  if (!HasHandle("ClearLastAPContentionNotification", "clear", m_Contention.ssid,
                 m_Contention.bssid))
    return false;
  if (!m_contention_reported) return false;
  m_contention_reported = false;
  if (m_ContentionSummary.empty()) {
    LOG_ADAPTER(m_ConfigIdx, kEtwLog,
                u"[%i]CEtwTrellis::ClearLastAPContentionNotification: [NO Previous contention] NO "
                u"'fake' clearing "
                u"needed\n",
                m_ConfigIdx);
    return false;
  }
  LOG_ADAPTER(m_ConfigIdx, kEtwLog,
              u"[%i]CEtwTrellis::ClearLastAPContentionNotification: 'fake' clearing of contention: "
              u"ssid=%s, bssid=%s, "
              u"channel=%lu\n",
              m_ConfigIdx, m_Contention.ssid, m_Contention.bssid, m_ContentionChannel);
  Send(trellis::kNoContention, m_Contention.ssid, m_Contention.bssid, m_ContentionChannel,
       m_InterfaceGUID);
  return true;
}

void CEtwTrellis::StoreContention(const WString& ssid, const WString& bssid, std::uint32_t channel,
                                  const WString& shortSummary) {
  m_contention_reported = true;
  m_Contention = {ssid, bssid};
  m_ContentionChannel = channel;
  m_ContentionSummary = shortSummary;
}

// The history for users has it always, the console when somebody follows the events.
std::uint32_t CEtwTrellis::ContentionOutputs() const {
  constexpr std::uint32_t kAlways = kLogFile | kLogMemory;
  return log::IsOpen(m_ConfigIdx, kEtwLog) ? kAlways | kLogConsole : kAlways;
}

}  // namespace corvane
