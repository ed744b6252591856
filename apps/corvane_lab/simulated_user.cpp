#include "corvane_lab/simulated_user.h"

#include "settings/global_config_container.h"
#include "store/value_names.h"

namespace corvane::lab {

namespace {

constexpr std::uint64_t kFastestAnswerMs = 5000, kSlowestAnswerMs = 60'000;
constexpr std::uint32_t kNoDelayMs = 15'000;  // the window that an accepted suggestion opens

}  // namespace

void SimulatedUser::Look(std::uint64_t nowMs) {
  for (int i = 0;; ++i) {
    const auto config = CGlobalConfigContainer::GetInstance().FindIFConfig(i);
    if (!config) return;
    if (m_Sights.size() <= static_cast<std::size_t>(i)) m_Sights.emplace_back();
    Sight& sight = m_Sights[static_cast<std::size_t>(i)];
    WString bssid;
    if (!config->GetString(value::kSuggestedNetworkBSSID, &bssid)) continue;
    if (bssid != sight.bssid && !bssid.empty()) {
      const bool yes = m_Random.Below(2) == 1;
      sight.bssid = bssid;
      sight.answerMs =
          yes ? nowMs + kFastestAnswerMs + m_Random.Below(kSlowestAnswerMs - kFastestAnswerMs) : 0;
    } else if (bssid.empty() && sight.answerMs == 0) {
      sight.bssid.clear();  // the same access point suggested anew is a new question
    } else if (sight.answerMs != 0 && nowMs >= sight.answerMs) {
      sight.answerMs = 0;
      config->OpenNoDelay(kNoDelayMs);
      config->m_accept_suggestion = true;
    }
  }
}

}  // namespace corvane::lab
