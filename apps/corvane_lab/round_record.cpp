#include "corvane_lab/round_record.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

#include "foundation/format.h"
#include "policy/policy.h"
#include "policy/round.h"
#include "settings/global_config_container.h"

namespace corvane::lab {

namespace {

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

void Text(JsonWriter& json, const char* name, const std::string& text) {
  json.Key(name);
  json.String(text.c_str(), static_cast<rapidjson::SizeType>(text.size()));
}

void Number(JsonWriter& json, const char* name, std::int64_t number) {
  json.Key(name);
  json.Int64(number);
}

void Fraction(JsonWriter& json, const char* name, double number) {
  constexpr int kPlaces = 3;
  json.Key(name);
  json.SetMaxDecimalPlaces(kPlaces);
  json.Double(number);
}

const char* ModeText(const CQUAYInterfaceConfig& config) {
  return config.IsAutoswitch() ? "autoswitch" : config.IsEtwMode() ? "event" : "popup";
}

void Entries(JsonWriter& json, const char* name, const RoundRecord& round,
             const std::vector<EntryRecord>& entries, RoundDetail detail) {
  json.Key(name);
  json.StartArray();
  for (const EntryRecord& entry : entries) {
    if (!entry.standing && detail == RoundDetail::kJudged) continue;
    json.StartObject();
    Text(json, "ssid", entry.ssid);
    Text(json, "bssid", entry.bssid);
    Number(json, "score", entry.score);
    Number(json, "quality", entry.quality);
    Number(json, "counter", entry.counter);
    if (entry.standing) Text(json, "rule", CandidateStandingName(*entry.standing));
    if (detail == RoundDetail::kAll) {
      Text(json, "reason", ReasonText(round, entry));
      Text(json, "terms", entry.terms);
    }
    json.EndObject();
  }
  json.EndArray();
}

void Policy(JsonWriter& json, const RoundRecord& round, RoundDetail detail) {
  if (round.connected) {
    json.Key("connection");
    json.StartObject();
    Text(json, "ssid", round.ssid);
    Text(json, "bssid", round.bssid);
    Number(json, "score", round.score);
    Number(json, "quality", round.quality);
    json.EndObject();
  }
  Text(json, "mode", round.mode);
  if (round.profile != PolicyProfileKind::kClassic) Text(json, "profile", NameOf(round.profile));
  Number(json, "required_rounds", round.required);
  Number(json, "margin_points", round.margins.scoreThreshold);
  Number(json, "margin_percent", round.margins.scorePercent);
  Number(json, "least_quality", round.margins.qualityThreshold);
  Fraction(json, "mbps", round.mbps);
  Fraction(json, "gate_mbps", round.gateMbps);
  json.Key("real_time_audio");
  json.Bool(round.realTimeAudio);
  Entries(json, "candidates", round, round.candidates, detail);
  Entries(json, "others", round, round.others, detail);
}

}  // namespace

std::string ScoreText(int score) {
  return score < 0 ? std::string("not scored yet") : FormatA("score %i", score);
}

// Steps about one access point stand behind its name, once.
std::string OutcomeText(const RoundRecord& round) {
  std::string text;
  const StepRecord* before = nullptr;
  for (const StepRecord& step : round.steps) {
    const bool goesOn = before && !step.bssid.empty() && before->bssid == step.bssid;
    if (before) text += goesOn ? ", " : "; ";
    if (!step.bssid.empty() && !goesOn) text += step.ssid + " " + step.bssid + ": ";
    text += RoundStepText(step.step);
    before = &step;
  }
  return text;
}

const char* ReasonText(const RoundRecord& round, const EntryRecord& entry) {
  if (entry.standing) return CandidateStandingText(*entry.standing);
  if (round.connected && entry.bssid == round.bssid) return "it is the connected one";
  const bool onBest = std::ranges::any_of(
      round.steps, [](const StepRecord& s) { return s.step == RoundStep::kOnBest; });
  return onBest ? "it ranks behind the connected one" : "the round did not come to weigh it";
}

std::string RoundJson(const RoundRecord& round, RoundDetail detail) {
  rapidjson::StringBuffer buffer;
  JsonWriter json(buffer);
  json.StartObject();
  Number(json, "ms", static_cast<std::int64_t>(round.endedMs));
  Number(json, "adapter", round.adapter);
  Text(json, "event", "round");
  Number(json, "round", static_cast<std::int64_t>(round.number));
  Number(json, "began_ms", static_cast<std::int64_t>(round.beganMs));
  Text(json, "text", OutcomeText(round));
  json.Key("decisions");
  json.StartArray();
  for (const StepRecord& step : round.steps) {
    json.StartObject();
    Text(json, "decision", RoundStepName(step.step));
    if (!step.bssid.empty()) {
      Text(json, "ssid", step.ssid);
      Text(json, "bssid", step.bssid);
    }
    Text(json, "reason", RoundStepText(step.step));
    json.EndObject();
  }
  json.EndArray();
  if (round.systemConnected) {
    json.Key("system_connected");
    json.Bool(true);
  }
  if (round.movedMs) Number(json, "moved_by_others_ms", static_cast<std::int64_t>(*round.movedMs));
  if (round.hasPolicy) Policy(json, round, detail);
  json.EndObject();
  return buffer.GetString();
}

const RoundRecord* RoundRecorder::Latest(int adapter) const {
  const auto found = m_Rounds.find(adapter);
  return found == m_Rounds.end() ? nullptr : &found->second;
}

void RoundRecorder::OnRoundBegins(int adapter, const CWlanInterface& wlan) {
  m_Numbers.Learn(adapter, wlan);
  m_Adapters[adapter] = &wlan;
  RoundRecord& round = Round(adapter);
  RoundRecord next;
  next.adapter = m_Numbers.OfIndex(adapter);
  next.number = round.number + 1;
  next.beganMs = Now();
  ReadHolds(wlan, &next);
  round = std::move(next);
}

void RoundRecorder::ReadHolds(const CWlanInterface& adapter, RoundRecord* round) const {
  const auto config = adapter.Config();
  round->systemConnected = adapter.IsConnected() && config->m_bForcePopupOverride;
  round->movedMs.reset();
  if (config->GetRoamingInhibitTick() == 0) return;
  round->movedMs = Now() - std::min(config->GetRoamingInhibitAgeMs(), Now());
}

EntryRecord RoundRecorder::Read(CWlanBssEntry& entry, const ScoreContext& scores) const {
  return {WideToUtf8(entry.m_SSIDW),
          MacTextA(entry.GetBssid()),
          entry.GetScore(false, scores),
          entry.GetLQ(),
          entry.m_candidate_counter,
          std::nullopt,
          m_bTerms ? entry.ScoreLog() + entry.FinalScoreLog() : std::string()};
}

void RoundRecorder::OnCandidates(const corvane::Round& now) {
  RoundRecord& round = Round(now.idx);
  const auto& global = CGlobalConfigContainer::GetInstance();
  const ConnectionFacts& facts = now.facts;
  round.hasPolicy = true;
  ReadHolds(now.adapter, &round);  // the round itself may have found out that it was moved
  round.connected = facts.connected;
  if (facts.connected) {
    round.ssid = WideToUtf8(facts.ssid);
    round.bssid = MacTextA(facts.bssid);
    round.score = now.adapter.GetScoreFromBssEntry(facts.ssid, facts.bssid, true);
    round.quality = facts.quality;
  }
  round.mode = ModeText(*now.config);
  round.profile = now.profile.Kind();
  round.required = CGlobalQUAYPolicy::RequiredCandidateCount();
  round.margins = now.Settings();
  round.mbps = now.adapter.GetTrafficMbps();
  round.gateMbps = now.config->m_rate_gate_high;
  round.realTimeAudio = global.m_rt_audio;
  round.candidates.reserve(now.candidates.size());
  for (const auto& entry : now.candidates) round.candidates.push_back(Read(*entry, now.scores));
}

// Before the list is there, an entry is told of because it may not be in it.
void RoundRecorder::OnStanding(int adapter, CWlanBssEntry& entry, CandidateStanding standing) {
  RoundRecord& round = Round(adapter);
  if (!round.hasPolicy) {
    const CWlanInterface* wlan = m_Adapters[adapter];
    round.others.push_back(Read(entry, wlan ? wlan->GetScoreContext() : ScoreContext()));
    round.others.back().standing = standing;
    return;
  }
  const std::string bssid = MacTextA(entry.GetBssid());
  const auto found = std::ranges::find(round.candidates, bssid, &EntryRecord::bssid);
  if (found == round.candidates.end()) return;
  found->standing = standing;
  found->counter = entry.m_candidate_counter;
}

void RoundRecorder::OnStep(int adapter, RoundStep step, CWlanBssEntry* about) {
  Round(adapter).steps.push_back({step, about ? WideToUtf8(about->m_SSIDW) : std::string(),
                                  about ? MacTextA(about->GetBssid()) : std::string()});
}

void RoundRecorder::OnRoundEnds(int adapter) {
  RoundRecord& round = Round(adapter);
  round.endedMs = Now();
  round.ended = true;
  if (m_Listener) m_Listener(round, m_pContext);
}

}  // namespace corvane::lab
