#pragma once
#include <atomic>
#include <cstdint>
#include <list>
#include <vector>

#include "foundation/singleton.h"
#include "foundation/text.h"
#include "platform/perf_counter_api.h"

namespace corvane {

// Whether Bluetooth moves data, by the performance counters of the machine's Bluetooth adapters.
// On the main thread, unless it says otherwise.
class CBluetoothMonitorSingleton {
 public:
  static CBluetoothMonitorSingleton& GetInstance() {
    return Singleton<CBluetoothMonitorSingleton>::GetInstance();
  }

  // Counts the adapters and opens their counters, which are closed.
  void InitPDHCounters();
  // Forgets adapters and counters. A period of activity that runs goes on.
  void ClosePDHCounters();
  // Reads the counters, at most once in 500 ms.
  void Poll();
  // Whether the machine has another number of adapters than InitPDHCounters found.
  bool AdapterCountChanged() const;
  // The tick at which the latest period of activity ends; 0 before the first. Any thread.
  std::uint64_t GetActivityEndTick() const { return m_ActivityEndTick; }

  // Descriptions of the adapters in the registry, into `list`, and their number. `verbose`: the log
  // names them.
  static std::uint32_t CountBTAdaptersInRegistry(std::list<WString>* list, bool verbose);

 private:
  friend Singleton<CBluetoothMonitorSingleton>;
  CBluetoothMonitorSingleton() = default;
  ~CBluetoothMonitorSingleton() { ClosePDHCounters(); }

  bool OpenQuery();
  void AddCounters(const WString& adapter);
  void ReadCounters(std::uint64_t now);
  void TakeSum(std::uint64_t now);

  std::uint32_t m_AdapterCount = 0;
  std::list<WString> m_AdapterNames;
  std::uint64_t m_LastPollTick = 0;
  std::atomic<std::uint64_t> m_ActivityEndTick{0};
  bool m_bActive = false;
  platform::PDH_HQUERY m_hQuery = nullptr;
  std::vector<platform::PDH_HCOUNTER> m_Counters;  // six an adapter, less those that fail
  double m_TotalBitsPerSec = 0.0;
};

// Whether a device of the Bluetooth class with this description is an adapter, and not an
// enumerator, a protocol or a device behind one.
bool IsBluetoothAdapter(WStringView description);

}  // namespace corvane
