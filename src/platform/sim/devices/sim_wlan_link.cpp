// The link of a wireless adapter: how it comes up, what happens to it, and how it ends.

#include <algorithm>

#include "platform/sim/devices/sim_wlan_adapter.h"
#include "platform/sim/world/connect_rules.h"
#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

constexpr std::uint64_t kSearchMs = 1500;      // before a network counts as not there
constexpr std::uint64_t kWrongKeyMs = 2500;    // handshakes that are tried over
constexpr std::uint64_t kNoAnswerMs = 3000;    // associations that are tried over
constexpr std::uint64_t kCheckMs = 2000;       // between two looks at the link
constexpr std::uint64_t kLookAroundMs = 6000;  // between two of the driver's looks around
constexpr unsigned kLostChecks = 2;            // after which the link is lost
constexpr double kLinkMarginDb = 2.0;          // over the sensitivity, that an association needs
constexpr ULONG kQualityStep = 10;             // that is worth a notification

}  // namespace

const SimWlanAdapter::Link* SimWlanAdapter::Connection() const {
  return m_Link && m_Stage == Stage::kIdle ? &*m_Link : nullptr;
}

void SimWlanAdapter::RefreshLink() {
  if (!m_Link) return;
  if (const auto dbm = m_Machine.SignalFor(Data(), m_Link->accessPoint)) m_Link->dbm = *dbm;
}

DWORD SimWlanAdapter::Connect(const ConnectRequest& request) {
  if (const DWORD code = Ready(); code != ERROR_SUCCESS) return code;
  if (m_Attempt) EndAttempt(WLAN_REASON_CODE_USER_CANCELLED);
  m_bHeld = false;
  ++m_ConnectLaterRun;
  m_Attempt = request;
  m_ConnectMs = m_Machine.loop.NowMs();
  m_Machine.loop.Tell(
      [index = Index(), cause = request.cause, ssid = request.ssid](IPcObserver& observer) {
        observer.OnConnectStarted(index, cause, ssid);
      });
  const std::uint64_t run = ++m_AttemptRun;
  if (!m_Link) {
    BeginAttempt();
    return ERROR_SUCCESS;
  }
  m_Stage = Stage::kDisconnecting;
  NotifyAcm(wlan_notification_acm_disconnecting, WLAN_REASON_CODE_SUCCESS);
  m_Machine.loop.In(Jittered(100), [this, run, cause = request.cause] {
    if (run != m_AttemptRun) return;
    if (m_Link) DropLink(cause, WLAN_REASON_CODE_SUCCESS);
    BeginAttempt();
  });
  return ERROR_SUCCESS;
}

// So many fifths of a connect.
std::uint64_t SimWlanAdapter::ConnectPart(unsigned fifths) {
  constexpr unsigned kFifths = 5;
  if (const auto recorded = TookAt(Data().connectsTook, m_ConnectMs)) {
    const std::uint64_t left =
        *recorded - std::min<std::uint64_t>(*recorded, m_BeginMs - m_ConnectMs);
    return left * fifths / kFifths;
  }
  return Jittered(Data().connectMs * fifths / kFifths);
}

void SimWlanAdapter::BeginAttempt() {
  m_BeginMs = m_Machine.loop.NowMs();
  m_Stage = Stage::kAssociating;
  NotifyAcm(wlan_notification_acm_connection_start, WLAN_REASON_CODE_SUCCESS);
  NotifyMsm(wlan_notification_msm_associating, WLAN_REASON_CODE_SUCCESS);
  m_Machine.loop.In(ConnectPart(2), [this, run = m_AttemptRun] {
    if (run == m_AttemptRun) Associate();
  });
}

void SimWlanAdapter::Associate() {
  const ConnectRequest& request = *m_Attempt;
  const auto fail = [this](DWORD reason, std::uint64_t afterMs) {
    m_Machine.loop.In(Jittered(afterMs), [this, reason, run = m_AttemptRun] {
      if (run == m_AttemptRun) FailAttempt(reason);
    });
  };
  if (const DWORD denied = DeniedReason(request.ssid); denied != WLAN_REASON_CODE_SUCCESS) {
    return fail(denied, 0);
  }
  double dbm = 0.0;
  const auto target = TargetOf(request, &dbm);
  if (!target) return fail(WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE, kSearchMs);
  const AccessPoint& ap = m_Machine.world.accessPoints[*target];
  if (!Agree(request.security, ap.security))
    return fail(WLAN_REASON_CODE_NETWORK_NOT_COMPATIBLE, 0);
  if (ap.refuseReason != 0) return fail(ap.refuseReason, 0);
  if (dbm < Data().sensitivityDbm + kLinkMarginDb) {
    return fail(WLAN_REASON_CODE_ASSOCIATION_TIMEOUT, kNoAnswerMs);
  }
  m_Stage = Stage::kAuthenticating;
  NotifyMsm(wlan_notification_msm_associated, WLAN_REASON_CODE_SUCCESS);
  NotifyMsm(wlan_notification_msm_authenticating, WLAN_REASON_CODE_SUCCESS);
  if (!KeyFits(request.security, ap.security)) {
    return fail(WLAN_REASON_CODE_MSMSEC_PSK_MISMATCH_SUSPECTED, kWrongKeyMs);
  }
  m_Machine.loop.In(ConnectPart(3), [this, target = *target, run = m_AttemptRun] {
    if (run == m_AttemptRun) Authenticate(target);
  });
}

void SimWlanAdapter::Authenticate(std::size_t accessPoint) {
  if (m_Machine.SignalFor(Data(), accessPoint)) {
    Complete(accessPoint);
  } else {
    FailAttempt(WLAN_REASON_CODE_ASSOCIATION_FAILURE);
  }
}

void SimWlanAdapter::Complete(std::size_t accessPoint) {
  const ConnectRequest request = *m_Attempt;
  m_Attempt.reset();
  ++m_AttemptRun;
  m_Stage = Stage::kIdle;
  LinkUp(accessPoint, request);
  ForgetFailures();
  NotifyMsm(wlan_notification_msm_connected, WLAN_REASON_CODE_SUCCESS);
  NotifyAcm(wlan_notification_acm_connection_complete, WLAN_REASON_CODE_SUCCESS);
  m_Machine.loop.Tell(
      [index = Index(), cause = request.cause, ssid = request.ssid,
       bssid = MacText(m_Machine.world.accessPoints[accessPoint].bssid)](IPcObserver& observer) {
        observer.OnConnectEnded(index, cause, ssid, bssid, WLAN_REASON_CODE_SUCCESS);
      });
}

void SimWlanAdapter::FailAttempt(DWORD reason) {
  if (m_Attempt->cause != Cause::kProgram) NoteFailure(*m_Attempt, reason);
  EndAttempt(reason);
}

// The WLAN service tells of the failed attempt first, and then that the connection is complete,
// with the reason.
void SimWlanAdapter::EndAttempt(DWORD reason) {
  const ConnectRequest request = *m_Attempt;
  NotifyAcm(wlan_notification_acm_connection_attempt_fail, reason);
  NotifyAcm(wlan_notification_acm_connection_complete, reason);
  m_Attempt.reset();
  ++m_AttemptRun;
  m_Stage = Stage::kIdle;
  std::string bssid;
  if (request.bssid) bssid = MacText(*request.bssid);
  m_Machine.loop.Tell([index = Index(), cause = request.cause, ssid = request.ssid, bssid,
                       reason](IPcObserver& observer) {
    observer.OnConnectEnded(index, cause, ssid, bssid, reason);
  });
  if (!m_Link) ConnectLater(3000);
}

void SimWlanAdapter::LinkUp(std::size_t accessPoint, const ConnectRequest& request) {
  const double dbm = m_Machine.SignalFor(Data(), accessPoint).value_or(Data().sensitivityDbm);
  m_Link = Link{accessPoint, request, dbm, LinkQualityOf(dbm), 0};
  m_bRoaming = false;
  m_Heard.Hear(m_Machine, accessPoint, dbm, true, Data().staleMs);
  m_Traffic.SetConnected(Index(), true);
  m_Machine.world.networks[m_Machine.NetworkOf(accessPoint)].connectedSecs =
      m_Machine.loop.WallSecs();
  m_Machine.loop.In(kCheckMs, [this, run = ++m_LinkRun] {
    if (run == m_LinkRun) CheckLink();
  });
}

void SimWlanAdapter::DropLink(Cause cause, DWORD reason) {
  NotifyMsm(wlan_notification_msm_disconnected, reason);
  NotifyAcm(wlan_notification_acm_disconnected, reason);
  m_Machine.loop.Tell([index = Index(), cause, ssid = m_Link->request.ssid](IPcObserver& observer) {
    observer.OnDisconnected(index, cause, ssid);
  });
  m_Link.reset();
  m_bRoaming = false;
  ++m_LinkRun;
  ForgetFailures();
  m_Traffic.SetConnected(Index(), false);
  if (!m_Attempt) {
    m_Stage = Stage::kIdle;
    ConnectLater(2000);
  }
}

DWORD SimWlanAdapter::Disconnect(Cause cause) {
  if (!Data().present) return ERROR_NOT_FOUND;
  m_bHeld = true;
  if (m_Attempt) EndAttempt(WLAN_REASON_CODE_USER_CANCELLED);
  if (!m_Link || m_Stage == Stage::kDisconnecting) return ERROR_SUCCESS;
  m_Stage = Stage::kDisconnecting;
  NotifyAcm(wlan_notification_acm_disconnecting, WLAN_REASON_CODE_SUCCESS);
  m_Machine.loop.In(Jittered(80), [this, cause, run = m_LinkRun] {
    if (run == m_LinkRun && m_Stage == Stage::kDisconnecting && !m_Attempt) {
      DropLink(cause, WLAN_REASON_CODE_SUCCESS);
    }
  });
  return ERROR_SUCCESS;
}

DWORD SimWlanAdapter::Roam(Cause cause, std::size_t accessPoint) {
  if (!Connection() || m_bRoaming) return ERROR_INVALID_STATE;
  const auto& aps = m_Machine.world.accessPoints;
  if (aps[accessPoint].ssid != aps[m_Link->accessPoint].ssid) return ERROR_INVALID_PARAMETER;
  m_bRoaming = true;
  NotifyMsm(wlan_notification_msm_roaming_start, WLAN_REASON_CODE_SUCCESS);
  m_Machine.loop.In(Jittered(150), [this, cause, accessPoint, run = m_LinkRun] {
    if (run != m_LinkRun || !m_Link) return;
    m_bRoaming = false;
    const auto dbm = m_Machine.SignalFor(Data(), accessPoint);
    const AccessPoint& ap = m_Machine.world.accessPoints[accessPoint];
    if (!dbm || ap.refuseReason != 0) {
      NotifyMsm(wlan_notification_msm_roaming_end, WLAN_REASON_CODE_ROAMING_FAILURE);
      if (m_Stage == Stage::kIdle) DropLink(Cause::kDriver, WLAN_REASON_CODE_ROAMING_FAILURE);
      return;
    }
    m_Link->accessPoint = accessPoint;
    m_Link->dbm = *dbm;
    m_Link->lostChecks = 0;
    m_Heard.Hear(m_Machine, accessPoint, *dbm, true, Data().staleMs);
    NotifyMsm(wlan_notification_msm_roaming_end, WLAN_REASON_CODE_SUCCESS);
    m_Machine.loop.Tell(
        [index = Index(), cause, ssid = ap.ssid, bssid = MacText(ap.bssid)](IPcObserver& observer) {
          observer.OnRoamed(index, cause, ssid, bssid);
        });
  });
  return ERROR_SUCCESS;
}

void SimWlanAdapter::CheckLink() {
  m_Machine.loop.In(kCheckMs, [this, run = m_LinkRun] {
    if (run == m_LinkRun) CheckLink();
  });
  if (m_Stage != Stage::kIdle || m_bRoaming) return;
  const Adapter& adapter = Data();
  const auto dbm = m_Machine.SignalFor(adapter, m_Link->accessPoint);
  m_Link->lostChecks = dbm ? 0 : m_Link->lostChecks + 1;
  if (dbm) {
    m_Link->dbm = *dbm;
    m_Heard.Hear(m_Machine, m_Link->accessPoint, *dbm, true, adapter.staleMs);
    const ULONG quality = LinkQualityOf(*dbm);
    const ULONG told = m_Link->toldQuality;
    if (std::max(quality, told) - std::min(quality, told) >= kQualityStep) {
      m_Link->toldQuality = quality;
      Notify(WLAN_NOTIFICATION_SOURCE_MSM, wlan_notification_msm_signal_quality_change, quality);
    }
  }
  const std::uint64_t now = m_Machine.loop.NowMs();
  const bool weak = !dbm || *dbm < adapter.roaming.belowDbm;
  if (adapter.roaming.enabled && weak && now >= m_NextLookMs) {
    m_NextLookMs = now + kLookAroundMs;
    double best = 0.0;
    const auto other = StrongestOf(m_Link->request.ssid, {m_Link->accessPoint}, &best);
    if (other && (!dbm || best >= *dbm + adapter.roaming.marginDb)) {
      Roam(Cause::kDriver, *other);
      return;
    }
  }
  if (m_Link->lostChecks >= kLostChecks) {
    DropLink(Cause::kDriver, WLAN_REASON_CODE_DRIVER_DISCONNECTED);
  }
}

// What the system itself takes of one name: a strong signal in 5 or 6 GHz counts for more than its
// strength.
std::optional<std::size_t> SimWlanAdapter::PreferredOf(const std::string& ssid,
                                                       const std::set<std::size_t>& except,
                                                       double* dbm) const {
  std::optional<std::size_t> best;
  double bestWeight = 0.0;
  for (std::size_t i = 0; i < m_Machine.world.accessPoints.size(); ++i) {
    const AccessPoint& ap = m_Machine.world.accessPoints[i];
    if (ap.ssid != ssid || except.contains(i)) continue;
    const auto signal = m_Machine.SignalFor(Data(), i);
    if (!signal) continue;
    const double weight = ConnectWeight(*signal, BandOf(ap.frequencyMhz));
    if (best && weight <= bestWeight) continue;
    best = i;
    bestWeight = weight;
    *dbm = *signal;
  }
  return best;
}

std::optional<std::size_t> SimWlanAdapter::StrongestOf(const std::string& ssid,
                                                       const std::set<std::size_t>& except,
                                                       double* dbm) const {
  std::optional<std::size_t> best;
  for (std::size_t i = 0; i < m_Machine.world.accessPoints.size(); ++i) {
    if (m_Machine.world.accessPoints[i].ssid != ssid || except.contains(i)) continue;
    const auto signal = m_Machine.SignalFor(Data(), i);
    if (!signal || (best && *signal <= *dbm)) continue;
    best = i;
    *dbm = *signal;
  }
  return best;
}

std::optional<std::size_t> SimWlanAdapter::TargetOf(const ConnectRequest& request,
                                                    double* dbm) const {
  const auto& aps = m_Machine.world.accessPoints;
  if (!request.bssid) return PreferredOf(request.ssid, {}, dbm);
  for (std::size_t i = 0; i < aps.size(); ++i) {
    if (aps[i].bssid != *request.bssid || aps[i].ssid != request.ssid) continue;
    const auto signal = m_Machine.SignalFor(Data(), i);
    if (!signal) continue;
    *dbm = *signal;
    return i;
  }
  return std::nullopt;
}

const SimWlanAdapter::ConnectRequest& SimWlanAdapter::PresentRequest() const {
  // While a new connection waits for the old one's end, what is told is of the old one.
  return m_Link ? m_Link->request : *m_Attempt;
}

void SimWlanAdapter::NotifyAcm(DWORD code, DWORD reason) {
  const bool ofOld =
      code == wlan_notification_acm_disconnecting || code == wlan_notification_acm_disconnected;
  const ConnectRequest& request = m_Attempt && !ofOld ? *m_Attempt : PresentRequest();
  WLAN_CONNECTION_NOTIFICATION_DATA data;
  data.wlanConnectionMode = request.mode;
  CopyText(request.profile, data.strProfileName, std::size(data.strProfileName));
  data.dot11Ssid = ToDot11(request.ssid);
  data.dot11BssType = dot11_BSS_type_infrastructure;
  data.bSecurityEnabled = request.security.Enabled();
  data.wlanReasonCode = reason;
  Notify(WLAN_NOTIFICATION_SOURCE_ACM, code, data);
}

void SimWlanAdapter::NotifyMsm(DWORD code, DWORD reason) {
  const ConnectRequest& request = PresentRequest();
  WLAN_MSM_NOTIFICATION_DATA data;
  data.wlanConnectionMode = request.mode;
  CopyText(request.profile, data.strProfileName, std::size(data.strProfileName));
  data.dot11Ssid = ToDot11(request.ssid);
  data.dot11BssType = dot11_BSS_type_infrastructure;
  const Mac bssid = m_Link          ? m_Machine.world.accessPoints[m_Link->accessPoint].bssid
                    : request.bssid ? *request.bssid
                                    : Mac{};
  std::copy(bssid.begin(), bssid.end(), data.dot11MacAddr);
  data.bSecurityEnabled = request.security.Enabled();
  data.wlanReasonCode = reason;
  Notify(WLAN_NOTIFICATION_SOURCE_MSM, code, data);
}

}  // namespace corvane::platform::sim
