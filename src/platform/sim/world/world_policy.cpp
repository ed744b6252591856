#include "platform/sim/world/world_policy.h"

#include <algorithm>
#include <array>

namespace corvane::platform::sim {

namespace {

constexpr char16_t kValueName[] = u"PolicyProfile";
constexpr std::array<std::string_view, 2> kNames{"classic", "balanced"};  // by its number

}  // namespace

bool IsPolicyProfile(std::string_view name) {
  return std::ranges::find(kNames, name) != kNames.end();
}

void SetPolicyProfile(World* world, std::string_view name) {
  std::erase_if(world->registry, [](const RegistryWrite& write) {
    return write.key == kHomeKey && write.name == kValueName;
  });
  RegistryWrite write;
  write.key = kHomeKey;
  write.name = kValueName;
  write.number = static_cast<std::uint64_t>(std::ranges::find(kNames, name) - kNames.begin());
  world->registry.push_back(std::move(write));
}

}  // namespace corvane::platform::sim
