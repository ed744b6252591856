#include "balanced/quarrel.h"

namespace corvane::balanced {

namespace {

constexpr std::uint64_t kFirstMs = 5'000;
constexpr std::uint64_t kUndoneWithinMs = 300'000;
constexpr std::uint64_t kPeaceMs = 3'600'000;
constexpr std::uint32_t kMostDoublings = 3;

}  // namespace

bool Quarrel::OnOutsideRoam(std::uint64_t now) {
  if (now - m_Last >= kPeaceMs) m_Quarrels = 0;
  const bool undone = m_OwnMove != 0 && now - m_OwnMove < kUndoneWithinMs;
  if (undone && m_Quarrels < kMostDoublings) ++m_Quarrels;
  m_Last = now;
  m_OwnMove = 0;
  m_Until = now + (kFirstMs << m_Quarrels);
  return undone;
}

}  // namespace corvane::balanced
