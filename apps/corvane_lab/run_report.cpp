#include "corvane_lab/run_report.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cctype>

#include "foundation/format.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "policy/policy.h"
#include "settings/global_config_container.h"
#include "wlan/wifi_client_container.h"

namespace corvane::lab {

using platform::sim::Cause;

namespace {

const char* CauseText(Cause cause) {
  switch (cause) {
    case Cause::kProgram:
      return "the service";
    case Cause::kOutside:
      return "somebody else";
    case Cause::kDriver:
      return "the driver";
  }
  return "";
}

std::string Clock(std::uint64_t ms) {
  return FormatA("%02llu:%02llu:%02llu.%03llu", ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60,
                 ms % 1000);
}

std::string Share(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? std::string("0 s") : FormatA("%llu s (%llu %%)", part, part * 100 / whole);
}

bool IsBase64(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '+' || c == '/' || c == '=';
}

// The beginning of a message, without what is encoded: a token says nothing to a reader, and a log
// tells of the build.
std::string Head(const std::string& text) {
  constexpr std::size_t kMost = 160;
  constexpr std::ptrdiff_t kEncoded = 64;  // so many characters of base64 in a row are no words
  std::string head;
  for (auto at = text.begin(); at != text.end() && head.size() < kMost;) {
    const auto end = std::find_if_not(at, text.end(), IsBase64);
    if (end - at >= kEncoded) {
      head += "...";
      at = end;
    } else {
      head.append(at, std::max(end, at + 1));
      at = std::max(end, at + 1);
    }
  }
  if (head.size() <= kMost) return head;
  std::size_t cut = kMost;
  while (cut > 0 && (static_cast<unsigned char>(head[cut]) & 0xC0) == 0x80) --cut;
  return head.substr(0, cut) + "...";
}

// What a reader sees anyway, or would see all the time: between two scans nothing is decided.
bool IsTiresome(const RoundRecord& round) {
  if (round.steps.empty()) return true;
  const RoundStep first = round.steps.front().step, last = round.steps.back().step;
  return first == RoundStep::kInhibited ||
         (first == RoundStep::kStale && last != RoundStep::kBetterPossible);
}

}  // namespace

std::string RunReport::PlaceText(const Place& at) {
  if (at.bssid.empty()) {
    return at.ssid.empty() ? std::string("an access point that is not known yet")
                           : at.ssid + ", by an access point that is not known yet";
  }
  return FormatA("%s %s, %s, quality %u", at.ssid, at.bssid, ScoreText(at.score), at.quality);
}

void RunReport::Line(int adapter, const char* kind, const std::string& text) {
  const auto ms = static_cast<std::uint64_t>(m_pPc ? m_pPc->Now().count() : 0);
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> json(buffer);
  json.StartObject();
  json.Key("ms");
  json.Uint64(ms);
  if (adapter >= 0) {
    json.Key("adapter");
    json.Int(adapter);
  }
  json.Key("event");
  json.String(kind);
  json.Key("text");
  json.String(text.c_str());
  json.EndObject();
  const std::string who = adapter >= 0 ? FormatA("adapter %i", adapter) : std::string("pc");
  m_Print(FormatA("%s  %-9s  %s", Clock(ms), who, text), buffer.GetString(), m_pContext);
}

void RunReport::Attach(platform::sim::SimulatedPc& pc, const platform::sim::World& world) {
  m_pPc = &pc;
  m_Numbers.emplace(world);
  m_Rounds.emplace(
      pc, world, false,
      [](const RoundRecord& round, void* self) { static_cast<RunReport*>(self)->OnRound(round); },
      this);
  m_Audit.emplace(
      world,
      [](int adapter, const std::string& fault, void* self) {
        static_cast<RunReport*>(self)->OnBrokenRule(adapter, fault);
      },
      this);
  pc.Kernel().EventTrace().SetObserver(
      [](const platform::TraceEvent& event, void* self) {
        static_cast<RunReport*>(self)->OnTraceEvent(event);
      },
      this);
}

void RunReport::Detach() {
  m_pPc->Kernel().EventTrace().SetObserver(nullptr, nullptr);
  m_Audit.reset();
  m_Rounds.reset();
  m_pPc = nullptr;
}

RunReport::AdapterView& RunReport::View(int adapter) {
  if (m_Adapters.size() <= static_cast<std::size_t>(adapter))
    m_Adapters.resize(static_cast<std::size_t>(adapter) + 1);
  return m_Adapters[static_cast<std::size_t>(adapter)];
}

// A reader hears of a round when it ends in something else than the one before.
void RunReport::OnRound(const RoundRecord& round) {
  ++m_Summary.rounds;
  AdapterView& view = View(round.adapter);
  if (m_bRounds) m_Print({}, RoundJson(round, RoundDetail::kJudged), m_pContext);
  if (IsTiresome(round)) return;
  const StepRecord& last = round.steps.back();
  std::string end = RoundStepName(last.step) + last.bssid;
  if (end == view.end) return;
  view.end = std::move(end);
  m_Print(FormatA("%s  adapter %i  %s", Clock(round.endedMs), round.adapter, OutcomeText(round)),
          {}, m_pContext);
}

void RunReport::OnTraceEvent(const platform::TraceEvent& event) {
  std::string text = "event " + event.name;
  for (const auto& field : event.fields) {
    const auto* words = std::get_if<std::u16string>(&field.value);
    text += " " + field.name + "=" +
            (words ? WideToUtf8(*words) : std::to_string(std::get<std::int64_t>(field.value)));
  }
  Line(-1, "trace", text);
}

void RunReport::OnBrokenRule(int adapter, const std::string& fault) {
  Line(adapter, "rule", "BREAKS A RULE: " + fault);
  if (m_Summary.brokenRule.empty()) {
    m_Summary.brokenRule =
        FormatA("at %s adapter %i %s", Clock(static_cast<std::uint64_t>(m_pPc->Now().count())),
                adapter, fault);
  }
}

void RunReport::OnScanStarted(int adapter, Cause cause, const std::string& ssid) {
  ++(cause == Cause::kProgram ? m_Summary.scans : m_Summary.outsideScans);
  Line(adapter, "scan",
       FormatA("scan by %s%s", CauseText(cause),
               ssid.empty() ? std::string() : " for the hidden " + ssid));
}

void RunReport::OnScanEnded(int adapter, Cause cause, bool good) {
  if (!good) Line(adapter, "scan-failed", FormatA("scan of %s failed", CauseText(cause)));
}

void RunReport::OnConnectStarted(int adapter, Cause cause, const std::string& ssid) {
  Line(adapter, "connecting", FormatA("%s connects to %s", CauseText(cause), ssid));
}

void RunReport::OnConnectEnded(int adapter, Cause cause, const std::string& ssid,
                               const std::string& bssid, platform::DWORD reason) {
  if (reason != 0) {
    if (cause == Cause::kProgram) ++m_Summary.connectFailures;
    if (m_Audit) m_Audit->OnGone(adapter);
    Line(adapter, "connect-failed",
         FormatA("connect to %s by %s failed, reason 0x%x", ssid, CauseText(cause), reason));
    return;
  }
  if (m_Audit) m_Audit->OnConnected(adapter, cause, bssid);
  std::string why;
  if (cause == Cause::kProgram) {
    ++m_Summary.switches;
    const AdapterView& view = View(adapter);
    const auto score = view.scores.find(bssid);
    const int to = score == view.scores.end() ? -1 : score->second;
    why = ", " + ScoreText(to);
    if (!view.at.bssid.empty() && view.at.score >= 0) {
      why += FormatA(" over %i of %s", view.at.score, view.at.bssid);
    }
  }
  Line(adapter, cause == Cause::kProgram ? "switch" : "connected",
       FormatA("%s connected to %s %s%s", CauseText(cause), ssid, bssid, why));
}

void RunReport::OnDisconnected(int adapter, Cause cause, const std::string& ssid) {
  if (m_Audit) m_Audit->OnGone(adapter);
  Line(adapter, "disconnected", FormatA("disconnected from %s by %s", ssid, CauseText(cause)));
}

void RunReport::OnRoamed(int adapter, Cause cause, const std::string& ssid,
                         const std::string& bssid) {
  ++m_Summary.roams;
  if (m_Audit) m_Audit->OnConnected(adapter, cause, bssid);
  Line(adapter, "roam", FormatA("%s roams to %s %s", CauseText(cause), ssid, bssid));
}

void RunReport::OnTimeline(const std::string& text) { Line(-1, "timeline", text); }

void RunReport::OnClientMessage(const std::string& client, const std::string& text) {
  ++m_Summary.clientMessages;
  Line(-1, "client", FormatA("client %s reads %s", client, Head(text)));
}

void RunReport::Sample() {
  ++m_Summary.seconds;
  auto& adapters = CWifiClientContainer::GetInstance();
  const int required = CGlobalQUAYPolicy::RequiredCandidateCount();
  for (int position = 0; position < adapters.GetCount(); ++position) {
    const auto adapter = adapters.GetInterface(position);
    const int number = adapter ? m_Numbers->Of(*adapter) : -1;
    if (number < 0) continue;
    SampleAdapter(number, *adapter);
    SampleCandidates(number, *adapter, required);
    SampleInhibit(number, *adapter);
  }
}

void RunReport::SampleAdapter(int number, CWlanInterface& adapter) {
  AdapterView& view = View(number);
  const bool connected = adapter.IsConnected();
  Place at;
  if (connected) {
    const auto attributes = adapter.GetConnAttrs().wlanAssociationAttributes;
    at.ssid = WideToUtf8(SsidText(attributes.dot11Ssid));
    const MacAddress bssid = ToMac(attributes.dot11Bssid);
    if (!IsZero(bssid)) at.bssid = MacTextA(bssid);
    at.quality = attributes.wlanSignalQuality;
    at.score = adapter.GetScoreFromBssEntry(SsidText(attributes.dot11Ssid),
                                            ToMac(attributes.dot11Bssid), false);
    ++m_Summary.connectedSeconds;
    if (at.score >= BestScoreLeft(number)) ++m_Summary.bestSeconds;
  }
  if (connected && (at.bssid != view.at.bssid || !view.connected)) {
    Line(number, "at", FormatA("is connected to %s", PlaceText(at)));
  } else if (!connected && view.connected) {
    Line(number, "at", "is not connected");
  }
  view.connected = connected;
  view.at = connected ? at : Place();
}

int RunReport::BestScoreLeft(int number) {
  int best = -1;
  for (const auto& scored : View(number).scores) {
    const bool taken = std::ranges::any_of(m_Adapters, [&](const AdapterView& other) {
      return &other != &View(number) && other.connected && other.at.bssid == scored.first;
    });
    if (!taken) best = std::max(best, scored.second);
  }
  return best;
}

void RunReport::SampleCandidates(int number, CWlanInterface& adapter, int required) {
  AdapterView& view = View(number);
  std::map<std::string, int> counters;
  view.scores.clear();
  const ScoreContext scores = adapter.GetScoreContext();
  for (const auto& entry : adapter.SnapshotEntries()) {
    if (!entry->m_bss_scanned || !entry->HasUsableProfile()) continue;
    const std::string bssid = MacTextA(entry->GetBssid());
    const std::int32_t score = entry->GetScore(false, scores);
    view.scores[bssid] = score;
    const int counter = entry->m_candidate_counter;
    if (counter == 0) continue;
    counters[bssid] = counter;
    if (const auto before = view.counters.find(bssid);
        before == view.counters.end() || before->second != counter) {
      const std::string ssid = WideToUtf8(entry->m_SSIDW);
      const Contender contender{entry->GetBssid(), score, view.connected ? view.at.score : -1,
                                entry->GetLQ(), view.connected && ssid == view.at.ssid};
      Line(number, "candidate",
           FormatA("candidate %s %s: round %i of %i, score %i%s", ssid, bssid, counter,
                   adapter.Profile().RoundsToWin(required, contender), score,
                   view.connected && view.at.score >= 0 ? FormatA(" against %i", view.at.score)
                                                        : std::string()));
    }
  }
  view.counters = std::move(counters);
}

void RunReport::SampleInhibit(int number, CWlanInterface& adapter) {
  AdapterView& view = View(number);
  const auto config = CGlobalConfigContainer::GetInstance().FindIFConfig(adapter.GetConfigIdx());
  if (!config) return;
  const std::uint64_t remaining = config->GetInhibitRemainingMs();
  const std::string reason = remaining > 0 ? config->GetInhibitReason() : "";
  if (!reason.empty() && reason != view.inhibit) {
    Line(number, "inhibit",
         FormatA("holds still for %llu s (%s)", (remaining + 999) / 1000, reason));
  } else if (reason.empty() && !view.inhibit.empty()) {
    Line(number, "inhibit", "goes on");
  }
  view.inhibit = reason;
  const bool roaming = config->GetRoamingInhibitTick() != 0;
  if (roaming != view.roamingInhibit) {
    Line(number, "roaming-inhibit",
         roaming ? "somebody else moved the adapter: no switch until that has passed"
                 : "may switch again");
  }
  view.roamingInhibit = roaming;
}

void RunReport::PrintSummary() {
  if (m_Audit) m_Summary.moves = m_Audit->Moves();
  const RunSummary& sum = m_Summary;
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> json(buffer);
  json.StartObject();
  json.Key("event");
  json.String("summary");
  const std::pair<const char*, std::uint64_t> figures[] = {
      {"seconds", sum.seconds},
      {"connected_seconds", sum.connectedSeconds},
      {"best_seconds", sum.bestSeconds},
      {"switches", sum.switches},
      {"scans", sum.scans},
      {"connect_failures", sum.connectFailures},
      {"outside_scans", sum.outsideScans},
      {"roams", sum.roams},
      {"rounds", sum.rounds},
      {"own_moves", sum.moves}};
  for (const auto& [name, value] : figures) {
    json.Key(name);
    json.Uint64(value);
  }
  if (sum.clientMessages > 0) {
    json.Key("client_messages");
    json.Uint64(sum.clientMessages);
  }
  json.EndObject();
  const std::uint64_t adapterSeconds = sum.seconds * std::max<std::size_t>(m_Adapters.size(), 1);
  m_Print(FormatA("\nSummary of %llu s with %u adapter(s)\n"
                  "  connected                      %s\n"
                  "  on the best-scored one         %s\n"
                  "  rounds                         %llu\n"
                  "  switches                       %llu\n"
                  "  scans                          %llu\n"
                  "  connect failures               %llu%s",
                  sum.seconds, m_Adapters.size(), Share(sum.connectedSeconds, adapterSeconds),
                  Share(sum.bestSeconds, adapterSeconds), sum.rounds, sum.switches, sum.scans,
                  sum.connectFailures,
                  sum.clientMessages == 0
                      ? std::string()
                      : FormatA("\n  read by clients                %llu", sum.clientMessages)),
          buffer.GetString(), m_pContext);
}

}  // namespace corvane::lab
