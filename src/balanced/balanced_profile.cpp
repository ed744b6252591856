#include "balanced/balanced_profile.h"

#include <algorithm>
#include <cstdlib>

#include "balanced/worth.h"

namespace corvane::balanced {

namespace {

constexpr double kGateStart = 0.06;          // Mbps, of a link without a background
constexpr std::uint32_t kLostQuality = 14;   // -93 dBm: nothing gets through
constexpr std::uint32_t kBadQuality = 30;    // -85 dBm
constexpr std::uint32_t kLeastQuality = 20;  // of a candidate: -90 dBm
constexpr std::size_t kRoundsToTrust = 6;  // on an access point, before its failures are forgotten
constexpr std::uint64_t kTrendMs = 30'000;
constexpr std::uint32_t kFallingBy = 10;  // 5 dB
constexpr std::int32_t kMuchChanged = 6;  // points: 60 percent
constexpr std::uint64_t kLostBeforeMs = 60'000;
constexpr std::uint64_t kLongAgoMs = 86'400'000;
constexpr std::uint32_t kQuickPauseMs = 5'000;
constexpr std::uint32_t kPauseAfterLossMs = 500;
constexpr std::size_t kMostLeft = 64;

constexpr Habits kHabits{.measuresBeforeScan = true,
                         .weighsEachRound = true,
                         .restoresTransmitter = true,
                         .restoresAfterOrder = true,
                         .refusesGoneSuggestion = true,
                         .suggestsAnew = true,
                         .closesOvertakenDialog = true,
                         .claimsFade = true,
                         .questionsYield = true,
                         .endsOrders = true};

}  // namespace

const Habits& BalancedProfile::GetHabits() const { return kHabits; }

void BalancedProfile::OnRound(const LinkReading& link) {
  if (link.bssid != m_Link.bssid || link.connected != m_Link.connected) {
    if (m_Link.connected) {
      m_Left[m_Link.bssid] = link.now;
      if (m_Left.size() > kMostLeft)
        m_Left.erase(std::min_element(m_Left.begin(), m_Left.end(),
                                      [](auto& a, auto& b) { return a.second < b.second; }));
    }
    m_SampleCount = 0;
    m_DullScans = 0;
    m_ReadyScans = 0;
  }
  m_Link = link;
  if (!link.connected) return;
  if (link.bssid == m_OwnTarget && m_SampleCount >= kRoundsToTrust)
    m_Failures.OnSuccess(link.bssid);
  m_Samples[m_SampleCount++ % m_Samples.size()] = {link.now, link.quality};
  m_Background.Add(link.mbps);
}

void BalancedProfile::OnWeighed(std::int32_t best, std::int32_t current, bool fresh) {
  const bool changed =
      (m_Current < 0) != (current < 0) || std::abs(current - m_Current) >= kMuchChanged;
  const bool appeared = best - m_Best >= kMuchChanged;
  m_Best = best;
  m_Current = current;
  if (!fresh) return;
  m_DullScans = changed || best > current ? 0 : m_DullScans + 1;
  m_ReadyScans = changed || appeared || best <= current ? 0 : m_ReadyScans + 1;
}

void BalancedProfile::OnConnected(const MacAddress& bssid, std::uint32_t quality,
                                  std::uint64_t now) {
  m_OwnTarget = bssid;
  m_OwnQuality = quality;
  const CCritSecLock lock(m_Lock);
  m_Quarrel.OnOwnMove(now);
  m_bByPerson = false;
}

void BalancedProfile::OnConnectFailed(const MacAddress& bssid, std::uint32_t quality,
                                      std::uint64_t now) {
  m_Failures.OnFailure(bssid, quality, now);
}

void BalancedProfile::OnOutsideConnect(bool byPerson, std::uint64_t) {
  const CCritSecLock lock(m_Lock);
  m_bByPerson = byPerson;
}

// A link that was lost and mended is no quarrel: nobody moved the adapter from where it was well.
void BalancedProfile::OnOutsideRoam(std::uint64_t now) {
  const CCritSecLock lock(m_Lock);
  if (m_LostTick != 0 && now - m_LostTick < kLostBeforeMs) return;
  // The driver does not stay where we went: not there again until it is heard better.
  if (m_Quarrel.OnOutsideRoam(now)) m_Failures.OnFailure(m_OwnTarget, m_OwnQuality, now);
}

void BalancedProfile::OnLinkLost(std::uint64_t now) {
  const CCritSecLock lock(m_Lock);
  m_LostTick = now;
}

bool BalancedProfile::IsFalling() const {
  if (m_SampleCount < 2) return false;
  const Sample& newest = m_Samples[(m_SampleCount - 1) % m_Samples.size()];
  std::uint32_t highest = newest.quality;
  for (std::size_t i = 0; i < std::min(m_SampleCount, m_Samples.size()); ++i) {
    if (newest.tick - m_Samples[i].tick <= kTrendMs)
      highest = std::max(highest, m_Samples[i].quality);
  }
  return highest - newest.quality >= kFallingBy;
}

CadenceFacts BalancedProfile::Cadence() const {
  CadenceFacts facts;
  facts.connected = m_Link.connected;
  facts.pending = m_Best > m_Current;
  facts.dullScans = m_DullScans;
  facts.readyScans = m_ReadyScans;
  return facts;
}

ScanDecision BalancedProfile::Scan(const ScanInputs& in) const {
  const bool busy = in.rate >= m_Background.Gate(kGateStart);
  return DecideScan(in, Cadence(), busy, in.connected && m_Link.quality < kLostQuality);
}

std::uint32_t BalancedProfile::RoundPauseMs(std::uint32_t normal) const {
  const CadenceFacts facts = Cadence();
  const bool quick = facts.pending || !facts.connected || IsFalling();
  return quick ? std::min(normal, kQuickPauseMs) : normal;
}

// A move goes by fresh data; what a stale round sees makes the next scan come sooner.
StaleAction BalancedProfile::OnStaleRound(bool, std::uint32_t) const { return StaleAction::kSkip; }

bool BalancedProfile::IsBusy(bool realTimeAudio, double mbps, double) const {
  if (m_Link.quality < kLostQuality) return false;
  return realTimeAudio || mbps >= m_Background.Gate(kGateStart);
}

bool BalancedProfile::KeepsStill(std::uint64_t, const LinkReading& link) const {
  const CCritSecLock lock(m_Lock);
  return link.connected && m_Quarrel.Holds(link.now, link.quality < kBadQuality);
}

std::uint32_t BalancedProfile::DisconnectStep(bool) const { return kDisconnectsForDecision; }

std::uint32_t BalancedProfile::PauseAfterLossMs(std::uint32_t) const { return kPauseAfterLossMs; }

// What was found unavailable once is a failure among others, which fades.
bool BalancedProfile::IsBarred(const MacAddress& bssid, std::uint32_t quality, bool,
                               std::uint64_t now) const {
  return m_Failures.IsBarred(bssid, quality, now);
}

GainFacts BalancedProfile::GainOf(const Contender& contender) const {
  GainFacts gain;
  gain.points = contender.score - contender.current;
  gain.current = contender.current;
  gain.sameNetwork = contender.sameNetwork;
  gain.falling = IsFalling();
  const auto left = m_Left.find(contender.bssid);
  gain.sinceLeftMs = left == m_Left.end() ? kLongAgoMs : m_Link.now - left->second;
  return gain;
}

CandidateMargins BalancedProfile::Margins(const CandidateMargins&,
                                          const Contender& contender) const {
  return {kLeastQuality, static_cast<std::uint32_t>(NeededGain(GainOf(contender))), 0};
}

std::int32_t BalancedProfile::RoundsToWin(std::int32_t, const Contender& contender) const {
  return balanced::RoundsToWin(GainOf(contender));
}

// A person's choice of a network is kept, not her choice of a transmitter; what the system chose is
// nobody's wish.
SuggestionMode BalancedProfile::Mode(const SuggestionMode& mode, bool sameNetwork) const {
  const CCritSecLock lock(m_Lock);
  SuggestionMode now = mode;
  now.popupOverride = mode.popupOverride && m_bByPerson && !sameNetwork;
  return now;
}

// In percent of the rate. A candidate that has ripened is always worth a word.
SuggestionPercent BalancedProfile::PercentOf(std::int32_t score, std::int32_t current,
                                             std::uint32_t, std::uint32_t) const {
  constexpr double kMostPercent = 1000.0;
  const double now = std::max(MbpsOf(current), 1.0);
  const double percent = std::clamp((MbpsOf(score) / now - 1.0) * 100.0, 0.0, kMostPercent);
  return {score > current, static_cast<std::int32_t>(percent)};
}

}  // namespace corvane::balanced
