// The parts of a round that grow with the number of access points: merging the platform's lists,
// scoring, the snapshot and the sort; and the whole policy round with what it publishes, of an
// adapter without a connection, and of one that weighs each against its connection under a full
// deny list; and a worker's round beside what a detector that is off costs it. The log's gates are
// closed.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "foundation/format.h"
#include "foundation/log_lines.h"
#include "monitors/network_list_manager.h"
#include "policy/candidate_list.h"
#include "policy/policy.h"
#include "policy/quiet_network_list.h"
#include "service/main_worker.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"
#include "wlan/wifi_client_container.h"

namespace corvane {
namespace {

using namespace platform;

// Elements of a usual 5 GHz beacon (IEEE 802.11 9.4.2): SSID, rates, BSS load, RSN, HT and VHT.
std::vector<BYTE> Elements(const std::string& ssid, BYTE load) {
  std::vector<BYTE> bytes;
  const auto add = [&bytes](BYTE id, std::vector<BYTE> value) {
    bytes.push_back(id);
    bytes.push_back(static_cast<BYTE>(value.size()));
    bytes.insert(bytes.end(), value.begin(), value.end());
  };
  add(0, {ssid.begin(), ssid.end()});
  add(1, {0x8c, 0x12, 0x98, 0x24, 0xb0, 0x48, 0x60, 0x6c});
  add(11, {4, 0, load, 0, 0});
  add(48, {1, 0, 0, 0x0f, 0xac, 4, 1, 0, 0, 0x0f, 0xac, 4, 1, 0, 0, 0x0f, 0xac, 2, 0, 0});
  add(45, {0xef, 0x09, 0x1b, 0xff, 0xff, 0, 0, 0, 0, 0, 0, 0, 0,
           0,    0,    0,    0,    0,    0, 0, 0, 0, 0, 0, 0, 0});
  add(61, {36, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  add(191, {0xb2, 0x59, 0x82, 0x0f, 0xfa, 0xff, 0, 0, 0xfa, 0xff, 0, 0});
  add(192, {1, 42, 0, 0, 0});
  return bytes;
}

// Two BSSes in each network.
class CrowdedAir : public WlanApi {
 public:
  explicit CrowdedAir(std::size_t entries) {
    constexpr ULONG kFrequencies[] = {5180000, 5220000, 5260000, 5500000,
                                      5745000, 2412000, 2437000, 2462000};
    for (std::size_t i = 0; i < entries; ++i) {
      const std::string ssid = "Network " + std::to_string(i / 2);
      WLAN_BSS_ENTRY bss;
      bss.dot11Ssid.uSSIDLength = static_cast<ULONG>(ssid.size());
      std::memcpy(bss.dot11Ssid.ucSSID, ssid.data(), ssid.size());
      const BYTE mac[6] = {2, 0, 0, 0, static_cast<BYTE>(i >> 8), static_cast<BYTE>(i)};
      std::memcpy(bss.dot11Bssid, mac, sizeof(mac));
      bss.dot11BssType = 1;
      bss.uLinkQuality = static_cast<ULONG>(20 + i * 37 % 80);
      bss.lRssi = static_cast<LONG>(bss.uLinkQuality / 2) - 100;
      bss.ulChCenterFrequency = kFrequencies[i % std::size(kFrequencies)];
      m_Bss.push_back(bss);
      m_Elements.push_back(Elements(ssid, static_cast<BYTE>(i * 29)));
      if (i % 2 == 0) {
        WLAN_AVAILABLE_NETWORK network;
        network.dot11Ssid = bss.dot11Ssid;
        network.dot11BssType = 1;
        network.uNumberOfBssids = 2;
        network.bNetworkConnectable = 1;
        network.bSecurityEnabled = 1;
        network.dot11DefaultAuthAlgorithm = DOT11_AUTH_ALGO_RSNA_PSK;
        m_Networks.push_back(network);
      }
    }
  }

  DWORD WlanOpenHandle(DWORD, void*, DWORD*, HANDLE* client) override {
    *client = reinterpret_cast<HANDLE>(1);
    return ERROR_SUCCESS;
  }
  DWORD WlanCloseHandle(HANDLE, void*) override { return ERROR_SUCCESS; }
  DWORD WlanRegisterNotification(HANDLE, DWORD, BOOL, WLAN_NOTIFICATION_CALLBACK, void*, void*,
                                 DWORD*) override {
    return ERROR_SUCCESS;
  }
  DWORD WlanEnumInterfaces(HANDLE, void*, WLAN_INTERFACE_INFO_LIST** list) override {
    *list = Allocate<WLAN_INTERFACE_INFO_LIST>(sizeof(WLAN_INTERFACE_INFO_LIST));
    (*list)->dwNumberOfItems = 1;
    return ERROR_SUCCESS;
  }
  DWORD WlanQueryInterface(HANDLE, const GUID*, LONG opcode, void*, DWORD* size, void** data,
                           LONG*) override {
    if (opcode == wlan_intf_opcode_current_connection) {
      if (!connected) return ERROR_INVALID_STATE;
      *data = Allocate<WLAN_CONNECTION_ATTRIBUTES>(sizeof(WLAN_CONNECTION_ATTRIBUTES));
      *size = sizeof(WLAN_CONNECTION_ATTRIBUTES);
      auto& attributes = *static_cast<WLAN_CONNECTION_ATTRIBUTES*>(*data);
      attributes.isState = wlan_interface_state_connected;
      attributes.wlanAssociationAttributes.dot11Ssid = m_Bss[0].dot11Ssid;
      std::memcpy(attributes.wlanAssociationAttributes.dot11Bssid, m_Bss[0].dot11Bssid,
                  sizeof(m_Bss[0].dot11Bssid));
      attributes.wlanAssociationAttributes.wlanSignalQuality = m_Bss[0].uLinkQuality;
      return ERROR_SUCCESS;
    }
    constexpr DWORD kDisconnected = 4;  // wlan_interface_state_disconnected
    *data = Allocate<DWORD>(sizeof(DWORD));
    *size = sizeof(DWORD);
    *static_cast<DWORD*>(*data) =
        connected ? static_cast<DWORD>(wlan_interface_state_connected) : kDisconnected;
    return ERROR_SUCCESS;
  }
  // The lists as they were: what a platform pays for making them is no matter of a round.
  void Freeze() {
    WlanGetAvailableNetworkList(nullptr, nullptr, 0, nullptr, &m_pFrozenNetworks);
    WlanGetNetworkBssList(nullptr, nullptr, nullptr, 0, 0, nullptr, &m_pFrozenEntries);
  }
  ~CrowdedAir() override { std::free(m_pFrozenNetworks), std::free(m_pFrozenEntries); }

  DWORD WlanGetAvailableNetworkList(HANDLE, const GUID*, DWORD, void*,
                                    WLAN_AVAILABLE_NETWORK_LIST** list) override {
    if (m_pFrozenNetworks && (*list = m_pFrozenNetworks)) return ERROR_SUCCESS;
    *list = Allocate<WLAN_AVAILABLE_NETWORK_LIST>(
        sizeof(WLAN_AVAILABLE_NETWORK_LIST) + m_Networks.size() * sizeof(WLAN_AVAILABLE_NETWORK));
    (*list)->dwNumberOfItems = static_cast<DWORD>(m_Networks.size());
    std::memcpy(static_cast<void*>((*list)->Network), m_Networks.data(),
                m_Networks.size() * sizeof(WLAN_AVAILABLE_NETWORK));
    return ERROR_SUCCESS;
  }
  DWORD WlanGetNetworkBssList(HANDLE, const GUID*, const DOT11_SSID*, LONG, BOOL, void*,
                              WLAN_BSS_LIST** list) override {
    if (m_pFrozenEntries && (*list = m_pFrozenEntries)) return ERROR_SUCCESS;
    const std::size_t head = offsetof(WLAN_BSS_LIST, wlanBssEntries);
    std::size_t bytes = head + m_Bss.size() * sizeof(WLAN_BSS_ENTRY);
    for (const auto& elements : m_Elements) bytes += elements.size();
    auto* raw = Allocate<BYTE>(bytes + sizeof(WLAN_BSS_LIST));
    std::size_t at = head + m_Bss.size() * sizeof(WLAN_BSS_ENTRY);
    for (std::size_t i = 0; i < m_Bss.size(); ++i) {
      const std::size_t entryAt = head + i * sizeof(WLAN_BSS_ENTRY);
      WLAN_BSS_ENTRY bss = m_Bss[i];
      bss.ulIeOffset = static_cast<ULONG>(at - entryAt);
      bss.ulIeSize = static_cast<ULONG>(m_Elements[i].size());
      std::memcpy(raw + entryAt, &bss, sizeof(bss));
      std::memcpy(raw + at, m_Elements[i].data(), m_Elements[i].size());
      at += m_Elements[i].size();
    }
    *list = reinterpret_cast<WLAN_BSS_LIST*>(raw);
    (*list)->dwTotalSize = static_cast<DWORD>(bytes);
    (*list)->dwNumberOfItems = static_cast<DWORD>(m_Bss.size());
    return ERROR_SUCCESS;
  }
  void WlanFreeMemory(void* memory) override {
    if (memory != m_pFrozenNetworks && memory != m_pFrozenEntries) std::free(memory);
  }

  // Every tenth network has a profile, while this is on.
  DWORD WlanGetProfile(HANDLE, const GUID*, LPCWSTR name, void*, char16_t** xml, DWORD* flags,
                       DWORD* access) override {
    if (!profiles || !WStringView(name).ends_with(u'0')) return ERROR_NOT_FOUND;
    *xml = Allocate<char16_t>(sizeof(kProfile));
    std::memcpy(*xml, kProfile, sizeof(kProfile));
    *flags = 0;
    *access = WLAN_EXECUTE_ACCESS;
    return ERROR_SUCCESS;
  }

  // Another air than before, by one access point.
  void Stir() { m_Bss.back().uLinkQuality ^= 1; }

  bool connected = false;  // to the first one
  bool profiles = false;

 private:
  static constexpr char16_t kProfile[] =
      u"<WLANProfile><connectionMode>auto</connectionMode></WLANProfile>";
  template <class T>
  static T* Allocate(std::size_t bytes) {
    return static_cast<T*>(std::calloc(1, bytes));
  }
  std::vector<WLAN_BSS_ENTRY> m_Bss;
  std::vector<std::vector<BYTE>> m_Elements;
  std::vector<WLAN_AVAILABLE_NETWORK> m_Networks;
  WLAN_AVAILABLE_NETWORK_LIST* m_pFrozenNetworks = nullptr;
  WLAN_BSS_LIST* m_pFrozenEntries = nullptr;
};

// One adapter in crowded air, disconnected.
class Rig : public test::KernelTest {
 public:
  explicit Rig(std::size_t entries, PolicyProfileKind profile = PolicyProfileKind::kClassic) {
    Install<test::QuietNetworkList>();
    CNetworkListManager::GetInstance();
    m_pAir = &Install<CrowdedAir>(entries);
    g_DebugMask = 0;
    g_EnableFileLogging = 0;
    CGlobalConfigContainer::GetInstance().Initialize(false);
    CGlobalConfigContainer::GetInstance().m_PolicyProfile = static_cast<std::uint32_t>(profile);
    CWifiClientContainer::GetInstance().Initialize();
    adapter = CWifiClientContainer::GetInstance().GetInterface(0);
    adapter->Config()->m_ScanInterval = 3600;
    adapter->Config()->m_Enabled = false;
    Discover();
    Discover();  // the first look may begin with a scan, which this air refuses
    for (const auto& entry : adapter->SnapshotEntries())
      entry->m_GrantedAccess = WLAN_EXECUTE_ACCESS;
  }
  ~Rig() override {
    adapter.reset();
    CWifiClientContainer::GetInstance().Shutdown();
    CGlobalConfigContainer::GetInstance().Shutdown(false);
    KernelTest::TearDown();
  }
  void TestBody() override {}
  void Discover() {
    std::int32_t error = 0;
    adapter->DiscoverNetworksSynchronous(false, false, &error);
  }
  // To the first access point, in monitor mode: a round goes through every motion and connects
  // nothing.
  void Connect() {
    m_pAir->connected = true;
    WLAN_CONNECTION_ATTRIBUTES attributes;
    adapter->QueryCurrentConnection(&attributes, true);
    adapter->SetConnectedBssid(ToMac(attributes.wlanAssociationAttributes.dot11Bssid));
    CGlobalConfigContainer::GetInstance().m_bMonitorWhileDisabled = true;
    CGlobalConfigContainer::GetInstance().m_bULScan = true;
  }
  // Rows that name none of the networks but look like them.
  void Deny(int rows) {
    WString json = u"[";
    for (int i = 0; i < rows; ++i)
      json += Format(u"%s[\"Network x%i\", \"any\"]", i ? u"," : u"", i);
    const auto config = adapter->Config();
    config->SetString(value::kDenylistJson, json + u"]");
    config->m_Denylist.ReloadFromRegistry(*config);
  }

  CrowdedAir& Air() { return *m_pAir; }

  CSmartPointer<CWlanInterface> adapter;

 private:
  CrowdedAir* m_pAir = nullptr;
};

constexpr auto kClassic = PolicyProfileKind::kClassic, kBalanced = PolicyProfileKind::kBalanced;
constexpr int kDenyRows = 400;

template <PolicyProfileKind profile>
void MergeScoreAndSort(benchmark::State& state) {
  Rig rig(static_cast<std::size_t>(state.range(0)), profile);
  std::size_t seen = 0;
  for (auto _ : state) {
    rig.Air().Stir();
    rig.Discover();
    BssEntryList entries = EntriesInRange(*rig.adapter);
    SortCandidates(&entries, true, rig.adapter->GetScoreContext());
    seen = entries.size();
    benchmark::DoNotOptimize(entries.data());
  }
  if (seen != static_cast<std::size_t>(state.range(0))) state.SkipWithError("entries are missing");
}
BENCHMARK(MergeScoreAndSort<kClassic>)->Arg(1000)->Arg(8000)->Unit(benchmark::kMillisecond);
BENCHMARK(MergeScoreAndSort<kBalanced>)->Arg(1000)->Unit(benchmark::kMillisecond);

template <PolicyProfileKind profile>
void PolicyRound(benchmark::State& state) {
  Rig rig(static_cast<std::size_t>(state.range(0)), profile);
  for (auto _ : state) CGlobalQUAYPolicy::ExecutePolicies(rig.adapter.get());
}
BENCHMARK(PolicyRound<kClassic>)->Arg(1000)->Arg(8000)->Unit(benchmark::kMillisecond);
BENCHMARK(PolicyRound<kBalanced>)->Arg(1000)->Unit(benchmark::kMillisecond);

template <PolicyProfileKind profile>
void ConnectedPolicyRound(benchmark::State& state) {
  Rig rig(static_cast<std::size_t>(state.range(0)), profile);
  rig.Connect();
  rig.Deny(kDenyRows);
  for (auto _ : state) CGlobalQUAYPolicy::ExecutePolicies(rig.adapter.get());
}
BENCHMARK(ConnectedPolicyRound<kClassic>)->Arg(1000)->Arg(8000)->Unit(benchmark::kMillisecond);
BENCHMARK(ConnectedPolicyRound<kBalanced>)->Arg(1000)->Unit(benchmark::kMillisecond);

// Merge and policy of a connected adapter that has profiles of a tenth of what it hears: a round
// that finds something else than the last one, and one that finds all as it was.
enum class Finds { kChange, kNothingNew };
template <Finds finds>
void WholeRound(benchmark::State& state) {
  Rig rig(static_cast<std::size_t>(state.range(0)));
  rig.Connect();
  rig.Deny(kDenyRows);
  rig.Air().profiles = true;
  if (finds == Finds::kNothingNew) rig.Air().Freeze();
  for (auto _ : state) {
    if (finds == Finds::kChange) rig.Air().Stir();
    rig.Discover();
    CGlobalQUAYPolicy::ExecutePolicies(rig.adapter.get());
  }
}
BENCHMARK(WholeRound<Finds::kChange>)->Arg(1000)->Unit(benchmark::kMillisecond);
BENCHMARK(WholeRound<Finds::kNothingNew>)->Arg(1000)->Unit(benchmark::kMillisecond);

// A worker on a simulated PC, connected, among as many access points.
class WorkerRig : public test::PcTest {
 public:
  explicit WorkerRig(int accessPoints) {
    test::WorldBuilder world;
    world.Adapter().Connected(1).Profile("Office").AutoSwitch(300);
    for (int i = 1; i <= accessPoints; ++i)
      world.Ap(test::Beacon(u8"Office").Channel(36).Vht80(2), i, -50.0 - i % 40);
    Boot(world.Build());
    CGlobalConfigContainer::GetInstance().Initialize(true);
    CWifiClientContainer::GetInstance().Initialize();
    g_DebugMask = 0;
    g_EnableFileLogging = 0;
    adapter = CWifiClientContainer::GetInstance().GetInterface(0);
    m_pWorker = CQUAYMainWorker::CreateObject();
    m_pWorker->Bind(0, adapter.get());
    m_pWorker->BeginThread();
    RunFor(std::chrono::seconds(30));
  }
  ~WorkerRig() override {
    m_pWorker->Shutdown();
    m_pWorker.reset(), adapter.reset();
    CGlobalConfigContainer::GetInstance().Shutdown(true);
    CWifiClientContainer::GetInstance().Shutdown();
    PcTest::TearDown();
  }
  void TestBody() override {}
  void NextRound() { RunFor(std::chrono::seconds(10)); }

  CSmartPointer<CWlanInterface> adapter;

 private:
  CSmartPointer<CQUAYMainWorker> m_pWorker;
};

// All that a round does for a detector that is off: it reads the switch, and resets what was never
// opened.
void PassDetectorThatIsOff(CWinICMP2& detector) {
  std::uint32_t on = 0;
  if (const auto registry = CGlobalConfigContainer::GetInstance().GetRegistry())
    registry->GetRegistryDWORDValue(u"IDET", &on);
  detector.FactoryReset();
  benchmark::DoNotOptimize(on);
}

void WorkerRoundWithDetectorOff(benchmark::State& state) {
  constexpr double kAllowedShare = 0.03;
  constexpr int kPasses = 100'000;
  WorkerRig rig(static_cast<int>(state.range(0)));
  using Clock = std::chrono::steady_clock;
  std::chrono::duration<double, std::nano> rounds{0.0};
  std::int64_t count = 0;
  for (auto _ : state) {
    const auto start = Clock::now();
    rig.NextRound();
    rounds += Clock::now() - start;
    ++count;
  }
  const auto start = Clock::now();
  for (int i = 0; i < kPasses; ++i) PassDetectorThatIsOff(rig.adapter->Detector());
  const std::chrono::duration<double, std::nano> off = Clock::now() - start;
  const double share = off.count() / kPasses / (rounds.count() / static_cast<double>(count));
  state.counters["detector_off_ns"] = off.count() / kPasses;
  state.counters["share"] = share;
  if (share > kAllowedShare) state.SkipWithError("a detector that is off is not free");
}
BENCHMARK(WorkerRoundWithDetectorOff)->Arg(10)->Arg(60)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace corvane

BENCHMARK_MAIN();
