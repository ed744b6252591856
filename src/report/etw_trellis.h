#pragma once
#include <cstdint>

#include "foundation/smart_obj.h"
#include "report/ap_set_memo.h"
#include "report/report_config.h"

namespace corvane {

class CTrellisProvider;

// What is said of a link whose two ends differ in what they can do.
struct CapabilityMismatch {
  std::int32_t capability1 = 0;  // PHY level of the adapter
  std::int32_t capability2 = 0;  // of the access point
  std::int32_t score = -1;
  WString ssid;
  WString bssid;  // text
  WString adapterClass;
  WString apClass;
  std::uint32_t txKbps = 0;
  std::uint32_t rxKbps = 0;
};

// Tells a companion application what the selection engine thinks: events of one provider for event
// tracing, and beside them registry values and notifications. A state is told once, when it
// changes; later reports of it only count as repeats. Operations give true when a report was made.
//
// Used by the adapter's worker; ClearSuggestedAP_If_Equal, NotifyClearPreviousSignalQualityBAD,
// ResetQualityBad and ResetQualityGood may come from any thread.
class CEtwTrellis {
 public:
  CEtwTrellis();
  ~CEtwTrellis();
  CEtwTrellis(const CEtwTrellis&) = delete;
  CEtwTrellis& operator=(const CEtwTrellis&) = delete;

  // Never fails: without a registration every later operation logs that and gives false. `config`
  // is the owner.
  void Start(int index, IReportConfig* config, WStringView guidText, WStringView name,
             WStringView description);

  // `percent` 0 stands for a suggestion that improves on nothing and is sent as 100. After true the
  // caller calls ResetBest.
  bool SuggestAP(const ReportedAp& ap, std::int32_t percent, std::uint32_t lq,
                 const WString& suggestedSummary, const WString& currentSummary);
  bool NotifyAlreadyBestAP(const ReportedAp& ap);
  // An empty `bssid` stands for the whole network.
  void ClearSuggestedAP_If_Equal(WStringView ssid, WStringView bssid);
  void ResetBest();
  WString GetSuggestedNetworkText();  // of the newest suggestion; empty without one
  WString GetBestNetworkText();

  bool NotifySignalQualityBAD(const WString& ssid, const WString& bssid, const WString& channelText,
                              std::uint32_t lq);
  bool NotifySignalQualityGOOD(const WString& ssid, const WString& bssid,
                               const WString& channelText, std::uint32_t lq);
  bool NotifyClearPreviousSignalQualityBAD();
  void ResetQualityBad();
  void ResetQualityGood();

  bool APConnected(const WString& ssid, const WString& bssid, std::uint32_t txKbps,
                   std::uint32_t rxKbps, std::int32_t score, std::uint32_t lq,
                   const WString& adapterClass, const WString& apClass);
  bool APDisconnected();

  bool CapabilityMismatchAPBetter(const CapabilityMismatch& mismatch);
  bool CapabilityMismatchWifiBetter(const CapabilityMismatch& mismatch);
  bool CapabilityMismatchClear1(const WString& ssid, const WString& bssid,
                                const WString& adapterClass, const WString& apClass);
  bool CapabilityMismatchClear2(const WString& ssid, const WString& bssid,
                                const WString& adapterClass, const WString& apClass);
  bool CapabilityMismatchClearLast(const WString& ssid, const WString& bssid,
                                   const WString& adapterClass, const WString& apClass);

  // True when the last contention report says just this; an empty summary stands for no contention.
  bool IsContentionReported(WStringView shortSummary) const;
  bool NotifyAPContention(const WString& ssid, const WString& bssid, std::uint32_t channel,
                          const WString& summary, const WString& shortSummary, const WString& ssids,
                          const WString& bssids, const WString& sqs);
  bool NotifyNoAPContention(const WString& ssid, const WString& bssid, std::uint32_t channel);
  bool ClearLastAPContentionNotification();

  CApSetMemo& GetMemo() { return m_SuggestMemo; }

 private:
  struct ApKey {
    WString ssid, bssid;
    bool Is(WStringView otherSsid, WStringView otherBssid) const {
      return ssid == otherSsid && bssid == otherBssid;
    }
    friend bool operator==(const ApKey&, const ApKey&) = default;
  };
  // One reported state: whom it was about and how often it was repeated since.
  struct Report {
    ApKey ap;
    std::uint32_t repeats = 0;
    // True for a repeat, which it counts; else the report is now about `ssid` and `bssid`.
    bool IsRepeat(WStringView ssid, WStringView bssid);
    void Reset() { *this = {}; }
  };

  bool HasHandle(const char* operation, const char* failed, WStringView ssid,
                 WStringView bssid) const;
  bool IsSending() const;
  void CheckIndex(const char* operation) const;
  template <class Pair, class... Values>
  void Send(const Pair& events, const Values&... values) const;
  bool NotifySignalQuality(bool bad, const WString& ssid, const WString& bssid,
                           const WString& channelText, std::uint32_t lq);
  bool ReportMismatch(bool apBetter, const CapabilityMismatch& mismatch);
  bool ClearMismatch(bool apBetter, const WString& ssid, const WString& bssid,
                     const WString& adapterClass, const WString& apClass);
  void StoreContention(const WString& ssid, const WString& bssid, std::uint32_t channel,
                       const WString& shortSummary);
  std::uint32_t ContentionOutputs() const;
  WString ValueName(WStringView name) const { return ReportedValueName(name, m_ConfigIdx); }
  WString Description() const;  // the registry's text for the adapter

  int m_ConfigIdx = -1;
  IReportConfig* m_Config = nullptr;
  WString m_InterfaceGUID, m_Name, m_Description;
  CSmartPointer<CTrellisProvider> m_pProvider;

  CApSetMemo m_SuggestMemo;
  std::uint32_t m_SuggestCount = 0;
  std::uint32_t m_BestCount = 0;
  Report m_Best;
  WString m_BestBandText, m_BestChannelText;

  mutable CCritSec m_QualityLock{"quality reports", LockRank::kLeaf};  // guards the two reports
  Report m_Bad, m_Good;
  std::uint32_t m_quality_bad_count = 0;
  std::uint32_t m_quality_good_count = 0;

  Report m_Connected;
  bool m_connected_reported = false;
  std::uint32_t m_connected_count = 0;
  std::uint32_t m_disconnected_count = 0;

  std::int32_t m_last_mismatch = -1;  // EventType of the standing mismatch, -1 for none
  std::uint32_t m_mismatch_count = 0;
  Report m_Mismatch1, m_Mismatch2, m_Clear1, m_Clear2;

  bool m_contention_reported = false;
  ApKey m_Contention;
  std::uint32_t m_ContentionChannel = 0;
  WString m_ContentionSummary;  // short; empty after a no-contention report
};

}  // namespace corvane
