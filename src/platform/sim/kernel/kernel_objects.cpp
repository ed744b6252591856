#include "platform/sim/kernel/kernel_objects.h"

#include <algorithm>

namespace corvane::platform::sim {

namespace {

// A handle is slot and generation, with the two low bits clear as in Windows. Slots are counted
// from 1, so that no handle is null.
constexpr unsigned kTagBits = 2;
constexpr unsigned kSlotBits = 20;
constexpr std::uintptr_t kSlotMask = (std::uintptr_t{1} << kSlotBits) - 1;

}  // namespace

// A wait in progress: it lives on the waiting thread's stack, and every object of it points to it.
class WaitRecord final : public IWaitText {
 public:
  WaitRecord(SimThread& thread, bool all) : m_Thread(thread), m_bAll(all) {}
  ~WaitRecord() {
    if (m_bEntered) {
      for (const auto& object : m_Objects) std::erase(object->waiters, this);
    }
  }
  WaitRecord(const WaitRecord&) = delete;
  WaitRecord& operator=(const WaitRecord&) = delete;

  void Add(const std::shared_ptr<KernelObject>& object) { m_Objects.push_back(object); }
  void Enter() {
    m_bEntered = true;
    for (const auto& object : m_Objects) object->waiters.push_back(this);
  }

  // Takes the first signalled object, or all of them; whether the wait is over.
  bool TryTake() {
    const auto signalled = [](const auto& object) { return object->IsSignalled(); };
    if (m_bAll) {
      if (!std::ranges::all_of(m_Objects, signalled)) return false;
      for (const auto& object : m_Objects) object->Take();
      return true;
    }
    const auto first = std::ranges::find_if(m_Objects, signalled);
    if (first == m_Objects.end()) return false;
    (*first)->Take();
    m_Index = static_cast<DWORD>(first - m_Objects.begin());
    return true;
  }

  SimThread& Thread() const { return m_Thread; }
  // False for one that has timed out or was abandoned, and has not run since.
  bool IsWaiting() const { return m_Thread.state == SimThread::State::kWaiting; }
  DWORD Index() const { return m_Index; }

  std::string WaitText() const override {
    std::string text = m_bAll ? "waits for all of" : "waits for";
    for (const auto& object : m_Objects) {
      static constexpr const char* kKinds[] = {" event '", " semaphore '", " thread '"};
      text += kKinds[static_cast<std::size_t>(object->kind)] + object->name + "'";
    }
    return text;
  }

 private:
  SimThread& m_Thread;
  const bool m_bAll;
  bool m_bEntered = false;
  DWORD m_Index = 0;
  std::vector<std::shared_ptr<KernelObject>> m_Objects;
};

KernelObjects::KernelObjects(Scheduler& scheduler) : m_Scheduler(scheduler) {
  m_Scheduler.SetThreadEnd(this);
}

KernelObjects::~KernelObjects() { m_Scheduler.SetThreadEnd(nullptr); }

BOOL KernelObjects::Fail(DWORD code) {
  m_Scheduler.Current().lastError = code;
  return FALSE;
}

std::size_t KernelObjects::OpenHandles() const {
  return static_cast<std::size_t>(std::ranges::count_if(
      m_Slots, [](const Slot& slot) { return slot.object && !slot.object->ofDevices; }));
}

HANDLE KernelObjects::Open(std::shared_ptr<KernelObject> object) {
  if (m_FreeSlots.empty()) {
    if (m_Slots.size() == kSlotMask) {
      Fail(ERROR_NOT_ENOUGH_MEMORY);
      return nullptr;
    }
    m_Slots.emplace_back();
    m_FreeSlots.push_back(static_cast<std::uint32_t>(m_Slots.size()));
  }
  const std::uint32_t number = m_FreeSlots.back();
  m_FreeSlots.pop_back();
  Slot& slot = m_Slots[number - 1];
  slot.object = std::move(object);
  const std::uintptr_t value = (std::uintptr_t{slot.generation} << kSlotBits | number) << kTagBits;
  return reinterpret_cast<HANDLE>(value);
}

const std::shared_ptr<KernelObject>* KernelObjects::Find(HANDLE handle) const {
  const auto value = reinterpret_cast<std::uintptr_t>(handle);
  const std::uintptr_t number = value >> kTagBits & kSlotMask;
  const bool formed = value % (1U << kTagBits) == 0 && number >= 1 && number <= m_Slots.size();
  if (!formed) return nullptr;
  const Slot& slot = m_Slots[number - 1];
  const bool open = slot.object && value >> (kTagBits + kSlotBits) == slot.generation;
  return open ? &slot.object : nullptr;
}

KernelObject* KernelObjects::Find(HANDLE handle, KernelObject::Kind kind) const {
  const auto* object = Find(handle);
  return object && (*object)->kind == kind ? object->get() : nullptr;
}

bool KernelObjects::IsThread(HANDLE handle) const {
  return Find(handle, KernelObject::Kind::kThread) != nullptr;
}

HANDLE KernelObjects::CreateThread(ThreadApi::ThreadProc start, void* parameter, const char* name,
                                   bool ofDevices, DWORD* threadId) {
  auto object = std::make_shared<KernelObject>();
  object->kind = KernelObject::Kind::kThread;
  object->name = name ? name : "";
  object->ofDevices = ofDevices;
  object->stays = true;
  object->exitCode = kStillActive;
  HANDLE handle = Open(object);
  if (!handle) return nullptr;
  object->thread = m_Scheduler.Start(start, parameter, name, ofDevices, object);
  if (!object->thread) {
    CloseHandle(handle);
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  if (threadId) *threadId = object->thread->id;
  return handle;
}

BOOL KernelObjects::TerminateThread(HANDLE handle, DWORD exitCode) {
  KernelObject* object = Find(handle, KernelObject::Kind::kThread);
  if (!object) return Fail(ERROR_INVALID_HANDLE);
  if (object->IsSignalled()) return TRUE;
  object->exitCode = exitCode;
  object->count = 1;
  m_Scheduler.Abandon(*object->thread);
  Serve(*object);
  return TRUE;
}

void KernelObjects::OnThreadEnd(SimThread& thread, DWORD exitCode) {
  KernelObject& object = *thread.object;
  object.thread = nullptr;
  if (object.IsSignalled()) return;  // given up earlier
  object.exitCode = exitCode;
  object.count = 1;
  Serve(object);
}

BOOL KernelObjects::GetExitCodeThread(HANDLE handle, DWORD* exitCode) {
  const KernelObject* object = Find(handle, KernelObject::Kind::kThread);
  if (!object) return Fail(ERROR_INVALID_HANDLE);
  *exitCode = object->exitCode;
  return TRUE;
}

HANDLE KernelObjects::CreateEvent(bool manualReset, bool initialState, const char* name,
                                  bool ofDevices) {
  auto object = std::make_shared<KernelObject>();
  object->kind = KernelObject::Kind::kEvent;
  object->name = name ? name : "";
  object->ofDevices = ofDevices;
  object->stays = manualReset;
  object->count = initialState ? 1 : 0;
  return Open(std::move(object));
}

BOOL KernelObjects::SetEvent(HANDLE handle) {
  KernelObject* event = Find(handle, KernelObject::Kind::kEvent);
  if (!event) return Fail(ERROR_INVALID_HANDLE);
  event->count = 1;
  Serve(*event);
  return TRUE;
}

BOOL KernelObjects::ResetEvent(HANDLE handle) {
  KernelObject* event = Find(handle, KernelObject::Kind::kEvent);
  if (!event) return Fail(ERROR_INVALID_HANDLE);
  event->count = 0;
  return TRUE;
}

HANDLE KernelObjects::CreateSemaphore(LONG initialCount, LONG maximumCount, const char* name,
                                      bool ofDevices) {
  if (maximumCount < 1 || initialCount < 0 || initialCount > maximumCount) {
    Fail(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  auto object = std::make_shared<KernelObject>();
  object->kind = KernelObject::Kind::kSemaphore;
  object->name = name ? name : "";
  object->ofDevices = ofDevices;
  object->count = initialCount;
  object->maximum = maximumCount;
  return Open(std::move(object));
}

BOOL KernelObjects::ReleaseSemaphore(HANDLE handle, LONG releaseCount, LONG* previousCount) {
  KernelObject* semaphore = Find(handle, KernelObject::Kind::kSemaphore);
  if (!semaphore) return Fail(ERROR_INVALID_HANDLE);
  if (releaseCount < 1) return Fail(ERROR_INVALID_PARAMETER);
  if (releaseCount > semaphore->maximum - semaphore->count) return Fail(ERROR_TOO_MANY_POSTS);
  if (previousCount) *previousCount = semaphore->count;
  semaphore->count += releaseCount;
  Serve(*semaphore);
  return TRUE;
}

BOOL KernelObjects::CloseHandle(HANDLE handle) {
  if (!Find(handle)) return Fail(ERROR_INVALID_HANDLE);
  const auto number =
      static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle) >> kTagBits & kSlotMask);
  Slot& slot = m_Slots[number - 1];
  slot.object.reset();
  ++slot.generation;
  m_FreeSlots.push_back(number);
  return TRUE;
}

void KernelObjects::Serve(KernelObject& object) {
  for (WaitRecord* waiter : object.waiters) {
    if (!object.IsSignalled()) return;
    if (waiter->IsWaiting() && waiter->TryTake()) {
      m_Scheduler.MakeReady(waiter->Thread(), Wake::kSignalled);
    }
  }
}

void KernelObjects::QueueCall(SimThread& thread, QueuedCall call) {
  thread.calls.push_back(std::move(call));
  if (thread.state == SimThread::State::kWaiting && thread.alertable) {
    m_Scheduler.MakeReady(thread, Wake::kAlerted);
  }
}

BOOL KernelObjects::QueueCall(HANDLE handle, QueuedCall call) {
  const KernelObject* object = Find(handle, KernelObject::Kind::kThread);
  if (!object) return Fail(ERROR_INVALID_HANDLE);
  if (object->IsSignalled()) return Fail(ERROR_GEN_FAILURE);
  QueueCall(*object->thread, std::move(call));
  return TRUE;
}

void KernelObjects::ForgetCalls(SimThread& thread, const void* owner) {
  std::erase_if(thread.calls, [owner](const QueuedCall& call) { return call.owner == owner; });
}

bool KernelObjects::MakeCalls(SimThread& self) {
  if (self.calls.empty()) return false;
  while (!self.calls.empty()) {
    const QueuedCall call = std::move(self.calls.front());
    self.calls.pop_front();
    call.run();
  }
  return true;
}

DWORD KernelObjects::Wait(DWORD count, const HANDLE* objects, bool waitAll, DWORD milliseconds,
                          bool alertable) {
  SimThread& self = m_Scheduler.Current();
  const std::uint64_t deadline = m_Scheduler.DeadlineIn(milliseconds);
  for (;;) {
    const DWORD result = WaitOnce(count, objects, waitAll, milliseconds, deadline, alertable);
    if (result != kWaitIoCompletion) return result;
    if (MakeCalls(self)) return result;  // else they were taken back before the thread ran
  }
}

// Calls are made by the caller, once the wait is off its objects' lists.
DWORD KernelObjects::WaitOnce(DWORD count, const HANDLE* objects, bool waitAll, DWORD milliseconds,
                              std::uint64_t deadline, bool alertable) {
  SimThread& self = m_Scheduler.Current();
  if (count == 0 || count > kMaximumWaitObjects) {
    Fail(ERROR_INVALID_PARAMETER);
    return WAIT_FAILED;
  }
  WaitRecord record(self, waitAll);
  for (DWORD i = 0; i < count; ++i) {
    const auto* object = Find(objects[i]);
    if (!object) {
      Fail(ERROR_INVALID_HANDLE);
      return WAIT_FAILED;
    }
    record.Add(*object);
  }
  if (record.TryTake()) return WAIT_OBJECT_0 + record.Index();
  if (alertable && !self.calls.empty()) return kWaitIoCompletion;
  if (milliseconds == 0) return WAIT_TIMEOUT;
  // A thread that was given up already unwinds: it may wait for a time, but not for ever.
  if (self.abandoned && milliseconds == INFINITE) return WAIT_TIMEOUT;
  // A wait for a thread's end is what destructors do, so it is not cut short by an exception.
  const bool abandonable = milliseconds == INFINITE || count > 1 || !IsThread(objects[0]);
  record.Enter();
  self.alertable = alertable;
  const Wake wake = m_Scheduler.Block(deadline, record, abandonable);
  self.alertable = false;
  if (wake == Wake::kSignalled) return WAIT_OBJECT_0 + record.Index();
  if (wake == Wake::kAlerted) return kWaitIoCompletion;
  if (wake != Wake::kTimedOut && abandonable) m_Scheduler.ThrowIfAbandoned();
  return WAIT_TIMEOUT;
}

}  // namespace corvane::platform::sim
