#include "corvane_lab/day_record.h"

#include <rapidjson/document.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <string_view>

#include "elements/frequency_table.h"
#include "store/address_text.h"

namespace corvane::lab {

using platform::sim::Cause;

namespace {

constexpr std::size_t kMostEvents = 5000;
constexpr double kLeastMbpsChange = 0.05;
constexpr std::size_t kMostDecisions = 20'000;  // from there on quiet rounds in a row are one

// What the pictures show by themselves.
bool IsShownElsewhere(std::string_view kind) {
  return kind == "scan" || kind == "candidate" || kind == "at" || kind == "trace";
}

bool IsMove(RoundStep step) {
  switch (step) {
    case RoundStep::kFirstConnect:
    case RoundStep::kSwitch:
    case RoundStep::kRequestedConnect:
    case RoundStep::kRestore:
    case RoundStep::kDeniedLeft:
      return true;
    default:
      return false;
  }
}

bool IsQuiet(RoundStep step) {
  return step == RoundStep::kStale || step == RoundStep::kOnBest ||
         step == RoundStep::kNothingBetter;
}

// The step that a reader would name first: a move, or what the round came to in the end.
RoundStep TellingStep(const RoundRecord& round) {
  const auto move =
      std::ranges::find_if(round.steps, [](const StepRecord& one) { return IsMove(one.step); });
  return move == round.steps.end() ? round.steps.back().step : move->step;
}

std::string StringOf(const rapidjson::Value& object, const char* name) {
  const auto at = object.FindMember(name);
  return at != object.MemberEnd() && at->value.IsString() ? at->value.GetString() : "";
}

}  // namespace

DayRecord::DayRecord(const platform::sim::World& world)
    : m_World(world), m_Report(&OnLine, this, false), m_Days(world.adapters.size()) {
  for (const auto& ap : world.accessPoints) {
    AccessPoint& own =
        m_AccessPoints[static_cast<std::size_t>(NumberOf(MacTextA(ap.bssid), ap.ssid))];
    own.channel = ChannelOfFrequency(ap.frequencyMhz * 1000).channel;
    own.band = BandOfFrequency(ap.frequencyMhz * 1000);
  }
}

void DayRecord::Attach(platform::sim::SimulatedPc& pc) {
  m_pPc = &pc;
  m_Report.Attach(pc, m_World);
  m_Rounds.emplace(
      pc, m_World, false,
      [](const RoundRecord& round, void* self) { static_cast<DayRecord*>(self)->OnRound(round); },
      this);
}

void DayRecord::Detach() {
  m_Rounds.reset();
  m_Report.Detach();
  m_pPc = nullptr;
}

std::uint64_t DayRecord::Now() const {
  return m_pPc ? static_cast<std::uint64_t>(m_pPc->Now().count()) : 0;
}

const std::string& DayRecord::BssidOf(int accessPoint) const {
  return m_AccessPoints[static_cast<std::size_t>(accessPoint)].bssid;
}

int DayRecord::NumberOf(const std::string& bssid, const std::string& ssid) {
  const auto [at, isNew] = m_Numbers.emplace(bssid, static_cast<int>(m_AccessPoints.size()));
  if (isNew) m_AccessPoints.push_back({bssid, ssid});
  return at->second;
}

int DayRecord::TextNumber(const std::string& text) {
  const auto [at, isNew] = m_TextNumbers.emplace(text, static_cast<int>(m_Texts.size()));
  if (isNew) m_Texts.push_back(text);
  return at->second;
}

void DayRecord::Move(int adapter, int accessPoint) {
  auto& links = m_Days[static_cast<std::size_t>(adapter)].links;
  if ((links.empty() ? kNowhere : links.back().accessPoint) == accessPoint) return;
  links.push_back({Now(), accessPoint});
}

// ---- rounds ---------------------------------------------------------------------------------

void DayRecord::OnRound(const RoundRecord& round) {
  if (round.adapter < 0) return;
  AdapterDay& day = m_Days[static_cast<std::size_t>(round.adapter)];
  TakeDecision(&day, round);
  if (!round.hasPolicy) return;
  std::set<int> heard;
  if (round.connected && !round.bssid.empty()) {
    const int number = NumberOf(round.bssid, round.ssid);
    heard.insert(number);
    if (day.links.empty()) day.links.push_back({0, number});  // the world began so
    day.series[number].Add({round.beganMs, round.score, static_cast<int>(round.quality), 0,
                            TextNumber("it is the connected one")});
  }
  for (const auto* list : {&round.candidates, &round.others}) {
    for (const EntryRecord& entry : *list) {
      if (heard.insert(NumberOf(entry.bssid, entry.ssid)).second) TakeEntry(&day, round, entry);
    }
  }
  for (auto& [number, series] : day.series) {
    if (!heard.contains(number)) series.Add({.ms = round.beganMs});
  }
  if (day.traffic.empty() || std::abs(day.traffic.back().mbps - round.mbps) > kLeastMbpsChange ||
      std::abs(day.traffic.back().gateMbps - round.gateMbps) > kLeastMbpsChange) {
    day.traffic.push_back({round.beganMs, round.mbps, round.gateMbps});
  }
}

void DayRecord::TakeEntry(AdapterDay* day, const RoundRecord& round, const EntryRecord& entry) {
  day->series[NumberOf(entry.bssid, entry.ssid)].Add(
      {round.beganMs, entry.score, static_cast<int>(entry.quality), entry.counter,
       TextNumber(ReasonText(round, entry))});
}

void DayRecord::TakeDecision(AdapterDay* day, const RoundRecord& round) {
  if (round.steps.empty()) return;
  const RoundStep told = TellingStep(round);
  const int step = TextNumber(RoundStepName(told));
  const int text = TextNumber(OutcomeText(round));
  auto& decisions = day->decisions;
  const bool isMany = decisions.size() >= kMostDecisions;
  if (!decisions.empty() &&
      (decisions.back().text == text || (isMany && decisions.back().quiet && IsQuiet(told)))) {
    decisions.back().toMs = round.endedMs;
    ++decisions.back().rounds;
  } else {
    decisions.push_back({round.beganMs, round.endedMs, 1, step, text, IsQuiet(told)});
  }
}

// ---- events ---------------------------------------------------------------------------------

void DayRecord::OnLine(const std::string&, const std::string& json, void* self) {
  DayRecord& day = *static_cast<DayRecord*>(self);
  if (json.empty()) return;
  rapidjson::Document document;
  document.Parse(json.c_str());
  const rapidjson::Value& line = document;
  if (!line.IsObject()) return;
  const std::string kind = StringOf(line, "event");
  if (kind == "summary") {
    day.m_Summary = json;
    return;
  }
  if (IsShownElsewhere(kind)) return;
  if (kind == "client" && day.m_Events.size() >= kMostEvents) {
    ++day.m_EventsLeftOut;
    return;
  }
  const auto adapter = line.FindMember("adapter");
  day.m_Events.push_back({day.Now(), adapter == line.MemberEnd() ? -1 : adapter->value.GetInt(),
                          kind, StringOf(line, "text")});
}

void DayRecord::OnScanStarted(int adapter, Cause cause, const std::string& ssid) {
  m_Days[static_cast<std::size_t>(adapter)].scans.push_back({Now(), cause});
  m_Report.OnScanStarted(adapter, cause, ssid);
}

void DayRecord::OnScanEnded(int adapter, Cause cause, bool good) {
  m_Report.OnScanEnded(adapter, cause, good);
}

void DayRecord::OnConnectStarted(int adapter, Cause cause, const std::string& ssid) {
  m_Report.OnConnectStarted(adapter, cause, ssid);
}

void DayRecord::OnConnectEnded(int adapter, Cause cause, const std::string& ssid,
                               const std::string& bssid, platform::DWORD reason) {
  if (reason == 0) Move(adapter, NumberOf(bssid, ssid));
  m_Report.OnConnectEnded(adapter, cause, ssid, bssid, reason);
}

void DayRecord::OnDisconnected(int adapter, Cause cause, const std::string& ssid) {
  Move(adapter, kNowhere);
  m_Report.OnDisconnected(adapter, cause, ssid);
}

void DayRecord::OnRoamed(int adapter, Cause cause, const std::string& ssid,
                         const std::string& bssid) {
  Move(adapter, NumberOf(bssid, ssid));
  m_Report.OnRoamed(adapter, cause, ssid, bssid);
}

void DayRecord::OnTimeline(const std::string& text) { m_Report.OnTimeline(text); }

void DayRecord::OnClientMessage(const std::string& client, const std::string& text) {
  m_Report.OnClientMessage(client, text);
}

}  // namespace corvane::lab
