#pragma once
// What kind of adapter something is, by its interface type and the words of its description, which
// is all that the platform tells. Pure.

#include <cstdint>

#include "engine/engine_settings.h"
#include "foundation/text.h"

namespace corvane {

struct LBAdapterClass {
  std::uint32_t classFlags = 0;
  std::uint32_t baseFlags = 0;
  WStringView name;  // the description or the model's prefix, cut; for finding it among interfaces
  std::uint8_t state = 0;  // slot_state::kNotManaged where it holds
  bool managed = false;    // the engine may steer over it
  bool report = true;      // it gets a slot at all
  bool tunnel = false;
  bool wifiDirect = false;
  bool hyperV = false;
  bool ppp = false;
  bool is11ad = false;
  bool mobile = false;
  bool needsVersionCheck = false;
};

inline constexpr std::size_t kNameChars = 49;      // 98 bytes
inline constexpr std::size_t kLongNameChars = 95;  // of the maker's wireless adapters

// `name` lies in `description` or in a table.
LBAdapterClass LBClassifyAdapter(WStringView description, std::uint32_t ifType,
                                 const LBSettings& settings);

// The maker's own models: flags, name and management of an adapter whose description begins with
// the maker's name. Its state bit is up to the caller.
void LBClassifyOwnAdapter(WStringView description, std::uint32_t ifType, const LBSettings& settings,
                          LBAdapterClass* adapter);

}  // namespace corvane
