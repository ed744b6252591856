#pragma once
// What to do with somebody else who moves the adapter: a driver that roams by itself, the system.
// No fight, and no surrender. Pure, but for the memory itself; ticks in ms.

#include <cstdint>

namespace corvane::balanced {

class Quarrel {
 public:
  // The adapter was moved within its network by somebody else; true when that undid a move of ours.
  bool OnOutsideRoam(std::uint64_t now);
  void OnOwnMove(std::uint64_t now) { m_OwnMove = now; }
  // Leaves the adapter where the other has put it: 5 s at first, twice as long after each move that
  // undid one of ours, 40 s at most. An hour of peace forgives all. A bad link is left whoever
  // chose it. Where the other did not let us stay is remembered longer, among the failures.
  bool Holds(std::uint64_t now, bool badLink) const { return !badLink && now < m_Until; }

 private:
  std::uint32_t m_Quarrels = 0;
  std::uint64_t m_Last = 0, m_OwnMove = 0, m_Until = 0;
};

}  // namespace corvane::balanced
