#include "platform/windows/pipe_calls.h"

#include <algorithm>

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

namespace {

// The calling thread, as long as it or one of its calls lives. A handle of its own, as the pseudo
// handle means another thread to each.
const std::shared_ptr<void>& OwnThread() {
  static thread_local const std::shared_ptr<void> own = [] {
    HANDLE handle = nullptr;
    const HANDLE process = ::GetCurrentProcess();
    ::DuplicateHandle(process, ::GetCurrentThread(), process, &handle, SYNCHRONIZE, FALSE, 0);
    return std::shared_ptr<void>(handle, [](HANDLE it) {
      if (it) ::CloseHandle(it);
    });
  }();
  return own;
}

// A thread takes its operations with it: none of them writes behind its end (CreateThread's and
// ReadFileEx's contract: I/O of a thread that ends is cancelled).
bool HasThreadEnded(const PipeCalls::Call& call) {
  return ::WaitForSingleObject(call.thread.get(), 0) == WAIT_OBJECT_0;
}

// The system, and no code of this program, writes the word.
bool IsPending(const PipeCalls::Call& call) {
  const volatile std::uintptr_t& state = call.overlapped->Internal;
  return !call.told && state == STATUS_PENDING && !HasThreadEnded(call);
}

}  // namespace

PipeCalls& PipeCalls::Instance() {
  static PipeCalls instance;
  return instance;
}

PipeCalls::Place PipeCalls::Begin(HANDLE pipe, OVERLAPPED* overlapped,
                                  OVERLAPPED_COMPLETION_ROUTINE completion) {
  const auto& own = OwnThread();
  const std::lock_guard lock(m_Mutex);
  DropLost();
  return m_Calls.insert(
      m_Calls.end(),
      {.pipe = pipe, .overlapped = overlapped, .completion = completion, .thread = own});
}

void PipeCalls::Retract(Place call) {
  const std::lock_guard lock(m_Mutex);
  m_Calls.erase(call);
}

DWORD PipeCalls::Queue(HANDLE thread, PAPCFUNC routine, std::uintptr_t data) {
  const std::shared_ptr<void> target(thread, [](HANDLE it) { ::CloseHandle(it); });
  const std::lock_guard lock(m_Mutex);
  DropLost();
  const Place call =
      m_Calls.insert(m_Calls.end(), {.routine = routine, .data = data, .thread = target});
  const auto address = reinterpret_cast<std::uintptr_t>(&*call);
  if (::QueueUserAPC([](std::uintptr_t it) { OnQueued(it); }, thread, address) != 0)
    return ERROR_SUCCESS;
  const DWORD error = ::GetLastError();
  m_Calls.erase(call);
  return error;
}

// Calls that nobody will hear of: what was cancelled, and what was queued to a thread that has
// ended. Waits for no more than a glance at each such thread.
void PipeCalls::DropLost() {
  const auto isLost = [](const Call& call) {
    return (call.cancelled || call.routine) && HasThreadEnded(call);
  };
  std::erase_if(m_Calls, isLost);
  std::erase_if(m_Told, isLost);
}

// Calls of one thread come in the order of their ends, so that the oldest one of an address is the
// one that is told of: an address may be in use again while a cancelled call has not been told.
void PipeCalls::OnCompleted(DWORD error, DWORD bytes, OVERLAPPED* overlapped) noexcept {
  PipeCalls& self = Instance();
  const HANDLE own = OwnThread().get();
  const std::lock_guard lock(self.m_Mutex);
  const auto call = std::ranges::find_if(self.m_Calls, [&](const Call& it) {
    return it.overlapped == overlapped && it.thread.get() == own;
  });
  if (call == self.m_Calls.end()) return;
  call->told = true;
  call->error = error;
  call->bytes = bytes;
  if (call->cancelled) {
    self.m_Calls.erase(call);
  } else {
    self.m_Told.splice(self.m_Told.end(), self.m_Calls, call);
  }
}

void PipeCalls::OnQueued(std::uintptr_t address) noexcept {
  PipeCalls& self = Instance();
  const std::shared_ptr<void> own = OwnThread();
  const std::lock_guard lock(self.m_Mutex);
  const auto call = std::ranges::find_if(self.m_Calls, [&](const Call& it) {
    return reinterpret_cast<std::uintptr_t>(&it) == address;
  });
  if (call == self.m_Calls.end()) return;
  call->told = true;
  call->thread = own;
  self.m_Told.splice(self.m_Told.end(), self.m_Calls, call);
}

std::size_t PipeCalls::CountTold() const {
  const HANDLE own = OwnThread().get();
  const std::lock_guard lock(m_Mutex);
  return static_cast<std::size_t>(
      std::ranges::count_if(m_Told, [&](const Call& it) { return it.thread.get() == own; }));
}

bool PipeCalls::TakeTold(Call* call) {
  const HANDLE own = OwnThread().get();
  const std::lock_guard lock(m_Mutex);
  const auto found =
      std::ranges::find_if(m_Told, [&](const Call& it) { return it.thread.get() == own; });
  if (found == m_Told.end()) return false;
  *call = std::move(*found);
  m_Told.erase(found);
  return true;
}

void PipeCalls::Cancel(HANDLE pipe) {
  const std::lock_guard lock(m_Mutex);
  std::erase_if(m_Told, [pipe](const Call& it) { return it.pipe == pipe && it.completion; });
  for (Call& call : m_Calls) {
    if (call.pipe == pipe && call.completion) call.cancelled = true;
  }
}

bool PipeCalls::HasEnded(HANDLE pipe) const {
  const std::lock_guard lock(m_Mutex);
  return std::ranges::none_of(m_Calls, [pipe](const Call& it) {
    return it.completion && it.pipe == pipe && it.cancelled && IsPending(it);
  });
}

void PipeCalls::Forget(HANDLE pipe) {
  const std::lock_guard lock(m_Mutex);
  for (Call& call : m_Calls) {
    if (call.pipe == pipe && call.cancelled) call.pipe = nullptr;
  }
}

bool PipeCalls::Uses(const void* memory, std::size_t size) const {
  const auto* const begin = static_cast<const char*>(memory);
  const auto liesInside = [&](const Call& call) {
    const auto* const at = reinterpret_cast<const char*>(call.overlapped);
    return call.completion && at >= begin && at < begin + size;
  };
  const std::lock_guard lock(m_Mutex);
  return std::ranges::any_of(m_Told, liesInside) ||
         std::ranges::any_of(m_Calls, [&](const Call& call) {
           return liesInside(call) && (!call.cancelled || IsPending(call));
         });
}

}  // namespace corvane::platform::windows
