#include "corvane_lab/oracle.h"

#include <algorithm>

namespace corvane::lab {

namespace {

constexpr std::size_t kSilentSeconds = 3;  // after which a link is lost
constexpr double kFirstShare = 0.4;        // of the second in which a move of 1.6 s ends
constexpr double kLeastGain = 1e-6;  // for which it moves: of two equal ways it takes the calm

// The best way of one adapter beside the others, whose ways are given. Value[k][s] is what can
// still be gained from second k on in state s: on access point s, or without a link in state `off`.
class OneAdapter {
 public:
  OneAdapter(const Truth& truth, const PolicyTrace& others, std::size_t adapter, Measure measure)
      : m_Truth(truth),
        m_Air(truth.adapters[adapter]),
        m_Others(others),
        m_Adapter(adapter),
        m_Measure(measure),
        m_Off(truth.accessPoints) {}

  AdapterTrace Best(int start) {
    const std::size_t states = m_Off + 1, seconds = m_Truth.seconds;
    m_Next.assign(seconds * states, 0);
    std::vector<double> after(states), later(states), now(states);  // of k + 1, k + 2 and k
    for (std::size_t k = seconds; k-- > 0;) {
      Decide(k, after, later, &now);
      later = after;
      after = now;
    }
    const bool on = start != kNoLink && m_Air.heard[static_cast<std::size_t>(start)][0];
    return Follow(on ? static_cast<std::size_t>(start) : m_Off);
  }

 private:
  double Gain(std::size_t ap, std::size_t second) const {
    if (second >= m_Truth.seconds || !m_Air.heard[ap][second]) return 0.0;
    const double own = m_Air.mbps[ap][second];
    double gain = WorthOf(m_Measure, own);
    for (std::size_t i = 0; i < m_Others.size(); ++i) {
      if (i == m_Adapter || m_Others[i].At(second * 1000 + 500) != static_cast<int>(ap)) continue;
      const double theirs = m_Truth.adapters[i].mbps[ap][second];
      gain =
          WorthOf(m_Measure, own / 2) + WorthOf(m_Measure, theirs / 2) - WorthOf(m_Measure, theirs);
    }
    return gain;
  }

  // Whether a move that begins in this second ends on the access point.
  bool CanArrive(std::size_t ap, std::size_t second) const {
    return second + 1 < m_Truth.seconds && m_Air.heard[ap][second] && m_Air.letsIn[ap][second] &&
           m_Air.heard[ap][second + 1] && m_Air.letsIn[ap][second + 1];
  }

  bool Lost(std::size_t ap, std::size_t second) const {
    for (std::size_t back = 0; back < kSilentSeconds; ++back) {
      if (back > second || m_Air.heard[ap][second - back]) return false;
    }
    return true;
  }

  bool InPhase(std::size_t second) const { return second < m_Truth.seconds && m_Air.busy[second]; }

  void Decide(std::size_t k, const std::vector<double>& after, const std::vector<double>& later,
              std::vector<double>* now) {
    // The two best places to move to: nobody moves to where he is.
    std::size_t best = m_Off, second = m_Off;
    std::vector<double>& value = m_Arrivals;
    value.assign(m_Off + 1, -1.0);
    for (std::size_t ap = 0; ap < m_Off; ++ap) {
      if (!CanArrive(ap, k)) continue;
      value[ap] = kFirstShare * Gain(ap, k + 1) + later[ap];
      if (value[ap] > value[best]) {
        second = best;
        best = ap;
      } else if (value[ap] > value[second]) {
        second = ap;
      }
    }
    const bool calm = !InPhase(k) && !InPhase(k + 1);
    for (std::size_t state = 0; state <= m_Off; ++state) {
      const bool living = state != m_Off && m_Air.heard[state][k];
      std::size_t choice = state != m_Off && Lost(state, k) ? m_Off : state;
      double most = choice == m_Off ? after[m_Off] : Gain(state, k) + after[state];
      const std::size_t to = best == state ? second : best;
      // To wait for a better one without a link, as traffic would hold it on a poorer one, is no
      // way for a user.
      const bool must = state == m_Off && to != m_Off;
      if ((!living || calm) && to != m_Off && (must || value[to] > most + kLeastGain)) {
        most = value[to];
        choice = to;
      }
      (*now)[state] = most;
      m_Next[k * (m_Off + 1) + state] = static_cast<std::uint16_t>(choice);
    }
  }

  AdapterTrace Follow(std::size_t state) const {
    AdapterTrace trace;
    if (state != m_Off) trace.links.push_back({0, static_cast<int>(state)});
    for (std::size_t k = 0; k < m_Truth.seconds;) {
      const std::size_t next = m_Next[k * (m_Off + 1) + state];
      if (next == state) {
        ++k;
        continue;
      }
      if (state != m_Off) trace.links.push_back({k * 1000, kNoLink});
      if (next != m_Off) {
        trace.links.push_back({k * 1000 + kMoveMs, static_cast<int>(next)});
        ++k;
      }
      state = next;
      ++k;
    }
    return trace;
  }

  const Truth& m_Truth;
  const AdapterTruth& m_Air;
  const PolicyTrace& m_Others;
  const std::size_t m_Adapter;
  const Measure m_Measure;
  const std::size_t m_Off;
  std::vector<std::uint16_t> m_Next;  // by second and state
  std::vector<double> m_Arrivals;
};

double WorthOfAll(const Truth& truth, const PolicyTrace& trace, Measure measure) {
  return ScoreTrace(truth, trace).worth[static_cast<std::size_t>(measure)];
}

}  // namespace

PolicyTrace OracleTrace(const Truth& truth, const std::vector<int>& start, Measure measure) {
  constexpr int kMostTurns = 4;
  const std::size_t count = truth.adapters.size();
  PolicyTrace best;
  double most = -1.0;
  // Who begins has the choice, so each one does once.
  for (std::size_t first = 0; first < count; ++first) {
    PolicyTrace trace(count);
    for (int turn = 0; turn < (count > 1 ? kMostTurns : 1); ++turn) {
      for (std::size_t i = 0; i < count; ++i) {
        const std::size_t adapter = (first + i) % count;
        trace[adapter] = OneAdapter(truth, trace, adapter, measure).Best(start[adapter]);
      }
      const double worth = WorthOfAll(truth, trace, measure);
      if (worth <= most) break;
      most = worth;
      best = trace;
    }
  }
  return best;
}

}  // namespace corvane::lab
