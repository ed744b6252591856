// The parts that slots are made of: keys, addresses, gateways, versions, network words.

#include <gtest/gtest.h>

#include <list>

#include "engine/adapter_entry.h"
#include "engine/address_block.h"
#include "engine/driver_version.h"
#include "engine/engine_settings.h"
#include "engine/fake_machine.h"
#include "engine/gateway_slots.h"
#include "engine/network_reader.h"
#include "engine/wlan_access.h"

namespace corvane::engine_test {
namespace {

using namespace platform;

// Unicast addresses in a chain.
class Chain {
 public:
  Chain& Add(const std::string& text, DWORD dadState = IpDadStatePreferred, BYTE prefix = 24) {
    auto& node = m_Nodes.emplace_back();
    if (text.find(':') == std::string::npos) {
      auto& in = m_Ip4.emplace_back();
      const std::uint32_t word = Ip4Word(text);
      std::memcpy(in.sin_addr, &word, sizeof(word));
      node.Address = {&in, sizeof(in)};
    } else {
      auto& in = m_Ip6.emplace_back();
      std::ranges::copy(Ip6Bytes(text), in.sin6_addr);
      node.Address = {&in, sizeof(in)};
    }
    node.DadState = dadState;
    node.OnLinkPrefixLength = prefix;
    if (m_Nodes.size() > 1) std::prev(m_Nodes.end(), 2)->Next = &node;
    return *this;
  }
  LBAddressBlock Collect() {
    return CollectAddresses(m_Nodes.empty() ? nullptr : &m_Nodes.front());
  }

 private:
  std::list<IP_ADAPTER_UNICAST_ADDRESS> m_Nodes;
  std::list<SOCKADDR_IN> m_Ip4;
  std::list<SOCKADDR_IN6> m_Ip6;
};

bool Is(const LBIp6& address, const std::string& text) {
  return std::ranges::equal(address, Ip6Bytes(text));
}

TEST(AddressBlock, KeepsTheFirstAndTheLastIp4Address) {
  const auto block =
      Chain().Add("10.1.0.1").Add("10.1.0.2").Add("169.254.3.4").Add("10.1.0.3").Collect();
  EXPECT_EQ(block.ip4, Ip4Word("10.1.0.1"));
  EXPECT_EQ(block.secondIp4, Ip4Word("10.1.0.3"));
  EXPECT_EQ(block.linkLocalIp4, Ip4Word("169.254.3.4"));
  EXPECT_EQ(block.ip4Mask, Ip4Word("255.255.255.0"));
  EXPECT_EQ(block.Ip4Count(), 2u);
  EXPECT_FALSE(block.onLinkLocal);
}

TEST(AddressBlock, FallsBackToTheLinkLocalAddress) {
  const auto block = Chain().Add("169.254.3.4", IpDadStatePreferred, 16).Collect();
  EXPECT_EQ(block.ip4, Ip4Word("169.254.3.4"));
  EXPECT_EQ(block.ip4Mask, Ip4Word("255.255.0.0"));
  EXPECT_TRUE(block.onLinkLocal);
  EXPECT_TRUE(block.HasAny());
  EXPECT_FALSE(Chain().Collect().HasAny());
}

TEST(AddressBlock, SortsIp6AddressesByKind) {
  const auto block = Chain()
                         .Add("fe80::1")
                         .Add("fe80::2")
                         .Add("fd00::7")
                         .Add("2001:db8::9")
                         .Add("2001:db8::a", 3)  // deprecated
                         .Add("fd00::8")
                         .Collect();
  EXPECT_TRUE(Is(block.linkLocal, "fe80::1"));
  EXPECT_TRUE(Is(block.uniqueLocal, "fd00::7"));
  EXPECT_TRUE(Is(block.moreUniqueLocal[0], "fd00::8"));
  EXPECT_EQ(block.moreUniqueLocalCount, 1u);
  EXPECT_TRUE(Is(block.global, "fd00::7"));
  EXPECT_TRUE(Is(block.moreGlobal[0], "2001:db8::9"));
  EXPECT_TRUE(Is(block.moreGlobal[1], "fd00::8"));
  EXPECT_EQ(block.moreGlobalCount, 2u);
}

TEST(AddressBlock, PutsTheAddressOfTheOwnIdentifierFirst) {
  const auto block = Chain()
                         .Add("2001:db8::1")
                         .Add("2001:db8::2")
                         .Add("2001:db8::aa")
                         .Add("2001:db8::3")
                         .Add("fe80::aa")
                         .Collect();
  EXPECT_TRUE(Is(block.global, "2001:db8::aa"));
  EXPECT_TRUE(Is(block.displaced, "2001:db8::1"));
  LBAdapterSlot slot{};
  WriteAddresses(block, &slot);  // without the hole
  EXPECT_EQ(slot.moreGlobalCount, 2u);
  EXPECT_TRUE(Is(slot.moreGlobal[0], "2001:db8::2"));
  EXPECT_TRUE(Is(slot.moreGlobal[1], "2001:db8::3"));
  EXPECT_TRUE(IsZero(slot.moreGlobal[2]));
  EXPECT_TRUE(Is(slot.displaced, "2001:db8::1"));
  WriteAddresses({}, &slot);
  EXPECT_EQ(slot.moreGlobalCount, 0u);
  EXPECT_TRUE(IsZero(slot.moreGlobal[0]));
}

TEST(AddressBlock, SwapsUniqueLocalAddressesUnlessTheListIsFull) {
  Chain few, full;
  for (Chain* chain : {&few, &full}) chain->Add("fe80::aa").Add("fd00::1").Add("fd00::aa");
  for (int i = 0; i < 12; ++i) full.Add("fd00::" + std::to_string(i + 10));
  const auto swapped = few.Collect(), kept = full.Collect();
  EXPECT_TRUE(Is(swapped.uniqueLocal, "fd00::aa"));
  EXPECT_TRUE(Is(swapped.moreUniqueLocal[0], "fd00::1"));
  EXPECT_TRUE(Is(kept.uniqueLocal, "fd00::1"));
  EXPECT_EQ(kept.moreUniqueLocalCount, 10u);
  EXPECT_EQ(kept.moreGlobalCount, 10u);
}

TEST(AddressBlock, MasksByPrefixLength) {
  EXPECT_EQ(Ip4MaskOf(0), 0u);
  EXPECT_EQ(Ip4MaskOf(9), Ip4Word("255.128.0.0"));
  EXPECT_EQ(Ip4MaskOf(32), 0xFFFFFFFFu);
  EXPECT_EQ(Ip4MaskOf(200), 0xFFFFFFFFu);
}

LBNextHop Hop(std::uint8_t last, const std::string& ip4 = "", const std::string& ip6 = "") {
  LBNextHop hop;
  hop.address[5] = last;
  if (!ip4.empty()) hop.ip4 = Ip4Word(ip4);
  if (!ip6.empty()) std::ranges::copy(Ip6Bytes(ip6), hop.ip6);
  return hop;
}

class GatewaySlots : public testing::Test {
 protected:
  GatewaySlots() {
    for (auto& slot : slots) FreeGateway(&slot);
  }
  LBGatewayPlace Find(const LBNextHop& hop, bool catchAll = false) {
    return LBFindOrTakeGatewaySlot(slots, hop, catchAll, &cursor);
  }
  LBGatewaySlot slots[kGatewaySlots] = {};
  std::uint32_t cursor = 0;
};

TEST_F(GatewaySlots, AreSharedByHardwareAddress) {
  const auto first = Find(Hop(1, "10.0.0.1", "fe80::1"));
  EXPECT_EQ(first.slot, 0);
  EXPECT_EQ(first.ip4, 0);
  EXPECT_EQ(first.ip6, 0);
  EXPECT_EQ(slots[0].adapters, 1);
  EXPECT_EQ(slots[0].ip4Count, 1u);
  EXPECT_EQ(slots[0].ip6Count, 1u);
  EXPECT_EQ(Find(Hop(2)).slot, 1);
  EXPECT_EQ(Find(Hop(1)).ip4, kNoIndex);
  EXPECT_EQ(Find(Hop(1, "10.0.0.2")).ip4, 1);
  EXPECT_EQ(Find(Hop(1, "10.0.0.1")).ip4, 0);
  EXPECT_EQ(Find(Hop(1, "10.0.0.3")).ip4, 1);  // a third replaces the second
  EXPECT_EQ(slots[0].ip4[1], Ip4Word("10.0.0.3"));
  EXPECT_EQ(slots[0].ip4Count, 2u);
}

TEST_F(GatewaySlots, AreTakenInTurn) {
  Find(Hop(1));
  FreeGateway(&slots[0]);
  EXPECT_EQ(Find(Hop(2)).slot, 1);  // the cursor has moved on
  EXPECT_EQ(Find(Hop(1)).slot, 0);  // its address still stands there
  for (std::uint8_t i = 3; i < 9; ++i) EXPECT_FALSE(Find(Hop(i)).IsNone());
  EXPECT_EQ(Find(Hop(9)).slot, 0);  // free again, and reached by the cursor
  EXPECT_TRUE(Find(Hop(10)).IsNone());
}

TEST_F(GatewaySlots, LeaveTheCatchAllAlone) {
  for (std::uint8_t i = 1; i < 8; ++i) EXPECT_NE(Find(Hop(i), true).slot, kCatchAllSlot);
  EXPECT_TRUE(Find(Hop(8), true).IsNone());
  EXPECT_EQ(Find(Hop(8), false).slot, kCatchAllSlot);
}

TEST(ChooseSlot, FindsBothAddressesAndTheLowestFreeSlot) {
  LBAdapterSlot slots[kAdapterSlots] = {};
  for (std::uint8_t i = 0; i < kAdapterSlots; ++i) {
    ResetSlot(&slots[i]);
    slots[i].index = i;
    slots[i].addressLength = 6;
    slots[i].keyAddress[5] = i;
    slots[i].platformAddress[4] = i;
  }
  LBAdapterEntry entry;
  entry.keyLength = 6;
  entry.key = {0, 0, 0, 0, 0, 9};
  EXPECT_EQ(ChooseSlot(slots, entry).slot, 9);
  EXPECT_FALSE(ChooseSlot(slots, entry).isNew);
  entry.key = {0, 0, 0, 0, 4, 0};
  EXPECT_EQ(ChooseSlot(slots, entry).slot, 4);
  entry.keyLength = 7;
  EXPECT_EQ(ChooseSlot(slots, entry).slot, kNoIndex);
  slots[12].index = slots[14].index = kNoIndex;
  EXPECT_EQ(ChooseSlot(slots, entry).slot, 12);
  EXPECT_TRUE(ChooseSlot(slots, entry).isNew);
}

TEST(TakeKey, ToldForEachKind) {
  IP_ADAPTER_ADDRESSES record;
  std::fill(std::begin(record.PhysicalAddress), std::end(record.PhysicalAddress), BYTE{9});
  const auto key = [&record](ULONG length, bool wifiDirect, bool ppp) {
    record.PhysicalAddressLength = length;
    LBAdapterEntry entry;
    entry.record = &record;
    entry.kind.wifiDirect = wifiDirect;
    entry.kind.ppp = ppp;
    TakeKey(&entry);
    return Bytes(entry.key.begin(), entry.key.begin() + entry.keyLength);
  };
  EXPECT_EQ(key(6, false, false), Bytes(6, 9));
  EXPECT_EQ(key(6, true, false), (Bytes{9, 9, 9, 9, 9, 9, 1}));
  EXPECT_EQ(key(8, true, false), Bytes(8, 9));
  EXPECT_EQ(key(32, false, false), Bytes(8, 9));
  EXPECT_EQ(key(0, false, true), (Bytes{0x0A, 0xFA, 0x7E, 0x0A, 0x0D, 0x0D}));
}

TEST(PackedVersion, TakesFourNumbers) {
  EXPECT_EQ(PackedVersion(u"20.80.0.0"), 0x14500000u);
  EXPECT_EQ(PackedVersion(u"20.70.25.2"), 0x14461902u);
  EXPECT_EQ(PackedVersion(u"255.255.255.255"), 0xFFFFFFFFu);
  for (const auto bad : {u"", u"20.80", u"20.80.0.256", u"20.80.0.0.1", u"a.b.c.d", u"20..0.0"}) {
    EXPECT_EQ(PackedVersion(bad), 0u);
  }
}

TEST(VersionNumber, ComparesMinorNumbersToo) {
  EXPECT_EQ(VersionNumber(u"6.3"), 603u);
  EXPECT_EQ(VersionNumber(u"6.2"), 602u);
  EXPECT_EQ(VersionNumber(u"10.0"), 1000u);
  EXPECT_EQ(VersionNumber(u""), 0u);
}

TEST(NetworkWords, MoveTheIp6BitsDown) {
  EXPECT_EQ(NetworkWords({0xFFFF, true, 0}), (LBNetworkWords{9, 1, 0xF1, 0xF1}));
  EXPECT_EQ(NetworkWords({0x440, false, 1}), (LBNetworkWords{2, 2, 0x40, 0x40}));
  EXPECT_EQ(NetworkWords({0x2, true, 2}), (LBNetworkWords{12, 0, 0, 1}));
  EXPECT_EQ(NetworkWords({0x1, false, -1}), (LBNetworkWords{0, 0, 1, 0}));
}

TEST(WlanInterfaces, AreFoundByExactNameBeforeABeginning) {
  WLAN_INTERFACE_INFO list[3];
  std::ranges::copy(std::u16string(u"Radio X #2"), list[0].strInterfaceDescription);
  std::ranges::copy(std::u16string(u"Radio X"), list[1].strInterfaceDescription);
  std::ranges::copy(std::u16string(u"Radio Y long name"), list[2].strInterfaceDescription);
  EXPECT_EQ(FindInterfaceByName(list, 3, u"Radio X"), 1);
  EXPECT_EQ(FindInterfaceByName(list, 3, u"Radio Y"), 2);
  EXPECT_EQ(FindInterfaceByName(list, 3, u"Radio X #2"), 0);
  EXPECT_EQ(FindInterfaceByName(list, 3, u"Radio Z"), -1);
  EXPECT_EQ(FindInterfaceByName(list, 3, u""), -1);
  EXPECT_EQ(DefaultInterfacePlace(1), 0u);
  EXPECT_EQ(DefaultInterfacePlace(2), 0u);
  EXPECT_EQ(DefaultInterfacePlace(3), 2u);
  EXPECT_EQ(DefaultInterfacePlace(4), 2u);
}

}  // namespace
}  // namespace corvane::engine_test
