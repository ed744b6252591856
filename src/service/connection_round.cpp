// What the adapter is connected to, and what follows from it.

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "policy/policy.h"
#include "service/main_worker.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::uint64_t kRoamLog = DBG(24);
constexpr std::uint64_t kSurgicalEverySecs = 3;

}  // namespace

void CQUAYMainWorker::UpdateConnectionState() {
  m_Connection = {};
  m_Connection.bssid.fill(0xFF);
  Contained([this] { TakeConnection(); },
            [this](const Failure& failure) {
              OnDisconnected();
              if (failure.code == platform::ERROR_INVALID_STATE) return;
              LOG_ERROR(u"[%i]CQUAYMainWorker::WorkThreadProc[INNER-1]: %S: %S", m_ConfigIdx,
                        failure.Kind(), failure.what);
            });
  if (!m_pInterface->IsConnected()) ReportDisconnection();
}

void CQUAYMainWorker::TakeConnection() {
  Connection now;
  now.wasConnected = m_pInterface->IsConnected();
  QueryConnection(&now);
  AimDetector();
  m_pInterface->Link().SetDisconnectedTick(false);
  bool ssidDiffers = m_pInterface->SetLastConnectedSsid(now.ssid);
  PublishConnection(now);

  const MacAddress old = m_pInterface->GetConnectedBssid();
  const bool bssidChanged = m_pInterface->SetConnectedBssid(now.bssid);
  m_pInterface->UpdateContentionAPs(m_pInterface->GetLastConnectedSsid(), now.bssidText,
                                    now.channel);
  if (bssidChanged) {
    ResetDetector("CONNECTED BSSID CHANGED");
    ssidDiffers = !m_pInterface->IsConnectedToNetworkWithBothBssids(now.bssid, old);
  }
  ProbeLink();
  DetectRoam(now, bssidChanged, ssidDiffers);
  now.connected = true;
  m_Connection = now;
  m_pInterface->Link().SetBackupScore(ComputeBackupScore(now.attrs, now.channel));
  if (bssidChanged || m_Round == 0) {
    ReportNewConnection(now);
  } else {
    ReportStandingConnection(now);
  }
  m_pInterface->ProcessIdleThresholds();
}

void CQUAYMainWorker::QueryConnection(Connection* now) {
  try {
    m_pInterface->QueryCurrentConnection(&now->attrs, true);
  } catch (...) {
    m_pInterface->ClearConnected();
    throw;
  }
  now->channel = m_pInterface->QueryChannel();
  const auto& association = now->attrs.wlanAssociationAttributes;
  now->ssid = SsidText(association.dot11Ssid);
  now->displayName = Format(u"%s [Channel %lu]", now->ssid, now->channel);
  now->bssid = ToMac(association.dot11Bssid);
  now->bssidText = MacText(now->bssid);
  now->quality = association.wlanSignalQuality;
  m_pInterface->FindBssEntry(now->ssid, now->bssid, &now->entry);
}

void CQUAYMainWorker::PublishConnection(const Connection& now) {
  m_pConfig->SetConnectedNetwork(now.displayName, now.ssid, now.bssidText);
  m_pConfig->SetDWORD(value::kConnectedLinkRateTX, now.attrs.wlanAssociationAttributes.ulTxRate);
  m_pConfig->SetDWORD(value::kConnectedLinkRateRX, now.attrs.wlanAssociationAttributes.ulRxRate);
}

void CQUAYMainWorker::PublishDisconnection() {
  m_pConfig->SetConnectedNetwork(u"", u"", u"");
  m_pConfig->SetDWORD(value::kConnectedLinkRateTX, 0);
  m_pConfig->SetDWORD(value::kConnectedLinkRateRX, 0);
}

void CQUAYMainWorker::OnDisconnected() {
  m_Connection = {};
  m_Connection.bssid.fill(0xFF);
  m_pInterface->Link().SetDisconnectedTick(true);
  m_pInterface->ClearContention();
  PublishDisconnection();
  m_pInterface->ClearConnectedBssid();
  m_pInterface->Link().SetBackupScore(0);
  ResetDetector("DISCONNECTED");
}

// A change of BSSID inside one network: this program's own move ends a roaming inhibit, anybody
// else's begins one.
void CQUAYMainWorker::DetectRoam(const Connection& now, bool bssidChanged, bool ssidDiffers) {
  if (!bssidChanged || ssidDiffers || m_pConfig->GetRoamingInhibitTick() != 0) {
    LOG_ADAPTER(m_ConfigIdx, kRoamLog,
                u"[%i] CQUAYMainWorker: %s %s was connected=%i changed=%i other ssid=%i [NO "
                u"ROAMING-INHIBIT "
                u"ENTRY DETECTION]",
                m_ConfigIdx, now.ssid, now.bssidText, now.wasConnected, bssidChanged, ssidDiffers);
  } else if (m_pInterface->GetConnectedBssidIfWeInitiated() == now.bssid) {
    LOG_ADAPTER(
        m_ConfigIdx, kRoamLog,
        u"[%i] CQUAYMainWorker: %s %s was connected=%i [WE INITIATED CONN!][DO NOT ENTER ROAMING "
        u"INHIBIT - FORCE CLEAR]",
        m_ConfigIdx, now.ssid, now.bssidText, now.wasConnected);
    m_pConfig->ClearRoamingInhibit();
  } else {
    LOG_ADAPTER(m_ConfigIdx, kRoamLog,
                u"[%i] CQUAYMainWorker: %s %s was connected=%i [~@~@~ START ROAMING-INHIBIT ~@~@~]",
                m_ConfigIdx, now.ssid, now.bssidText, now.wasConnected);
    m_pConfig->SetRoamingInhibit();
    m_pInterface->Profile().OnOutsideRoam(Os().clock.GetTickCount64());
  }
}

void CQUAYMainWorker::SurgicalUpdateIfInhibited(bool isHeldBack) {
  std::uint64_t remainingMs = 0;
  if (!m_pConfig->Get_InhibitQUAY(&remainingMs) && !isHeldBack) return;
  const std::uint64_t remainingSecs = remainingMs / 1000;
  if (remainingSecs % kSurgicalEverySecs != 0) return;
  Connection now;
  const auto disconnected = [&](const Failure& failure) {
    PublishDisconnection();
    LOG_ADAPTER(m_ConfigIdx, DBG(30),
                u"[%i] CQUAYMainWorker::Surgical...UpdateIfInhibited - %hs %hs [Clear "
                u"ConnectedNetwork][remain "
                u"secs %lu]\n",
                m_ConfigIdx, failure.own ? "Exception" : "std::exception", failure.what,
                remainingSecs);
    now.connected = false;
  };
  const auto update = [&] {
    QueryConnection(&now);
    now.connected = true;
    PublishConnection(now);
    LOG_ADAPTER(m_ConfigIdx, DBG(30),
                u"[%i] CQUAYMainWorker::Surgical...UpdateIfInhibited - Set ConnectedNetwork: %s "
                u"[remain secs "
                u"%lu]\n",
                m_ConfigIdx, now.displayName, remainingSecs);
  };
  Contained(update, disconnected);
  CGlobalQUAYPolicy::UpdateAssociateLQPegging(m_pInterface.get(), now.connected, &now.quality,
                                              now.ssid, now.bssid, "SURGICAL");
  if (now.entry) {
    HandleQUAYSpecialEtwEvents(now.entry.get(), "SURGICAL");
  } else if (!m_pInterface->IsConnected()) {
    HandleQUAYSpecialEtwEvents(nullptr, "SURGICAL [disconnected]");
  }
}

}  // namespace corvane
