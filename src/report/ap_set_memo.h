#pragma once
#include <cstdint>
#include <map>

#include "foundation/crit_sec.h"
#include "foundation/text.h"

namespace corvane {

// A lock-guarded two-level map SSID to BSSID with repeat counts and stamps. Keys compare exactly.
// Any thread.
class CApSetMemo {
 public:
  static constexpr std::uint32_t kNoFlag = 0xFFFFFFFF;

  // Adds the pair or refreshes it; a `flag` below 0xFFFFFFFE that differs replaces the stored flag
  // and quality. `stamp` notes the time of a suggestion for the SSID. False when a text is null.
  bool Add(bool stamp, const char16_t* ssid, const char16_t* bssid, const char16_t* text1,
           const char16_t* text2, std::uint32_t flag, std::uint32_t sq);
  bool RemoveAp(WStringView ssid, WStringView bssid);
  bool RemoveNetwork(WStringView ssid);
  bool HasNetwork(WStringView ssid);
  bool HasAp(WStringView ssid, WStringView bssid);
  // Adds 1 to the repeats; the tick of the suggestion and its time (seconds since 1970), else 0.
  std::uint64_t BumpRepeats(WStringView ssid, std::uint64_t* unixTime);
  void ResetRepeats(WStringView ssid);
  std::uint32_t GetRepeats(WStringView ssid);
  std::uint32_t GetFlag(WStringView ssid, WStringView bssid);  // kNoFlag when the pair is not there
  void ClearStamps();                                          // of all networks
  void Clear();
  bool IsEmpty();
  // What was given for the newest pair: the one added last, or after its removal the one seen last.
  struct Newest {
    WString ssid, bssid, text1, text2;
  };
  bool GetNewest(Newest* out);  // false for an empty memo

  // "SSID[BSSID(SQ n), BSSID(SQ n)], SSID[...]" in key order, "none" for an empty memo; shortText
  // (may be null) gets the same without the qualities.
  WString GetSummary(WString* shortText);
  // One element for each pair in the same order, separated by ", ".
  void GetLists(WString* ssids, WString* bssids, WString* sqs);

 private:
  struct Ap {
    WString text1, text2;
    std::uint64_t m_seen_tick = 0;
    std::uint32_t m_flag = kNoFlag;
    std::uint32_t m_sq = 0;
  };
  struct Network {
    std::uint32_t m_consec_repeats = 0;
    std::uint64_t m_suggest_tick = 0;
    std::uint64_t m_suggest_unix_time = 0;
    bool m_suggest_time_set = false;
    std::map<WString, Ap, std::less<>> aps;
  };

  void FindNewest();  // under m_Lock, after a removal

  CCritSec m_Lock{"AP set memo", LockRank::kMaps};
  WString m_NewestSsid, m_NewestBssid;  // of the newest pair; meaningless for an empty memo
  std::map<WString, Network, std::less<>> m_Networks;
};

}  // namespace corvane
