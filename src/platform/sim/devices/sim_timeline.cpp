#include "platform/sim/devices/sim_timeline.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/registry_api.h"
#include "platform/sim/devices/pc_observer.h"
#include "platform/sim/devices/sim_bluetooth.h"
#include "platform/sim/devices/sim_driver.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD kInternet = 0x40;      // NLM_CONNECTIVITY_IPV4_INTERNET
constexpr DWORD kLocalNetwork = 0x20;  // NLM_CONNECTIVITY_IPV4_LOCALNETWORK
constexpr char16_t kOwnProgram[] = u"Corvane.exe";

// Where Windows keeps the name that its user sees of a connection.
std::u16string ConnectionKey(const GUID& adapter) {
  return u"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\" +
         GuidText(adapter) + u"\\Connection";
}

}  // namespace

void SimTimeline::Boot() {
  for (const Adapter& adapter : m.machine.world.adapters) {
    RegistryWrite name;
    name.key = ConnectionKey(adapter.guid);
    name.name = u"Name";
    name.type = REG_SZ;
    name.text = adapter.connectionName;
    Write(name);
  }
  RegistryWrite version;
  version.key = u"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
  version.name = u"CurrentVersion";
  version.type = REG_SZ;
  version.text = u"6.3";
  Write(version);
  WriteBluetoothKeys(m.registry, m.machine.world);
  for (const RegistryWrite& write : m.machine.world.registry) Write(write);
  SetSession(m.machine.world.session);
  m.pipeClients.Boot();
  for (const DomainController& one : m.machine.world.domainControllers) {
    if (m.session) m.session->SetDomainController(one.domain, one.name);
  }
}

void SimTimeline::Carry(const Action& action) {
  if (!CarryInTheAir(action)) CarryOnTheMachine(action);
  m.machine.loop.Tell([line = action.line](IPcObserver& observer) { observer.OnTimeline(line); });
}

// What adapters, access points and traffic do; false for everything else.
bool SimTimeline::CarryInTheAir(const Action& action) {
  switch (action.kind) {
    case ActionKind::kScan:
    case ActionKind::kConnect:
    case ActionKind::kDisconnect:
    case ActionKind::kRoam:
    case ActionKind::kRadio:
    case ActionKind::kAdapter:
    case ActionKind::kProfile:
    case ActionKind::kNotification:
      ForItsAdapters(action);
      return true;
    case ActionKind::kTraffic:
      AddTraffic(action.traffic);
      return true;
    case ActionKind::kAccessPoint:
    case ActionKind::kLoad:
    case ActionKind::kSignal:
    case ActionKind::kNoise:
    case ActionKind::kRefuse:
      ChangeAccessPoint(action);
      return true;
    case ActionKind::kBluetooth:
    case ActionKind::kBluetoothTraffic:
      ChangeBluetooth(action);
      return true;
    default:
      return false;
  }
}

void SimTimeline::CarryOnTheMachine(const Action& action) {
  switch (action.kind) {
    case ActionKind::kMove:
      AddWalk(&m.machine.world.path, m.machine.loop.NowMs(), action.to, action.speed);
      break;
    case ActionKind::kWlanService:
      ChangeService(action.on);
      break;
    case ActionKind::kPower:
    case ActionKind::kSuspend:
    case ActionKind::kResume:
      ChangePower(action);
      break;
    case ActionKind::kRegistry:
      Write(action.registry);
      break;
    case ActionKind::kNetwork:
      ChangeNetwork(action);
      break;
    case ActionKind::kNetworkList:
      m.machine.networkListService = action.on;
      break;
    case ActionKind::kInterface:
    case ActionKind::kInterfacePresent:
    case ActionKind::kAddresses:
      ChangeInterface(action);
      break;
    case ActionKind::kNeighbour:
      ChangeNeighbour(action);
      break;
    case ActionKind::kFilter:
      ChangeFilter(action);
      break;
    case ActionKind::kSession:
      ChangeSession(action.session);
      break;
    case ActionKind::kProcess:
      SetProcess(action.text, action.on);
      break;
    case ActionKind::kWeb:
    case ActionKind::kProxies:
      ChangeWeb(action);
      break;
    case ActionKind::kClient:
      m.pipeClients.Carry(action.client);
      break;
    case ActionKind::kDriver:
      m.driver.Apply(action.driver);
      break;
    case ActionKind::kKey:
      if (m.pressKey) m.pressKey(m.pressKeyContext);
      break;
    default:
      break;
  }
}

void SimTimeline::ForItsAdapters(const Action& action) {
  const int wanted = action.kind == ActionKind::kProfile ? action.profile.adapter : action.adapter;
  for (const auto& adapter : m.adapters) {
    if (wanted == kAllAdapters || wanted == adapter->Index()) Wireless(action, *adapter);
  }
}

void SimTimeline::AddTraffic(Traffic traffic) {
  const std::uint64_t now = m.machine.loop.NowMs();
  traffic.span.fromMs += now;
  if (traffic.span.toMs != kForever) traffic.span.toMs += now;
  m.machine.world.traffic.push_back(traffic);
}

// What somebody wants and cannot have at the moment, such as a scan with the radio off, does not
// happen.
void SimTimeline::Wireless(const Action& action, SimWlanAdapter& adapter) {
  switch (action.kind) {
    case ActionKind::kScan:
      adapter.Scan(Cause::kOutside, action.ssid, action.good);
      break;
    case ActionKind::kConnect:
      OutsideConnect(action, adapter);
      break;
    case ActionKind::kDisconnect:
      adapter.Disconnect(Cause::kOutside);
      break;
    case ActionKind::kRoam:
      if (const auto target = m.machine.FindAccessPoint(action.bssid)) {
        adapter.Roam(Cause::kDriver, *target);
      }
      break;
    case ActionKind::kRadio:
      adapter.SetRadio(action.hardware, action.on);
      break;
    case ActionKind::kAdapter:
      adapter.SetPresent(action.on);
      break;
    case ActionKind::kProfile:
      if (action.on) {
        adapter.AddProfile(action.profile);
      } else {
        adapter.DeleteProfile(Cause::kOutside, action.profile.name);
      }
      break;
    default:
      BareNotification(action, adapter);
      break;
  }
}

// Somebody else has the key, with a profile or without.
void SimTimeline::OutsideConnect(const Action& action, SimWlanAdapter& adapter) {
  const Profile* profile = adapter.Profiles().FindForSsid(action.ssid);
  SimWlanAdapter::ConnectRequest request;
  request.cause = Cause::kOutside;
  request.ssid = action.ssid;
  request.profile = profile ? profile->name : FromUtf8(action.ssid);
  request.mode = profile ? wlan_connection_mode_profile : wlan_connection_mode_temporary_profile;
  if (action.bssid != Mac{}) request.bssid = action.bssid;
  for (const AccessPoint& ap : m.machine.world.accessPoints) {
    if (ap.ssid == action.ssid && (!request.bssid || ap.bssid == *request.bssid)) {
      request.security = ap.security;
    }
  }
  if (profile) request.security = profile->security;
  adapter.Connect(request);
}

void SimTimeline::BareNotification(const Action& action, SimWlanAdapter& adapter) {
  const GUID& guid = adapter.Data().guid;
  const SimWlanAdapter::Link* link = adapter.Connection();
  const std::string ssid = link ? link->request.ssid : action.ssid;
  const bool acm = action.source == WLAN_NOTIFICATION_SOURCE_ACM;
  const bool ofConnection = acm && (action.code == wlan_notification_acm_disconnecting ||
                                    action.code == wlan_notification_acm_disconnected ||
                                    (action.code >= wlan_notification_acm_connection_start &&
                                     action.code <= wlan_notification_acm_connection_attempt_fail));
  const bool ofLink = action.source == WLAN_NOTIFICATION_SOURCE_MSM &&
                      action.code != wlan_notification_msm_signal_quality_change &&
                      action.code != wlan_notification_msm_adapter_operation_mode_change;
  if (ofConnection) {
    WLAN_CONNECTION_NOTIFICATION_DATA data;
    CopyText(FromUtf8(ssid), data.strProfileName, std::size(data.strProfileName));
    data.dot11Ssid = ToDot11(ssid);
    data.dot11BssType = dot11_BSS_type_infrastructure;
    data.wlanReasonCode = action.number;
    m.clients.Notify(action.source, action.code, guid, data);
  } else if (ofLink && action.code == wlan_notification_msm_radio_state_change) {
    m.clients.Notify(
        action.source, action.code, guid,
        WLAN_PHY_RADIO_STATE{action.number, dot11_radio_state_on, dot11_radio_state_on});
  } else if (ofLink) {
    WLAN_MSM_NOTIFICATION_DATA data;
    data.dot11Ssid = ToDot11(ssid);
    data.wlanReasonCode = action.number;
    m.clients.Notify(action.source, action.code, guid, data);
  } else {
    m.clients.Notify(action.source, action.code, guid, action.number);
  }
}

void SimTimeline::ChangeAccessPoint(const Action& action) {
  const auto found = m.machine.FindAccessPoint(action.bssid);
  if (!found) return;
  AccessPoint& ap = m.machine.world.accessPoints[*found];
  switch (action.kind) {
    case ActionKind::kAccessPoint:
      ap.alive.clear();
      if (!action.on) ap.alive.push_back({kForever, kForever});
      break;
    case ActionKind::kLoad:
      m.machine.SetLoad(*found, action.stations, action.utilisation);
      break;
    case ActionKind::kSignal:
      m.machine.FixSignal(*found,
                          std::isnan(action.dbm) ? std::nullopt : std::optional(action.dbm));
      break;
    case ActionKind::kNoise:
      ap.noise = action.noise;
      ap.noiseTaken = 0;
      break;
    default:
      ap.refuseReason = action.code;
      break;
  }
}

void SimTimeline::ChangeNetwork(const Action& action) {
  const auto network = std::ranges::find(m.machine.world.networks, action.network, &Network::name);
  if (network == m.machine.world.networks.end()) return;
  if (action.category >= 0) network->category = action.category;
  if (action.connected >= 0) network->connected = action.connected != 0;
  if (action.internet >= 0) {
    network->internet = action.internet != 0;
    network->connectivity = network->internet ? kInternet : kLocalNetwork;
  }
  if (action.connectivity >= 0) network->connectivity = static_cast<DWORD>(action.connectivity);
}

void SimTimeline::ChangeInterface(const Action& action) {
  for (OtherAdapter& other : m.machine.world.otherAdapters) {
    if (other.friendlyName != action.interfaceName) continue;
    if (action.kind == ActionKind::kAddresses) {
      other.ip = action.ip;
      continue;
    }
    (action.kind == ActionKind::kInterface ? other.up : other.present) = action.on;
    if (action.kind == ActionKind::kInterface && action.on && other.network >= 0) {
      m.machine.world.networks[static_cast<std::size_t>(other.network)].connectedSecs =
          m.machine.loop.WallSecs();
    }
  }
}

void SimTimeline::ChangeNeighbour(const Action& action) {
  const auto same = [&](const Neighbour& row) {
    return row.address.family == action.neighbour.address.family &&
           row.address.bytes == action.neighbour.address.bytes;
  };
  std::erase_if(m.machine.world.neighbours, same);
  for (Network& network : m.machine.world.networks) {
    std::erase_if(network.neighbours, same);
  }
  if (action.on) m.machine.world.neighbours.push_back(action.neighbour);
}

void SimTimeline::ChangeFilter(const Action& action) {
  auto& filters = m.machine.world.filters;
  std::erase_if(filters, [&](const Filter& filter) {
    return filter.type == action.filter.type && filter.ssid == action.filter.ssid;
  });
  if (action.on) filters.push_back(action.filter);
}

void SimTimeline::ChangeWeb(const Action& action) {
  if (action.kind == ActionKind::kWeb) {
    m.web.SetAnswer(action.answer);
  } else {
    m.machine.world.web.proxies = action.proxies;
  }
}

void SimTimeline::ChangeService(bool runs) {
  if (m.machine.wlanService == runs) return;
  m.machine.wlanService = runs;
  for (const auto& adapter : m.adapters) {
    if (runs) {
      adapter->OnServiceStarted();
    } else {
      adapter->OnServiceStopped();
    }
  }
}

// A machine that wakes says so twice: by itself, and once a user is there.
void SimTimeline::ChangePower(const Action& action) {
  switch (action.kind) {
    case ActionKind::kPower:
      m.machine.world.power.mains = action.on;
      if (action.percent >= 0)
        m.machine.world.power.batteryPercent = static_cast<BYTE>(action.percent);
      m.windows.TellPower(PBT_APMPOWERSTATUSCHANGE);
      break;
    case ActionKind::kSuspend:
      if (m.machine.suspended) return;
      m.windows.TellPower(PBT_APMSUSPEND);
      for (const auto& adapter : m.adapters) adapter->OnSuspend();
      m.machine.suspended = true;
      break;
    default:
      if (!m.machine.suspended) return;
      m.machine.suspended = false;
      m.windows.TellPower(PBT_APMRESUMEAUTOMATIC);
      m.windows.TellPower(PBT_APMRESUMESUSPEND);
      for (const auto& adapter : m.adapters) adapter->OnResume();
      break;
  }
}

void SimTimeline::ChangeBluetooth(const Action& action) {
  for (BluetoothRadio& radio : m.machine.world.bluetooth) {
    if (radio.name != action.text) continue;
    if (action.kind == ActionKind::kBluetoothTraffic) {
      radio.traffic.push_back(action.bluetooth);
      radio.traffic.back().span.ShiftBy(m.machine.loop.NowMs());
    } else {
      radio.on = action.on;
      WriteBluetoothKeys(m.registry, m.machine.world);
    }
  }
}

void SimTimeline::ChangeSession(const Session& session) {
  const bool wasLoggedOn = std::exchange(m.machine.world.session, session).loggedOn;
  SetSession(session);
  if (session.loggedOn == wasLoggedOn) return;
  m.windows.TellSession(session.loggedOn ? WTS_SESSION_LOGON : WTS_SESSION_LOGOFF,
                        session.sessionId);
}

// The user of the console, what the program's child says of that user, and what runs there.
void SimTimeline::SetSession(const Session& session) {
  if (!m.session) return;
  m.session->AddSession(session.sessionId, session.loggedOn);
  m.session->SetConsoleSession(session.sessionId);
  if (!session.childOutput.empty()) {
    m.session->Install(kOwnProgram, {.output = session.childOutput,
                                     .exitCode = session.childExitCode,
                                     .runMs = session.childMs});
  }
  for (const std::u16string& name : session.processes) SetProcess(name, true);
}

void SimTimeline::SetProcess(const std::u16string& name, bool runs) {
  if (!m.session) return;
  if (!runs) {
    m.session->EndProcesses(name);
  } else if (m.session->CountRunning(name) == 0) {
    m.session->StartProcess(name);
  }
}

void SimTimeline::Write(const RegistryWrite& write) {
  HKEY key = nullptr;
  if (m.registry.RegCreateKeyExW(HKEY_LOCAL_MACHINE, write.key.c_str(), KEY_ALL_ACCESS, &key) != 0)
    return;
  if (write.remove) {
    m.registry.RegDeleteValueW(key, write.name.c_str());
  } else if (write.type == REG_SZ) {
    m.registry.RegSetValueExW(key, write.name.c_str(), REG_SZ,
                              reinterpret_cast<const BYTE*>(write.text.c_str()),
                              static_cast<DWORD>((write.text.size() + 1) * sizeof(char16_t)));
  } else {
    const DWORD size = write.type == REG_QWORD ? sizeof(std::uint64_t) : sizeof(DWORD);
    m.registry.RegSetValueExW(key, write.name.c_str(), write.type,
                              reinterpret_cast<const BYTE*>(&write.number), size);
  }
  m.registry.RegCloseKey(key);
}

}  // namespace corvane::platform::sim
