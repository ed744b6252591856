#pragma once
// When an adapter scans, and what it knows of the air afterwards.

#include <atomic>
#include <vector>

#include "wlan/adapter_operations.h"
#include "wlan/adapter_traffic.h"
#include "wlan/deciding_profile.h"
#include "wlan/network_lists.h"

namespace corvane {

// The step of each round that refreshes what is known of the air, on the adapter's worker.
class AdapterScans {
 public:
  AdapterScans(const AdapterIdentity& adapter, const AdapterLink& link,
               AdapterOperations& operations, NetworkLists& lists, AdapterTraffic& traffic,
               DecidingProfile& deciding)
      : m_Adapter(adapter),
        m_Link(link),
        m_Operations(operations),
        m_Lists(lists),
        m_Traffic(traffic),
        m_Deciding(deciding) {}

  // Scan or not, then both lists. How many listed networks have a profile; *aux_error is written
  // only with 100. Keeps failures to itself.
  std::int32_t DiscoverNetworksSynchronous(bool force_scan, bool first, std::int32_t* aux_error);

  bool IsScanFresh() const { return m_scan_fresh; }  // the data of this round come from a scan
  // A scan of this connection has run, or any within two minutes.
  bool HasHeardSurroundings() const;
  void ForgetConnectedScans() { m_connected_scan_count = 0; }  // any thread

 private:
  bool MayScan(bool force_scan, std::uint64_t now, double rate);
  void RunScans(std::uint64_t now);
  void RunHiddenScans();
  void RememberRate(double rate);

  const AdapterIdentity& m_Adapter;
  const AdapterLink& m_Link;
  AdapterOperations& m_Operations;
  NetworkLists& m_Lists;
  AdapterTraffic& m_Traffic;
  DecidingProfile& m_Deciding;
  std::uint64_t m_LastScanTime = 0;   // tick: the clock of the scan interval
  std::uint64_t m_LastScanStart = 0;  // tick of the last scan
  std::uint32_t m_consec_ScanDeferrals = 0;
  std::atomic<std::uint32_t> m_connected_scan_count{0};
  std::uint32_t m_disconnected_scan_count = 0;
  std::atomic<bool> m_scan_fresh{false};
  std::vector<double> m_RateHistory;  // Mbps, newest first, at most 2
};

}  // namespace corvane
