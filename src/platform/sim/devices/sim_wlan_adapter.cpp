#include "platform/sim/devices/sim_wlan_adapter.h"

#include <algorithm>

#include "platform/sim/world/connect_rules.h"
#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {
constexpr std::uint64_t kAdapterStream = 0xADA9;
constexpr double kSureMarginDb = 6.0;  // over the sensitivity: from here on no beacon is missed
constexpr double kSureAtLimit = 0.6;   // chance at the sensitivity itself
}  // namespace

SimWlanAdapter::SimWlanAdapter(SimMachine& machine, SimWlanClients& clients, SimTraffic& traffic,
                               int index)
    : m_Machine(machine),
      m_Clients(clients),
      m_Traffic(traffic),
      m_Index(static_cast<std::size_t>(index)),
      m_Random(machine.seed ^ (kAdapterStream + m_Index)),
      m_Profiles(machine.world, index) {}

void SimWlanAdapter::Boot() {
  if (Ready() != ERROR_SUCCESS) return;
  ListenToAll({});
  const auto start = m_Machine.FindAccessPoint(Data().connectedTo);
  if (start && m_Machine.SignalFor(Data(), *start)) {
    const AccessPoint& ap = m_Machine.world.accessPoints[*start];
    const Profile* profile = m_Profiles.FindForSsid(ap.ssid);
    LinkUp(*start, {.cause = Cause::kOutside,
                    .mode = wlan_connection_mode_profile,
                    .profile = profile ? profile->name : FromUtf8(ap.ssid),
                    .ssid = ap.ssid,
                    .security = ap.security,
                    .bssid = std::nullopt});
  } else {
    ConnectLater(500);
  }
}

DWORD SimWlanAdapter::Ready() const {
  if (!Data().present) return ERROR_NOT_FOUND;
  return IsRadioOn() && !m_Machine.suspended ? ERROR_SUCCESS : ERROR_NDIS_DOT11_POWER_STATE_INVALID;
}

LONG SimWlanAdapter::InterfaceState() const {
  if (Ready() != ERROR_SUCCESS) return wlan_interface_state_not_ready;
  switch (m_Stage) {
    case Stage::kDisconnecting:
      return wlan_interface_state_disconnecting;
    case Stage::kAssociating:
      return wlan_interface_state_associating;
    case Stage::kAuthenticating:
      return wlan_interface_state_authenticating;
    case Stage::kIdle:
      break;
  }
  return m_Link ? wlan_interface_state_connected : wlan_interface_state_disconnected;
}

const SimScanList& SimWlanAdapter::Heard() {
  m_Heard.Age(m_Machine, Data().staleMs);
  return m_Heard;
}

DWORD SimWlanAdapter::DeniedReason(const std::string& ssid) const {
  return FilterReason(m_Machine.world.filters, ssid);
}

void SimWlanAdapter::AddProfile(Profile profile) {
  ForgetFailures();
  m_Profiles.Put(std::move(profile));
  Notify(WLAN_NOTIFICATION_SOURCE_ACM, wlan_notification_acm_profile_change,
         DWORD{WLAN_REASON_CODE_SUCCESS});
  if (!m_Link && !m_Attempt) ConnectLater(1000);
}

bool SimWlanAdapter::DeleteProfile(Cause cause, const std::u16string& name) {
  const Profile* profile = m_Profiles.Find(name);
  if (!profile) return false;
  const bool ours = m_Link && m_Link->request.profile == profile->name;
  m_Profiles.Delete(name);
  Notify(WLAN_NOTIFICATION_SOURCE_ACM, wlan_notification_acm_profile_change,
         DWORD{WLAN_REASON_CODE_SUCCESS});
  if (ours) Disconnect(cause);
  return true;
}

DWORD SimWlanAdapter::Scan(Cause cause, const std::string& ssid, bool good) {
  if (const DWORD code = Ready(); code != ERROR_SUCCESS) return code;
  m_Scans.push_back({cause, ssid, good});
  m_Machine.loop.Tell([index = Index(), cause, ssid](IPcObserver& observer) {
    observer.OnScanStarted(index, cause, ssid);
  });
  if (m_Scans.size() > 1) return ERROR_SUCCESS;
  // From four fifths of the usual time to half as long again.
  const auto recorded = TookAt(Data().scansTook, m_Machine.loop.NowMs());
  const std::uint64_t ms = recorded ? *recorded : Data().scanMs * (80 + m_Random.Below(81)) / 100;
  m_Machine.loop.In(ms, [this, run = ++m_ScanRun] {
    if (run == m_ScanRun) FinishScan();
  });
  return ERROR_SUCCESS;
}

void SimWlanAdapter::ListenToAll(const std::vector<ScanRequest>& requests) {
  const Adapter& adapter = Data();
  for (std::size_t i = 0; i < m_Machine.world.accessPoints.size(); ++i) {
    const auto dbm = m_Machine.SignalFor(adapter, i);
    if (!dbm) continue;
    const double margin = std::min((*dbm - adapter.sensitivityDbm) / kSureMarginDb, 1.0);
    if (margin < 1.0 && m_Random.Unit() > kSureAtLimit + (1.0 - kSureAtLimit) * margin) continue;
    const std::string& ssid = m_Machine.world.accessPoints[i].ssid;
    const bool asked = std::ranges::find(requests, ssid, &ScanRequest::ssid) != requests.end();
    const bool ours = m_Link && m_Link->accessPoint == i;
    m_Heard.Hear(m_Machine, i, *dbm, asked || ours, adapter.staleMs);
  }
}

void SimWlanAdapter::FinishScan() {
  ++m_ScanRun;
  const std::vector<ScanRequest> requests = std::move(m_Scans);
  m_Scans.clear();
  const bool good = requests.front().good;
  if (good) ListenToAll(requests);
  const DWORD reason = good ? WLAN_REASON_CODE_SUCCESS : WLAN_REASON_CODE_DRIVER_OPERATION_FAILURE;
  Notify(WLAN_NOTIFICATION_SOURCE_ACM,
         good ? wlan_notification_acm_scan_complete : wlan_notification_acm_scan_fail, reason);
  if (good) Notify(WLAN_NOTIFICATION_SOURCE_ACM, wlan_notification_acm_scan_list_refresh, reason);
  for (const ScanRequest& request : requests) {
    m_Machine.loop.Tell([index = Index(), cause = request.cause, good](IPcObserver& observer) {
      observer.OnScanEnded(index, cause, good);
    });
  }
  // The system uses what anybody's scan has found.
  if (good && IsLeftToTheSystem() && NextInReach()) ConnectLater(300);
}

void SimWlanAdapter::AbortScan() {
  if (m_Scans.empty()) return;
  for (ScanRequest& request : m_Scans) request.good = false;
  FinishScan();
}

void SimWlanAdapter::Fall() {
  AbortScan();
  if (m_Attempt) EndAttempt(WLAN_REASON_CODE_DRIVER_DISCONNECTED);
  if (m_Link) DropLink(Cause::kOutside, WLAN_REASON_CODE_DRIVER_DISCONNECTED);
  m_Heard.Clear();
}

void SimWlanAdapter::SetRadio(bool hardware, bool on) {
  Adapter& adapter = m_Machine.world.adapters[m_Index];
  bool& state = hardware ? adapter.hardwareRadioOn : adapter.radioOn;
  if (state == on) return;
  state = on;
  if (adapter.present) {
    for (std::size_t phy = 0; phy < adapter.phys.size(); ++phy) {
      const auto word = [](bool is) { return is ? dot11_radio_state_on : dot11_radio_state_off; };
      Notify(WLAN_NOTIFICATION_SOURCE_MSM, wlan_notification_msm_radio_state_change,
             WLAN_PHY_RADIO_STATE{static_cast<DWORD>(phy), word(adapter.radioOn),
                                  word(adapter.hardwareRadioOn)});
    }
  }
  if (IsRadioOn()) {
    BeginAnew(2000);
  } else {
    Fall();
  }
}

void SimWlanAdapter::SetPresent(bool present) {
  Adapter& adapter = m_Machine.world.adapters[m_Index];
  if (adapter.present == present) return;
  if (!present) Fall();
  adapter.present = present;
  Notify(
      WLAN_NOTIFICATION_SOURCE_ACM,
      present ? wlan_notification_acm_interface_arrival : wlan_notification_acm_interface_removal,
      DWORD{WLAN_REASON_CODE_SUCCESS});
  if (present) BeginAnew(3000);
}

void SimWlanAdapter::OnServiceStopped() { Fall(); }

void SimWlanAdapter::OnServiceStarted() { BeginAnew(2000); }

void SimWlanAdapter::OnSuspend() { Fall(); }

void SimWlanAdapter::OnResume() { BeginAnew(1500); }

bool SimWlanAdapter::IsLeftToTheSystem() const {
  return m_Stage == Stage::kIdle && !m_Link && !m_Attempt && !m_bHeld && Data().autoConnect &&
         m_Machine.wlanService && Ready() == ERROR_SUCCESS;
}

void SimWlanAdapter::BeginAnew(std::uint64_t delayMs) {
  m_bHeld = false;
  ForgetFailures();
  ConnectLater(delayMs);
}

// The WLAN service's own rounds while the adapter is not connected. One that is to come replaces
// the one before.
void SimWlanAdapter::ConnectLater(std::uint64_t delayMs) {
  if (!Data().autoConnect) return;
  const std::uint64_t dueMs = m_Machine.loop.NowMs() + Jittered(delayMs);
  m_Machine.loop.At(std::max(dueMs, m_PauseUntilMs), [this, run = ++m_ConnectLaterRun] {
    if (run == m_ConnectLaterRun) ConnectByItself();
  });
}

void SimWlanAdapter::ConnectByItself() {
  constexpr std::uint64_t kLongestPauseMs = 60'000;
  if (!IsLeftToTheSystem()) return;
  if (const auto request = NextInReach()) {
    m_FruitlessScans = 0;
    Connect(*request);
    return;
  }
  const bool any = std::ranges::any_of(m_Profiles.All(), &Profile::autoConnect);
  if (!any) return;  // a profile that is added asks again
  Scan(Cause::kOutside, {});
  ConnectLater(
      std::min<std::uint64_t>(Data().scanMs * 2 + 10'000 * m_FruitlessScans++, kLongestPauseMs));
}

// The access point is passed over from now on, and with a wrong key all of its name. Each failure
// makes the system wait longer.
void SimWlanAdapter::NoteFailure(const ConnectRequest& request, DWORD reason) {
  constexpr std::uint64_t kPausesMs[] = {5'000, 15'000, 60'000, 300'000};
  m_PauseUntilMs = m_Machine.loop.NowMs() + kPausesMs[std::min<std::size_t>(m_Failures++, 3)];
  const bool wrongKey = reason == WLAN_REASON_CODE_MSMSEC_PSK_MISMATCH_SUSPECTED;
  const auto& aps = m_Machine.world.accessPoints;
  for (std::size_t i = 0; i < aps.size(); ++i) {
    if (aps[i].ssid == request.ssid && (wrongKey || aps[i].bssid == request.bssid)) {
      m_FailedPoints.insert(i);
    }
  }
}

void SimWlanAdapter::ForgetFailures() {
  m_Failures = 0;
  m_PauseUntilMs = 0;
  m_FailedPoints.clear();
}

// The most preferred profile with an access point that was heard, and the best of these; one
// of a hidden network is looked for on the air. When all have failed it begins again with the
// first.
std::optional<SimWlanAdapter::ConnectRequest> SimWlanAdapter::NextInReach() {
  const SimScanList& heard = Heard();
  for (const Profile& profile : m_Profiles.All()) {
    if (!profile.autoConnect || DeniedReason(profile.ssid) != WLAN_REASON_CODE_SUCCESS) continue;
    double dbm = 0.0;
    const auto best = PreferredOf(profile.ssid, m_FailedPoints, &dbm);
    if (!best || (!profile.nonBroadcast && !heard.Find(*best))) continue;
    return ConnectRequest{.cause = Cause::kOutside,
                          .mode = wlan_connection_mode_auto,
                          .profile = profile.name,
                          .ssid = profile.ssid,
                          .security = profile.security,
                          .bssid = m_Machine.world.accessPoints[*best].bssid};
  }
  if (m_FailedPoints.empty()) return std::nullopt;
  m_FailedPoints.clear();
  return NextInReach();
}

}  // namespace corvane::platform::sim
