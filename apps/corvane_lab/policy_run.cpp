#include "corvane_lab/policy_run.h"

#include <algorithm>
#include <optional>

#include "corvane_lab/decision_audit.h"
#include "corvane_lab/service_run.h"
#include "corvane_lab/world_source.h"
#include "foundation/format.h"
#include "platform/sim/simulated_pc.h"
#include "platform/sim/world/world_text.h"

namespace corvane::lab {

using platform::sim::Action;
using platform::sim::ActionKind;
using platform::sim::Cause;
using platform::sim::RegistryWrite;
using platform::sim::SimulatedPc;
using platform::sim::World;

namespace {

constexpr std::chrono::milliseconds kSecond(1000);
constexpr std::uint64_t kSettingsAtMs = 8000;  // by then the start has given all their defaults

void AddSettings(World* world, const ServiceProfile& profile) {
  std::vector<std::u16string> keys{platform::sim::kHomeKey};
  for (const auto& adapter : world->adapters) {
    keys.push_back(std::u16string(platform::sim::kHomeKey) + u"\\" +
                   platform::sim::GuidText(adapter.guid));
  }
  const auto at = std::ranges::find_if(
      world->timeline, [](const Action& action) { return action.atMs > kSettingsAtMs; });
  std::vector<Action> actions;
  for (const auto& [name, number] : profile.settings) {
    for (const std::u16string& key : keys) {
      Action action;
      action.atMs = kSettingsAtMs;
      action.kind = ActionKind::kRegistry;
      action.registry.key = key;
      action.registry.name = platform::sim::FromUtf8(name);
      action.registry.number = number;
      action.line = "setting " + name;
      world->registry.push_back(action.registry);
      actions.push_back(std::move(action));
    }
  }
  world->timeline.insert(at, actions.begin(), actions.end());
}

// Writes the trace, and holds the service's moves against the rules that must never be broken.
class ServiceObserver final : public platform::sim::IPcObserver {
 public:
  ServiceObserver(const World& world, std::uint64_t seed, std::string* trouble)
      : m_Trace(world, seed),
        m_Audit(
            world,
            [](int adapter, const std::string& fault, void* trouble) {
              auto& text = *static_cast<std::string*>(trouble);
              if (text.empty()) text = FormatA("adapter %i %s", adapter, fault);
            },
            trouble) {}

  void Attach(const SimulatedPc& pc) { m_Trace.Attach(pc); }
  const PolicyTrace& Trace() const { return m_Trace.Trace(); }

  void OnScanStarted(int adapter, Cause cause, const std::string& ssid) override {
    m_Trace.OnScanStarted(adapter, cause, ssid);
  }
  void OnConnectEnded(int adapter, Cause cause, const std::string& ssid, const std::string& bssid,
                      platform::DWORD reason) override {
    m_Trace.OnConnectEnded(adapter, cause, ssid, bssid, reason);
    if (reason == 0) {
      m_Audit.OnConnected(adapter, cause, bssid);
    } else {
      m_Audit.OnGone(adapter);
    }
  }
  void OnDisconnected(int adapter, Cause cause, const std::string& ssid) override {
    m_Trace.OnDisconnected(adapter, cause, ssid);
    m_Audit.OnGone(adapter);
  }
  void OnRoamed(int adapter, Cause cause, const std::string& ssid,
                const std::string& bssid) override {
    m_Trace.OnRoamed(adapter, cause, ssid, bssid);
    m_Audit.OnConnected(adapter, cause, bssid);
  }

 private:
  PcTrace m_Trace;
  DecisionAudit m_Audit;
};

void NoteReport(const std::string& report, void* trouble) {
  auto& text = *static_cast<std::string*>(trouble);
  if (text.empty()) text = report;
}

}  // namespace

PolicyRun RunService(const World& world, std::uint64_t seed, std::size_t seconds,
                     const ServiceProfile& profile) {
  World own = world;
  SetMode(&own, "autoswitch");
  AddSettings(&own, profile);
  PolicyRun run;
  ServiceObserver observer(own, seed, &run.trouble);
  RoundNotetaker notes(own);
  SimulatedPc pc(own, {.seed = seed, .observer = &observer});
  pc.SetReportHandler(&NoteReport, &run.trouble);
  observer.Attach(pc);
  notes.Attach(pc);
  ServiceRun service(pc);
  service.Start();
  for (std::size_t second = 0; second < seconds && run.trouble.empty(); ++second) {
    pc.RunFor(kSecond);
    if (!service.IsRunning()) {
      NoteReport(FormatA("the service ended by itself, exit code %i", service.ExitCode()),
                 &run.trouble);
    }
  }
  run.trace = observer.Trace();
  if (!service.Stop()) NoteReport("the service did not end within three minutes", &run.trouble);
  run.rounds = notes.Take();  // which it goes on to take until then
  return run;
}

PolicyRun RunPeer(const World& world, std::uint64_t seed, std::size_t seconds,
                  PeerClient::MakeRule make) {
  PolicyRun run;
  PcTrace trace(world, seed);
  SimulatedPc pc(world, {.seed = seed, .observer = &trace});
  pc.SetReportHandler(&NoteReport, &run.trouble);
  trace.Attach(pc);
  std::optional<PeerClient> peer;
  if (make) peer.emplace(world, trace, make);
  for (std::size_t second = 0; second < seconds && run.trouble.empty(); ++second) {
    pc.RunFor(kSecond);
    if (peer) peer->Look((second + 1) * 1000);
  }
  run.trace = trace.Trace();
  return run;
}

}  // namespace corvane::lab
