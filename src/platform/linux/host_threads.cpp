#include "platform/linux/host_threads.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <system_error>
#include <thread>

#include "platform/linux/host_alerts.h"
#include "platform/linux/host_thread_objects.h"
#include "platform/pipe_api.h"

namespace corvane::platform::linux_host {

namespace {

constexpr std::chrono::milliseconds kUnwindLimit{10'000};
constexpr std::uintptr_t kThreadHandleStep = 4;  // the two low bits are clear, as on Windows

static_assert(sizeof(pthread_mutex_t) <= sizeof(CRITICAL_SECTION::storage));
static_assert(alignof(pthread_mutex_t) <= 8);

pthread_mutex_t* MutexOf(CRITICAL_SECTION* section) {
  return std::launder(reinterpret_cast<pthread_mutex_t*>(section->storage));
}

}  // namespace

struct HostThreads::Running {
  ThreadProc start;
  void* parameter;
  const char* name;
  ObjectPtr object;
  std::shared_ptr<Thread> self;
  bool ended = false;  // under the mutex
  std::thread thread = {};
};

namespace {
thread_local std::shared_ptr<void> t_Self;  // HostThreads::Thread
}

HostThreads::Thread& HostThreads::Self() {
  if (!t_Self) t_Self = std::make_shared<Thread>();
  return *static_cast<Thread*>(t_Self.get());
}

HostThreads::HostThreads(const HostTime& time) : m_Time(time) {}

HostThreads::~HostThreads() {
  {
    const std::lock_guard lock(m_Mutex);
    for (Running& running : m_Threads) {
      if (running.ended) continue;
      running.self->abandoned = true;
      running.self->Wake();
    }
  }
  const auto left = WaitForEnd(false, kUnwindLimit);
  if (!left.empty()) {
    for (const std::string& name : left) {
      std::fprintf(stderr, "corvane: thread \"%s\" does not end; the process ends without it\n",
                   name.c_str());
    }
    std::fflush(nullptr);
    std::_Exit(1);
  }
  Reap();
}

bool HostThreads::IsAbandoned() { return Self().abandoned; }

void HostThreads::ThrowIfAbandoned() {
  if (Self().abandoned && std::uncaught_exceptions() == 0) throw ThreadAbandoned{};
}

BOOL HostThreads::Fail(DWORD code) {
  Self().lastError = code;
  return FALSE;
}

HANDLE HostThreads::Open(ObjectPtr object) {
  m_LastHandle += kThreadHandleStep;
  m_Handles.emplace(m_LastHandle, std::move(object));
  return reinterpret_cast<HANDLE>(m_LastHandle);
}

HostThreads::ObjectPtr HostThreads::Find(HANDLE handle) const {
  const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(handle));
  return found == m_Handles.end() ? nullptr : found->second;
}

HostThreads::ObjectPtr HostThreads::Find(HANDLE handle, Kind kind) const {
  ObjectPtr object = Find(handle);
  return object && object->kind == kind ? object : nullptr;
}

// Ends the waits that the object's count allows.
void HostThreads::Serve(Object& object) {
  for (Wait* wait : object.waits) {
    if (!object.IsSignalled()) return;
    if (!wait->IsOver() && wait->TryTake()) wait->GetThread().Wake();
  }
}

HANDLE HostThreads::CreateThread(ThreadProc start, void* parameter, const char* name,
                                 DWORD* threadId) {
  ThrowIfAbandoned();
  Reap();
  auto self = std::make_shared<Thread>();
  auto object = std::make_shared<Object>();
  object->kind = Kind::kThread;
  object->stays = true;
  object->exitCode = kStillActive;
  object->thread = self;

  const std::lock_guard lock(m_Mutex);
  Running& running =
      m_Threads.emplace_back(Running{start, parameter, name ? name : "", object, self});
  try {
    running.thread = std::thread([this, &running] { Run(running); });
  } catch (const std::system_error&) {
    m_Threads.pop_back();
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  if (threadId) *threadId = self->id;
  return Open(std::move(object));
}

void HostThreads::Run(Running& running) {
  t_Self = running.self;
  pthread_setname_np(pthread_self(), std::string(running.name).substr(0, 15).c_str());
  DWORD exitCode = 0;
  try {  // also of a thread given up before it began: what it was handed is its own to free
    exitCode = running.start(running.parameter);
  } catch (const ThreadAbandoned&) {
  }
  const std::lock_guard lock(m_Mutex);
  Object& object = *running.object;
  object.thread = nullptr;
  if (!object.IsSignalled()) {  // not given up
    object.exitCode = exitCode;
    object.count = 1;
    Serve(object);
  }
  running.ended = true;
  m_ThreadEnded.notify_all();
}

// Joins the threads that have ended.
void HostThreads::Reap() {
  std::list<Running> ended;
  {
    const std::lock_guard lock(m_Mutex);
    for (auto at = m_Threads.begin(); at != m_Threads.end();) {
      const auto next = std::next(at);
      if (at->ended) ended.splice(ended.end(), m_Threads, at);
      at = next;
    }
  }
  for (Running& running : ended) running.thread.join();
}

std::vector<std::string> HostThreads::Unfinished(bool abandonedOnly) const {
  std::vector<std::string> names;
  for (const Running& running : m_Threads) {
    if (!running.ended && (running.self->abandoned || !abandonedOnly))
      names.push_back(running.name);
  }
  return names;
}

std::vector<std::string> HostThreads::WaitForEnd(bool abandonedOnly,
                                                 std::chrono::milliseconds limit) {
  std::unique_lock lock(m_Mutex);
  m_ThreadEnded.wait_for(lock, limit, [&] { return Unfinished(abandonedOnly).empty(); });
  return Unfinished(abandonedOnly);
}

std::vector<std::string> HostThreads::WaitForAbandoned(std::chrono::milliseconds limit) {
  return WaitForEnd(true, limit);
}

bool HostThreads::AwaitAbandoned(DWORD milliseconds) {
  const auto real = m_Time.RealDuration(milliseconds);
  return WaitForAbandoned(std::chrono::ceil<std::chrono::milliseconds>(real)).empty();
}

std::size_t HostThreads::OpenHandles() const {
  const std::lock_guard lock(m_Mutex);
  return m_Handles.size();
}

BOOL HostThreads::TerminateThread(HANDLE handle, DWORD exitCode) {
  const std::lock_guard lock(m_Mutex);
  const ObjectPtr object = Find(handle, Kind::kThread);
  if (!object) return Fail(ERROR_INVALID_HANDLE);
  if (object->IsSignalled()) return TRUE;
  object->exitCode = exitCode;
  object->count = 1;
  object->thread->abandoned = true;
  object->thread->Wake();
  Serve(*object);
  return TRUE;
}

BOOL HostThreads::GetExitCodeThread(HANDLE handle, DWORD* exitCode) {
  const std::lock_guard lock(m_Mutex);
  const ObjectPtr object = Find(handle, Kind::kThread);
  if (!object) return Fail(ERROR_INVALID_HANDLE);
  *exitCode = object->exitCode;
  return TRUE;
}

DWORD HostThreads::GetCurrentThreadId() { return Self().id; }

HANDLE HostThreads::CreateEventW(BOOL manualReset, BOOL initialState, const char*) {
  ThrowIfAbandoned();
  auto object = std::make_shared<Object>();
  object->kind = Kind::kEvent;
  object->stays = manualReset != FALSE;
  object->count = initialState != FALSE ? 1 : 0;
  const std::lock_guard lock(m_Mutex);
  return Open(std::move(object));
}

BOOL HostThreads::SetEvent(HANDLE handle) {
  const std::lock_guard lock(m_Mutex);
  const ObjectPtr event = Find(handle, Kind::kEvent);
  if (!event) return Fail(ERROR_INVALID_HANDLE);
  event->count = 1;
  Serve(*event);
  return TRUE;
}

BOOL HostThreads::ResetEvent(HANDLE handle) {
  const std::lock_guard lock(m_Mutex);
  const ObjectPtr event = Find(handle, Kind::kEvent);
  if (!event) return Fail(ERROR_INVALID_HANDLE);
  event->count = 0;
  return TRUE;
}

HANDLE HostThreads::CreateSemaphoreW(LONG initialCount, LONG maximumCount, const char*) {
  ThrowIfAbandoned();
  if (maximumCount < 1 || initialCount < 0 || initialCount > maximumCount) {
    Fail(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  auto object = std::make_shared<Object>();
  object->kind = Kind::kSemaphore;
  object->count = initialCount;
  object->maximum = maximumCount;
  const std::lock_guard lock(m_Mutex);
  return Open(std::move(object));
}

BOOL HostThreads::ReleaseSemaphore(HANDLE handle, LONG releaseCount, LONG* previousCount) {
  const std::lock_guard lock(m_Mutex);
  const ObjectPtr semaphore = Find(handle, Kind::kSemaphore);
  if (!semaphore) return Fail(ERROR_INVALID_HANDLE);
  if (releaseCount < 1) return Fail(ERROR_INVALID_PARAMETER);
  if (releaseCount > semaphore->maximum - semaphore->count) return Fail(ERROR_TOO_MANY_POSTS);
  if (previousCount) *previousCount = semaphore->count;
  semaphore->count += releaseCount;
  Serve(*semaphore);
  return TRUE;
}

BOOL HostThreads::CloseHandle(HANDLE handle) {
  const std::lock_guard lock(m_Mutex);
  return m_Handles.erase(reinterpret_cast<std::uintptr_t>(handle)) == 1
             ? TRUE
             : Fail(ERROR_INVALID_HANDLE);
}

DWORD HostThreads::WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return WaitForMultipleObjects(1, &object, FALSE, milliseconds);
}

bool HostThreads::Prepare(Wait* wait, DWORD count, const HANDLE* objects) {
  if (count == 0 || count > kMaximumWaitObjects) return Fail(ERROR_INVALID_PARAMETER);
  for (DWORD i = 0; i < count; ++i) {
    ObjectPtr object = Find(objects[i]);
    if (!object) return Fail(ERROR_INVALID_HANDLE);
    if (wait->Has(object)) return Fail(ERROR_INVALID_PARAMETER);
    wait->Add(std::move(object));
  }
  return true;
}

DWORD HostThreads::WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                                          DWORD milliseconds) {
  std::unique_lock lock(m_Mutex);
  Wait wait(Self(), waitAll != FALSE);
  if (!Prepare(&wait, count, objects)) return WAIT_FAILED;
  // A wait for a thread's end is what destructors do: it is not cut short by an exception.
  const bool abandonable = milliseconds == INFINITE || !wait.IsForThreadEnd();
  if (abandonable) ThrowIfAbandoned();
  if (wait.TryTake()) return WAIT_OBJECT_0 + wait.Index();
  if (milliseconds == 0) return WAIT_TIMEOUT;
  // A thread that unwinds may wait for a time, but not for ever.
  if (Self().abandoned && milliseconds == INFINITE) return WAIT_TIMEOUT;
  if (RunWait(lock, wait, milliseconds, abandonable && !Self().abandoned)) {
    return WAIT_OBJECT_0 + wait.Index();
  }
  lock.unlock();
  if (abandonable) ThrowIfAbandoned();
  return WAIT_TIMEOUT;
}

// Until the wait is over, its time has passed or, when it may, its thread is given up.
bool HostThreads::RunWait(std::unique_lock<std::mutex>& lock, Wait& wait, DWORD milliseconds,
                          bool abandonable) {
  Thread& self = wait.GetThread();
  const auto awake = [&] { return wait.IsOver() || (abandonable && self.abandoned); };
  wait.Enter();
  if (milliseconds == INFINITE) {
    self.wake.wait(lock, awake);
  } else {
    const auto deadline = HostTime::RealClock::now() + m_Time.RealDuration(milliseconds);
    self.wake.wait_until(lock, deadline, awake);
  }
  wait.Leave();
  return wait.IsOver();
}

DWORD HostThreads::WaitAlertably(DWORD count, const HANDLE* objects, BOOL waitAll,
                                 DWORD milliseconds, const Sleeper& sleep) {
  ThrowIfAbandoned();
  std::unique_lock lock(m_Mutex);
  Wait wait(Self(), waitAll != FALSE);
  if (!Prepare(&wait, count, objects)) return WAIT_FAILED;
  if (wait.TryTake()) return WAIT_OBJECT_0 + wait.Index();
  if (Self().abandoned) return WAIT_TIMEOUT;  // it unwinds already
  const bool alerted = RunAlertableWait(lock, wait, milliseconds, sleep);
  if (wait.IsOver()) return WAIT_OBJECT_0 + wait.Index();
  lock.unlock();
  ThrowIfAbandoned();
  return alerted ? WAIT_IO_COMPLETION : WAIT_TIMEOUT;
}

// Whether the sleeper ended the wait.
bool HostThreads::RunAlertableWait(std::unique_lock<std::mutex>& lock, Wait& wait,
                                   DWORD milliseconds, const Sleeper& sleep) {
  Thread& self = wait.GetThread();
  AlertsOf(self);
  const auto until = milliseconds == INFINITE
                         ? HostAlerts::kNone
                         : HostTime::RealClock::now() + m_Time.RealDuration(milliseconds);
  bool alerted = false;
  wait.Enter();
  self.alertable = true;
  do {
    lock.unlock();
    try {
      alerted = sleep(until);
    } catch (...) {
      lock.lock();
      self.alertable = false;
      wait.Leave();
      throw;
    }
    lock.lock();
  } while (!alerted && !wait.IsOver() && !self.abandoned &&
           (until == HostAlerts::kNone || HostTime::RealClock::now() < until));
  self.alertable = false;
  wait.Leave();
  return alerted;
}

std::shared_ptr<HostAlerts> HostThreads::AlertsOf(Thread& thread) {
  if (!thread.alerts) thread.alerts = std::make_shared<HostAlerts>();
  return thread.alerts;
}

std::shared_ptr<HostAlerts> HostThreads::OwnSharedAlerts() {
  const std::lock_guard lock(m_Mutex);
  return AlertsOf(Self());
}

std::shared_ptr<HostAlerts> HostThreads::AlertsOf(HANDLE handle) {
  const std::lock_guard lock(m_Mutex);
  const ObjectPtr object = Find(handle, Kind::kThread);
  return object && object->thread ? AlertsOf(*object->thread) : nullptr;
}

void HostThreads::Sleep(DWORD milliseconds) {
  ThrowIfAbandoned();
  if (milliseconds == 0) {
    std::this_thread::yield();
    return;
  }
  {
    std::unique_lock lock(m_Mutex);
    Wait nothing(Self(), false);
    RunWait(lock, nothing, milliseconds, !Self().abandoned);
  }
  ThrowIfAbandoned();
}

void HostThreads::InitializeCriticalSection(CRITICAL_SECTION* section, const char* name, int rank) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
  pthread_mutex_init(new (section->storage) pthread_mutex_t, &attributes);
  pthread_mutexattr_destroy(&attributes);
  section->name = name ? name : "";
  section->rank = rank;
}

void HostThreads::EnterCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_lock(MutexOf(section));
}

void HostThreads::LeaveCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_unlock(MutexOf(section));
}

void HostThreads::DeleteCriticalSection(CRITICAL_SECTION* section) {
  pthread_mutex_destroy(MutexOf(section));
}

DWORD HostThreads::GetLastError() { return Self().lastError; }

void HostThreads::SetLastError(DWORD code) { Self().lastError = code; }

}  // namespace corvane::platform::linux_host
