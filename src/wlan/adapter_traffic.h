#pragma once
// How much an adapter's link carries: the counters, the rate gates that are learned of them, and
// the measurements by traffic of our own.

#include <atomic>

#include "monitors/interface_pdh.h"
#include "probes/win_icmp2.h"
#include "wlan/adapter_link.h"

namespace corvane {

class CAdaptersAddresses;

// Polled and measured on the adapter's worker; the figures are read by every thread. Mbps, 0
// without counters.
class AdapterTraffic {
 public:
  AdapterTraffic(const AdapterIdentity& adapter, const AdapterLink& link)
      : m_Adapter(adapter), m_Link(link) {}

  void Initialize();  // once the adapter is known
  CSmartPointer<CInterfacePDH> Pdh() const { return m_pInterfacePDH; }
  double Mbps() const;  // transmit and receive
  void Poll();

  // Learns the rate gates of the connection.
  void ProcessIdleThresholds();
  void ResetGates();  // the connection has ended: what was learned of it is forgotten; any thread

  // Floods the gateway for a second; the result stays for BlastMbps. Without a snapshot or a
  // gateway nothing is measured.
  void DoBlast(CAdaptersAddresses* adapters);
  double BlastMbps() const { return m_BlastMbps; }  // of the last blast, 0 before it
  CWinICMP2& Detector() { return m_Detector; }      // on the worker only

 private:
  void BlastGateway(CAdaptersAddresses& adapters);

  const AdapterIdentity& m_Adapter;
  const AdapterLink& m_Link;
  CSmartPointer<CInterfacePDH> m_pInterfacePDH;  // none without an index of the operating system
  CWinICMP2 m_Detector;
  std::atomic<double> m_BlastMbps{0.0};
};

}  // namespace corvane
