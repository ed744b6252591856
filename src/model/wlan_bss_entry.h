#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "foundation/smart_obj.h"
#include "foundation/text.h"
#include "model/ie_blob.h"
#include "model/score_context.h"
#include "platform/wlan_types.h"
#include "score/final_score.h"
#include "score/subtotal_rule.h"
#include "store/address_text.h"

namespace corvane {

class CWlanInterface;

// `internetState` for an update that leaves the connectivity flags alone.
inline constexpr std::uint32_t kInternetUnknown = 0xFFFFFFFF;

// One BSS as the last scans saw it. Written by its adapter's worker under the interface lock; other
// threads read it under that lock.
class CWlanBssEntry : public SmartObjEx<CWlanBssEntry, SmartObj<>> {
 public:
  CWlanBssEntry();
  const char* GetClassName() const override { return "CWlanBssEntry"; }

  // What the network and its profile say of a BSS.
  struct Facts {
    std::uint32_t grantedAccess = 0;  // 0 without a profile
    bool autoConnect = false;
    bool nonBroadcast = false;
    bool hasTempProfile = false;
    std::int32_t securityEnabled = -1;  // -1 unknown
    std::int32_t authAlgorithm = 0;     // the network's default, DOT11_AUTH_ALGORITHM
    std::uint32_t pegLQ = 0;  // the association's link quality for the connected BSS, else 0
    std::uint32_t internetState = kInternetUnknown;  // as remembered: 0, 1 or kInternetUnknown
  };
  // Takes over the record, parses the elements and scores. `ies` may be null.
  void UpdateFromBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies,
                     std::uint32_t cbIEs, const Facts& facts, int ifIndex,
                     const ScoreContext& context);

  // Scores (points), by the facts of the context. UpdateScore also keeps the subtotal in
  // m_ScoreHistory.
  std::int32_t ComputeSubtotal(std::uint32_t pegLQ, const ScoreContext& context);
  void UpdateScore(std::uint32_t pegLQ, const ScoreContext& context);
  // The final score, by the facts of this moment; -1 without history. bLog: FinalScoreLog tells of
  // this one.
  std::int32_t GetScore(bool bLog, const ScoreContext& context);
  // The terms of the newest subtotal, and of the final score, worked out for who reads them.
  std::string ScoreLog() const;
  std::string FinalScoreLog() const;

  std::int32_t GetMaxRate(const ScoreContext& context) const;  // Mbps
  std::int32_t GetMaxRateHalved(const ScoreContext& context) const;
  // Of the element, else the adapter's average for the band.
  double GetLoadPct(const ScoreContext& context) const;
  double GetRawLoadPct() const;  // -1.0 when unknown
  std::uint16_t GetStationCount() const;
  WString GetPhyMode() const;
  WString GetPhyModes();
  WString GetChannelWidthText();
  bool GetMuMimo() const;
  WString GetBandText() const;
  // The row of the candidate lists: 16 fields joined by a vertical tab. Made anew when one of them
  // has changed.
  const WString& GetStatusLine(const ScoreContext& context);
  void UpdateApCount(const ScoreContext& context);

  std::uint32_t GetLQ() const { return m_Bss.uLinkQuality; }
  std::uint32_t GetFrequencyKhz() const { return m_Bss.ulChCenterFrequency; }
  MacAddress GetBssid() const { return ToMac(m_Bss.dot11Bssid); }
  // In 5150000 to 5924999 kHz.
  bool IsIn5GHzRange() const;

  // The candidate counter, after the rule that an entry missing from the newest scan has none.
  std::int32_t GetCandidate();
  std::int32_t PeekCandidate() const {
    return IsOutOfScan() ? 0 : m_candidate_counter;
  }  // clears nothing
  std::int32_t IncrementCandidate(std::int32_t force);
  // Stored profile that may be used to connect, by its access mask.
  bool HasUsableProfile() const;

  // Keeps the gateways seen while this entry is connected.
  void AssignGatewayMacs(const MacList& ip4, const MacList& ip6);

  // Connects to this BSSID; blocks. Nothing on success, Exception on failure. `timeoutMs` may be
  // INFINITE. Lives with the connection control of the adapter binding.
  void ConnectSynchronous(CWlanInterface* pInterface, WStringView profileText, bool save,
                          std::uint32_t timeoutMs);

  int m_IfIndex = -1;  // index of the adapter
  bool m_bInternet = true;
  bool m_bInternetLatch = true;
  bool m_bConnectivityKnown = false;
  bool m_bVpnMuted = false;
  bool m_bss_scanned = false;
  bool m_bHasTempProfile = false;
  bool m_bNonBroadcast = false;
  bool m_bConnected = false;
  std::uint32_t m_unscanned_count = 0;
  std::uint32_t m_PeggedLQ = 0;
  platform::WLAN_BSS_ENTRY m_Bss;
  WString m_SSIDW;
  WString m_BaseNetname;
  std::string m_SSIDA;
  WString m_BSSIDText;
  CSmartPointer<CIEBlob> m_IEBlob;
  std::uint32_t m_Channel = 0;
  std::uint32_t m_Width = 0;                 // MHz, from the frequency table
  std::vector<std::int32_t> m_ScoreHistory;  // newest first, at most 5
  std::int32_t m_QBSSPoints = -1;
  std::int32_t m_BTPenalty = 0;
  std::vector<std::int32_t> m_Footprint;
  std::string m_FootprintText;
  std::uint32_t m_GrantedAccess = 0;
  bool m_AutoConnect = false;
  std::int32_t m_SecurityEnabled = -1;
  std::int32_t m_AuthAlgorithm = 0;
  std::uint32_t m_ApCountOnChannel = 0;
  MacList m_IP4GatewayMacs;  // seen when this entry was connected
  MacList m_IP6GatewayMacs;

  // Candidate state.
  std::int32_t m_candidate_counter = 0;
  std::int32_t m_connect_failed = 0;
  std::int32_t m_connect_good = 0;
  bool m_ever_connected = false;
  std::uint32_t m_last_reason_code = 0;
  bool m_bDenied = false;
  std::int32_t m_arbitrary_priority = 0;
  std::uint32_t m_arbitrary_min_lq = 101;
  bool IsArbitraryEligible() const {
    return GetLQ() >= m_arbitrary_min_lq && m_arbitrary_priority > 0;
  }

 private:
  // What the newest subtotal was worked out from. Its radio facts and elements are those of the
  // entry.
  struct Scored {
    SubtotalRule rule = nullptr;
    SubtotalInputs in;
    RadioFacts radio;
    HeardLink link;
  };
  // What a status line is made of beside the names and the elements, which drop it when they
  // change. The texts are literals.
  struct StatusFacts {
    std::int32_t score = 0;
    std::uint32_t quality = 0;
    std::uint32_t frequencyKhz = 0;
    std::uint32_t channel = 0;
    std::uint32_t apCount = 0;
    std::int32_t authAlgorithm = 0;
    double loadPct = 0.0;
    const char16_t* category = nullptr;
    const char16_t* automatic = nullptr;
    const char16_t* presence = nullptr;
    const CIEBlob* elements = nullptr;
    friend bool operator==(const StatusFacts&, const StatusFacts&) = default;
  };

  // An entry that the newest scan missed has no standing as a candidate.
  bool IsOutOfScan() const { return !m_bss_scanned && m_unscanned_count != 0; }
  void UpdateElements(const std::uint8_t* ies, std::uint32_t cbIEs);
  HeardLink Heard(const ScoreContext& context) const;
  RadioFacts ReadRadio(const CIEBlob& blob, const ScoreContext& context) const;
  NetworkFacts ReadNetwork(const ScoreContext& context) const;
  std::int32_t MaxRate(bool halved, const ScoreContext& context) const;
  StatusFacts ReadStatus(const ScoreContext& context);

  Scored m_Scored;
  std::optional<FinalScoreInputs> m_FinalScored;  // of the last score that was to be told of
  StatusFacts m_StatusFacts;                      // of m_StatusLine
  WString m_StatusLine;                           // empty: to be made anew
};

using BssEntryList = std::vector<CSmartPointer<CWlanBssEntry>>;

}  // namespace corvane
