#include "scenario/service_fixture.h"

#include <algorithm>
#include <sstream>

#include "notify/notification_manager.h"
#include "platform/sim/kernel/sim_event_trace.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/kernel/sim_registry.h"
#include "settings/global_config_container.h"
#include "store/address_text.h"
#include "wlan/wifi_client_container.h"

namespace corvane::test {

namespace {

constexpr char16_t kHistoryFolder[] = u"/data/Palisade/PalisadeOptimizer/network_telemetry";

// Keeps what subscribers are told.
class Subscriber : public SmartObjEx<Subscriber, SmartObj<>>, public INotificationProvider {
 public:
  explicit Subscriber(std::vector<Notice>* notices) : m_pNotices(notices) {}
  void SendNotification(CNotificationEvent* event) override {
    m_pNotices->push_back({event->m_Category, event->m_Type, event->m_Data1, event->m_Data2,
                           event->m_Data3, event->m_Data4, event->m_Data5});
  }

 private:
  std::vector<Notice>* m_pNotices;
};

std::u16string AdapterKey(int adapter) {
  platform::GUID guid{
      0xADA90000, 0, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, static_cast<platform::BYTE>(adapter + 1)}};
  return std::u16string(kHomeKeyPath) + u"\\" + corvane::GuidText(guid);
}

}  // namespace

std::string ApText(int accessPoint) { return MacTextA(ApBssid(accessPoint)); }

ServiceTest::~ServiceTest() = default;

void ServiceTest::TearDown() {
  const bool ended = !m_pService || m_pService->Stop();
  EXPECT_TRUE(ended) << "the service does not end";
  m_pService.reset();
  PcTest::TearDown();
}

void ServiceTest::Start(const WorldBuilder& world) {
  PcOptions options;
  options.observer = this;
  m_pMachine = &Boot(world.Build(), options);
  OnBooted();
  m_pMachine->Files().MakeDirectories(kHistoryFolder);
  m_pMachine->Kernel().EventTrace().SetObserver(&ServiceTest::Trace, this);
  m_pService = std::make_unique<lab::ServiceRun>(*m_pMachine);
  CNotificationManagerSingleton::GetInstance().AddProvider(
      Subscriber::CreateObject(&notices).get());
  m_pService->Start();
}

Beacon ServiceTest::OfficeBeacon(int channel) {
  return Beacon(u8"Office").Channel(channel).Vht80(2).Rsn({AKM_PSK});
}

Beacon ServiceTest::LabBeacon(int channel) {
  return Beacon(u8"Lab").Channel(channel).Vht80(2).Rsn({AKM_PSK});
}
std::vector<platform::sim::SignalPoint> ServiceTest::HeardFrom(std::uint64_t ms, double dbm) {
  return {{0, -95.0}, {ms, -95.0}, {ms + 1, dbm}};
}

WorldBuilder ServiceTest::OfficeWorld(double dbm) {
  WorldBuilder world;
  world.Adapter()
      .Ap(OfficeBeacon(36), 1, dbm)
      .Profile("Office")
      .Network("Office", 1)
      .Connected(1)
      .AutoSwitch();
  return world;
}

WorldBuilder ServiceTest::BetterLabWorld(int mode, double dbm) {
  WorldBuilder world =
      OfficeWorld(-80.0).Ap(LabBeacon(149), 2, -95.0).Signal(HeardFrom(60'000, dbm));
  world.Profile("Lab").Network("Lab", 1);
  return world.At(8'000,
                  R"({"do": "registry", "adapter": 0, "name": "PassiveSuggestMode", "dword": )" +
                      std::to_string(mode) + "}");
}

std::u16string ServiceTest::Text(const char16_t* name, int adapter) const {
  return m_pMachine->Registry().GetText(AdapterKey(adapter), name).value_or(u"");
}
std::uint32_t ServiceTest::Number(const char16_t* name, int adapter) const {
  return m_pMachine->Registry().GetDword(AdapterKey(adapter), name).value_or(0);
}
void ServiceTest::Write(const char16_t* name, const char16_t* text, int adapter) {
  m_pMachine->Registry().SetText(AdapterKey(adapter), name, text);
}
void ServiceTest::Write(const char16_t* name, std::uint32_t number, int adapter) {
  m_pMachine->Registry().SetDword(AdapterKey(adapter), name, number);
}
std::u16string ServiceTest::HomeText(const char16_t* name) const {
  return m_pMachine->Registry().GetText(kHomeKeyPath, name).value_or(u"");
}
std::uint32_t ServiceTest::HomeNumber(const char16_t* name) const {
  return m_pMachine->Registry().GetDword(kHomeKeyPath, name).value_or(0);
}
void ServiceTest::WriteHome(const char16_t* name, std::uint32_t number) {
  m_pMachine->Registry().SetDword(kHomeKeyPath, name, number);
}

std::string ServiceTest::ConnectedBssid(int adapter) const {
  return WideToUtf8(Text(value::kConnectedBssid, adapter));
}
bool ServiceTest::IsOn(int accessPoint, int adapter) const {
  return ConnectedBssid(adapter) == ApText(accessPoint);
}

int ServiceTest::CountRounds(std::chrono::milliseconds time, int adapter) {
  constexpr char16_t kMark[] = u"not yet";
  int rounds = 0;
  Write(value::kCandidatesCSV, kMark, adapter);
  for (auto left = time; left.count() > 0; left -= 200ms) {
    RunFor(200ms);
    if (Text(value::kCandidatesCSV, adapter) == kMark) continue;
    ++rounds;
    Write(value::kCandidatesCSV, kMark, adapter);
  }
  return rounds;
}

std::vector<AirEvent> ServiceTest::Events(AirEvent::Kind kind, std::uint64_t fromMs, Cause cause,
                                          int adapter) const {
  std::vector<AirEvent> found;
  std::ranges::copy_if(m_Events, std::back_inserter(found), [&](const AirEvent& event) {
    return event.kind == kind && event.ms >= fromMs && event.cause == cause &&
           event.adapter == adapter;
  });
  return found;
}

std::size_t ServiceTest::CountNotices(WStringView category, WStringView type) const {
  return static_cast<std::size_t>(std::ranges::count_if(notices, [&](const Notice& notice) {
    return notice.category == category && notice.type == type;
  }));
}

Notice ServiceTest::LastNotice(WStringView category, WStringView type) const {
  Notice last;
  for (const Notice& notice : notices) {
    if (notice.category == category && (type.empty() || notice.type == type)) last = notice;
  }
  return last;
}

std::vector<Traced> ServiceTest::TraceEvents(std::string_view name, std::uint64_t fromMs) const {
  std::vector<Traced> found;
  std::ranges::copy_if(m_Traced, std::back_inserter(found), [&](const Traced& traced) {
    return traced.event.name == name && traced.ms >= fromMs;
  });
  return found;
}

std::vector<std::string> ServiceTest::HistoryRows(std::string_view part) const {
  std::istringstream file(m_pMachine->Files()
                              .Read(std::u16string(kHistoryFolder) + u"/NetworkConnections.csv")
                              .value_or(""));
  std::vector<std::string> rows;
  std::string row;
  std::getline(file, row);  // the header
  while (std::getline(file, row)) {
    if (row.find(part) != std::string::npos) rows.push_back(row);
  }
  return rows;
}

std::vector<platform::sim::SimSession::Launch> ServiceTest::TakeLaunches(
    std::u16string_view program) const {
  auto launches = m_pMachine->Kernel().Session().TakeLaunches();
  std::erase_if(launches,
                [&](const auto& launch) { return !launch.commandLine.starts_with(program); });
  return launches;
}

void ServiceTest::AcceptSuggestion(int adapter) {
  Config(adapter)->OpenNoDelay(15'000);
  Config(adapter)->m_accept_suggestion = true;
}

void ServiceTest::OrderConnect(int accessPoint, WStringView ssid, WStringView profile,
                               int adapter) {
  Config(adapter)->OpenNoDelay(20'000);
  Config(adapter)->SetUIConnectRequest(
      {WString(ssid), Utf8ToWide(ApText(accessPoint)), WString(profile), false});
  Write(value::kConnectStatus, u"pending", adapter);
  Config(adapter)->SignalMainLoopSemaphore();
}

bool ServiceTest::Printed(const std::string& text) const {
  return m_pMachine->ConsoleText().find(text) != std::string::npos;
}

CSmartPointer<CQUAYInterfaceConfig> ServiceTest::Config(int adapter) const {
  return CGlobalConfigContainer::GetInstance().GetIFConfig(adapter);
}
CSmartPointer<CWlanInterface> ServiceTest::Wlan(int adapter) const {
  return CWifiClientContainer::GetInstance().GetInterface(adapter);
}

void ServiceTest::Trace(const platform::TraceEvent& event, void* self) {
  auto& test = *static_cast<ServiceTest*>(self);
  test.m_Traced.push_back({test.Now(), event});
}

void ServiceTest::Note(AirEvent::Kind kind, int adapter, Cause cause, const std::string& ssid,
                       const std::string& bssid) {
  m_Events.push_back({Now(), kind, adapter, cause, ssid, bssid});
}
void ServiceTest::OnScanStarted(int adapter, Cause cause, const std::string& ssid) {
  Note(AirEvent::kScanStarted, adapter, cause, ssid);
}
void ServiceTest::OnScanEnded(int adapter, Cause cause, bool good) {
  if (good) Note(AirEvent::kScanEnded, adapter, cause, {});
}
void ServiceTest::OnConnectStarted(int adapter, Cause cause, const std::string& ssid) {
  Note(AirEvent::kConnectStarted, adapter, cause, ssid);
}
void ServiceTest::OnConnectEnded(int adapter, Cause cause, const std::string& ssid,
                                 const std::string& bssid, platform::DWORD reason) {
  Note(reason == 0 ? AirEvent::kConnected : AirEvent::kConnectFailed, adapter, cause, ssid, bssid);
}
void ServiceTest::OnDisconnected(int adapter, Cause cause, const std::string& ssid) {
  Note(AirEvent::kDisconnected, adapter, cause, ssid);
}
void ServiceTest::OnRoamed(int adapter, Cause cause, const std::string& ssid,
                           const std::string& bssid) {
  Note(AirEvent::kRoamed, adapter, cause, ssid, bssid);
}

}  // namespace corvane::test
