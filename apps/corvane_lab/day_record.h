#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "corvane_lab/day_series.h"
#include "corvane_lab/run_report.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/simulated_pc.h"
#include "platform/sim/world/world.h"

namespace corvane::lab {

// A run as the page of `corvane-lab report` shows it: what each adapter was on, how each access
// point stood with it, what was decided and why. Watches the PC and the rounds; its threads are
// those of the simulated PC, of which one runs at a time.
class DayRecord final : public platform::sim::IPcObserver {
 public:
  explicit DayRecord(const platform::sim::World& world);

  // From before the service starts until after it has ended; both outlive that.
  void Attach(platform::sim::SimulatedPc& pc);
  void Detach();
  void Sample() { m_Report.Sample(); }  // once a second while the service runs
  void PrintSummary() { m_Report.PrintSummary(); }
  const RunSummary& Summary() const { return m_Report.Summary(); }
  // One JSON object, whose form is between this and the page's script.
  // `compare`: a JSON value as `corvane-lab compare --json` has it; empty for none.
  std::string Json(std::uint64_t seed, const std::string& compare) const;

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

  // From that time on the adapter is on that access point, by its number; kNowhere: on none.
  struct Link {
    std::uint64_t ms = 0;
    int accessPoint = kNowhere;
  };
  static constexpr int kNowhere = -1;
  // Rounds in a row that ended alike.
  struct Decision {
    std::uint64_t fromMs = 0, toMs = 0;
    std::uint64_t rounds = 0;
    int step = 0;  // the one that tells most, a number of a text
    int text = 0;  // likewise
    bool quiet = false;
  };
  struct Scan {
    std::uint64_t ms = 0;
    platform::sim::Cause cause = platform::sim::Cause::kProgram;
  };
  struct Traffic {
    std::uint64_t ms = 0;
    double mbps = 0.0, gateMbps = 0.0;
  };
  struct AdapterDay {
    std::vector<Link> links;
    std::map<int, DaySeries> series;  // by access point
    std::vector<Decision> decisions;
    std::vector<Scan> scans;
    std::vector<Traffic> traffic;
  };
  const AdapterDay& Day(int adapter) const { return m_Days[static_cast<std::size_t>(adapter)]; }
  const std::string& Text(int number) const { return m_Texts[static_cast<std::size_t>(number)]; }
  const std::string& BssidOf(int accessPoint) const;

 private:
  struct AccessPoint {
    std::string bssid, ssid;
    unsigned channel = 0;
    int band = 0;  // 2, 5 or 6; 0 for one that the world does not tell of
  };
  struct Event {
    std::uint64_t ms = 0;
    int adapter = -1;
    std::string kind, text;
  };

  static void OnLine(const std::string& text, const std::string& json, void* self);
  void OnRound(const RoundRecord& round);
  void TakeEntry(AdapterDay* day, const RoundRecord& round, const EntryRecord& entry);
  void TakeDecision(AdapterDay* day, const RoundRecord& round);
  void Move(int adapter, int accessPoint);
  int NumberOf(const std::string& bssid, const std::string& ssid);
  int TextNumber(const std::string& text);
  std::uint64_t Now() const;

  const platform::sim::World& m_World;
  platform::sim::SimulatedPc* m_pPc = nullptr;
  RunReport m_Report;
  std::optional<RoundRecorder> m_Rounds;
  std::vector<AccessPoint> m_AccessPoints;
  std::map<std::string, int> m_Numbers;  // of access points, by BSSID
  std::vector<std::string> m_Texts;
  std::map<std::string, int> m_TextNumbers;
  std::vector<AdapterDay> m_Days;  // by adapter
  std::vector<Event> m_Events;
  std::uint64_t m_EventsLeftOut = 0;  // there were too many
  std::string m_Summary;              // as JSON
};

}  // namespace corvane::lab
