#pragma once
// Scans, connects and disconnects, each to its end: the platform only starts them and tells the end
// by a notification.

#include <atomic>
#include <functional>
#include <optional>

#include "wlan/adapter_link.h"
#include "wlan/adapter_profiles.h"
#include "wlan/operation_gate.h"

namespace corvane {

// Calls of WlanScan: tried, and how they ended.
struct ScanCounts {
  std::uint32_t m_ScanAttempts = 0, m_ScanFailures = 0, m_ScanSuccesses = 0;
};

// The operations block, queue behind one another without a limit, and throw Exception; without a
// client they do nothing. Time-outs may be INFINITE. They run on the adapter's worker, or on a
// pipe's thread; the caller holds no interface lock, under which the platform is called.
class AdapterOperations {
 public:
  AdapterOperations(const AdapterIdentity& adapter, AdapterLink& link, AdapterProfiles& profiles,
                    CCritSec& interfaceLock)
      : m_Adapter(adapter), m_Link(link), m_Profiles(profiles), m_Lock(interfaceLock) {}

  // Before the first operation; throws Exception.
  void Initialize() { m_Gate.Initialize(); }

  void ScanSynchronous(const platform::DOT11_SSID* pSsid);  // null: all networks
  // Ends in the connected state. `save` queues the text of a temporary profile.
  void ConnectSynchronous(const platform::WLAN_CONNECTION_PARAMETERS& parameters, bool save,
                          std::uint32_t timeoutMs);
  void ConnectToNetwork(const WString& ssid);    // by its profile, to any of its access points
  void DisconnectSynchronous(WStringView text);  // `text` goes only to the log

  bool IsScanInFlight() const { return m_scan_in_flight; }
  const ScanCounts& Scans() const { return m_Scans; }  // on the worker

  // For the platform's thread.
  OperationGate::State InFlight() const { return m_Gate.Get(); }
  [[nodiscard]] bool Complete(WlanOperation kind, platform::DWORD code, std::int32_t reason) {
    return m_Gate.Complete(kind, code, reason);
  }
  void SignalExit() { m_Gate.SignalExit(); }  // ends all waits

 private:
  // One operation: waits for its turn, makes the call and waits for the end. None without a client.
  std::optional<OperationGate::Result> Run(WlanOperation kind, const std::function<void()>& call,
                                           std::uint32_t timeoutMs);
  [[nodiscard]] bool Begin(WlanOperation kind, const std::function<void()>& call);
  // Throws Exception unless the operation has ended well.
  void Finish(WlanOperation kind, const OperationGate::Result& result) const;
  void AwaitConnectedState();
  void ScanInternal(const platform::DOT11_SSID* pSsid);
  void ConnectInternal(const platform::WLAN_CONNECTION_PARAMETERS& parameters);
  void DisconnectInternal();

  const AdapterIdentity& m_Adapter;
  AdapterLink& m_Link;
  AdapterProfiles& m_Profiles;
  CCritSec& m_Lock;
  OperationGate m_Gate;
  ScanCounts m_Scans;
  std::atomic<bool> m_scan_in_flight{false};
};

}  // namespace corvane
