#include "scenario/service_fixture.h"

#include <algorithm>

#include "client/notify/notification_manager.h"
#include "config/settings/global_config_container.h"
#include "config/store/address_text.h"
#include "platform/sim/sim_registry.h"
#include "wlan/binding/wifi_client_container.h"

namespace corvane::test {

namespace {

// Keeps what subscribers are told.
class Subscriber : public SmartObjEx<Subscriber, SmartObj<>>, public INotificationProvider {
 public:
  explicit Subscriber(std::vector<Notice>* notices) : m_pNotices(notices) {}
  void SendNotification(CNotificationEvent* event) override {
    m_pNotices->push_back({event->m_Category, event->m_Type, event->m_Data1});
  }

 private:
  std::vector<Notice>* m_pNotices;
};

std::u16string AdapterKey(int adapter) {
  platform::GUID guid{0xADA90000, 0, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, static_cast<platform::BYTE>(adapter + 1)}};
  return std::u16string(kHomeKeyPath) + u"\\" + GuidText(guid);
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
  m_pService = std::make_unique<lab::ServiceRun>(*m_pMachine);
  CNotificationManagerSingleton::GetInstance().AddProvider(Subscriber::CreateObject(&notices).get());
  m_pService->Start();
}

Beacon ServiceTest::OfficeBeacon(int channel) {
  return Beacon(u8"Office").Channel(channel).Vht80(2).Rsn({AKM_PSK});
}

WorldBuilder ServiceTest::OfficeWorld(double dbm) {
  WorldBuilder world;
  world.Adapter().Ap(OfficeBeacon(36), 1, dbm).Profile("Office").Network("Office", 1).Connected(1).AutoSwitch();
  return world;
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
    return event.kind == kind && event.ms >= fromMs && event.cause == cause && event.adapter == adapter;
  });
  return found;
}

std::size_t ServiceTest::CountNotices(WStringView category, WStringView type) const {
  return static_cast<std::size_t>(std::ranges::count_if(notices, [&](const Notice& notice) {
    return notice.category == category && notice.type == type;
  }));
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
void ServiceTest::OnConnectEnded(int adapter, Cause cause, const std::string& ssid, const std::string& bssid,
                                 platform::DWORD reason) {
  Note(reason == 0 ? AirEvent::kConnected : AirEvent::kConnectFailed, adapter, cause, ssid, bssid);
}
void ServiceTest::OnDisconnected(int adapter, Cause cause, const std::string& ssid) {
  Note(AirEvent::kDisconnected, adapter, cause, ssid);
}
void ServiceTest::OnRoamed(int adapter, Cause cause, const std::string& ssid, const std::string& bssid) {
  Note(AirEvent::kRoamed, adapter, cause, ssid, bssid);
}

}  // namespace corvane::test
