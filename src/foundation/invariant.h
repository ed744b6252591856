#pragma once

namespace corvane {

// What broke, as an error in the log; and the simulated machine ends its run.
void OnBrokenInvariant(const char* text) noexcept;

// What holds whatever comes from outside, as long as this program itself is right. Where it does
// not, the service says so and goes on as well as it can: a PC without its Wi-Fi helps nobody.
// `text`: static, what should have held. Costs one branch.
inline void Invariant(bool holds, const char* text) noexcept {
  if (!holds) [[unlikely]]
    OnBrokenInvariant(text);
}

}  // namespace corvane
