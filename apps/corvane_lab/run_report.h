#pragma once
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "platform/sim/pc_observer.h"
#include "platform/sim/simulated_pc.h"

namespace corvane::lab {

// What one run comes to.
struct RunSummary {
  std::uint64_t seconds = 0;
  std::uint64_t connectedSeconds = 0;  // summed over the adapters
  std::uint64_t bestSeconds = 0;       // connected to a BSS that none scored above
  std::uint64_t switches = 0;          // moves and connects that the service made
  std::uint64_t scans = 0;             // that the service began
  std::uint64_t connectFailures = 0;
  std::uint64_t outsideScans = 0;
  std::uint64_t roams = 0;             // by the driver
};

// Tells a run as a person would want to hear it: one line for each thing that happens, and a summary.
// Listens to the PC and looks at the service once a second.
class RunReport : public platform::sim::IPcObserver {
 public:
  // Each line goes to `print`, as text and as one JSON object.
  using Print = void (*)(const std::string& text, const std::string& json, void* context);
  RunReport(Print print, void* context) : m_Print(print), m_pContext(context) {}

  void Attach(platform::sim::SimulatedPc* pc) { m_pPc = pc; }
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
    std::string inhibit;  // reason of a running inhibit, empty for none
    bool roamingInhibit = false;
    std::map<std::string, int> counters;  // candidates by BSSID
    std::map<std::string, int> scores;    // of the last look, by BSSID
  };

  void Line(int adapter, const char* kind, const std::string& text);
  void SampleAdapter(int position);
  void SampleCandidates(int position, int required);
  void SampleInhibit(int position);

  Print m_Print;
  void* m_pContext;
  platform::sim::SimulatedPc* m_pPc = nullptr;
  std::vector<AdapterView> m_Adapters;
  RunSummary m_Summary;
};

}  // namespace corvane::lab
