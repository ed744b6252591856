#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace corvane {

// PolicyProfile in the registry. Any other value counts as classic.
enum class PolicyProfileKind : std::uint32_t { kClassic = 0, kBalanced = 1 };

constexpr PolicyProfileKind PolicyProfileOf(std::uint32_t value) {
  return value == static_cast<std::uint32_t>(PolicyProfileKind::kBalanced)
             ? PolicyProfileKind::kBalanced
             : PolicyProfileKind::kClassic;
}
constexpr const char* NameOf(PolicyProfileKind kind) {
  return kind == PolicyProfileKind::kBalanced ? "balanced" : "classic";
}

constexpr std::optional<PolicyProfileKind> PolicyProfileNamed(std::string_view name) {
  for (const auto kind : {PolicyProfileKind::kClassic, PolicyProfileKind::kBalanced}) {
    if (name == NameOf(kind)) return kind;
  }
  return std::nullopt;
}

}  // namespace corvane
