#include "corvane_lab/round_notes.h"

#include <algorithm>

#include "policy/round.h"
#include "settings/global_config_container.h"

namespace corvane::lab {

const RoundNote::Entry* RoundNote::Find(int accessPoint) const {
  const auto found = std::ranges::find(entries, accessPoint, &Entry::accessPoint);
  return found == entries.end() ? nullptr : &*found;
}

RoundNotetaker::RoundNotetaker(const platform::sim::World& world)
    : m_Adapters(world), m_Notes(world.adapters.size()) {
  for (std::size_t i = 0; i < world.accessPoints.size(); ++i)
    m_Numbers[world.accessPoints[i].bssid] = static_cast<int>(i);
  RoundWatches::Add(this);
}

std::uint64_t RoundNotetaker::Now() const {
  return m_pPc ? static_cast<std::uint64_t>(m_pPc->Now().count()) : 0;
}

RoundNote::Entry* RoundNotetaker::EntryOf(RoundNote* note, const MacAddress& bssid) {
  const auto number = m_Numbers.find(bssid);
  if (number == m_Numbers.end()) return nullptr;
  const auto found =
      std::ranges::find(note->entries, number->second, &RoundNote::Entry::accessPoint);
  if (found != note->entries.end()) return &*found;
  note->entries.push_back({number->second, -1, std::nullopt});
  return &note->entries.back();
}

void RoundNotetaker::OnRoundBegins(int adapter, const CWlanInterface& wlan) {
  m_Adapters.Learn(adapter, wlan);
  RoundNote& note = m_Present[m_Adapters.OfIndex(adapter)];
  note = {};
  note.beganMs = Now();
}

void RoundNotetaker::OnCandidates(const Round& round) {
  RoundNote& note = m_Present[m_Adapters.Of(round.adapter)];
  for (const auto& candidate : round.candidates) {
    RoundNote::Entry* entry = EntryOf(&note, candidate->GetBssid());
    if (!entry) continue;
    entry->score = candidate->GetScore(false, round.scores);
    if (round.facts.connected && candidate->GetBssid() == round.facts.bssid)
      note.score = entry->score;
  }
}

void RoundNotetaker::OnStanding(int adapter, CWlanBssEntry& entry, CandidateStanding standing) {
  RoundNote& note = m_Present[m_Adapters.OfIndex(adapter)];
  if (RoundNote::Entry* found = EntryOf(&note, entry.GetBssid())) found->standing = standing;
}

void RoundNotetaker::OnStep(int adapter, RoundStep step, CWlanBssEntry*) {
  RoundNote& note = m_Present[m_Adapters.OfIndex(adapter)];
  note.step = step;
  note.moves = note.moves || step == RoundStep::kSwitch || step == RoundStep::kFirstConnect ||
               step == RoundStep::kRequestedConnect || step == RoundStep::kRestore;
  if (step != RoundStep::kInhibited) return;
  const auto config = CGlobalConfigContainer::GetInstance().FindIFConfig(adapter);
  if (config) note.inhibit = config->GetInhibitReason();
}

void RoundNotetaker::OnRoundEnds(int adapter) {
  const int number = m_Adapters.OfIndex(adapter);
  if (number < 0) return;
  RoundNote& note = m_Present[number];
  note.endedMs = Now();
  m_Notes[static_cast<std::size_t>(number)].push_back(std::move(note));
  note = {};
}

}  // namespace corvane::lab
