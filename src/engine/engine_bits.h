#pragma once
// The bits of the engine's words, and their names for whoever looks at them.

#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// What kind of adapter something is: LBAdapterSlot::classFlags and baseFlags.
namespace adapter_class {
inline constexpr std::uint32_t kWired = 0x1;
inline constexpr std::uint32_t kWireless = 0x2;
inline constexpr std::uint32_t kPrivateQueries = 0x4;  // wireless with a private interface
inline constexpr std::uint32_t kTunnel = 0x8;
inline constexpr std::uint32_t kGenericWireless = 0x400;
inline constexpr std::uint32_t kWifiDirect = 0x800;
inline constexpr std::uint32_t kNotManaged = 0x2000;
inline constexpr std::uint32_t kManaged = 0x4000;
inline constexpr std::uint32_t kOwnWired = 0x8000;
inline constexpr std::uint32_t kPpp = 0x20000;
inline constexpr std::uint32_t kOwnGenericWireless = 0x40000;
inline constexpr std::uint32_t kMobile = 0x80000;
inline constexpr std::uint32_t k11ad = 0x100000;
inline constexpr std::uint32_t kLogMeIn = 0x200000;
inline constexpr std::uint32_t kOwnGeneralWireless = 0x2000000;
inline constexpr std::uint32_t kDriverTooOld = 0x4000000;
// Wireless adapters that answer the usual queries only.
inline constexpr std::uint32_t kNoPrivateQueries =
    kGenericWireless | kOwnGenericWireless | k11ad | kOwnGeneralWireless;
static_assert(kNoPrivateQueries == 0x2140400);
}  // namespace adapter_class

// LBAdapterSlot::state; runBits has the same up, down and not managed.
namespace slot_state {
inline constexpr std::uint8_t kUp = 1;
inline constexpr std::uint8_t kDown = 2;
inline constexpr std::uint8_t kPpp = 4;
inline constexpr std::uint8_t kNotManaged = 16;
inline constexpr std::uint8_t kKept = 128;  // the adapter's coming up is no news to the driver
}  // namespace slot_state

// LBAdapterSlot::networkFlags; category has the first two.
namespace network_flag {
inline constexpr std::uint32_t kPublic = 1;
inline constexpr std::uint32_t kPrivate = 2;
inline constexpr std::uint32_t kDomain = 4;
inline constexpr std::uint32_t kInternet = 8;
}  // namespace network_flag

inline constexpr std::uint32_t kAttention = 256;  // LBAdapterSlot::attention

// What the driver has to hear of an adapter: the value of a notification.
namespace change {
inline constexpr std::uint32_t kAddresses = 1;  // or its gateway
inline constexpr std::uint32_t kDown = 2;
inline constexpr std::uint32_t kMoved = 4;  // the gateway, while the driver uses the adapter
inline constexpr std::uint32_t kSpeed = 8;
inline constexpr std::uint32_t kNetwork = 256;
}  // namespace change

// The engine's state word.
namespace engine_state {
inline constexpr std::uint32_t kNoDevice = 1;
inline constexpr std::uint32_t kControlFailed = 2;
inline constexpr std::uint32_t kHandshake = 4;
inline constexpr std::uint32_t kDeviceHeld = 8;
inline constexpr std::uint32_t kDriverReady = 16;
inline constexpr std::uint32_t kRefused = 32;
inline constexpr std::uint32_t kNotYet = 64;
}  // namespace engine_state

inline constexpr std::uint32_t kStartOwed = 1;  // in the word of what is owed to the driver

// The names of the set bits with a blank between them, a bit without a name in hexadecimal; "-" for
// none.
WString ClassFlagWords(std::uint32_t flags);
WString SlotStateWords(std::uint8_t state);
WString NetworkFlagWords(std::uint32_t flags);
WString ChangeBitWords(std::uint32_t bits);
WString EngineStateWords(std::uint32_t state);

}  // namespace corvane
