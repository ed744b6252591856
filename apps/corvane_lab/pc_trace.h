#pragma once
#include <map>
#include <string>
#include <vector>

#include "corvane_lab/link_trace.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/simulated_pc.h"
#include "platform/sim/world/world.h"

namespace corvane::lab {

// Where each adapter is at the start: on the access point that its world says, if it hears that.
std::vector<int> StartOf(const platform::sim::World& world, std::uint64_t seed);

// Writes down what happens to the links of a simulated PC.
class PcTrace final : public platform::sim::IPcObserver {
 public:
  PcTrace(const platform::sim::World& world, std::uint64_t seed);

  void Attach(const platform::sim::SimulatedPc& pc) { m_pPc = &pc; }  // which outlives it
  const PolicyTrace& Trace() const { return m_Trace; }
  // What an adapter was told since the last call: that a scan of the program's has ended; and the
  // access point that a connect of the program's has failed at, kNoLink for none.
  bool TakeScanEnd(std::size_t adapter);
  int TakeFailure(std::size_t adapter);

  void OnScanStarted(int adapter, platform::sim::Cause cause, const std::string& ssid) override;
  void OnScanEnded(int adapter, platform::sim::Cause cause, bool good) override;
  void OnConnectEnded(int adapter, platform::sim::Cause cause, const std::string& ssid,
                      const std::string& bssid, platform::DWORD reason) override;
  void OnDisconnected(int adapter, platform::sim::Cause cause, const std::string& ssid) override;
  void OnRoamed(int adapter, platform::sim::Cause cause, const std::string& ssid,
                const std::string& bssid) override;

 private:
  struct News {
    bool scanEnded = false;
    int failed = kNoLink;
  };
  std::uint64_t Now() const;
  int NumberOf(const std::string& bssid) const;
  void Change(int adapter, int accessPoint);

  const platform::sim::SimulatedPc* m_pPc = nullptr;
  std::map<std::string, int> m_Numbers;  // of access points, by BSSID
  PolicyTrace m_Trace;
  std::vector<News> m_News;  // by adapter
};

}  // namespace corvane::lab
