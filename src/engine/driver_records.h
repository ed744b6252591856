#pragma once
// What the engine and its driver tell each other by control calls.

#include <cstddef>
#include <cstdint>

#include "engine/engine_table.h"

namespace corvane {

inline constexpr char16_t kDeviceName[] = u"\\\\.\\FlowSplitDrv";
inline constexpr char16_t kServiceName[] = u"flowsplitsvc";

namespace control {
inline constexpr std::uint32_t kHandshake = 0x120004;
inline constexpr std::uint32_t kStop = 0x120008;
inline constexpr std::uint32_t kOpened = 0x120260;  // 8 zero bytes, from the one who holds it open
inline constexpr std::uint32_t kStart = 0x120400;
inline constexpr std::uint32_t kSteer = 0x120420;
inline constexpr std::uint32_t kNotify = 0x120448;
}  // namespace control

inline constexpr std::uint32_t kRecordMagic = 0xFEEDF00D;

struct LBHandshake {
  std::uint32_t magic = kRecordMagic;
  std::uint32_t answer = 2;  // the revision going in, the driver's answer coming out
  std::uint32_t tableSize = sizeof(LBEngineTable);
  std::uint32_t unused1 = 0;
  std::uint64_t table = 0;
  std::uint32_t linkSize = kLinkRecords * sizeof(LBLinkRecord);
  std::uint32_t unused2 = 0;
  std::uint64_t links = 0;
};
static_assert(sizeof(LBHandshake) == 40);
static_assert(offsetof(LBHandshake, answer) == 4);
static_assert(offsetof(LBHandshake, tableSize) == 8);
static_assert(offsetof(LBHandshake, table) == 16);
static_assert(offsetof(LBHandshake, linkSize) == 24);
static_assert(offsetof(LBHandshake, links) == 32);

// Answers to a handshake; every other one means ready.
namespace handshake_answer {
inline constexpr std::uint32_t kRevision = 3;
inline constexpr std::uint32_t kBadRecord = 4;
inline constexpr std::uint32_t kNotYet = 5;
}  // namespace handshake_answer

struct LBSteer {
  std::uint32_t magic = kRecordMagic;
  std::uint32_t command = 0;  // 1 pauses, 2 runs
  std::uint32_t mode = 0;     // of the weights
};
static_assert(sizeof(LBSteer) == 12);
static_assert(offsetof(LBSteer, command) == 4);
static_assert(offsetof(LBSteer, mode) == 8);

inline constexpr std::uint32_t kAllDevices = 0xFFFFFFFF;

// Kinds of a notification. Of one adapter they are bits: kKnown, kNew, or both behind a new one.
namespace notify_kind {
inline constexpr std::uint32_t kAll = 1;
inline constexpr std::uint32_t kKnown = 1;
inline constexpr std::uint32_t kNew = 2;
inline constexpr std::uint32_t kNoInternet = 4;  // new adapters, some without Internet
inline constexpr std::uint32_t kTunnel = 8;      // value: one came up, or the last one went
}  // namespace notify_kind
inline constexpr std::uint32_t kTunnelUp = 1;
inline constexpr std::uint32_t kTunnelGone = 2;

struct LBDeviceNotification {
  std::uint32_t magic = 0xDE30ADD3;
  std::uint32_t device = kAllDevices;  // index of a slot, or kAllDevices
  std::uint32_t kind = 0;
  std::uint32_t value = 0;
};
static_assert(sizeof(LBDeviceNotification) == 16);
static_assert(offsetof(LBDeviceNotification, device) == 4);
static_assert(offsetof(LBDeviceNotification, kind) == 8);
static_assert(offsetof(LBDeviceNotification, value) == 12);

}  // namespace corvane
