#include "engine/fake_machine.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

namespace corvane::engine_test {

using namespace platform;

// ---- driver -------------------------------------------------------------------------------------

HANDLE FakeDriver::CreateFileW(LPCWSTR device, DWORD access, DWORD share) {
  const std::lock_guard guard(m_Mutex);
  if (!present || std::u16string(device) != u"\\\\.\\FlowSplitDrv" || access != 0xC0000000 ||
      share != 3) {
    Os().threads.SetLastError(ERROR_FILE_NOT_FOUND);
    return nullptr;
  }
  const HANDLE handle = reinterpret_cast<HANDLE>(++m_Next);
  m_Open.insert(handle);
  return handle;
}

BOOL FakeDriver::DeviceIoControl(HANDLE device, DWORD code, const void* input, DWORD inputSize,
                                 void* output, DWORD, DWORD* returned) {
  if (onControl) onControl(code);
  const std::lock_guard guard(m_Mutex);
  if (!m_Open.contains(device) || !present || code == failCode) {
    Os().threads.SetLastError(ERROR_GEN_FAILURE);
    return FALSE;
  }
  const auto* bytes = static_cast<const std::uint8_t*>(input);
  m_Calls.push_back({code, Bytes(bytes, bytes + inputSize)});
  *returned = 0;
  if (code == control::kHandshake) {
    LBHandshake record;
    std::memcpy(&record, input, sizeof(record));
    m_pTable = reinterpret_cast<LBEngineTable*>(record.table);
    record.answer = answer;
    std::memcpy(output, &record, sizeof(record));
    *returned = sizeof(record);
  } else if (code == control::kNotify) {
    std::memcpy(static_cast<void*>(&m_Notifications.emplace_back()), input,
                sizeof(LBDeviceNotification));
    if (acknowledges) Acknowledge();
  }
  return TRUE;
}

void FakeDriver::Acknowledge() {
  for (LBAdapterSlot& slot : m_pTable.load()->slots) {
    if (std::atomic_ref(slot.index).load() != kNoIndex) std::atomic_ref(slot.status).store(status);
  }
}

BOOL FakeDriver::CloseHandle(HANDLE device) {
  const std::lock_guard guard(m_Mutex);
  return m_Open.erase(device) != 0 ? TRUE : FALSE;
}

std::vector<FakeDriver::Call> FakeDriver::Calls() {
  const std::lock_guard guard(m_Mutex);
  return m_Calls;
}

int FakeDriver::Count(std::uint32_t code) {
  int count = 0;
  for (const Call& call : Calls()) count += call.code == code ? 1 : 0;
  return count;
}

std::vector<LBDeviceNotification> FakeDriver::TakeNotifications() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Notifications, {});
}

int FakeDriver::OpenHandles() {
  const std::lock_guard guard(m_Mutex);
  return static_cast<int>(m_Open.size());
}

// ---- heap ---------------------------------------------------------------------------------------

HANDLE FakeHeap::HeapCreate(DWORD, std::size_t, std::size_t) {
  if (createFails) return nullptr;
  const std::lock_guard guard(m_Mutex);
  auto heap = std::make_unique<Heap>();
  const HANDLE handle = heap.get();
  m_Heaps[handle] = std::move(heap);
  return handle;
}

void* FakeHeap::HeapAlloc(HANDLE heap, DWORD flags, std::size_t bytes) {
  const std::lock_guard guard(m_Mutex);
  if (m_Allocs++ == failingAlloc || flags != HEAP_ZERO_MEMORY) return nullptr;
  return m_Heaps.at(heap)->blocks.emplace_back(std::calloc(1, bytes));
}

BOOL FakeHeap::HeapDestroy(HANDLE heap) {
  const std::lock_guard guard(m_Mutex);
  for (void* block : m_Heaps.at(heap)->blocks) std::free(block);
  m_Heaps.erase(heap);
  return TRUE;
}

int FakeHeap::OpenHeaps() {
  const std::lock_guard guard(m_Mutex);
  return static_cast<int>(m_Heaps.size());
}

// ---- IP helper ----------------------------------------------------------------------------------

std::uint32_t Ip4Word(const std::string& text) {
  std::uint8_t bytes[4] = {};
  std::sscanf(text.c_str(), "%hhu.%hhu.%hhu.%hhu", &bytes[0], &bytes[1], &bytes[2], &bytes[3]);
  std::uint32_t word;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

std::array<std::uint8_t, 16> Ip6Bytes(const std::string& text) {
  std::array<std::uint8_t, 16> bytes{};
  const auto put = [&bytes](const std::string& groups, bool atEnd) {
    std::vector<unsigned> words;
    for (std::size_t at = 0; at < groups.size(); ++at) {
      words.push_back(static_cast<unsigned>(std::stoul(groups.substr(at), nullptr, 16)));
      at = std::min(groups.find(':', at), groups.size());
    }
    std::size_t to = atEnd ? bytes.size() - 2 * words.size() : 0;
    for (const unsigned word : words) {
      bytes[to++] = static_cast<std::uint8_t>(word >> 8);
      bytes[to++] = static_cast<std::uint8_t>(word);
    }
  };
  const std::size_t gap = text.find("::");
  put(text.substr(0, gap), false);
  if (gap != std::string::npos) put(text.substr(gap + 2), true);
  return bytes;
}

namespace {

class Arena {
 public:
  Arena(void* base, std::size_t size) : m_pBase(static_cast<BYTE*>(base)), m_Size(size) {}
  template <class T>
  T* Make(std::size_t count = 1) {
    const std::size_t from = std::exchange(m_Used, m_Used + (count * sizeof(T) + 7) / 8 * 8);
    return m_Used <= m_Size ? new (m_pBase + from) T[count]() : nullptr;
  }
  bool Fits() const { return m_Used <= m_Size; }

 private:
  BYTE* m_pBase;
  std::size_t m_Size, m_Used = 0;
};

SOCKET_ADDRESS SocketAddress(Arena& arena, const std::string& text) {
  if (text.find(':') == std::string::npos) {
    auto* in = arena.Make<SOCKADDR_IN>();
    if (!in) return {};
    const std::uint32_t word = Ip4Word(text);
    std::memcpy(in->sin_addr, &word, sizeof(word));
    return {in, sizeof(SOCKADDR_IN)};
  }
  auto* in = arena.Make<SOCKADDR_IN6>();
  if (!in) return {};
  std::ranges::copy(Ip6Bytes(text), in->sin6_addr);
  return {in, sizeof(SOCKADDR_IN6)};
}

template <class Node, class Fill>
Node* Chain(Arena& arena, const std::vector<std::string>& texts, Fill&& fill) {
  Node* first = nullptr;
  Node** next = &first;
  for (const std::string& text : texts) {
    const std::size_t slash = text.find('/');
    auto* node = arena.Make<Node>();
    if (!node) return nullptr;
    node->Address = SocketAddress(arena, text.substr(0, slash));
    fill(*node, slash == std::string::npos ? 24 : std::stoi(text.substr(slash + 1)));
    *next = node;
    next = &node->Next;
  }
  return first;
}

}  // namespace

ULONG FakeIpHelper::GetAdaptersAddresses(ULONG, ULONG flags, void*, IP_ADAPTER_ADDRESSES* addresses,
                                         ULONG* size) {
  ++lists;
  if (onList) onList();
  if (listResult != 0) return listResult;
  if (flags != 0x84) return ERROR_INVALID_PARAMETER;
  if (adapters.empty()) return ERROR_NO_DATA;
  if (roomy) m_Room.assign(8192, 0);
  Arena buffer(addresses, *size), room(m_Room.data(), m_Room.size() * sizeof(m_Room[0]));
  IP_ADAPTER_ADDRESSES* before = nullptr;
  for (const FakeAdapter& one : adapters) {
    Arena& arena = roomy && before ? room : buffer;
    auto* node = arena.Make<IP_ADAPTER_ADDRESSES>();
    auto* text = arena.Make<char16_t>(one.description.size() + 1);
    if (!node || !text) return ERROR_BUFFER_OVERFLOW;
    std::ranges::copy(one.description, text);
    if (one.hasDescription) node->Description = text;
    node->IfType = one.ifType;
    node->IfIndex = one.ifIndex;
    node->OperStatus = one.up ? IfOperStatusUp : IfOperStatusDown;
    node->Mtu = 1500;
    node->TransmitLinkSpeed = node->ReceiveLinkSpeed = one.bitsPerSecond;
    std::ranges::copy(one.mac, node->PhysicalAddress);
    node->PhysicalAddressLength = static_cast<ULONG>(one.mac.size());
    node->FirstUnicastAddress = Chain<IP_ADAPTER_UNICAST_ADDRESS>(
        arena, one.addresses, [&one](IP_ADAPTER_UNICAST_ADDRESS& unicast, int prefix) {
          unicast.OnLinkPrefixLength = static_cast<BYTE>(prefix);
          unicast.DadState = one.dadState;
        });
    node->FirstGatewayAddress = Chain<IP_ADAPTER_GATEWAY_ADDRESS>(
        arena, one.gateways, [](IP_ADAPTER_GATEWAY_ADDRESS&, int) {});
    if (before) before->Next = node;
    before = node;
  }
  return buffer.Fits() ? ERROR_SUCCESS : ERROR_BUFFER_OVERFLOW;
}

DWORD FakeIpHelper::GetIpNetTable2(WORD family, MIB_IPNET_TABLE2** table) {
  const std::size_t bytes = sizeof(MIB_IPNET_TABLE2) + neighbours.size() * sizeof(MIB_IPNET_ROW2);
  auto* const raw = static_cast<BYTE*>(std::calloc(1, bytes));
  *table = reinterpret_cast<MIB_IPNET_TABLE2*>(raw);
  ++openTables;
  for (const FakeNeighbour& one : neighbours) {
    if ((one.address.find(':') == std::string::npos) != (family == AF_INET)) continue;
    MIB_IPNET_ROW2 row;
    alignas(8) BYTE room[sizeof(SOCKADDR_IN6) + 4];
    Arena arena(room, sizeof(room));
    const SOCKET_ADDRESS address = SocketAddress(arena, one.address);
    std::memcpy(static_cast<void*>(&row.Address), address.lpSockaddr,
                static_cast<std::size_t>(address.iSockaddrLength));
    row.InterfaceIndex = one.ifIndex;
    std::ranges::copy(one.mac, row.PhysicalAddress);
    row.PhysicalAddressLength = static_cast<ULONG>(one.mac.size());
    std::memcpy(raw + offsetof(MIB_IPNET_TABLE2, Table) + (*table)->NumEntries * sizeof(row), &row,
                sizeof(row));
    ++(*table)->NumEntries;
  }
  return ERROR_SUCCESS;
}

void FakeIpHelper::FreeMibTable(void* memory) {
  --openTables;
  std::free(memory);
}

DWORD FakeIpHelper::ResolveIpNetEntry2(MIB_IPNET_ROW2* row, const SOCKADDR_INET*) {
  SOCKADDR_IN6 in;
  std::memcpy(static_cast<void*>(&in), &row->Address, sizeof(in));
  for (const FakeNeighbour& one : neighbours) {
    if (!std::ranges::equal(Ip6Bytes(one.address), in.sin6_addr) || one.resolved.empty()) continue;
    std::ranges::copy(one.resolved, row->PhysicalAddress);
    row->PhysicalAddressLength = static_cast<ULONG>(one.resolved.size());
    return ERROR_SUCCESS;
  }
  return ERROR_NOT_FOUND;
}

DWORD FakeIpHelper::ConvertInterfaceGuidToLuid(const GUID* adapter, ULONGLONG* luid) {
  *luid = adapter->Data1;
  return ERROR_SUCCESS;
}

DWORD FakeIpHelper::GetIfEntry2(MIB_IF_ROW2* row) {
  if (row->InterfaceLuid == 0 || row->InterfaceLuid > adapters.size()) return ERROR_NOT_FOUND;
  const Bytes& mac = adapters[row->InterfaceLuid - 1].mac;
  std::ranges::copy(mac, row->PhysicalAddress);
  row->PhysicalAddressLength = static_cast<ULONG>(mac.size());
  return ERROR_SUCCESS;
}

// ---- WLAN ---------------------------------------------------------------------------------------

template <class List>
List* FakeWlan::Allocate(std::size_t bytes) {
  ++buffers;
  return static_cast<List*>(std::calloc(1, bytes));
}

void FakeWlan::WlanFreeMemory(void* memory) {
  --buffers;
  std::free(memory);
}

DWORD FakeWlan::WlanOpenHandle(DWORD version, void*, DWORD*, HANDLE* client) {
  ++opens;
  if (openResult != 0 || version != 2) return openResult;
  ++clients;
  *client = this;
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanCloseHandle(HANDLE, void*) {
  --clients;
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanEnumInterfaces(HANDLE, void*, WLAN_INTERFACE_INFO_LIST** list) {
  *list = Allocate<WLAN_INTERFACE_INFO_LIST>(sizeof(WLAN_INTERFACE_INFO_LIST) +
                                             interfaces.size() * sizeof(WLAN_INTERFACE_INFO));
  for (const std::u16string& text : interfaces) {
    WLAN_INTERFACE_INFO& one = (*list)->InterfaceInfo[(*list)->dwNumberOfItems];
    one.InterfaceGuid = GuidOf((*list)->dwNumberOfItems++);
    std::ranges::copy(text, one.strInterfaceDescription);
  }
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanQueryInterface(HANDLE, const GUID*, LONG opcode, void*, DWORD* size,
                                   void** data, LONG*) {
  if (opcode == wlan_intf_opcode_current_operation_mode) {
    *data = Allocate<void>(sizeof(mode));
    std::memcpy(*data, &mode, sizeof(mode));
    *size = sizeof(mode);
    return ERROR_SUCCESS;
  }
  if (opcode != wlan_intf_opcode_current_connection) return ERROR_NOT_SUPPORTED;
  WLAN_CONNECTION_ATTRIBUTES attributes;
  attributes.isState = connectionState;
  auto& link = attributes.wlanAssociationAttributes;
  link.dot11Ssid.uSSIDLength = static_cast<ULONG>(ssid.size());
  std::ranges::copy(ssid, link.dot11Ssid.ucSSID);
  std::ranges::copy(bssid, link.dot11Bssid);
  link.wlanSignalQuality = quality;
  link.ulRxRate = rxKbps;
  link.ulTxRate = txKbps;
  *data = Allocate<void>(sizeof(attributes));
  std::memcpy(*data, &attributes, sizeof(attributes));
  *size = sizeof(attributes);
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetAvailableNetworkList(HANDLE, const GUID*, DWORD, void*,
                                            WLAN_AVAILABLE_NETWORK_LIST** list) {
  *list = Allocate<WLAN_AVAILABLE_NETWORK_LIST>(sizeof(WLAN_AVAILABLE_NETWORK_LIST) +
                                                sizeof(WLAN_AVAILABLE_NETWORK));
  (*list)->dwNumberOfItems = 2;  // somebody else's first
  if (ssid.empty()) return ERROR_SUCCESS;
  WLAN_AVAILABLE_NETWORK& network = (*list)->Network[1];
  network.dwFlags = WLAN_AVAILABLE_NETWORK_CONNECTED;
  network.dot11Ssid.uSSIDLength = static_cast<ULONG>(ssid.size());
  std::ranges::copy(ssid, network.dot11Ssid.ucSSID);
  network.wlanSignalQuality = quality;
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanGetNetworkBssList(HANDLE, const GUID*, const DOT11_SSID*, LONG, BOOL, void*,
                                      WLAN_BSS_LIST** list) {
  *list = Allocate<WLAN_BSS_LIST>(sizeof(WLAN_BSS_LIST) + bssids.size() * sizeof(WLAN_BSS_ENTRY));
  for (const Bytes& one : bssids) {
    std::ranges::copy(one, (*list)->wlanBssEntries[(*list)->dwNumberOfItems++].dot11Bssid);
  }
  return ERROR_SUCCESS;
}

DWORD FakeWlan::WlanIhvControl(HANDLE, const GUID* adapter, LONG type, DWORD inputSize,
                               const void* input, DWORD outputSize, void* output, DWORD*) {
  const auto* bytes = static_cast<const std::uint8_t*>(input);
  privateCalls.emplace_back(bytes, bytes + inputSize);
  privateAdapters.push_back(*adapter);
  std::uint32_t code;
  std::memcpy(&code, bytes + 4, sizeof(code));
  if (type != 1 || outputSize != inputSize || !privateAnswers.contains(code)) {
    return ERROR_NOT_SUPPORTED;
  }
  std::memcpy(output, input, inputSize);
  std::ranges::copy(privateAnswers[code], static_cast<std::uint8_t*>(output) + 24);
  return ERROR_SUCCESS;
}

// ---- registry -----------------------------------------------------------------------------------

std::u16string FakeRegistry::Trimmed(std::u16string path) {
  if (path.ends_with(u'\\')) path.pop_back();
  return path;
}

void FakeRegistry::Set(const std::u16string& path, const std::u16string& name,
                       std::uint32_t number) {
  Bytes bytes(sizeof(number));
  std::memcpy(bytes.data(), &number, sizeof(number));
  m_Keys[Trimmed(path)][name] = {REG_DWORD, bytes};
}

void FakeRegistry::Set(const std::u16string& path, const std::u16string& name,
                       const std::u16string& text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.c_str());
  m_Keys[Trimmed(path)][name] = {REG_SZ, Bytes(bytes, bytes + (text.size() + 1) * 2)};
}

LSTATUS FakeRegistry::RegOpenKeyExW(HKEY, LPCWSTR path, DWORD, REGSAM, HKEY* key) {
  const auto found = m_Keys.find(Trimmed(path));
  if (found == m_Keys.end()) return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
  ++open;
  *key = &found->second;
  return 0;
}

LSTATUS FakeRegistry::RegCloseKey(HKEY) {
  --open;
  return 0;
}

LSTATUS FakeRegistry::RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data,
                                       DWORD* size) {
  const auto& values = *static_cast<std::map<std::u16string, Value>*>(key);
  const auto found = values.find(name);
  if (found == values.end()) return static_cast<LSTATUS>(ERROR_FILE_NOT_FOUND);
  const Bytes& bytes = found->second.bytes;
  *type = found->second.type;
  if (bytes.size() > *size) return static_cast<LSTATUS>(ERROR_MORE_DATA);
  std::ranges::copy(bytes, data);
  *size = static_cast<DWORD>(bytes.size());
  return 0;
}

// ---- the whole ----------------------------------------------------------------------------------

FakeMachine::FakeMachine()
    : m_pBefore(&Os()), m_Platform{Os().threads, Os().clock,      Os().console,
                                   Os().crypto,  Os().eventTrace, Os().files,
                                   ipHelper,     networkList,     Os().perfCounters,
                                   Os().power,   registry,        Os().session,
                                   wlan,         driver,          heap,
                                   Os().http,    Os().icmp,       Os().pipes,
                                   services,     Os().sockets,    Os().windows} {
  SetPlatform(&m_Platform);
}

int FakeMachine::Open() {
  return driver.OpenHandles() + heap.OpenHeaps() + services.open + ipHelper.openTables +
         networkList.apartments + networkList.objects + wlan.clients + wlan.buffers + registry.open;
}

}  // namespace corvane::engine_test
