#pragma once
// The other access points on the channel of an adapter's connection, told when they change.

#include "wlan/adapter_air.h"
#include "wlan/adapter_scans.h"

namespace corvane {

// The reporter's contention state has no lock of its own: each operation takes the interface lock,
// which serves for it. Counted on the worker, cleared on any thread.
class ApContention {
 public:
  ApContention(const AdapterIdentity& adapter, AdapterAir& air, const AdapterScans& scans)
      : m_Adapter(adapter), m_Air(air), m_Scans(scans) {}

  // Before a scan has told who is there, nothing is.
  void Update(const WString& ssid, const WString& bssidText, std::uint32_t channel);
  void Clear();
  WString Text();  // those of the last count, for the log; "none" without any

 private:
  void Count(const WString& ssid, const WString& bssidText, std::uint32_t channel);

  const AdapterIdentity& m_Adapter;
  AdapterAir& m_Air;
  const AdapterScans& m_Scans;
  CApSetMemo m_ContentionMemo;  // the contenders of the last count
};

}  // namespace corvane
