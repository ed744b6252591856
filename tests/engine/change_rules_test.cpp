#include "engine/change_rules.h"

#include <gtest/gtest.h>

#include "engine/change_report.h"
#include "engine/engine_bits.h"
#include "engine/pass_end.h"

namespace corvane {
namespace {

constexpr LBSlotBefore kDown{false, 0, kNoIndex};
constexpr LBSlotBefore kDownAnswered{false, 7, kNoIndex};
constexpr LBSlotBefore kUpUnused{true, 0, 2};
constexpr LBSlotBefore kSteered{true, 7, 2};
constexpr LBSlotBefore kNoGateway{true, 7, kNoIndex};

struct AddressCase {
  const char* what;
  LBSlotBefore before;
  std::uint32_t oldIp4;
  std::uint8_t oldGlobal;  // last byte; 0 for none
  bool counted;
  std::uint32_t ip4;
  std::uint8_t global;
  bool onLinkLocal;
  std::uint32_t bits;
  bool clears = false;
};

constexpr AddressCase kAddressCases[] = {
    {"nothing, was steered", kSteered, 1, 0, true, 0, 0, false, 4},
    {"nothing, was unused", kUpUnused, 1, 0, true, 0, 0, false, 0},
    {"nothing, had no gateway", kNoGateway, 1, 0, true, 0, 0, false, 0},
    {"nothing, comes up", kDown, 0, 0, false, 0, 0, false, 0, true},
    {"same, answered", kSteered, 1, 0, true, 1, 0, false, 0},
    {"same, not answered", kUpUnused, 1, 0, true, 1, 0, false, 1},
    {"same after being gone", kDown, 1, 0, true, 1, 0, false, 1},
    {"other, steered", kSteered, 1, 0, true, 2, 0, false, 5},
    {"other, no gateway", kNoGateway, 1, 0, true, 2, 0, false, 0},
    {"other, not answered", kUpUnused, 1, 0, true, 2, 0, false, 1},
    {"other, comes up", kDown, 0, 0, false, 2, 0, false, 1},
    {"other, comes up with an old answer", kDownAnswered, 0, 0, false, 2, 0, false, 1},
    {"link-local stays, no gateway", kNoGateway, 1, 0, true, 1, 0, true, 0},
    {"link-local stays, not answered", kUpUnused, 1, 0, true, 1, 0, true, 1},
    {"falls to link-local, steered", kSteered, 1, 0, true, 2, 0, true, 5},
    {"global stays", kSteered, 0, 5, true, 0, 5, false, 0},
    {"global stays, not answered", kUpUnused, 0, 5, true, 0, 5, false, 0},
    {"global moves, steered", kSteered, 0, 5, true, 0, 6, false, 5},
    {"global moves, unused", kUpUnused, 0, 5, true, 0, 6, false, 1},
    {"global appears beside IPv4", kSteered, 1, 0, true, 1, 6, false, 5},
    {"global comes up", kDown, 0, 5, true, 0, 5, false, 1},
    {"global goes, steered", kSteered, 1, 5, true, 1, 0, false, 5},
    {"global goes, unused", kUpUnused, 1, 5, true, 1, 0, false, 1},
    {"global goes, nothing was counted", kSteered, 1, 5, false, 1, 0, false, 0},
};

TEST(AddressChange, LeadsFromTwoStatesToBits) {
  for (const AddressCase& one : kAddressCases) {
    LBAddressesBefore old{one.oldIp4, one.counted};
    old.global[15] = one.oldGlobal;
    LBAddressBlock now;
    now.ip4 = one.ip4;
    now.global[15] = one.global;
    now.onLinkLocal = one.onLinkLocal;
    const LBAddressChange got = AddressChange(one.before, old, now);
    EXPECT_EQ(got.bits, one.bits) << one.what;
    EXPECT_EQ(got.clearsEntryState, one.clears) << one.what;
  }
}

TEST(AddressChange, ALinkLocalIp6AddressIsAnAddress) {
  LBAddressBlock now;
  now.linkLocal[0] = 0xFE;
  EXPECT_EQ(AddressChange(kSteered, {}, now).bits, 0u);
  EXPECT_FALSE(AddressChange(kDown, {}, now).clearsEntryState);
}

TEST(GatewayChange, TellsOfAMovedOrLostGateway) {
  EXPECT_EQ(NoGatewayChange(kSteered, 1), 4u);
  EXPECT_EQ(NoGatewayChange(kUpUnused, 1), 1u);
  EXPECT_EQ(NoGatewayChange(kNoGateway, 5), 5u);
  EXPECT_EQ(GatewayChange(kSteered, 2, 8), 8u);
  EXPECT_EQ(GatewayChange(kSteered, 3, 0), 5u);
  EXPECT_EQ(GatewayChange(kUpUnused, 3, 0), 5u);
  EXPECT_EQ(GatewayChange(kNoGateway, 3, 0), 1u);
  EXPECT_EQ(GatewayChange(kDown, 3, 0), 0u);
}

TEST(DownChange, TellsUntilTheDriverAnswers) {
  EXPECT_EQ(DownChange(kSteered, false), 2u);
  EXPECT_EQ(DownChange(kUpUnused, false), 2u);
  EXPECT_EQ(DownChange(kSteered, true), 2u);
  EXPECT_EQ(DownChange(kNoGateway, false), 0u);
  EXPECT_EQ(DownChange(kDown, false), 2u);
  EXPECT_EQ(DownChange(kDown, true), 0u);
  EXPECT_EQ(DownChange(kDownAnswered, false), 0u);
}

LBWlanNetwork Network(std::string_view ssid, std::uint32_t quality) {
  LBWlanNetwork network;
  std::copy(ssid.begin(), ssid.end(), network.ssid);
  network.ssidLength = static_cast<std::uint32_t>(ssid.size());
  network.quality = quality;
  return network;
}

TEST(NetworkChange, TellsNamesApart) {
  EXPECT_EQ(NetworkChange(Network("Home", 80), Network("Home", 80)), 0u);
  EXPECT_EQ(NetworkChange(Network("Home", 80), Network("Home", 81)), 8u);
  EXPECT_EQ(NetworkChange(Network("Home", 80), Network("Work", 80)), 4u);
  EXPECT_EQ(NetworkChange(Network("Home5", 80), Network("Home", 80)), 5u);
  EXPECT_EQ(NetworkChange(Network("Home", 80), Network("Home5", 70)), 12u);
}

TEST(BeginsAnew, OnlyWithAMoveOfAnAdapterThatStaysUp) {
  EXPECT_TRUE(BeginsAnew({5, 1, 1, 5}));
  EXPECT_FALSE(BeginsAnew({1, 1, 1, 1}));   // nothing moved
  EXPECT_FALSE(BeginsAnew({4, 1, 1, 4}));   // the entry's state is not up
  EXPECT_FALSE(BeginsAnew({5, 17, 1, 5}));  // not managed
  EXPECT_FALSE(BeginsAnew({5, 1, 2, 5}));   // was down
}

LBAdapterEntry Entry(std::uint8_t slot, std::uint32_t bits, bool isNew, bool internet = true,
                     bool managed = true) {
  LBAdapterEntry entry;
  entry.slot = slot;
  entry.changeBits = bits;
  entry.isNew = isNew;
  entry.internet = internet;
  entry.kind.managed = managed;
  return entry;
}

std::string Told(const LBNotificationList& list) {
  std::string text;
  for (const auto& one : list) {
    text += one.device == kAllDevices ? "all" : std::to_string(one.device);
    text += ":" + std::to_string(one.kind) + ":" + std::to_string(one.value) + " ";
  }
  return text;
}

TEST(ChangeReport, TellsEachChangedAdapterByKind) {
  const LBAdapterEntry mixed[] = {Entry(0, 1, false), Entry(1, 5, true), Entry(2, 8, false),
                                  Entry(3, 0, true), Entry(4, 256, false, true, false)};
  EXPECT_EQ(Told(ChangeReport(mixed, 0, true)), "");
  EXPECT_EQ(Told(ChangeReport(mixed, 0, false)), "");
  EXPECT_EQ(Told(ChangeReport(mixed, 1, true)), "all:1:0 ");
  EXPECT_EQ(Told(ChangeReport(mixed, 1, false)), "0:1:1 1:2:5 2:3:8 ");
  const LBAdapterEntry offline[] = {Entry(6, 1, true, false), Entry(7, 1, true, false)};
  EXPECT_EQ(Told(ChangeReport(offline, 1, false)), "6:2:1 7:2:1 all:4:0 ");
  const LBAdapterEntry known[] = {Entry(6, 1, false, false)};
  EXPECT_EQ(Told(ChangeReport(known, 1, false)), "6:1:1 ");
}

TEST(CountSlot, CountsByStateAndClass) {
  const struct {
    std::uint8_t state;
    std::uint32_t classFlags, baseFlags;
    LBSlotCounts counts;
  } cases[] = {
      {1, 0x4001, 0x4001, {1, 0, 1, 0}},    {2, 0x4001, 0x4001, {0, 0, 0, 0}},
      {1, 0xC011, 0x11, {1, 1, 1, 0}},      {2, 0xC011, 0x11, {0, 1, 0, 0}},
      {1, 0x4004402, 0x402, {1, 0, 0, 0}},  {1, 0x4802, 0x4802, {0, 0, 0, 0}},
      {17, 0x2001, 0x2001, {0, 0, 0, 0}},   {17, 0x2009, 0x2009, {0, 0, 0, 1}},
      {21, 0x22001, 0x22001, {0, 0, 0, 1}}, {18, 0x2009, 0x2009, {0, 0, 0, 0}},
  };
  for (const auto& one : cases) {
    LBAdapterSlot slot{};
    slot.state = one.state;
    slot.classFlags = one.classFlags;
    slot.baseFlags = one.baseFlags;
    LBSlotCounts counts;
    CountSlot(slot, &counts);
    EXPECT_EQ(counts, one.counts) << int{one.state} << " " << one.classFlags;
  }
}

TEST(RetireSlot, TellsOfWhatTheDriverUsed) {
  const struct {
    std::uint8_t state;
    std::uint32_t status;
    bool told;
    std::uint8_t after;
  } cases[] = {{1, 7, true, 2},   {1, 0, false, 2},   {2, 7, true, 2},   {2, 0, false, 2},
               {17, 7, true, 18}, {18, 7, false, 18}, {18, 0, false, 18}};
  for (const auto& one : cases) {
    LBAdapterSlot slot{};
    slot.index = 3;
    slot.state = one.state;
    slot.runBits = 1;
    slot.status = one.status;
    slot.baseFlags = 0x4402;
    slot.classFlags = 0x4402;
    slot.transmitMbps = slot.receiveMbps = 100;
    slot.upWord = 2;
    slot.wlan.ssidLength = 4;
    slot.behindWlan = 9;
    slot.keyAddress[0] = 0xAA;
    EXPECT_EQ(RetireSlot(&slot), one.told) << int{one.state} << "/" << one.status;
    EXPECT_EQ(slot.index, kNoIndex);
    EXPECT_EQ(slot.state, one.after);
    EXPECT_EQ(slot.runBits, (one.state & 1) != 0 ? 3u : 1u);  // how it ran when it went
    EXPECT_EQ(slot.status, 0u);
    EXPECT_EQ(slot.transmitMbps + slot.receiveMbps + slot.upWord + slot.classFlags, 0u);
    EXPECT_EQ(slot.wlan.ssidLength + slot.behindWlan, 0u);
    EXPECT_EQ(slot.keyAddress[0], 0xAA);  // by which it finds its slot again
  }
}

}  // namespace
}  // namespace corvane
