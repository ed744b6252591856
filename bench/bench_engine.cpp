// A pass of the load-balance engine over an unchanged machine: 16 wired adapters behind one router,
// with a platform that costs nothing. Must allocate nothing, and take at most 50 us.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

#include "bench_platform.h"
#include "engine/adapter_discovery.h"
#include "engine/driver_link.h"
#include "engine/engine_bits.h"
#include "platform/driver_api.h"
#include "platform/heap_api.h"

namespace {

std::size_t g_Allocations = 0;

}  // namespace

[[gnu::noinline]] void* operator new(std::size_t bytes) {
  ++g_Allocations;
  if (void* const memory = std::malloc(bytes)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace corvane {
namespace {

using namespace platform;

constexpr std::size_t kAdapters = 16;

// Answers every handshake, and takes each slot in use as its own.
class ReadyDriver : public DriverApi {
 public:
  HANDLE CreateFileW(LPCWSTR, DWORD, DWORD) override { return this; }
  BOOL DeviceIoControl(HANDLE, DWORD code, const void* input, DWORD, void*, DWORD,
                       DWORD*) override {
    if (code == control::kHandshake) {
      LBHandshake record;
      std::memcpy(&record, input, sizeof(record));
      m_pTable = reinterpret_cast<LBEngineTable*>(record.table);
    }
    if (code != control::kNotify) return TRUE;
    ++notifications;
    for (LBAdapterSlot& slot : m_pTable->slots) slot.status = slot.index == kNoIndex ? 0 : 1;
    return TRUE;
  }
  BOOL CloseHandle(HANDLE) override { return TRUE; }
  int notifications = 0;

 private:
  LBEngineTable* m_pTable = nullptr;
};

class PlainHeap : public HeapApi {
 public:
  HANDLE HeapCreate(DWORD, std::size_t, std::size_t) override { return this; }
  void* HeapAlloc(HANDLE, DWORD, std::size_t bytes) override {
    return m_Blocks[m_Count++] = std::calloc(1, bytes);
  }
  BOOL HeapDestroy(HANDLE) override {
    for (void* block : m_Blocks) std::free(block);
    return TRUE;
  }

 private:
  void* m_Blocks[2] = {};
  int m_Count = 0;
};

// Only the first record lies in the caller's buffer; the others are not made anew.
class StillMachine : public IpHelperApi {
 public:
  StillMachine() {
    for (std::size_t i = 0; i < kAdapters; ++i) {
      IP_ADAPTER_ADDRESSES& one = m_Adapters[i];
      one.Description = m_Description;
      one.IfType = IF_TYPE_ETHERNET_CSMACD;
      one.OperStatus = IfOperStatusUp;
      one.PhysicalAddressLength = 6;
      one.PhysicalAddress[5] = static_cast<BYTE>(i + 1);
      one.TransmitLinkSpeed = one.ReceiveLinkSpeed = 1'000'000'000;
      const BYTE ip4[4] = {192, 168, 1, static_cast<BYTE>(i + 2)};
      std::memcpy(m_Ip4[i].sin_addr, ip4, sizeof(ip4));
      m_Ip6[i].sin6_addr[0] = 0x20;
      m_Ip6[i].sin6_addr[15] = ip4[3];
      m_Unicast[i][0].Address = {&m_Ip4[i], sizeof(SOCKADDR_IN)};
      m_Unicast[i][1].Address = {&m_Ip6[i], sizeof(SOCKADDR_IN6)};
      m_Unicast[i][1].DadState = IpDadStatePreferred;
      m_Unicast[i][0].Next = &m_Unicast[i][1];
      one.FirstUnicastAddress = m_Unicast[i];
      one.FirstGatewayAddress = &m_Gateway;
      if (i > 0) m_Adapters[i - 1].Next = &one;
    }
    const BYTE router[4] = {192, 168, 1, 1};
    std::memcpy(m_Router.sin_addr, router, sizeof(router));
    m_Gateway.Address = {&m_Router, sizeof(SOCKADDR_IN)};
    m_Neighbours.NumEntries = 1;
    MIB_IPNET_ROW2& row = m_Neighbours.Table[0];
    std::memcpy(static_cast<void*>(&row.Address), &m_Router, sizeof(m_Router));
    row.PhysicalAddressLength = 6;
    row.PhysicalAddress[0] = 0xA;
  }
  ULONG GetAdaptersAddresses(ULONG, ULONG, void*, IP_ADAPTER_ADDRESSES* addresses,
                             ULONG*) override {
    std::memcpy(static_cast<void*>(addresses), m_Adapters, sizeof(*addresses));
    return ERROR_SUCCESS;
  }
  DWORD GetIpNetTable2(WORD, MIB_IPNET_TABLE2** table) override {
    *table = &m_Neighbours;
    return ERROR_SUCCESS;
  }
  void FreeMibTable(void*) override {}
  DWORD ConvertInterfaceGuidToLuid(const GUID*, ULONGLONG*) override { return ERROR_SUCCESS; }
  DWORD GetIfEntry2(MIB_IF_ROW2* row) override {
    row->PhysicalAddressLength = 6;
    row->PhysicalAddress[5] = asked = static_cast<BYTE>(asked % kAdapters + 1);
    return ERROR_SUCCESS;
  }
  BYTE asked = 0;  // each adapter in turn: its connection is the first

 private:
  char16_t m_Description[32] = u"Realtek PCIe GbE";
  IP_ADAPTER_ADDRESSES m_Adapters[kAdapters];
  IP_ADAPTER_UNICAST_ADDRESS m_Unicast[kAdapters][2];
  SOCKADDR_IN m_Ip4[kAdapters], m_Router;
  SOCKADDR_IN6 m_Ip6[kAdapters];
  IP_ADAPTER_GATEWAY_ADDRESS m_Gateway;
  MIB_IPNET_TABLE2 m_Neighbours;
};

// One private network with Internet, of objects that live for good.
class OneNetwork : public NetworkListApi,
                   INetwork,
                   INetworkConnection,
                   IEnumNetworkConnections,
                   INetworkListManager {
 public:
  HRESULT CoCreateNetworkListManager(INetworkListManager** manager) override {
    *manager = this;
    return S_OK;
  }

 private:
  ULONG Release() override { return 1; }
  HRESULT GetName(std::u16string*) override { return E_NOTIMPL; }
  HRESULT GetDescription(std::u16string*) override { return E_NOTIMPL; }
  HRESULT GetCategory(LONG* category) override {
    *category = 1;
    return S_OK;
  }
  HRESULT GetConnectivity(DWORD* flags) override {
    *flags = 0x40;
    return S_OK;
  }
  HRESULT GetTimeCreatedAndConnected(FILETIME*, FILETIME*) override { return E_NOTIMPL; }
  HRESULT get_IsConnected(bool*) override { return E_NOTIMPL; }
  HRESULT get_IsConnectedToInternet(bool* connected) override {
    *connected = true;
    return S_OK;
  }
  HRESULT GetAdapterId(GUID*) override { return S_OK; }
  HRESULT GetNetwork(INetwork** network) override {
    *network = this;
    return S_OK;
  }
  HRESULT Next(ULONG, INetworkConnection** connections, ULONG* fetched) override {
    *connections = this;
    *fetched = 1;
    return S_OK;
  }
  HRESULT GetNetworks(DWORD, IEnumNetworks**) override { return E_NOTIMPL; }
  HRESULT GetNetworkConnections(IEnumNetworkConnections** connections) override {
    *connections = this;
    return S_OK;
  }
};

// The devices above in front of a platform; in force while it lives.
class Machine {
 public:
  Machine()
      : m_Platform{Os().threads,      Os().clock, Os().console,  Os().crypto,
                   Os().eventTrace,   Os().files, ipHelper,      networks,
                   Os().perfCounters, Os().power, Os().registry, Os().session,
                   Os().wlan,         driver,     heap} {
    SetPlatform(&m_Platform);
  }
  ReadyDriver driver;
  PlainHeap heap;
  StillMachine ipHelper;
  OneNetwork networks;

 private:
  bench::BenchPlatform m_Host;
  Platform m_Platform;
};

void UnchangedPass(benchmark::State& state) {
  Machine machine;
  auto engine = CLBEngineState::CreateObject();
  engine->CreateHeap();
  engine->LBBuildTables();
  LBDriverHandshake(*engine, true);
  auto discovery = std::make_unique<CLBDiscovery>(*engine);
  const auto pass = [&] {
    discovery->BeginPass();
    discovery->LBDiscoverAdapters(true);
    discovery->EndPass();
  };
  pass();
  pass();
  const int told = machine.driver.notifications;
  const std::size_t before = g_Allocations;
  for (auto _ : state) pass();
  if (g_Allocations != before) state.SkipWithError("a pass allocates");
  if (machine.driver.notifications != told) state.SkipWithError("a pass has something to tell");
  const LBEngineTable& table = *engine->Table();
  if (table.Header().steerableNow != kAdapters || table.gateways[0].adapters != kAdapters) {
    state.SkipWithError("adapters are missing");
  }
  discovery.reset();
  engine.reset();
}
BENCHMARK(UnchangedPass)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace corvane

BENCHMARK_MAIN();
