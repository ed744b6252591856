#include "platform/sim/kernel/sim_locks.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <type_traits>

namespace corvane::platform::sim {

namespace {

// A thread that waits for a lock; lives on that thread's stack.
struct LockWaiter {
  SimThread* thread = nullptr;
  LockWaiter* next = nullptr;
};

// What the storage of a critical section holds.
struct SectionState {
  static constexpr std::uint64_t kInitialized = 0x6C6F636B2E73696D;

  std::uint64_t mark = kInitialized;
  SimThread* owner = nullptr;
  std::uint32_t count = 0;
  LockWaiter* first = nullptr;  // has waited longest
  LockWaiter* last = nullptr;
};
static_assert(sizeof(SectionState) <= sizeof(CRITICAL_SECTION::storage));
static_assert(std::is_trivially_destructible_v<SectionState>);

SectionState& StateOf(CRITICAL_SECTION& section) {
  return *std::launder(reinterpret_cast<SectionState*>(section.storage));
}

const SectionState& StateOf(const CRITICAL_SECTION& section) {
  return *std::launder(reinterpret_cast<const SectionState*>(section.storage));
}

bool IsInitialized(const CRITICAL_SECTION& section) {
  std::uint64_t mark;
  std::memcpy(&mark, section.storage, sizeof mark);
  return mark == SectionState::kInitialized;
}

std::string Quoted(const CRITICAL_SECTION& section) {
  return std::string("'") + section.name + "'";
}

class LockWait final : public IWaitText {
 public:
  explicit LockWait(const CRITICAL_SECTION& section) : m_Section(section) {}
  std::string WaitText() const override {
    const SimThread* owner = StateOf(m_Section).owner;
    return "waits for lock " + Quoted(m_Section) +
           (owner ? " of thread " + std::to_string(owner->id) : "");
  }

 private:
  const CRITICAL_SECTION& m_Section;
};

}  // namespace

void SimLocks::Initialize(CRITICAL_SECTION* section, const char* name, int rank) {
  new (section->storage) SectionState;
  section->name = name ? name : "";
  section->rank = rank;
}

void SimLocks::Enter(CRITICAL_SECTION* section) {
  m_Scheduler.Call();
  if (!IsInitialized(*section)) {
    m_Scheduler.Report("A lock is taken that was not initialised: " + Quoted(*section) + ", by " +
                       m_Scheduler.Describe(m_Scheduler.Current()));
    Initialize(section, section->name, section->rank);
  }
  SimThread& self = m_Scheduler.Current();
  SectionState& state = StateOf(*section);
  if (state.owner == &self) {
    ++state.count;
    return;
  }
  // Waiting would let others go on; what is read for the log under somebody's lock stands still, as
  // its owner does.
  if (state.owner && self.forLog != 0) return;
  if (section->rank != 0) CheckOrder(self, *section);
  if (state.owner && !m_Scheduler.IsBroken()) WaitFor(self, *section);
  if (state.owner && state.owner != &self) return;  // the run is broken: no lock blocks
  state.owner = &self;
  state.count = 1;
  self.held.push_back(section);
}

// Returns with the lock handed over, or with the run broken.
void SimLocks::WaitFor(SimThread& self, CRITICAL_SECTION& section) {
  CheckCircle(self, section);
  if (m_Scheduler.IsBroken()) return;
  SectionState& state = StateOf(section);
  LockWaiter waiter{&self};
  (state.last ? state.last->next : state.first) = &waiter;
  state.last = &waiter;
  const LockWait wait(section);
  if (m_Scheduler.Block(SimThread::kNever, wait, false, &section) == Wake::kSignalled) return;
  // Broken: nobody takes this waiter out of the queue.
  LockWaiter* before = nullptr;
  for (LockWaiter* at = state.first; at && at != &waiter; at = at->next) before = at;
  (before ? before->next : state.first) = waiter.next;
  if (state.last == &waiter) state.last = before;
}

void SimLocks::Leave(CRITICAL_SECTION* section) {
  m_Scheduler.CountCall();
  SimThread& self = m_Scheduler.Current();
  SectionState& state = StateOf(*section);
  if (!IsInitialized(*section) || state.owner != &self) {
    if (!m_Scheduler.IsBroken() && self.forLog == 0) {
      m_Scheduler.Report("A lock is left by a thread that does not hold it: " + Quoted(*section) +
                         ", " + m_Scheduler.Describe(self));
    }
    return;
  }
  if (--state.count > 0) return;
  if (self.held.back() == section) {
    self.held.pop_back();
  } else {
    std::erase(self.held, section);
  }
  LockWaiter* next = state.first;
  if (next && next->thread->state == SimThread::State::kWaiting) {
    state.first = next->next;
    if (!state.first) state.last = nullptr;
    state.owner = next->thread;
    state.count = 1;
    m_Scheduler.MakeReady(*next->thread, Wake::kSignalled);
  } else {
    state.owner = nullptr;
  }
  m_Scheduler.InterleavePoint();
}

void SimLocks::Delete(CRITICAL_SECTION* section) {
  if (!IsInitialized(*section)) return;
  SimThread& self = m_Scheduler.Current();
  SectionState& state = StateOf(*section);
  if ((state.owner && state.owner != &self) || state.first) {
    m_Scheduler.Report("A lock is deleted that is in use: " + Quoted(*section) + ", by " +
                       m_Scheduler.Describe(self) + "\n" + m_Scheduler.DescribeAll());
  }
  if (state.owner) std::erase(state.owner->held, section);
  state = SectionState{};
  state.mark = 0;
}

void SimLocks::CheckOrder(const SimThread& self, const CRITICAL_SECTION& section) {
  for (const CRITICAL_SECTION* held : self.held) {
    if (held->rank >= section.rank) {
      m_Scheduler.Report("Lock order: " + Quoted(section) + " (rank " +
                         std::to_string(section.rank) + ") is taken under " + Quoted(*held) +
                         " (rank " + std::to_string(held->rank) + ") by " +
                         m_Scheduler.Describe(self));
      return;
    }
  }
}

// A thread that has been handed its lock, and has not run since, waits for nothing any more.
void SimLocks::CheckCircle(const SimThread& self, const CRITICAL_SECTION& section) {
  const SimThread* owner = StateOf(section).owner;
  while (owner->state == SimThread::State::kWaiting && owner->waitsForLock) {
    const CRITICAL_SECTION& lock = *owner->waitsForLock;
    owner = StateOf(lock).owner;
    if (!owner) return;
    if (owner == &self) {
      m_Scheduler.Break("Dead end: threads wait for each other's locks; thread " +
                        std::to_string(self.id) + " asks for " + Quoted(section) + ".\n" +
                        m_Scheduler.DescribeAll());
      return;
    }
  }
}

}  // namespace corvane::platform::sim
