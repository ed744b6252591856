#include "model/wlan_bss_entry.h"

#include <algorithm>

#include "elements/bss_reading.h"
#include "elements/frequency_table.h"
#include "foundation/log_lines.h"
#include "model/base_netname.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "score/final_score.h"
#include "score/score_terms.h"

namespace corvane {

namespace {

constexpr std::uint64_t kElementsKeptMs = 60000;
constexpr std::size_t kScoresKept = 5;

}  // namespace

CWlanBssEntry::CWlanBssEntry() : SmartObjEx("BSS entry", LockRank::kBssEntry) {}

void CWlanBssEntry::UpdateFromBss(const platform::WLAN_BSS_ENTRY& bss, const std::uint8_t* ies,
                                  std::uint32_t cbIEs, const Facts& facts, int ifIndex,
                                  const ScoreContext& context) {
  m_IfIndex = ifIndex;
  m_bHasTempProfile = facts.hasTempProfile;
  m_bNonBroadcast = facts.nonBroadcast;
  // Texts of names that stay are made once.
  if (m_BSSIDText.empty() || GetBssid() != ToMac(bss.dot11Bssid)) {
    m_BSSIDText = MacText(ToMac(bss.dot11Bssid));
    m_StatusLine.clear();
  }
  m_Bss = bss;
  if (const auto ssid = SsidView(bss.dot11Ssid); ssid != m_SSIDA || m_SSIDW.empty()) {
    m_SSIDA = ssid;
    m_SSIDW = Utf8ToWide(m_SSIDA);
    m_StatusLine.clear();
    m_BaseNetname = m_SSIDW;
    StripBandWord(&m_BaseNetname);
  }
  if (facts.internetState != kInternetUnknown) {
    m_bInternet = m_bInternetLatch = facts.internetState != 0;
  }
  m_bss_scanned = true;
  m_unscanned_count = 0;
  const ChannelAndWidth place = ChannelOfFrequency(bss.ulChCenterFrequency);
  m_Channel = place.channel;
  m_Width = place.width;
  m_GrantedAccess = facts.grantedAccess;
  m_AutoConnect = facts.autoConnect;
  m_SecurityEnabled = facts.securityEnabled;
  m_AuthAlgorithm = facts.authAlgorithm;
  UpdateElements(ies, cbIEs);
  UpdateScore(facts.pegLQ, context);
}

void CWlanBssEntry::UpdateElements(const std::uint8_t* ies, std::uint32_t cbIEs) {
  const bool given = ies != nullptr && cbIEs >= 2;
  if (!given) {
    if (!m_IEBlob) return;
    if (Os().clock.GetTickCount64() - m_IEBlob->m_ParsedAtTick <= kElementsKeptMs) return;
  }
  if (given && m_IEBlob && m_IEBlob->Renew(ies, cbIEs, m_Channel, m_Width, m_Bss)) return;
  auto blob = CIEBlob::CreateObject();
  blob->Load(given ? ies : nullptr, given ? cbIEs : 0, m_Channel, m_Width, m_Bss);
  m_IEBlob = std::move(blob);
  m_StatusLine.clear();
}

std::int32_t CWlanBssEntry::ComputeSubtotal(std::uint32_t pegLQ, const ScoreContext& context) {
  m_Scored.rule = context.subtotalRule;
  m_Scored.link = Heard(context);
  SubtotalInputs& in = m_Scored.in;
  in.quality = m_Bss.uLinkQuality;
  in.pegQuality = pegLQ;
  in.weights = context.weights;
  if (m_IEBlob) m_Scored.radio = ReadRadio(*m_IEBlob, context);
  in.radio = m_IEBlob ? &m_Scored.radio : nullptr;
  in.network = ReadNetwork(context);
  in.allowed = context.FilterOf(m_SSIDW) == kFilterPermitted;
  in.allowBonus = context.allowBonus;
  in.vpnFound = context.vpnFound;
  in.internet = {m_bInternet, m_bInternetLatch, m_bConnectivityKnown, m_bVpnMuted};

  const SubtotalResult result = m_Scored.rule(in, m_Scored.link, nullptr);
  m_PeggedLQ = result.peggedQuality;
  m_QBSSPoints = result.loadPoints;
  m_bInternet = result.internet.internet;
  m_bInternetLatch = result.internet.latch;
  m_bConnectivityKnown = result.internet.known;
  m_bVpnMuted = result.internet.vpnMuted;
  return result.points;
}

std::string CWlanBssEntry::ScoreLog() const {
  std::string terms;
  if (m_Scored.rule) m_Scored.rule(m_Scored.in, m_Scored.link, &terms);
  return terms;
}

HeardLink CWlanBssEntry::Heard(const ScoreContext& context) const {
  HeardLink link{m_IEBlob.get(), static_cast<double>(m_Bss.lRssi),
                 BandOfFrequency(GetFrequencyKhz()), context.heCapable, ChannelLoadMap::kNoLoad};
  if (context.loadMapValid && m_IEBlob)
    link.channelLoad = context.LoadMap().LoadOf(link.band, m_IEBlob->m_LoadCenterChannel);
  link.shared = context.shared == GetBssid();
  return link;
}

RadioFacts CWlanBssEntry::ReadRadio(const CIEBlob& blob, const ScoreContext& context) const {
  RadioFacts radio;
  radio.htPresent = blob.m_HTPresent;
  radio.vhtPresent = blob.m_VHTPresent;
  radio.heCapsGood = blob.m_HECapsGood;
  radio.muMimo = IsMuMimo(blob);
  radio.securityMask = blob.SecurityMask;
  radio.maxRateMbps = blob.GetMaxRateMbps(context.heCapable, false);
  radio.loadPct = blob.m_QBSSLoadPct;
  radio.loadMapValid = context.loadMapValid;
  if (context.loadMapValid) {
    const int band = BandOfFrequency(GetFrequencyKhz());
    const ChannelLoadMap& map = context.LoadMap();
    radio.quietChannel = blob.m_VHT80Plus80 ? map.IsQuiet(band, blob.m_LoadSeg0Channel) ||
                                                  map.IsQuiet(band, blob.m_LoadSeg1Channel)
                                            : map.IsQuiet(band, blob.m_LoadCenterChannel);
  }
  return radio;
}

NetworkFacts CWlanBssEntry::ReadNetwork(const ScoreContext& context) const {
  if (const KnownNetwork* known = context.FindNetwork(m_SSIDW))
    return {known->category == kCategoryPrivate, true, known->connectivity};
  if (context.networks && context.logUnknownNetworks) {
    LOG_DEBUG(
        DBG(1),
        u"\nCNetworkListManager::GetConnectivityForBaseNetname: %s __NOT FOUND__! [hint_find=%i]\n",
        m_SSIDW, 1);
  }
  return {};
}

void CWlanBssEntry::UpdateScore(std::uint32_t pegLQ, const ScoreContext& context) {
  const std::int32_t subtotal = ComputeSubtotal(pegLQ, context);
  if (!m_ScoreHistory.empty() && m_ScoreHistory.front() == subtotal) return;
  m_ScoreHistory.insert(m_ScoreHistory.begin(), subtotal);
  if (m_ScoreHistory.size() > kScoresKept) m_ScoreHistory.resize(kScoresKept);
}

std::int32_t CWlanBssEntry::GetScore(bool bLog, const ScoreContext& context) {
  if (m_ScoreHistory.empty()) {
    if (bLog) m_FinalScored.reset();
    return -1;
  }
  FinalScoreInputs in;
  in.subtotal = m_ScoreHistory.front();
  in.loadPoints = m_QBSSPoints;
  in.channelLoad = context.LoadMap().LoadOf(BandOfFrequency(GetFrequencyKhz()),
                                            m_IEBlob ? m_IEBlob->m_LoadCenterChannel : 0);
  in.bandAverage = IsIn5GHzRange() ? context.averageScore5 : context.averageScore2;
  in.loadWeight = context.weights.QBSSBumpMax;
  in.guest = IsGuestNetwork(m_SSIDW);
  in.bluetoothBand = !IsIn5GHzRange();
  in.bluetoothPenalty = m_BTPenalty;
  if (bLog) m_FinalScored = in;
  return ComputeFinalScore(in, nullptr);
}

std::string CWlanBssEntry::FinalScoreLog() const {
  std::string terms;
  if (m_FinalScored) ComputeFinalScore(*m_FinalScored, &terms);
  return terms;
}

std::int32_t CWlanBssEntry::MaxRate(bool halved, const ScoreContext& context) const {
  if (m_IEBlob) return m_IEBlob->GetMaxRateMbps(context.heCapable, halved);
  // The platform's rate set holds units of 500 kbps with the basic-rate bit on top (IEEE
  // 802.11 9.4.2.3).
  constexpr std::size_t kRatesRead = 126;
  const std::size_t count = std::min<std::size_t>(m_Bss.wlanRateSet.uRateSetLength / 2, kRatesRead);
  std::int32_t best = 0;
  for (std::size_t i = 0; i < count; ++i) {
    best = std::max(best, std::int32_t{m_Bss.wlanRateSet.usRateSet[i] & 0x7FFF} / 2);
  }
  return best;
}

std::int32_t CWlanBssEntry::GetMaxRate(const ScoreContext& context) const {
  return MaxRate(false, context);
}
std::int32_t CWlanBssEntry::GetMaxRateHalved(const ScoreContext& context) const {
  return MaxRate(true, context);
}

double CWlanBssEntry::GetLoadPct(const ScoreContext& context) const {
  if (m_IEBlob && m_IEBlob->m_QBSSLoadPct >= 0.0) return std::min(m_IEBlob->m_QBSSLoadPct, 100.0);
  return IsIn5GHzRange() ? context.averageLoad5 : context.averageLoad2;
}

double CWlanBssEntry::GetRawLoadPct() const { return m_IEBlob ? m_IEBlob->m_QBSSLoadPct : -1.0; }

std::uint16_t CWlanBssEntry::GetStationCount() const {
  return m_IEBlob ? m_IEBlob->m_StationCount : std::uint16_t{65535};
}

WString CWlanBssEntry::GetPhyMode() const { return Widen(PhyModeOf(m_IEBlob.get())); }

WString CWlanBssEntry::GetPhyModes() {
  if (!m_IEBlob) return u"802.11";
  m_IEBlob->m_PhyModeString = Widen(PhyModesOf(*m_IEBlob));
  return m_IEBlob->m_PhyModeString;
}

WString CWlanBssEntry::GetChannelWidthText() {
  return m_IEBlob ? m_IEBlob->GetChannelWidthString(false, u"/", true) : WString(u"20");
}

bool CWlanBssEntry::GetMuMimo() const { return m_IEBlob && IsMuMimo(*m_IEBlob); }

WString CWlanBssEntry::GetBandText() const { return Widen(BandTextOf(GetFrequencyKhz())); }

bool CWlanBssEntry::IsIn5GHzRange() const {
  return GetFrequencyKhz() >= 5150000 && GetFrequencyKhz() <= 5924999;
}

CWlanBssEntry::StatusFacts CWlanBssEntry::ReadStatus(const ScoreContext& context) {
  const char16_t* automatic = m_GrantedAccess == 0 ? u"unknown"
                              : m_AutoConnect      ? u"auto"
                                                   : u"not-auto";
  const char16_t* presence = m_bss_scanned ? u"good" : m_unscanned_count == 0 ? u"pending" : u"bad";
  return {GetScore(true, context),
          GetLQ(),
          GetFrequencyKhz(),
          m_Channel,
          m_ApCountOnChannel,
          m_AuthAlgorithm,
          GetLoadPct(context),
          context.CategoryText(m_SSIDW),
          automatic,
          presence,
          m_IEBlob.get()};
}

const WString& CWlanBssEntry::GetStatusLine(const ScoreContext& context) {
  const StatusFacts facts = ReadStatus(context);
  if (!m_StatusLine.empty() && facts == m_StatusFacts) return m_StatusLine;
  m_StatusLine = Format(
      u"%s\v%s\v%s\v%i\v%lu\v%s\v%s\v%s\v%0.2lf\v%lu\v%s\v%i\v%i\v%s\v%s\v%i", m_SSIDW, m_BSSIDText,
      GetBandText(), facts.score, facts.quality, facts.category, facts.automatic, facts.presence,
      facts.loadPct, facts.channel, GetPhyModes(), facts.authAlgorithm, GetMuMimo(),
      m_IEBlob ? m_IEBlob->GetChannelWidthString(false, u",", false) : WString(u"20"), u"no",
      facts.apCount);
  m_StatusFacts = facts;
  return m_StatusLine;
}

void CWlanBssEntry::UpdateApCount(const ScoreContext& context) {
  std::int64_t channel = m_Channel;
  if (m_IEBlob && m_IEBlob->m_VHT80Plus80) {
    channel = m_IEBlob->m_LoadSeg0Channel;
  } else if (m_IEBlob && m_IEBlob->m_LoadCenterChannel >= 1) {
    channel = m_IEBlob->m_LoadCenterChannel;
  }
  m_ApCountOnChannel = context.LoadMap().ApCountOf(BandOfFrequency(GetFrequencyKhz()), channel);
}

std::int32_t CWlanBssEntry::GetCandidate() {
  if (IsOutOfScan()) {
    if (m_candidate_counter > 0) {
      LOG_ADAPTER(m_IfIndex, DBG(16) | DBG(17),
                  u"GetCandidate[%s, m_bss_scanned=%i, m_unscanned_count=%i]: CLEARING CANDIDATE "
                  u"%i --> 0\n",
                  m_BSSIDText, m_bss_scanned, m_unscanned_count, m_candidate_counter);
      m_candidate_counter = 0;
    }
    return 0;
  }
  return m_candidate_counter;
}

std::int32_t CWlanBssEntry::IncrementCandidate(std::int32_t force) {
  constexpr std::uint64_t kLog = DBG(16) | DBG(17);
  if (IsOutOfScan()) {
    m_candidate_counter = 0;
    LOG_ADAPTER(m_IfIndex, kLog,
                u"IncrementCandidate[%s, m_bss_scanned=%i, m_unscanned_count=%i, force=%i]: CLEAR "
                u"due to unscan\n",
                m_BSSIDText, m_bss_scanned, m_unscanned_count, force);
  } else if (force > 0) {
    m_candidate_counter = force;
    LOG_ADAPTER(
        m_IfIndex, kLog,
        u"IncrementCandidate[%s, m_bss_scanned=%i, m_unscanned_count=%i, force=%i]: _JUMP_ to %i\n",
        m_BSSIDText, m_bss_scanned, m_unscanned_count, force, m_candidate_counter);
  } else {
    ++m_candidate_counter;
    LOG_ADAPTER(
        m_IfIndex, kLog,
        u"IncrementCandidate[%s, m_bss_scanned=%i, m_unscanned_count=%i, force=%i]: BUMPED to %i\n",
        m_BSSIDText, m_bss_scanned, m_unscanned_count, force, m_candidate_counter);
  }
  return m_candidate_counter;
}

bool CWlanBssEntry::HasUsableProfile() const {
  const auto holds = [this](std::uint32_t mask) { return (m_GrantedAccess & mask) == mask; };
  return holds(platform::WLAN_EXECUTE_ACCESS) || holds(platform::WLAN_WRITE_ACCESS);
}

void CWlanBssEntry::AssignGatewayMacs(const MacList& ip4, const MacList& ip6) {
  m_IP4GatewayMacs = ip4;
  m_IP6GatewayMacs = ip6;
}

}  // namespace corvane
