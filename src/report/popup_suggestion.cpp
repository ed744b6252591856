#include "report/popup_suggestion.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "launch/launcher.h"
#include "notify/ap_summary.h"
#include "notify/notification_manager.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/session_api.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint64_t kPopupLog = DBG(8);
constexpr std::uint64_t kDayMs = 86'400'000;
constexpr std::uint64_t kDaySecs = 86'400;

// String ids of the reason.
constexpr std::uint32_t kBestNetwork = 103;
constexpr std::uint32_t kWeakSignal = 112;

std::uint64_t Elapsed(std::uint64_t now, std::uint64_t then) {
  return then != 0 && then < now ? now - then : 0;
}

}  // namespace

PopupVerdict DecidePopup(const PopupQuestion& question) {
  if (!question.known) return {.allow = true, .stamp = true};
  const std::uint64_t ms = Elapsed(question.nowTick, question.suggestTick);
  const std::uint64_t secs = Elapsed(question.nowUnixTime, question.suggestUnixTime);
  return {.allow = ms >= kDayMs || secs >= kDaySecs, .stamp = false, .elapsedSecs = secs};
}

void CPopupSuggestion::Start(int index, IReportConfig* config, WStringView guidText) {
  m_ConfigIdx = index;
  m_Config = config;
  m_InterfaceGUID = guidText;
}

bool CPopupSuggestion::PopupSuggestAP(const ReportedAp& ap, std::int32_t percent, std::uint32_t lq,
                                      std::uint32_t threshold, WStringView suggestedSummary,
                                      WStringView currentSummary) {
  PopupQuestion question{.known = m_SuggestMemo.HasNetwork(ap.ssid),
                         .nowTick = Os().clock.GetTickCount64(),
                         .nowUnixTime = platform::UnixSecondsNow()};
  if (question.known)
    question.suggestTick = m_SuggestMemo.BumpRepeats(ap.ssid, &question.suggestUnixTime);
  const PopupVerdict verdict = DecidePopup(question);
  if (!verdict.allow) {
    LOG_ADAPTER(
        m_ConfigIdx, kPopupLog,
        u"[%i]CPopupSuggestion::PopupSuggestAP: skip repeat: %s, %s [m_consec_repeats = %u]\n",
        m_ConfigIdx, ap.ssid, ap.bssid, m_SuggestMemo.GetRepeats(ap.ssid));
    return false;
  }
  if (question.known) {
    LOG_ADAPTER(m_ConfigIdx, kPopupLog,
                u"[%i]CPopupSuggestion::PopupSuggestAP: ALLOW 24-HR REPEAT:[s %I64u < now %I64u, "
                u"delta %I64u secs] "
                u"%s, %s [m_consec_repeats = %u]\n",
                m_ConfigIdx, question.suggestUnixTime, question.nowUnixTime, verdict.elapsedSecs,
                ap.ssid, ap.bssid, m_SuggestMemo.GetRepeats(ap.ssid));
  }
  m_SuggestMemo.ClearStamps();
  m_SuggestMemo.ResetRepeats(ap.ssid);
  const bool added =
      m_SuggestMemo.Add(verdict.stamp, ap.ssid.c_str(), ap.bssid.c_str(), ap.bandText.c_str(),
                        ap.channelText.c_str(), CApSetMemo::kNoFlag, lq);
  ++m_SuggestCount;
  LOG_ADAPTER(m_ConfigIdx, kPopupLog,
              u"[%i]CPopupSuggestion::PopupSuggestAP: POPUP-SUGGEST[AP-Add %S]: %s, %s",
              m_ConfigIdx, added ? "SUCCESS" : "FAILED", ap.ssid, ap.bssid);

  m_Config->SetDWORD(value::kSuggestCount, m_SuggestCount);
  m_Config->SetString(value::kSuggestedNetwork, SuggestedNetworkText(ap));
  m_Config->SetString(value::kSuggestedNetworkSSID, ap.ssid);
  m_Config->SetString(value::kSuggestedNetworkBSSID, ap.bssid);
  WriteReason(percent, lq, threshold);
  if (m_Config->IsOptimizerPresent()) {
    WString description;
    m_Config->GetString(value::kAdapterDescription, &description);
    QueueNotification(u"Corvane", u"Suggestion", u"AP", EscapeForJson(ap.ssid), suggestedSummary,
                      currentSummary, m_InterfaceGUID, description);
  } else {
    DoNudgeDialog();
  }
  return true;
}

void CPopupSuggestion::WriteReason(std::int32_t percent, std::uint32_t lq,
                                   std::uint32_t threshold) {
  if (lq != 0 && threshold != 0 && lq < threshold) {
    m_Config->SetSuggestedNetworkReason(kWeakSignal);
  } else if (percent != 0) {
    m_Config->SetSuggestedNetworkReasonPercent(percent);
  } else {
    m_Config->SetSuggestedNetworkReason(kBestNetwork);
  }
}

void CPopupSuggestion::ClearPopupSuggestedAP_If_Equal(WStringView ssid, WStringView bssid) {
  if (ssid.empty()) return;
  if (bssid.empty()) {
    if (!m_SuggestMemo.RemoveNetwork(ssid)) {
      LOG_ADAPTER(m_ConfigIdx, kPopupLog,
                  u"ClearPopupSuggestedAP_If_Equal: Network not found: %s\n", ssid);
      return;
    }
    LOG_ADAPTER(m_ConfigIdx, kPopupLog,
                u"ClearPopupSuggestedAP_If_Equal: found & removed Network: %s\n", ssid);
  } else {
    if (!m_SuggestMemo.RemoveAp(ssid, bssid)) {
      LOG_ADAPTER(m_ConfigIdx, kPopupLog,
                  u"ClearPopupSuggestedAP_If_Equal: AP not found: %s [%s]\n", ssid, bssid);
      return;
    }
    LOG_ADAPTER(m_ConfigIdx, kPopupLog,
                u"ClearPopupSuggestedAP_If_Equal: found & removed AP: %s [%s]\n", ssid, bssid);
  }
  ClearSuggestedText(ssid, bssid);
}

// The values that name the suggestion decide; the text for users is the long form.
void CPopupSuggestion::ClearSuggestedText(WStringView ssid, WStringView bssid) {
  WString storedSsid, storedBssid;
  m_Config->GetString(value::kSuggestedNetworkSSID, &storedSsid);
  m_Config->GetString(value::kSuggestedNetworkBSSID, &storedBssid);
  if (storedSsid == ssid && (bssid.empty() || storedBssid == bssid))
    m_Config->SetString(value::kSuggestedNetwork, u"");
}

void CPopupSuggestion::DoNudgeDialog() {
  if (StartNudgeDialogFromService(m_ConfigIdx)) {
    LOG_INFO(u"CPopupSuggestion::DoNudgeDialog: StartNudgeDialogFromService() SUCCEEDED");
    return;
  }
  LOG_ERROR(
      u"CPopupSuggestion::DoNudgeDialog: - StartNudgeDialogFromService() FAILED - trying "
      u"system(...NudgeDialog.exe)");
  const int result = Guarded("CPopupSuggestion", "DoNudgeDialog", -1, [&] {
    return Os().session.system(
        FormatA("start /B cmd.exe /c NudgeDialog.exe %i", m_ConfigIdx).c_str());
  });
  if (result != 0) {
    LOG_ERROR(u"CPopupSuggestion::DoNudgeDialog: system(...NudgeDialog.exe) FAILED, rc=%i", result);
  } else {
    LOG_INFO(u"CPopupSuggestion::DoNudgeDialog: system(...NudgeDialog.exe) SUCCEEDED");
  }
}

}  // namespace corvane
