#include "engine/network_reader.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "engine/engine_bits.h"
#include "engine/shared_word.h"
#include "foundation/guarded.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "LBEngine";

struct Releaser {
  template <class T>
  void operator()(T* object) const {
    GiveBack(kClassName, "Release", [object] { object->Release(); });
  }
};
template <class T>
using ComPointer = std::unique_ptr<T, Releaser>;

// Runs one call of a COM object; true when it succeeded.
template <typename Call>
bool Succeeds(const char* operation, Call&& call) {
  return Guarded(kClassName, operation, E_FAIL, std::forward<Call>(call)) >= 0;
}

bool HasAddressOf(INetworkConnection& connection, const LBAdapterEntry& entry) {
  GUID adapter;
  if (!Succeeds("GetAdapterId", [&] { return connection.GetAdapterId(&adapter); })) return false;
  MIB_IF_ROW2 row;
  const DWORD result = Guarded(kClassName, "GetIfEntry2", ERROR_GEN_FAILURE, [&] {
    const DWORD code = Os().ipHelper.ConvertInterfaceGuidToLuid(&adapter, &row.InterfaceLuid);
    return code == ERROR_SUCCESS ? Os().ipHelper.GetIfEntry2(&row) : code;
  });
  if (result != ERROR_SUCCESS) return false;
  const std::size_t length = std::min<std::size_t>(
      {row.PhysicalAddressLength, entry.keyLength, sizeof(row.PhysicalAddress)});
  return length > 0 && std::memcmp(row.PhysicalAddress, entry.key.data(), length) == 0;
}

ComPointer<INetwork> NetworkOf(const LBAdapterEntry& entry) {
  INetworkListManager* made = nullptr;
  const bool created = Succeeds("CoCreateInstance",
                                [&] { return Os().networkList.CoCreateNetworkListManager(&made); });
  const ComPointer<INetworkListManager> manager(made);
  if (!created || !manager) return nullptr;
  bool internet = false;
  IEnumNetworkConnections* listed = nullptr;
  const bool answered = Succeeds("GetNetworkConnections", [&] {
    const HRESULT result = manager->get_IsConnectedToInternet(&internet);
    return result < 0 ? result : manager->GetNetworkConnections(&listed);
  });
  const ComPointer<IEnumNetworkConnections> connections(listed);
  if (!answered || !connections) return nullptr;
  for (;;) {
    INetworkConnection* next = nullptr;
    ULONG fetched = 0;
    const bool more =
        Succeeds("Next", [&] { return connections->Next(1, &next, &fetched); }) && fetched != 0;
    const ComPointer<INetworkConnection> connection(next);
    if (!more || !connection) return nullptr;
    if (!HasAddressOf(*connection, entry)) continue;
    INetwork* found = nullptr;
    const bool got = Succeeds("GetNetwork", [&] { return connection->GetNetwork(&found); });
    ComPointer<INetwork> network(found);
    return got ? std::move(network) : nullptr;
  }
}

// What the flags tell of the category; none of the three when they tell nothing.
LONG CategoryOf(std::uint32_t networkFlags) {
  if ((networkFlags & network_flag::kPublic) != 0) return 0;
  if ((networkFlags & network_flag::kPrivate) != 0) return 1;
  return (networkFlags & network_flag::kDomain) != 0 ? 2 : -1;
}

}  // namespace

LBNetworkWords NetworkWords(const LBNetworkFacts& facts) {
  constexpr std::uint32_t kIp4Bits = 0xF1;
  constexpr std::uint32_t kIp6Bits = 0xF00;  // over those of IPv4 by four places
  constexpr std::uint32_t kIp6NoTraffic = 0x2;
  LBNetworkWords words;
  words.ip4Connectivity = static_cast<std::uint8_t>(facts.connectivity & kIp4Bits);
  words.ip6Connectivity = static_cast<std::uint8_t>((facts.connectivity & kIp6Bits) >> 4 |
                                                    (facts.connectivity & kIp6NoTraffic) >> 1);
  switch (facts.category) {
    case 0:
      words.category = network_flag::kPublic;
      words.networkFlags = network_flag::kPublic;
      break;
    case 1:
      words.category = network_flag::kPrivate;
      words.networkFlags = network_flag::kPrivate;
      break;
    case 2:
      words.networkFlags = network_flag::kDomain;
      break;
    default:
      break;
  }
  if (facts.internet) words.networkFlags |= network_flag::kInternet;
  return words;
}

DWORD LBReadNetworkState(LBAdapterEntry* entry, LBAdapterSlot* slot, bool comReady, bool stopping) {
  if (stopping || !comReady) return ERROR_GEN_FAILURE;
  const ComPointer<INetwork> network = NetworkOf(*entry);
  if (!network) return 0;
  LBNetworkFacts facts;
  const bool connectivity =
      Succeeds("GetConnectivity", [&] { return network->GetConnectivity(&facts.connectivity); });
  if (!Succeeds("get_IsConnectedToInternet",
                [&] { return network->get_IsConnectedToInternet(&facts.internet); })) {
    facts.internet = (slot->networkFlags & network_flag::kInternet) != 0;
  }
  if (!Succeeds("GetCategory", [&] { return network->GetCategory(&facts.category); })) {
    facts.category = CategoryOf(slot->networkFlags);
  }
  const LBNetworkWords words = NetworkWords(facts);
  entry->internet = facts.internet;
  if (connectivity) {
    Put(slot->ip4Connectivity, words.ip4Connectivity);
    Put(slot->ip6Connectivity, words.ip6Connectivity);
  }
  Put(slot->category, words.category);
  Publish(slot->networkFlags, words.networkFlags);
  return facts.internet ? 1 : 0;
}

}  // namespace corvane
