#include "platform/sim/devices/sim_driver_table.h"

namespace corvane::platform::sim {

namespace {

constexpr DWORD kVersion = 0x0A050203;
constexpr DWORD kFirstRate = 187'500'000;
constexpr std::size_t kFlowsAt = 14'064;
constexpr std::size_t kListPlaces = 10;
constexpr DWORD kGatewayPlaces = 2;
constexpr DWORD kCatchAll = 0xEFBEADDE;  // its hardware address begins so
constexpr WORD kFree = 1, kTaken = 2;

constexpr BYTE kDown = 2;

// Class and base flags that the counts go by.
constexpr DWORD kTunnels = 0x8 | 0x20000;
constexpr DWORD kWifiDirect = 0x800;
constexpr DWORD kOwn = 0x8000;
constexpr DWORD kPpp = 0x20000;
constexpr DWORD kTooOld = 0x4000000;

std::string In(const char* what, std::size_t number, const std::string& text) {
  return std::string(what) + " " + std::to_string(number) + " " + text;
}

std::string Differs(const char* what, DWORD is, DWORD should) {
  return std::string(what) + " is " + std::to_string(is) + ", not " + std::to_string(should);
}

}  // namespace

std::size_t SimDriverTable::WordsToCopy() { return kFlowsAt / 4; }

BYTE SimDriverTable::Byte(std::size_t at) const {
  return static_cast<BYTE>(m_Words[at / 4] >> at % 4 * 8);
}

WORD SimDriverTable::Half(std::size_t at) const {
  return static_cast<WORD>(Byte(at) | Byte(at + 1) << 8);
}

bool SimDriverTable::IsZero(std::size_t at, std::size_t bytes) const {
  for (std::size_t i = at; i < at + bytes; ++i) {
    if (Byte(i) != 0) return false;
  }
  return true;
}

// `whole`: the places behind those that are counted are empty, too.
std::string SimDriverTable::CheckList(std::size_t slot, std::size_t listAt, std::size_t countAt,
                                      const char* what, bool whole) const {
  const DWORD count = Word(SlotAt(slot) + countAt);
  if (count > kListPlaces) {
    return In("slot", slot, std::string("counts ") + std::to_string(count) + " " + what);
  }
  for (std::size_t i = 0; i < (whole ? kListPlaces : count); ++i) {
    const bool empty = IsZero(SlotAt(slot) + listAt + i * 16, 16);
    if (empty == (i < count)) {
      return In("slot", slot,
                std::string("has ") + (empty ? "a hole" : "more than it counts") + " among its " +
                    what + ", at place " + std::to_string(i));
    }
  }
  return {};
}

std::string SimDriverTable::CheckAlways() const {
  if (Word(0) != kVersion) return Differs("the version", Word(0), kVersion);
  for (const std::size_t at : {4u, 8u, 12u}) {
    if (Word(at) > kSlots) return Differs("a count word", Word(at), kSlots);
  }
  for (std::size_t i = 0; i < kSlots; ++i) {
    const std::size_t at = SlotAt(i);
    if (InUse(i) && Byte(at + 28) != i) return In("slot", i, "holds another's index");
    if (GatewayOf(i) != kNone && GatewayOf(i) >= kGateways)
      return In("slot", i, "has no such gateway");
    for (const std::size_t list : {31u, 32u}) {
      if (Byte(at + list) != kNone && Byte(at + list) >= kGatewayPlaces)
        return In("slot", i, "names a place that no gateway has");
    }
    if (Word(at + 792) > 2) return In("slot", i, "counts more than two IPv4 addresses");
    if (auto torn = CheckList(i, 436, 788, "global addresses", false); !torn.empty()) return torn;
    if (auto torn = CheckList(i, 596, 796, "unique-local addresses", false); !torn.empty())
      return torn;
  }
  for (std::size_t i = 0; i < kGateways; ++i) {
    const std::size_t at = GatewayAt(i);
    if (Half(at) != kFree && Half(at) != kTaken)
      return In("gateway", i, "is neither free nor taken");
    if (Word(at + 84) > kGatewayPlaces || Word(at + 88) > kGatewayPlaces)
      return In("gateway", i, "counts more addresses than it has places");
    for (std::size_t place = 0; place < kGatewayPlaces; ++place) {
      if ((place < Word(at + 84) && IsZero(at + 12 + place * 4, 4)) ||
          (place < Word(at + 88) && IsZero(at + 20 + place * 16, 16))) {
        return In("gateway", i, "counts an address that is not there");
      }
    }
  }
  return {};
}

std::string SimDriverTable::CheckSlot(std::size_t slot) const {
  const std::size_t at = SlotAt(slot);
  const BYTE state = Byte(at + 29);
  const bool up = IsUp(slot);
  if (up == ((state & kDown) != 0)) return In("slot", slot, "is up and down at once, or neither");
  if (!InUse(slot)) {
    if (up) return In("slot", slot, "is in use with index 255");
    if (Word(at + 24) != 0) return In("slot", slot, "is free with a status word");
    if (Word(at + 76) != 0) return In("slot", slot, "is free with class flags");
    return {};
  }
  if (Half(at + 90) != (up ? 2 : 0)) return In("slot", slot, "has a word at 90 beside its state");
  if (Half(at + 92) > 8) return In("slot", slot, "has a hardware address of more than 8 bytes");
  const DWORD addresses = (Word(at + 396) != 0 ? 1u : 0u) + (Word(at + 404) != 0 ? 1u : 0u);
  if (Word(at + 792) != addresses) {
    return In("slot", slot,
              Differs("has a count of IPv4 addresses that", Word(at + 792), addresses));
  }
  if (auto torn = CheckList(slot, 436, 788, "global addresses", true); !torn.empty()) return torn;
  if (auto torn = CheckList(slot, 596, 796, "unique-local addresses", true); !torn.empty())
    return torn;
  const BYTE gateway = GatewayOf(slot);
  if (!up && (gateway != kNone || addresses != 0)) {
    return In("slot", slot, "is down with addresses or a gateway");
  }
  if (gateway == kNone) return {};
  const std::size_t hop = GatewayAt(gateway);
  if (Half(hop) != kTaken) return In("slot", slot, "stands behind a gateway slot that is free");
  if ((Byte(at + 31) != kNone && Byte(at + 31) >= Word(hop + 84)) ||
      (Byte(at + 32) != kNone && Byte(at + 32) >= Word(hop + 88))) {
    return In("slot", slot, "names an address that its gateway slot does not count");
  }
  return {};
}

std::string SimDriverTable::CheckSlots() const {
  if (auto torn = CheckAlways(); !torn.empty()) return torn;
  for (std::size_t i = 0; i < kSlots; ++i) {
    if (auto torn = CheckSlot(i); !torn.empty()) return torn;
  }
  return {};
}

// PPP links share a slot, and each of them counts.
std::string SimDriverTable::CheckGateway(std::size_t gateway) const {
  const std::size_t at = GatewayAt(gateway);
  DWORD users = 0;
  bool shared = false;
  for (std::size_t i = 0; i < kSlots; ++i) {
    if (!InUse(i) || GatewayOf(i) != gateway) continue;
    ++users;
    shared = shared || (Word(SlotAt(i) + 36) & kPpp) != 0 || (Word(SlotAt(i) + 76) & kPpp) != 0;
  }
  const DWORD counted = Half(at + 2);
  if (shared ? counted < users : counted != users) {
    return In("gateway", gateway, Differs("has a use count that", counted, users));
  }
  if (users != 0) return {};
  // Before the first pass the catch-all is taken, though nobody stands behind it.
  if (gateway + 1 == kGateways && Half(at) == kTaken && Word(at + 4) == kCatchAll) return {};
  if (Word(at + 52) != kFirstRate || Word(at + 56) != kFirstRate || Word(at + 84) != 0 ||
      Word(at + 88) != 0 || Half(at) != kFree) {
    return In("gateway", gateway, "has nobody behind it and is not free");
  }
  return {};
}

std::string SimDriverTable::CheckSettled() const {
  if (auto torn = CheckSlots(); !torn.empty()) return torn;
  DWORD steerable = 0, own = 0, now = 0, tunnels = 0;
  for (std::size_t i = 0; i < kSlots; ++i) {
    if (!InUse(i)) continue;
    const DWORD base = Word(SlotAt(i) + 36), kind = Word(SlotAt(i) + 76);
    if ((kind & kOwn) != 0) ++own;
    if (!IsUp(i)) continue;
    if (!IsManaged(i)) {
      if ((base & kTunnels) != 0) ++tunnels;
    } else if ((kind & kWifiDirect) == 0) {
      ++steerable;
      if ((kind & kTooOld) == 0) ++now;
    }
  }
  if (tunnels != 0) now = 1;
  if (Word(4) != steerable) return Differs("the count of steerable adapters", Word(4), steerable);
  if (Word(8) != own) return Differs("the count of the maker's adapters", Word(8), own);
  if (Word(12) != now) return Differs("the count of adapters steerable now", Word(12), now);
  for (std::size_t i = 0; i < kGateways; ++i) {
    if (auto torn = CheckGateway(i); !torn.empty()) return torn;
  }
  return {};
}

std::string SimDriverTable::CheckHandedOver() const {
  if (auto torn = CheckSlots(); !torn.empty()) return torn;
  for (std::size_t i = 0; i < kGateways; ++i) {
    for (std::size_t group = 0; group < 6; ++group) {
      if (Word(GatewayAt(i) + 60 + group * 4) != (100u | 100u << 8))
        return In("gateway", i, "has a group without its first values");
    }
  }
  return {};
}

}  // namespace corvane::platform::sim
