#pragma once
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/perf_counter_api.h"
#include "platform/sim/devices/sim_bluetooth.h"
#include "platform/sim/devices/sim_interfaces.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

// The performance counters of the objects "Network Adapter", of which an instance is named by the
// interface's description with "#", "(" and ")" as "_", "[" and "]", and "Bluetooth Radio", of
// which one is named by the radio's description as it stands.
class SimPerfCounters final : public PerfCounterApi {
 public:
  SimPerfCounters(SimMachine& machine, SeamGate& gate, const SimWlanAdapters& adapters,
                  SimTraffic& traffic)
      : m_Machine(machine), m_Gate(gate), m_Adapters(adapters), m_Traffic(traffic) {}

  PDH_STATUS PdhOpenQueryW(LPCWSTR dataSource, std::uintptr_t userData, PDH_HQUERY* query) override;
  PDH_STATUS PdhAddCounterW(PDH_HQUERY query, LPCWSTR path, std::uintptr_t userData,
                            PDH_HCOUNTER* counter) override;
  PDH_STATUS PdhCollectQueryData(PDH_HQUERY query) override;
  PDH_STATUS PdhGetFormattedCounterValue(PDH_HCOUNTER counter, DWORD format, DWORD* type,
                                         PDH_FMT_COUNTERVALUE* value) override;
  PDH_STATUS PdhRemoveCounter(PDH_HCOUNTER counter) override;
  // A call that fails by injection has closed the query, with its counters, all the same.
  PDH_STATUS PdhCloseQuery(PDH_HQUERY query) override;

  std::size_t OpenHandles();  // queries and counters

 private:
  enum class Figure { kBytesIn, kBytesOut, kErrorsIn, kErrorsOut };
  struct Sample {
    std::uint64_t atMs = 0;
    double figure = 0.0;
  };
  struct Counter {
    std::uintptr_t query = 0;
    std::u16string instance;
    Figure figure = Figure::kBytesIn;
    std::optional<BluetoothFigure> bluetooth;  // in the place of `figure`
    std::optional<Sample> before;
    std::optional<Sample> last;
  };

  // An operation that passes no gate failure; `code` as a PDH status.
  std::optional<PDH_STATUS> Refused(const char* operation);
  static bool ParsePath(std::u16string_view path, Counter* counter, PDH_STATUS* status);
  // Without a value when no interface is the counter's instance.
  static std::optional<double> Read(const Counter& counter,
                                    const std::vector<SimInterface>& interfaces);

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  const SimWlanAdapters& m_Adapters;
  SimTraffic& m_Traffic;
  std::set<std::uintptr_t> m_Queries;
  std::map<std::uintptr_t, Counter> m_Counters;
  std::uintptr_t m_LastHandle = 0xD000;
};

}  // namespace corvane::platform::sim
