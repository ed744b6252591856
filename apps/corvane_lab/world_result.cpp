#include "corvane_lab/world_result.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "corvane_lab/oracle.h"
#include "corvane_lab/pc_trace.h"

namespace corvane::lab {

namespace {

constexpr double kPercent = 100.0;

using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer>;

// Names of the figures, both ways.
struct NumberField {
  const char* name;
  double PolicyResult::*real;
  int PolicyResult::*whole;
};
constexpr NumberField kFields[] = {
    {"rate_in_traffic_percent", &PolicyResult::phaseShare, nullptr},
    {"disconnected_seconds", &PolicyResult::disconnectedSeconds, nullptr},
    {"moves", nullptr, &PolicyResult::moves},
    {"ping_pongs", nullptr, &PolicyResult::pingPongs},
    {"moves_in_traffic", nullptr, &PolicyResult::movesInPhases},
    {"scans", nullptr, &PolicyResult::scans},
    {"scans_in_traffic", nullptr, &PolicyResult::scansInPhases}};
constexpr const char* kShareNames[] = {"rate_percent", "useful_percent", "log_percent"};

// "flat-2" is of the kind "flat".
std::string KindOf(const std::string& world) {
  const std::size_t dash = world.rfind('-');
  const bool numbered = dash != std::string::npos && dash + 1 < world.size() &&
                        std::all_of(world.begin() + static_cast<std::ptrdiff_t>(dash) + 1,
                                    world.end(), [](unsigned char c) { return std::isdigit(c); });
  return numbered ? world.substr(0, dash) : world;
}

double ShareOf(double part, double whole) {
  return whole > 0.0 ? kPercent * part / whole : kPercent;
}

// The oracles of a world: each measure has its own.
class Oracles {
 public:
  Oracles(const platform::sim::World& world, const Truth& truth, std::uint64_t seed)
      : m_Truth(truth) {
    const std::vector<int> start = StartOf(world, seed);
    for (std::size_t m = 0; m < kMeasures.size(); ++m) {
      PolicyTrace trace = OracleTrace(truth, start, kMeasures[m]);
      m_Worth[m] = ScoreTrace(truth, trace).worth[m];
      if (kMeasures[m] == Measure::kRate) m_Best = std::move(trace);
    }
    m_PhaseRate = ScoreTrace(truth, m_Best).phaseRate;
  }

  const PolicyTrace& Best() const { return m_Best; }  // by rate

  PolicyResult Judge(const std::string& name, const PolicyTrace& trace) const {
    const TraceScore score = ScoreTrace(m_Truth, trace);
    PolicyResult result;
    result.name = name;
    for (std::size_t m = 0; m < kMeasures.size(); ++m)
      result.share[m] = ShareOf(score.worth[m], m_Worth[m]);
    result.phaseShare = ShareOf(score.phaseRate, m_PhaseRate);
    result.disconnectedSeconds = score.disconnectedSeconds;
    result.moves = score.moves;
    result.pingPongs = score.pingPongs;
    result.movesInPhases = score.movesInPhases;
    result.scans = score.scans;
    result.scansInPhases = score.scansInPhases;
    return result;
  }

 private:
  const Truth& m_Truth;
  PolicyTrace m_Best;
  std::array<double, 3> m_Worth{};
  double m_PhaseRate = 0.0;
};

void WriteWhy(JsonWriter& json, const std::map<std::string, Loss>& why) {
  json.Key("why");
  json.StartObject();
  for (const auto& [cause, loss] : why) {
    json.Key(cause.c_str());
    json.StartObject();
    json.Key("points");
    json.Double(loss.points);
    json.Key("seconds");
    json.Int(loss.seconds);
    json.EndObject();
  }
  json.EndObject();
}

void WritePolicy(JsonWriter& json, const PolicyResult& policy) {
  json.StartObject();
  json.Key("name");
  json.String(policy.name.c_str());
  for (std::size_t m = 0; m < policy.share.size(); ++m) {
    json.Key(kShareNames[m]);
    json.Double(policy.share[m]);
  }
  for (const NumberField& field : kFields) {
    json.Key(field.name);
    if (field.real) {
      json.Double(policy.*field.real);
    } else {
      json.Int(policy.*field.whole);
    }
  }
  if (!policy.trouble.empty()) {
    json.Key("trouble");
    json.String(policy.trouble.c_str());
  }
  if (!policy.why.empty()) WriteWhy(json, policy.why);
  json.EndObject();
}

PolicyResult ReadPolicy(const rapidjson::Value& value) {
  PolicyResult policy;
  policy.name = value["name"].GetString();
  for (std::size_t m = 0; m < policy.share.size(); ++m)
    policy.share[m] = value[kShareNames[m]].GetDouble();
  for (const NumberField& field : kFields) {
    if (field.real) {
      policy.*field.real = value[field.name].GetDouble();
    } else {
      policy.*field.whole = value[field.name].GetInt();
    }
  }
  if (value.HasMember("trouble")) policy.trouble = value["trouble"].GetString();
  if (!value.HasMember("why")) return policy;
  const rapidjson::Value& why = value["why"];
  for (auto cause = why.MemberBegin(); cause != why.MemberEnd(); ++cause)
    policy.why[cause->name.GetString()] = {cause->value["points"].GetDouble(),
                                           cause->value["seconds"].GetInt()};
  return policy;
}

}  // namespace

WorldResult CompareOn(const platform::sim::World& world, std::size_t seconds,
                      const ComparePlan& plan) {
  static constexpr std::pair<const char*, PeerClient::MakeRule> kPeers[] = {
      {"service off", nullptr},
      {"strongest", &StrongestRule},
      {"wpa_supplicant", &SupplicantRule},
      {"iwd", &IwdRule}};
  const Truth truth = LookAhead(world, plan.seed, seconds);
  const Oracles oracles(world, truth, plan.seed);
  WorldResult result;
  result.world = world.name;
  result.kind = KindOf(world.name);
  result.seconds = seconds * world.adapters.size();
  result.phases = truth.TrafficPhases();
  result.policies.push_back(oracles.Judge("oracle", oracles.Best()));
  for (const ServiceProfile& profile : plan.profiles) {
    const PolicyRun run = RunService(world, plan.seed, seconds, profile);
    result.policies.push_back(oracles.Judge(profile.name, run.trace));
    result.policies.back().trouble = run.trouble;
    if (plan.why) result.policies.back().why = WhyBehind(truth, run, oracles.Best());
  }
  for (const auto& [name, make] : kPeers) {
    if (!plan.peers) break;
    const PolicyRun run = RunPeer(world, plan.seed, seconds, make);
    result.policies.push_back(oracles.Judge(name, run.trace));
    result.policies.back().trouble = run.trouble;
  }
  return result;
}

std::string ToJson(const WorldResult& result) {
  rapidjson::StringBuffer buffer;
  JsonWriter json(buffer);
  json.StartObject();
  json.Key("world");
  json.String(result.world.c_str());
  json.Key("kind");
  json.String(result.kind.c_str());
  json.Key("seconds");
  json.Uint64(result.seconds);
  json.Key("traffic_phases");
  json.Int(result.phases);
  json.Key("policies");
  json.StartArray();
  for (const PolicyResult& policy : result.policies) WritePolicy(json, policy);
  json.EndArray();
  json.EndObject();
  return buffer.GetString();
}

WorldResult WorldResultOf(const std::string& text) {
  rapidjson::Document json;
  json.Parse(text.c_str());
  if (json.HasParseError() || !json.IsObject())
    throw std::runtime_error("the result of a world is not whole");
  WorldResult result;
  result.world = json["world"].GetString();
  result.kind = json["kind"].GetString();
  result.seconds = json["seconds"].GetUint64();
  result.phases = json["traffic_phases"].GetInt();
  for (const auto& policy : json["policies"].GetArray())
    result.policies.push_back(ReadPolicy(policy));
  return result;
}

}  // namespace corvane::lab
