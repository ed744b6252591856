#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "corvane_lab/service_run.h"
#include "corvane_lab/world_source.h"
#include "foundation/format.h"
#include "platform/sim/simulated_pc.h"
#include "wlan/wifi_client_container.h"

namespace corvane::lab {

namespace {

struct Row {
  std::string bssid, ssid, log, finalLog;
  std::uint32_t quality = 0, apCount = 0;
  std::int32_t subtotal = -1, score = -1;
};

std::vector<Row> RowsOf(CWlanInterface& adapter) {
  std::vector<Row> rows;
  const ScoreContext scores = adapter.GetScoreContext();
  for (const auto& entry : adapter.SnapshotEntries()) {
    Row row;
    row.bssid = MacTextA(entry->GetBssid());
    row.ssid = WideToUtf8(entry->m_SSIDW);
    row.quality = entry->GetLQ();
    row.subtotal = entry->m_ScoreHistory.empty() ? -1 : entry->m_ScoreHistory.front();
    row.score = entry->GetScore(true, scores);
    row.log = entry->ScoreLog();
    row.finalLog = entry->FinalScoreLog();
    row.apCount = entry->m_ApCountOnChannel;
    rows.push_back(std::move(row));
  }
  std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
    return a.score != b.score ? a.score > b.score : a.quality > b.quality;
  });
  return rows;
}

void PrintJson(const Row& row) {
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> json(buffer);
  json.StartObject();
  const auto text = [&json](const char* name, const std::string& value) {
    json.Key(name);
    json.String(value.c_str(), static_cast<rapidjson::SizeType>(value.size()));
  };
  text("bssid", row.bssid);
  text("ssid", row.ssid);
  json.Key("lq");
  json.Uint(row.quality);
  json.Key("subtotal");
  json.Int(row.subtotal);
  json.Key("score");
  json.Int(row.score);
  text("log", row.log);
  text("final_log", row.finalLog);
  json.Key("ap_count");
  json.Uint(row.apCount);
  json.EndObject();
  std::printf("%s\n", buffer.GetString());
}

void PrintText(const Row& row) {
  std::printf("%4i  %s  quality %3u  %s\n      %s%s\n", row.score, row.bssid.c_str(), row.quality,
              row.ssid.c_str(), row.log.c_str(), row.finalLog.c_str());
}

bool HasScores(void*) {
  const auto adapter = CWifiClientContainer::GetInstance().GetInterface(0);
  return adapter && adapter->IsScanFresh() && !adapter->SnapshotEntries().empty();
}

}  // namespace

int ScoresCommand(const std::vector<std::string>& words) {
  const Arguments arguments(
      words, {"--at", "--air", "--recording", "--mode", "--profile", "--seed"}, {"--json"});
  const auto at = arguments.Value("--at");
  if (!arguments.Value("--air") && !at)
    throw UsageError("a world and --at TIME, or --air and a file");
  AirReport airReport;
  const platform::sim::World world = WorldOf(arguments, &airReport);
  platform::sim::PcOptions options;
  options.seed = arguments.Number("--seed", 1);
  platform::sim::SimulatedPc pc(world, options);
  ServiceRun service(pc);
  service.Start();
  if (at) {
    pc.RunFor(std::chrono::milliseconds(ParseDuration(*at)));
  } else {
    constexpr std::chrono::minutes kLimit(2);
    constexpr std::chrono::seconds kSettle(1);
    if (!pc.RunUntil(&HasScores, nullptr, kLimit))
      throw std::runtime_error("no access point was heard");
    pc.RunFor(kSettle);
  }
  auto& adapters = CWifiClientContainer::GetInstance();
  for (int i = 0; i < adapters.GetCount(); ++i) {
    const auto adapter = adapters.GetInterface(i);
    if (!arguments.Has("--json")) {
      std::printf("adapter %i: %s\n", i, WideToUtf8(adapter->GetConnectionName()).c_str());
    }
    for (const Row& row : RowsOf(*adapter))
      arguments.Has("--json") ? PrintJson(row) : PrintText(row);
  }
  return 0;
}

}  // namespace corvane::lab
