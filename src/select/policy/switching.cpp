// Leaving a connection for a better one, and connecting an adapter that has none.

#include "config/store/value_names.h"
#include "core/log/log.h"
#include "select/policy/policy.h"
#include "select/policy/policy_text.h"
#include "wlan/binding/wifi_client_container.h"

namespace corvane {

namespace {

constexpr std::uint64_t kSwitchLog = DBG(16) | DBG(17);
constexpr std::uint32_t kConnectTimeoutMs = 15000;

// What clients read of a connection: name, addresses, link rates.
void PublishConnection(CWlanInterface& adapter, CQUAYInterfaceConfig& config, CWlanBssEntry& entry) {
  config.SetConnectedNetwork(NetworkDisplayName(entry.m_SSIDW, entry.m_Channel), entry.m_SSIDW,
                             entry.m_BSSIDText);
  const auto attributes = adapter.GetConnAttrs().wlanAssociationAttributes;
  config.SetDWORD(value::kConnectedLinkRateTX, attributes.ulTxRate);
  config.SetDWORD(value::kConnectedLinkRateRX, attributes.ulRxRate);
}

// One attempt at one entry. `stage` names the caller in the log.
bool TryConnect(CWlanInterface& adapter, CQUAYInterfaceConfig& config, CWlanBssEntry& entry,
                const char* stage) {
  const int idx = adapter.GetConfigIdx();
  const auto failed = [&](const char* kind, const char* what, std::uint32_t code) {
    ++entry.m_connect_failed;
    LOG_ERROR(u"[%i]CGlobalQUAYPolicy::MakeChoice:[%S] %S: %S, STATS: failed=%i, good=%i", idx, stage,
              kind, what, entry.m_connect_failed, entry.m_connect_good);
    entry.m_last_reason_code = code;
    config.SetString(value::kConnectStatus, u"error");
    return false;
  };
  try {
    entry.ConnectSynchronous(&adapter, {}, false, kConnectTimeoutMs);
  } catch (const Exception& e) {
    return failed("Exception", e.what(), e.GetCode());
  } catch (const std::exception& e) {
    return failed("std:exception", e.what(), 0);
  }
  ++entry.m_connect_good;
  entry.m_ever_connected = true;
  entry.m_last_reason_code = 0;
  return true;
}

// Whether the move to `entry` stays within the connected network.
bool IsRoam(const CWlanBssEntry& entry, const ConnectionFacts& facts) {
  return entry.m_SSIDW == facts.ssid;
}

// In autoswitch every move connects by itself, in the passive modes only a roam does.
bool ConnectsByItself(const CQUAYInterfaceConfig& config, bool roam) {
  if (config.m_allowlist_active || config.m_bForcePopupOverride) return false;
  return config.IsAutoswitch() || (roam && config.IsRoamingEnabled());
}

}  // namespace

bool CGlobalQUAYPolicy::SwitchConnectionToBest(CWlanInterface* pIf, const BssEntryList& entries,
                                               std::int32_t current_score, const ConnectionFacts& facts) {
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  bool attempted = false;
  bool settled = false;

  for (const auto& entry : entries) {
    const MacAddress mac = entry->GetBssid();
    if (CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(entry.get(), pIf)) {
      LOG_ADAPTER(idx, kSwitchLog, u"\n[%i][%s] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", idx,
                  IsCandidateReady(pIf, entry.get(), current_score) ? u"_AVOID[READY]_" : u"_AVOID_",
                  entry->m_SSIDW, MAC_ARGS(mac));
      continue;
    }
    if (!IsCandidateReady(pIf, entry.get(), current_score)) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"\n[%i][NO-READY/SKIP-THIS] IF-STATE: %i [CONNECTED to diff SSID %s][CANDIDATE "
                  u"%s(center %u), counter %i][%0.2lf mbps]\n",
                  idx, pIf->GetInterfaceState(), facts.ssid, entry->m_SSIDW, entry->GetFrequencyKhz(),
                  entry->GetCandidate(), pIf->GetTrafficMbps());
      continue;
    }
    LOG_ADAPTER(idx, kSwitchLog,
                u"\n[%i] IF-STATE: %i [CONNECTED to diff SSID %s {%02x-%02x-%02x-%02x-%02x-%02x} vs "
                u"preferred %s(center %u)][Scores %i(new) > %i(old)? FTZ %i][%0.2lf mbps]\n",
                idx, pIf->GetInterfaceState(), facts.ssid, MAC_ARGS(facts.bssid), entry->m_SSIDW,
                entry->GetFrequencyKhz(), entry->GetScore(false), current_score, 0,
                pIf->GetTrafficMbps());
    config->m_force_scan_counter = 0;

    if (IsMonitorMode(*config)) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] [DISABLED IN MONITOR MODE] SwitchConnectionToBest: _NO_ Connect/Suggest: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  idx, entry->m_SSIDW, MAC_ARGS(mac));
      settled = true;
      break;
    }
    if (mac == facts.bssid) {
      LOG_ADAPTER(idx, kSwitchLog, u"[%i] [__ALREADY?__] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", idx,
                  entry->m_SSIDW, MAC_ARGS(mac));
      config->SetConnectedNetwork(NetworkDisplayName(facts.ssid, entry->m_Channel), facts.ssid,
                                  entry->m_BSSIDText);
      settled = true;
      break;
    }

    const bool roam = IsRoam(*entry, facts);
    if (!ConnectsByItself(*config, roam)) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] Clearing candidate counters & suggesting: %s {%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  idx, entry->m_SSIDW, MAC_ARGS(mac));
      pIf->ClearAllCandidateCounters("BEFORE PASSIVE SUGGEST");
      return true;
    }

    attempted = true;
    pIf->IncSwitchAttempt();
    LOG_ADAPTER(idx, kSwitchLog, u"[%i] [roam=%i] Connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", idx,
                roam, entry->m_SSIDW, MAC_ARGS(mac));
    const WString before = ShortSummaryOfConnection(*pIf, facts, current_score);
    if (TryConnect(*pIf, *config, *entry, "switch")) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] [roam=%i] Success connecting to %s [STATs: failed=%i, good=%i]\n", idx, roam,
                  entry->m_SSIDW, entry->m_connect_failed, entry->m_connect_good);
      PublishConnection(*pIf, *config, *entry);
      LogInfo(Format(u"[Adapter%i] AUTOSWITCH: %s --> %s", idx, before, ShortSummary(*entry)));
      settled = true;
      break;
    }
    entry->m_candidate_counter = 0;
    pIf->ReleaseReservation(mac);
  }
  if (!attempted) pIf->RollSwitchPeriod();
  return settled;
}

bool CGlobalQUAYPolicy::ConnectToBestNoDebounce(CWlanInterface* pIf, const BssEntryList& entries,
                                                bool auto_only) {
  const int idx = pIf->GetConfigIdx();
  const CSmartPointer<CQUAYInterfaceConfig> config = pIf->Config();
  bool eligible = false;
  bool done = false;

  for (const auto& entry : entries) {
    const MacAddress mac = entry->GetBssid();
    if (CWifiClientContainer::GetInstance().AvoidThisCandidateOnMyIF(entry.get(), pIf)) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] [SKIP DUE TO CONN ON OTHER-IF] %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", idx,
                  entry->m_SSIDW, MAC_ARGS(mac));
      continue;
    }
    if (entry->m_last_reason_code == platform::WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] [SKIP DUE TO 'WLAN_REASON_CODE_NETWORK_NOT_AVAILABLE'] %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  idx, entry->m_SSIDW, MAC_ARGS(mac));
      continue;
    }
    if (auto_only && !entry->m_AutoConnect) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] [AUTO=%i][AutOnly=%i] NOT connecting to %s {%02x-%02x-%02x-%02x-%02x-%02x}\n", idx,
                  entry->m_AutoConnect, auto_only, entry->m_SSIDW, MAC_ARGS(mac));
      continue;
    }
    eligible = true;
    config->m_force_scan_counter = 0;

    if (IsMonitorMode(*config)) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] [DISABLED IN MONITOR MODE] ConnectToBestNoDebounce: _NO_ Connect/Suggest: %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  idx, entry->m_SSIDW, MAC_ARGS(mac));
      done = true;
      break;
    }
    if (!config->IsAutoswitch() && !config->m_allowlist_active) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] [allowAutoConnectOutOfSleep=%i/%i][AUTO=%i][AutOnly=%i] SUGGESTING %s "
                  u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                  idx, 0, 0, entry->m_AutoConnect, auto_only, entry->m_SSIDW, MAC_ARGS(mac));
      done = true;
      break;
    }
    LOG_ADAPTER(idx, kSwitchLog,
                u"[%i] [allowAutoConnectOutOfSleep=%i/%i][AUTO=%i][AutOnly=%i] Connecting to %s "
                u"{%02x-%02x-%02x-%02x-%02x-%02x}\n",
                idx, 0, 0, entry->m_AutoConnect, auto_only, entry->m_SSIDW, MAC_ARGS(mac));
    if (TryConnect(*pIf, *config, *entry, "newconnect")) {
      LOG_ADAPTER(idx, kSwitchLog,
                  u"[%i] ConnectToBestNoDebounce: Success connecting to %s [STATs: failed=%i, good=%i]\n",
                  idx, entry->m_SSIDW, entry->m_connect_failed, entry->m_connect_good);
      PublishConnection(*pIf, *config, *entry);
      LogInfo(Format(u"[Adapter%i] AUTOCONNECT (from disconnnected adapter): %s", idx,
                     ShortSummary(*entry)));
      done = true;
      break;
    }
  }

  if (eligible) {
    config->ClearStatusMessage(kStatusNoAutoConnectProfile);
  } else {
    config->SetStatusMessage(kStatusNoAutoConnectProfile);
  }
  return done;
}

}  // namespace corvane
