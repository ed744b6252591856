#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "corvane_lab/decision_audit.h"
#include "corvane_lab/round_record.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/simulated_pc.h"
#include "platform/trace_logging.h"

namespace corvane::lab {

// What one run comes to.
struct RunSummary {
  std::uint64_t seconds = 0;
  std::uint64_t connectedSeconds = 0;  // summed over the adapters
  std::uint64_t bestSeconds = 0;  // connected to a BSS that none scored above, of those left free
  std::uint64_t switches = 0;     // moves and connects that the service made
  std::uint64_t scans = 0;        // that the service began
  std::uint64_t connectFailures = 0;
  std::uint64_t outsideScans = 0;
  std::uint64_t roams = 0;           // by the driver
  std::uint64_t rounds = 0;          // of all adapters
  std::uint64_t moves = 0;           // by the service's own decision, each held against the rules
  std::uint64_t clientMessages = 0;  // replies and events that the world's clients have read
  std::string brokenRule;            // the first one; empty when all held
};

// Tells a run as a person would want to hear it: one line for each thing that happens, and a
// summary. Listens to the PC and to the rounds, and looks at the service once a second.
class RunReport : public platform::sim::IPcObserver {
 public:
  // Each line goes to `print`, as text and as one JSON object; what would tire a reader has no
  // text.
  using Print = void (*)(const std::string& text, const std::string& json, void* context);
  // `rounds`: with one JSON object for every round.
  RunReport(Print print, void* context, bool rounds)
      : m_Print(print), m_pContext(context), m_bRounds(rounds) {}

  // From before the service starts until after it has ended; both outlive that.
  void Attach(platform::sim::SimulatedPc& pc, const platform::sim::World& world);
  void Detach();
  // Looks at the service; the driving thread calls it once a second while the service runs.
  void Sample();
  const RunSummary& Summary() const { return m_Summary; }
  void PrintSummary();

  void OnScanStarted(int adapter, platform::sim::Cause cause, const std::string& ssid) override;
  void OnScanEnded(int adapter, platform::sim::Cause cause, bool good) override;
  void OnConnectStarted(int adapter, platform::sim::Cause cause, const std::string& ssid) override;
  void OnConnectEnded(int adapter, platform::sim::Cause cause, const std::string& ssid,
                      const std::string& bssid, platform::DWORD reason) override;
  void OnDisconnected(int adapter, platform::sim::Cause cause, const std::string& ssid) override;
  void OnRoamed(int adapter, platform::sim::Cause cause, const std::string& ssid,
                const std::string& bssid) override;
  void OnTimeline(const std::string& text) override;
  void OnClientMessage(const std::string& client, const std::string& text) override;

 private:
  // A BSS as the last look found it.
  struct Place {
    std::string ssid;
    std::string bssid;
    int score = -1;
    unsigned quality = 0;
  };
  struct AdapterView {
    bool connected = false;
    Place at;
    std::string end;      // what the last round told of ended in
    std::string inhibit;  // reason of a running inhibit, empty for none
    bool roamingInhibit = false;
    std::map<std::string, int> counters;  // candidates by BSSID
    std::map<std::string, int> scores;    // of the last look, by BSSID
  };

  static std::string PlaceText(const Place& at);
  void Line(int adapter, const char* kind, const std::string& text);
  void OnRound(const RoundRecord& round);
  void OnTraceEvent(const platform::TraceEvent& event);
  void OnBrokenRule(int adapter, const std::string& fault);
  AdapterView& View(int adapter);
  void SampleAdapter(int number, CWlanInterface& adapter);
  int BestScoreLeft(int number);  // of what no other adapter is on; -1 for none
  void SampleCandidates(int number, CWlanInterface& adapter, int required);
  void SampleInhibit(int number, CWlanInterface& adapter);

  Print m_Print;
  void* m_pContext;
  const bool m_bRounds;
  platform::sim::SimulatedPc* m_pPc = nullptr;
  std::optional<AdapterNumbers> m_Numbers;
  std::optional<RoundRecorder> m_Rounds;
  std::optional<DecisionAudit> m_Audit;
  std::vector<AdapterView> m_Adapters;  // by number
  RunSummary m_Summary;
};

}  // namespace corvane::lab
