#include "wlan/adapter_fixture.h"

#include <cstring>

#include "platform/sim/kernel/sim_registry.h"

namespace corvane::test {

using namespace platform;

DWORD FakeIpHelper::GetIfTable(MIB_IFTABLE* table, ULONG* size, BOOL) {
  const ULONG needed =
      static_cast<ULONG>(offsetof(MIB_IFTABLE, table) + adapters.size() * sizeof(MIB_IFROW));
  if (*size < needed) {
    *size = needed;
    return ERROR_INSUFFICIENT_BUFFER;
  }
  table->dwNumEntries = static_cast<DWORD>(adapters.size());
  for (std::size_t i = 0; i < adapters.size(); ++i) {
    MIB_IFROW row;
    const WString name = u"\\DEVICE\\TCPIP_" + GuidText(AdapterGuid(adapters[i].number));
    std::copy(name.begin(), name.end(), row.wszName);
    row.dwIndex = adapters[i].number;
    row.dwPhysAddrLen = 6;
    row.bPhysAddr[5] = adapters[i].number;
    row.dwDescrLen = static_cast<DWORD>(adapters[i].description.size());
    std::copy(adapters[i].description.begin(), adapters[i].description.end(), row.bDescr);
    std::memcpy(static_cast<void*>(&table->table[i]), &row, sizeof(row));
  }
  return ERROR_SUCCESS;
}

void AdapterTest::Have(std::vector<FakeAdapter> adapters) {
  wlan.adapters.clear();
  for (const FakeAdapter& one : adapters) {
    wlan.adapters.push_back(AdapterGuid(one.number));
    if (one.connectionName.empty()) continue;
    const WString key =
        u"SYSTEM\\CurrentControlSet\\Control\\Network\\{4D36E972-E325-11CE-BFC1-08002BE10318}\\" +
        GuidText(AdapterGuid(one.number)) + u"\\Connection";
    kernel.Registry().SetText(key, u"Name", one.connectionName);
  }
  ipHelper.adapters = std::move(adapters);
}

CSmartPointer<CWlanInterface> AdapterTest::Start() {
  if (ipHelper.adapters.empty()) Have({FakeAdapter{}});
  CGlobalConfigContainer::GetInstance().Initialize(false);
  CWifiClientContainer::GetInstance().Initialize();
  adapter = CWifiClientContainer::GetInstance().GetInterface(0);
  return adapter;
}

CSmartPointer<CWlanInterface> AdapterTest::StartConnected(std::string_view ssid,
                                                          const MacAddress& bssid) {
  Start();
  wlan.Connect(ssid, bssid);
  WLAN_CONNECTION_ATTRIBUTES attributes;
  adapter->QueryCurrentConnection(&attributes, true);
  adapter->SetConnectedBssid(bssid);
  adapter->SetLastConnectedSsid(Utf8ToWide(ssid));
  return adapter;
}

void AdapterTest::TearDown() {
  if (HasFailure()) std::printf("%s\n", kernel.Console().Text().c_str());
  adapter.reset();
  CWifiClientContainer::GetInstance().Shutdown();
  CGlobalConfigContainer::GetInstance().Shutdown(false);
  RunFor(30s);  // what was posted has come
  KernelTest::TearDown();
}

std::int32_t AdapterTest::Discover(bool force) {
  auxError = 0;
  return adapter->DiscoverNetworksSynchronous(force, false, &auxError);
}

CSmartPointer<CWlanBssEntry> AdapterTest::Entry(WStringView ssid, std::uint8_t last) {
  CSmartPointer<CWlanBssEntry> entry;
  adapter->FindBssEntry(ssid, Bssid(last), &entry);
  return entry;
}

WString AdapterTest::Value(WStringView name) {
  WString text;
  CGlobalConfigContainer::GetInstance().GetRegistry()->GetRegistryStringValue(name, &text);
  return text;
}

WString AdapterTest::AdapterValue(WStringView name) {
  WString text;
  adapter->Config()->GetString(name, &text);
  return text;
}

std::uint32_t AdapterTest::AdapterNumber(WStringView name) {
  std::uint32_t number = 0xFFFFFFFF;
  adapter->Config()->GetDWORD(name, &number);
  return number;
}

void AdapterTest::OnThread(std::function<void()> body) { wlan.Post(0, std::move(body)); }

std::string AdapterTest::ThrownBy(const std::function<void()>& body) {
  try {
    body();
  } catch (const Exception& e) {
    return e.what();
  }
  return {};
}

}  // namespace corvane::test
