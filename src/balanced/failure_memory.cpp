#include "balanced/failure_memory.h"

#include <algorithm>
#include <iterator>

namespace corvane::balanced {

namespace {

constexpr std::uint64_t kWaitMs[] = {10'000, 30'000, 60'000, 120'000, 300'000, 600'000, 1'800'000};
constexpr std::uint64_t kForgivenMs = 1'800'000;
constexpr std::uint32_t kMuchStronger = 8;  // of 100: 4 dB
constexpr std::size_t kMostKept = 256;

}  // namespace

std::uint32_t FailureMemory::StepsLeft(const Failure& failure, std::uint64_t now) {
  const std::uint64_t forgiven = (now - failure.tick) / kForgivenMs;
  return failure.steps -
         static_cast<std::uint32_t>(std::min<std::uint64_t>(failure.steps, forgiven));
}

void FailureMemory::OnFailure(const MacAddress& bssid, std::uint32_t quality, std::uint64_t now) {
  if (m_Failures.size() >= kMostKept && !m_Failures.contains(bssid)) {
    m_Failures.erase(std::min_element(
        m_Failures.begin(), m_Failures.end(),
        [](const auto& a, const auto& b) { return a.second.tick < b.second.tick; }));
  }
  Failure& failure = m_Failures[bssid];
  failure = {StepsLeft(failure, now) + 1, quality, now};
}

bool FailureMemory::IsBarred(const MacAddress& bssid, std::uint32_t quality,
                             std::uint64_t now) const {
  const auto found = m_Failures.find(bssid);
  if (found == m_Failures.end()) return false;
  const Failure& failure = found->second;
  const std::uint32_t steps = StepsLeft(failure, now);
  if (steps == 0 || quality >= failure.quality + kMuchStronger) return false;
  return now - failure.tick < kWaitMs[std::min<std::size_t>(steps, std::size(kWaitMs)) - 1];
}

}  // namespace corvane::balanced
