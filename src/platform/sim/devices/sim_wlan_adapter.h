#pragma once
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/devices/sim_machine.h"
#include "platform/sim/devices/sim_scan_list.h"
#include "platform/sim/devices/sim_traffic.h"
#include "platform/sim/devices/sim_wlan_clients.h"
#include "platform/sim/devices/sim_wlan_profiles.h"
#include "platform/sim/kernel/seeded_random.h"

namespace corvane::platform::sim {

// One wireless adapter with its driver, and what the WLAN service does for it. Under the devices'
// lock; results are those of the WLAN service's operations.
class SimWlanAdapter {
 public:
  struct ConnectRequest {
    Cause cause = Cause::kProgram;
    LONG mode = wlan_connection_mode_profile;
    std::u16string profile;  // name
    std::string ssid;
    Security security;
    std::optional<Mac> bssid;  // nothing: the strongest of the SSID
  };
  struct Link {
    std::size_t accessPoint = 0;
    ConnectRequest request;
    double dbm = 0.0;
    ULONG toldQuality = 0;    // of the last notification
    unsigned lostChecks = 0;  // checks in a row that heard nothing
  };

  SimWlanAdapter(SimMachine& machine, SimWlanClients& clients, SimTraffic& traffic, int index);

  // What the machine has done before the program starts: it has scanned, and is connected where the
  // world says so.
  void Boot();

  const Adapter& Data() const { return m_Machine.world.adapters[m_Index]; }
  int Index() const { return static_cast<int>(m_Index); }
  bool IsRadioOn() const { return Data().radioOn && Data().hardwareRadioOn; }
  LONG InterfaceState() const;     // WLAN_INTERFACE_STATE
  const Link* Connection() const;  // null unless connected
  void RefreshLink();              // the link's signal as it is now
  const SimScanList& Heard();      // what the BSS list shows now
  const SimWlanProfiles& Profiles() const { return m_Profiles; }
  void AddProfile(Profile profile);
  // Disconnects where the connection is by this profile.
  bool DeleteProfile(Cause cause, const std::u16string& name);
  // The reason for which a filter of the machine forbids the SSID, 0 for none.
  DWORD DeniedReason(const std::string& ssid) const;

  // A scan that comes while another runs ends with it.
  DWORD Scan(Cause cause, const std::string& ssid, bool good = true);
  DWORD Connect(const ConnectRequest& request);
  DWORD Disconnect(Cause cause);
  DWORD Roam(Cause cause, std::size_t accessPoint);

  void SetRadio(bool hardware, bool on);
  void SetPresent(bool present);
  void OnServiceStopped();  // after it has: nobody is notified
  void OnServiceStarted();
  void OnSuspend();
  void OnResume();

 private:
  enum class Stage { kIdle, kDisconnecting, kAssociating, kAuthenticating };
  struct ScanRequest {
    Cause cause;
    std::string ssid;
    bool good;
  };

  DWORD Ready() const;  // whether it can send: the code with which operations fail
  std::uint64_t ConnectPart(unsigned fifths);
  std::uint64_t Jittered(std::uint64_t ms) { return ms * (80 + m_Random.Below(41)) / 100; }
  void ListenToAll(const std::vector<ScanRequest>& requests);
  void FinishScan();
  void AbortScan();

  void BeginAttempt();
  void Associate();
  void Authenticate(std::size_t accessPoint);
  void Complete(std::size_t accessPoint);
  void EndAttempt(DWORD reason);
  void FailAttempt(DWORD reason);  // it ends for what came of it, and not by what somebody did
  void DropLink(Cause cause, DWORD reason);
  void LinkUp(std::size_t accessPoint, const ConnectRequest& request);
  void CheckLink();
  void Fall();  // scan, attempt and link end, as the adapter can no longer send
  std::optional<std::size_t> PreferredOf(const std::string& ssid,
                                         const std::set<std::size_t>& except, double* dbm) const;
  std::optional<std::size_t> StrongestOf(const std::string& ssid,
                                         const std::set<std::size_t>& except, double* dbm) const;
  std::optional<std::size_t> TargetOf(const ConnectRequest& request, double* dbm) const;

  bool IsLeftToTheSystem() const;            // nobody uses it, and nobody has disconnected it
  void ConnectLater(std::uint64_t delayMs);  // the system's own connect
  void ConnectByItself();
  void BeginAnew(std::uint64_t delayMs);  // whatever was held against a connect is forgotten
  void NoteFailure(const ConnectRequest& request, DWORD reason);
  void ForgetFailures();
  std::optional<ConnectRequest> NextInReach();

  void NotifyAcm(DWORD code, DWORD reason);
  void NotifyMsm(DWORD code, DWORD reason);
  template <class Data>
  void Notify(DWORD source, DWORD code, const Data& data) {
    if (m_Machine.wlanService) m_Clients.Notify(source, code, this->Data().guid, data);
  }
  const ConnectRequest& PresentRequest() const;

  SimMachine& m_Machine;
  SimWlanClients& m_Clients;
  SimTraffic& m_Traffic;
  const std::size_t m_Index;
  SeededRandom m_Random;
  SimWlanProfiles m_Profiles;
  SimScanList m_Heard;

  std::vector<ScanRequest> m_Scans;  // that run, joined into one
  std::uint64_t m_ScanRun = 0;       // which scan; what belongs to an older one is out of date

  Stage m_Stage = Stage::kIdle;
  std::optional<ConnectRequest> m_Attempt;  // under way
  std::uint64_t m_AttemptRun = 0;
  std::uint64_t m_ConnectMs = 0, m_BeginMs = 0;  // the attempt was asked for, and began
  std::optional<Link> m_Link;
  std::uint64_t m_LinkRun = 0;
  bool m_bRoaming = false;
  std::uint64_t m_NextLookMs = 0;  // for a better access point, by the driver

  bool m_bHeld = false;  // somebody disconnected it: the system leaves it alone
  std::uint64_t m_ConnectLaterRun = 0;
  unsigned m_FruitlessScans = 0;
  unsigned m_Failures = 0;               // of the system's connects, in a row
  std::uint64_t m_PauseUntilMs = 0;      // before it tries again
  std::set<std::size_t> m_FailedPoints;  // access points that it passes over
};

}  // namespace corvane::platform::sim
