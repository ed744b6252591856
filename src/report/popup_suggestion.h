#pragma once
#include <cstdint>

#include "report/ap_set_memo.h"
#include "report/report_config.h"

namespace corvane {

// The rule that keeps a dialog rarer than an event: one popup for a network, and one repeat after a
// day. Pure.
struct PopupQuestion {
  bool known = false;                 // the network is in the memo
  std::uint64_t suggestTick = 0;      // of its first popup, 0 for none
  std::uint64_t suggestUnixTime = 0;  // seconds since 1970, 0 for none
  std::uint64_t nowTick = 0;
  std::uint64_t nowUnixTime = 0;
};
struct PopupVerdict {
  bool allow = false;
  bool stamp = false;  // begins the network's day
  std::uint64_t elapsedSecs = 0;
};
PopupVerdict DecidePopup(const PopupQuestion& question);

// Suggestions by a dialog in the user's session. Memo operations may come from any thread, the rest
// from the adapter's worker.
class CPopupSuggestion {
 public:
  void Start(int index, IReportConfig* config, WStringView guidText);

  // `lq` and `threshold` are the connection's quality and its limit, both 0 without one. True when
  // the suggestion was made: values written, and the dialog or the OEM suite told.
  bool PopupSuggestAP(const ReportedAp& ap, std::int32_t percent, std::uint32_t lq,
                      std::uint32_t threshold, WStringView suggestedSummary,
                      WStringView currentSummary);
  // An empty `bssid` stands for the whole network.
  void ClearPopupSuggestedAP_If_Equal(WStringView ssid, WStringView bssid);
  void DoNudgeDialog();

  CApSetMemo& GetMemo() { return m_SuggestMemo; }

 private:
  void WriteReason(std::int32_t percent, std::uint32_t lq, std::uint32_t threshold);
  void ClearSuggestedText(WStringView ssid, WStringView bssid);

  int m_ConfigIdx = -1;
  IReportConfig* m_Config = nullptr;  // the owner; outlives this object
  WString m_InterfaceGUID;
  std::uint32_t m_SuggestCount = 0;
  CApSetMemo m_SuggestMemo;
};

}  // namespace corvane
