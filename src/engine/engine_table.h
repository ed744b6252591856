#pragma once
// The memory that the engine shares with its driver. The driver reads it by offsets at any time, so
// every offset is asserted, and what may change under its eyes is written by the helpers of
// shared_word.h. All numbers are little-endian, all addresses in network byte order.

#include <cstddef>
#include <cstdint>

namespace corvane {

inline constexpr std::uint32_t kTableVersion = 0x0A050203;
inline constexpr std::size_t kAdapterSlots = 16;
inline constexpr std::size_t kGatewaySlots = 8;
inline constexpr std::size_t kFlowSlots = 2048;
inline constexpr std::size_t kMoreAddresses = 10;
inline constexpr std::uint8_t kNoIndex = 255;

// The first 16 bytes of the table: of slot 0's record, they lie before what the slot uses.
struct LBTableHeader {
  std::uint32_t version;
  std::uint32_t steerable;     // A: adapters that can carry steered traffic
  std::uint32_t ownAdapters;   // B: the maker's own adapters
  std::uint32_t steerableNow;  // C
};
static_assert(sizeof(LBTableHeader) == 16);

using LBIp6 = std::uint8_t[16];

// What is known of a wireless link.
struct LBWlanArea {
  std::uint8_t unused1[4];
  std::uint16_t operation;
  std::uint16_t unused2;
  std::uint16_t private1;
  std::uint16_t private2;
  std::uint16_t quality;  // 0 to 100
  std::uint16_t linkKind;
  std::uint16_t bssidLength;
  std::uint8_t bssid[8];
  std::uint16_t ssidLength;
  std::uint8_t ssid[32];
  std::uint8_t unused3[12];
};
static_assert(sizeof(LBWlanArea) == 72);

struct LBAdapterSlot {
  LBTableHeader table;  // in slot 0 only; zero in the others
  std::uint32_t networkFlags;
  std::uint32_t attention;
  std::uint32_t status;  // set by the driver, read and cleared by the engine
  std::uint8_t index;    // its own place; kNoIndex while the slot is free
  std::uint8_t state;
  std::uint8_t gateway;     // gateway slot, kNoIndex for none; so are the two below
  std::uint8_t gatewayIp4;  // place in the gateway slot's list
  std::uint8_t gatewayIp6;
  std::uint8_t category;
  std::uint8_t ip4Connectivity;
  std::uint8_t ip6Connectivity;
  std::uint32_t baseFlags;
  std::uint32_t runBits;
  std::uint8_t secondAnswer[32];
  std::uint32_t classFlags;
  std::uint8_t firstAnswer[8];
  std::uint16_t mtu;
  std::uint16_t upWord;  // 2 while the slot is up
  std::uint16_t addressLength;
  std::uint8_t keyAddress[8];       // hardware address as the slot is keyed
  std::uint8_t platformAddress[8];  // as the platform gives it
  std::uint8_t unused1[2];
  std::uint32_t transmitMbps;
  std::uint32_t receiveMbps;
  char16_t description[100];
  LBWlanArea wlan;
  std::uint32_t behindWlan;
  std::uint32_t ip4;
  std::uint32_t ip4Mask;
  std::uint32_t secondIp4;
  std::uint32_t secondIp4Mask;
  std::uint32_t linkLocalIp4;
  std::uint8_t unused2[4];
  LBIp6 global;
  LBIp6 moreGlobal[kMoreAddresses];
  LBIp6 moreUniqueLocal[kMoreAddresses];
  LBIp6 linkLocal;
  LBIp6 uniqueLocal;
  std::uint32_t moreGlobalCount;
  std::uint32_t ip4Count;
  std::uint32_t moreUniqueLocalCount;
  LBIp6 displaced;
  std::uint8_t unused3[16];
};
static_assert(sizeof(LBAdapterSlot) == 832);
static_assert(offsetof(LBAdapterSlot, networkFlags) == 16);
static_assert(offsetof(LBAdapterSlot, attention) == 20);
static_assert(offsetof(LBAdapterSlot, status) == 24);
static_assert(offsetof(LBAdapterSlot, index) == 28);
static_assert(offsetof(LBAdapterSlot, state) == 29);
static_assert(offsetof(LBAdapterSlot, gateway) == 30);
static_assert(offsetof(LBAdapterSlot, gatewayIp4) == 31);
static_assert(offsetof(LBAdapterSlot, gatewayIp6) == 32);
static_assert(offsetof(LBAdapterSlot, category) == 33);
static_assert(offsetof(LBAdapterSlot, ip4Connectivity) == 34);
static_assert(offsetof(LBAdapterSlot, ip6Connectivity) == 35);
static_assert(offsetof(LBAdapterSlot, baseFlags) == 36);
static_assert(offsetof(LBAdapterSlot, runBits) == 40);
static_assert(offsetof(LBAdapterSlot, secondAnswer) == 44);
static_assert(offsetof(LBAdapterSlot, classFlags) == 76);
static_assert(offsetof(LBAdapterSlot, firstAnswer) == 80);
static_assert(offsetof(LBAdapterSlot, mtu) == 88);
static_assert(offsetof(LBAdapterSlot, upWord) == 90);
static_assert(offsetof(LBAdapterSlot, addressLength) == 92);
static_assert(offsetof(LBAdapterSlot, keyAddress) == 94);
static_assert(offsetof(LBAdapterSlot, platformAddress) == 102);
static_assert(offsetof(LBAdapterSlot, transmitMbps) == 112);
static_assert(offsetof(LBAdapterSlot, receiveMbps) == 116);
static_assert(offsetof(LBAdapterSlot, description) == 120);
static_assert(offsetof(LBAdapterSlot, wlan) == 320);
static_assert(offsetof(LBAdapterSlot, wlan.operation) == 324);
static_assert(offsetof(LBAdapterSlot, wlan.private1) == 328);
static_assert(offsetof(LBAdapterSlot, wlan.private2) == 330);
static_assert(offsetof(LBAdapterSlot, wlan.quality) == 332);
static_assert(offsetof(LBAdapterSlot, wlan.linkKind) == 334);
static_assert(offsetof(LBAdapterSlot, wlan.bssidLength) == 336);
static_assert(offsetof(LBAdapterSlot, wlan.bssid) == 338);
static_assert(offsetof(LBAdapterSlot, wlan.ssidLength) == 346);
static_assert(offsetof(LBAdapterSlot, wlan.ssid) == 348);
static_assert(offsetof(LBAdapterSlot, behindWlan) == 392);
static_assert(offsetof(LBAdapterSlot, ip4) == 396);
static_assert(offsetof(LBAdapterSlot, ip4Mask) == 400);
static_assert(offsetof(LBAdapterSlot, secondIp4) == 404);
static_assert(offsetof(LBAdapterSlot, secondIp4Mask) == 408);
static_assert(offsetof(LBAdapterSlot, linkLocalIp4) == 412);
static_assert(offsetof(LBAdapterSlot, global) == 420);
static_assert(offsetof(LBAdapterSlot, moreGlobal) == 436);
static_assert(offsetof(LBAdapterSlot, moreUniqueLocal) == 596);
static_assert(offsetof(LBAdapterSlot, linkLocal) == 756);
static_assert(offsetof(LBAdapterSlot, uniqueLocal) == 772);
static_assert(offsetof(LBAdapterSlot, moreGlobalCount) == 788);
static_assert(offsetof(LBAdapterSlot, ip4Count) == 792);
static_assert(offsetof(LBAdapterSlot, moreUniqueLocalCount) == 796);
static_assert(offsetof(LBAdapterSlot, displaced) == 800);

inline constexpr std::uint16_t kGatewayFree = 1;
inline constexpr std::uint16_t kGatewayInUse = 2;

// One next hop, shared by the adapters behind it.
struct LBGatewaySlot {
  std::uint16_t state;
  std::uint16_t adapters;  // how many stand behind it
  std::uint8_t address[8];
  std::uint32_t ip4[2];
  LBIp6 ip6[2];
  std::uint32_t rate1;
  std::uint32_t rate2;
  std::uint8_t groups[6][4];
  std::uint32_t ip4Count;
  std::uint32_t ip6Count;
};
static_assert(sizeof(LBGatewaySlot) == 92);
static_assert(offsetof(LBGatewaySlot, adapters) == 2);
static_assert(offsetof(LBGatewaySlot, address) == 4);
static_assert(offsetof(LBGatewaySlot, ip4) == 12);
static_assert(offsetof(LBGatewaySlot, ip6) == 20);
static_assert(offsetof(LBGatewaySlot, rate1) == 52);
static_assert(offsetof(LBGatewaySlot, rate2) == 56);
static_assert(offsetof(LBGatewaySlot, groups) == 60);
static_assert(offsetof(LBGatewaySlot, ip4Count) == 84);
static_assert(offsetof(LBGatewaySlot, ip6Count) == 88);

// The driver's own, from the start on.
struct LBFlowSlot {
  std::uint8_t key[16];
  std::uint8_t unused1[16];
  std::uint32_t word;
  std::uint8_t unused2[2];
  std::uint16_t next;
  std::uint8_t shares[2];
  std::uint8_t kind;
  std::uint8_t flag;
  std::uint8_t unused3[4];
};
static_assert(sizeof(LBFlowSlot) == 48);
static_assert(offsetof(LBFlowSlot, word) == 32);
static_assert(offsetof(LBFlowSlot, next) == 38);
static_assert(offsetof(LBFlowSlot, shares) == 40);
static_assert(offsetof(LBFlowSlot, kind) == 42);
static_assert(offsetof(LBFlowSlot, flag) == 43);

struct LBEngineTable {
  LBAdapterSlot slots[kAdapterSlots];
  std::uint8_t unused1[16];
  LBGatewaySlot gateways[kGatewaySlots];
  LBFlowSlot flows[kFlowSlots];
  std::uint8_t unused2[336];
  LBTableHeader& Header() { return slots[0].table; }
  const LBTableHeader& Header() const { return slots[0].table; }
};
static_assert(sizeof(LBEngineTable) == 112704);
static_assert(offsetof(LBEngineTable, gateways) == 13328);
static_assert(offsetof(LBEngineTable, flows) == 14064);
static_assert(offsetof(LBEngineTable, unused2) == 112368);

// The second table: the driver's own, too.
struct LBLinkRecord {
  std::uint16_t state;
  std::uint16_t next;
  std::uint8_t unused[12];
};
static_assert(sizeof(LBLinkRecord) == 16);
inline constexpr std::size_t kLinkRecords = 1048576;
static_assert(kLinkRecords * sizeof(LBLinkRecord) == 0x1000000);

// The catch-all for gateways that nobody can tell apart.
inline constexpr std::uint8_t kCatchAllSlot = 7;
inline constexpr std::uint32_t kCatchAllIp4 = 0x0100000A;  // 10.0.0.1

// The tables as they are handed to the driver, over zeroed memory; all gateway slots free.
void InitTable(LBEngineTable* table);
void InitLinkRecords(LBLinkRecord* records);  // kLinkRecords of them

// An adapter slot that nobody uses.
void ResetSlot(LBAdapterSlot* slot);
// Gives a gateway slot free; its addresses stay, so that the same gateway finds its slot again.
void FreeGateway(LBGatewaySlot* gateway);
void TakeCatchAll(LBGatewaySlot* gateway);

}  // namespace corvane
