#include "platform/windows/windows_threads.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <new>

#include "platform/windows/win32.h"

namespace corvane::platform::windows {

namespace {

constexpr DWORD kUnwindMs = 10'000;
constexpr DWORD kSpins = 4000;  // of a lock, before its thread sleeps

static_assert(sizeof(::CRITICAL_SECTION) <= sizeof(CRITICAL_SECTION::storage));

::CRITICAL_SECTION* SectionOf(CRITICAL_SECTION* section) {
  return std::launder(reinterpret_cast<::CRITICAL_SECTION*>(section->storage));
}

// For debuggers (SetThreadDescription, since Windows 10).
void NameThread(HANDLE thread, const std::string& name) {
  using Call = ::HRESULT(WINAPI*)(HANDLE, const wchar_t*);
  static const auto call = reinterpret_cast<Call>(reinterpret_cast<void*>(
      ::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
  if (call) call(thread, std::wstring(name.begin(), name.end()).c_str());
}

HANDLE NewEvent() { return ::CreateEventW(nullptr, TRUE, FALSE, nullptr); }

// Of threads that were made here; null in others.
thread_local void* t_pSelf = nullptr;
thread_local DWORD t_LastError = 0;

}  // namespace

struct WindowsThreads::Thread {
  Thread() = default;
  ~Thread() {
    for (const HANDLE handle : {ended, giveUp, system}) {
      if (handle) ::CloseHandle(handle);
    }
  }
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;

  WindowsThreads* owner = nullptr;
  ThreadProc start = nullptr;
  void* parameter = nullptr;
  std::string name;
  HANDLE ended = NewEvent();   // or given up
  HANDLE giveUp = NewEvent();  // what its waits end by
  HANDLE system = nullptr;
  std::atomic<bool> abandoned{false};
  DWORD exitCode = STILL_ACTIVE;  // under the mutex
};

WindowsThreads::WindowsThreads() = default;

WindowsThreads::~WindowsThreads() {
  {
    const std::lock_guard lock(m_Mutex);
    for (const auto& [self, thread] : m_Running) {
      thread->abandoned = true;
      ::SetEvent(thread->giveUp);
    }
  }
  if (AwaitEnds(false, kUnwindMs)) return;
  const std::lock_guard lock(m_Mutex);
  for (const auto& [self, thread] : m_Running) {
    std::fprintf(stderr, "corvane: thread \"%s\" does not end; the process ends without it\n",
                 thread->name.c_str());
  }
  std::fflush(nullptr);
  ::TerminateProcess(::GetCurrentProcess(), 1);
}

bool WindowsThreads::IsAbandoned() {
  const auto* const self = static_cast<Thread*>(t_pSelf);
  return self && self->abandoned;
}

void WindowsThreads::ThrowIfAbandoned() {
  if (IsAbandoned() && std::uncaught_exceptions() == 0) throw ThreadAbandoned{};
}

HANDLE WindowsThreads::OwnGiveUpEvent() {
  const auto* const self = static_cast<Thread*>(t_pSelf);
  return self ? self->giveUp : nullptr;
}

void WindowsThreads::KeepLastError(DWORD code) { t_LastError = code; }
DWORD WindowsThreads::GetLastError() { return t_LastError; }
void WindowsThreads::SetLastError(DWORD code) { t_LastError = code; }

BOOL WindowsThreads::Fail(DWORD code) {
  t_LastError = code;
  return FALSE;
}

std::size_t WindowsThreads::OpenHandles() const {
  const std::lock_guard lock(m_Mutex);
  return m_Handles.size();
}

// `error` was taken right behind the call that made the handle.
HANDLE WindowsThreads::Opened(HANDLE handle, DWORD error) {
  if (!handle) {
    Fail(error);
    return nullptr;
  }
  const std::lock_guard lock(m_Mutex);
  m_Handles.emplace(handle, nullptr);
  return handle;
}

WindowsThreads::ThreadPtr WindowsThreads::Find(HANDLE handle) const {
  const auto found = m_Handles.find(handle);
  return found == m_Handles.end() ? nullptr : found->second;
}

// ---- threads --------------------------------------------------------------------------------

HANDLE WindowsThreads::CreateThread(ThreadProc start, void* parameter, const char* name,
                                    DWORD* threadId) {
  ThrowIfAbandoned();
  auto thread = std::make_shared<Thread>();
  thread->owner = this;
  thread->start = start;
  thread->parameter = parameter;
  thread->name = name ? name : "";
  // What is given out has a life of its own, since it may be closed while the thread runs.
  HANDLE handle = nullptr;
  const HANDLE process = ::GetCurrentProcess();
  if (!thread->ended || !thread->giveUp ||
      !::DuplicateHandle(process, thread->ended, process, &handle, 0, FALSE,
                         DUPLICATE_SAME_ACCESS)) {
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  const std::lock_guard lock(m_Mutex);
  ::DWORD id = 0;
  thread->system = ::CreateThread(nullptr, 0, &Run, thread.get(), CREATE_SUSPENDED, &id);
  if (!thread->system) {
    Fail(::GetLastError());
    ::CloseHandle(handle);
    return nullptr;
  }
  m_Running.emplace(thread.get(), thread);
  m_Handles.emplace(handle, thread);
  if (threadId) *threadId = id;
  NameThread(thread->system, thread->name);
  ::ResumeThread(thread->system);
  return handle;
}

unsigned long __stdcall WindowsThreads::Run(void* argument) {
  auto* const self = static_cast<Thread*>(argument);
  t_pSelf = self;
  DWORD exitCode = 0;
  try {  // also of a thread given up before it began: what it was handed is its own to free
    exitCode = self->start(self->parameter);
  } catch (const ThreadAbandoned&) {
  }
  WindowsThreads& owner = *self->owner;
  ThreadPtr kept;  // freed behind the lock, as the last handle may be gone
  const std::lock_guard lock(owner.m_Mutex);
  if (!self->abandoned) self->exitCode = exitCode;
  ::SetEvent(self->ended);
  kept = std::move(owner.m_Running.find(self)->second);
  owner.m_Running.erase(self);
  return exitCode;
}

BOOL WindowsThreads::TerminateThread(HANDLE handle, DWORD exitCode) {
  const std::lock_guard lock(m_Mutex);
  const ThreadPtr thread = Find(handle);
  if (!thread) return Fail(ERROR_INVALID_HANDLE);
  if (::WaitForSingleObject(thread->ended, 0) == WAIT_OBJECT_0) return TRUE;
  thread->exitCode = exitCode;
  thread->abandoned = true;
  ::SetEvent(thread->giveUp);
  ::SetEvent(thread->ended);
  ::CancelSynchronousIo(thread->system);  // should it sit in a driver
  return TRUE;
}

bool WindowsThreads::AwaitAbandoned(DWORD milliseconds) { return AwaitEnds(true, milliseconds); }

bool WindowsThreads::AwaitEnds(bool abandonedOnly, DWORD milliseconds) {
  const ULONGLONG until = ::GetTickCount64() + milliseconds;
  for (;;) {
    ThreadPtr next;
    {
      const std::lock_guard lock(m_Mutex);
      for (const auto& [self, thread] : m_Running) {
        if (thread->abandoned || !abandonedOnly) next = thread;
      }
    }
    if (!next) return true;
    const ULONGLONG now = ::GetTickCount64();
    const DWORD left = now < until ? static_cast<DWORD>(until - now) : 0;
    if (::WaitForSingleObject(next->system, left) != WAIT_OBJECT_0) return false;
  }
}

BOOL WindowsThreads::GetExitCodeThread(HANDLE handle, DWORD* exitCode) {
  const std::lock_guard lock(m_Mutex);
  const ThreadPtr thread = Find(handle);
  if (!thread) return Fail(ERROR_INVALID_HANDLE);
  *exitCode = thread->exitCode;
  return TRUE;
}

DWORD WindowsThreads::GetCurrentThreadId() { return ::GetCurrentThreadId(); }

HANDLE WindowsThreads::DuplicateSystemThread(HANDLE handle) const {
  const std::lock_guard lock(m_Mutex);
  const ThreadPtr thread = Find(handle);
  if (!thread || !m_Running.contains(thread.get())) return nullptr;
  HANDLE copy = nullptr;
  const HANDLE process = ::GetCurrentProcess();
  ::DuplicateHandle(process, thread->system, process, &copy, 0, FALSE, DUPLICATE_SAME_ACCESS);
  return copy;
}

// ---- events, semaphores, handles ------------------------------------------------------------

HANDLE WindowsThreads::CreateEventW(BOOL manualReset, BOOL initialState, const char*) {
  ThrowIfAbandoned();
  const HANDLE event = ::CreateEventW(nullptr, manualReset, initialState, nullptr);
  return Opened(event, ::GetLastError());
}

HANDLE WindowsThreads::CreateSemaphoreW(LONG initialCount, LONG maximumCount, const char*) {
  ThrowIfAbandoned();
  const HANDLE semaphore = ::CreateSemaphoreW(nullptr, initialCount, maximumCount, nullptr);
  return Opened(semaphore, ::GetLastError());
}

BOOL WindowsThreads::SetEvent(HANDLE event) {
  return ::SetEvent(event) ? TRUE : Fail(::GetLastError());
}

BOOL WindowsThreads::ResetEvent(HANDLE event) {
  return ::ResetEvent(event) ? TRUE : Fail(::GetLastError());
}

BOOL WindowsThreads::ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LONG* previousCount) {
  ::LONG previous = 0;
  if (!::ReleaseSemaphore(semaphore, releaseCount, &previous)) return Fail(::GetLastError());
  if (previousCount) *previousCount = static_cast<LONG>(previous);
  return TRUE;
}

BOOL WindowsThreads::CloseHandle(HANDLE object) {
  ThreadPtr thread;  // let go behind the lock
  {
    const std::lock_guard lock(m_Mutex);
    const auto found = m_Handles.find(object);
    if (found == m_Handles.end()) return Fail(ERROR_INVALID_HANDLE);
    thread = std::move(found->second);
    m_Handles.erase(found);
  }
  return ::CloseHandle(object) ? TRUE : Fail(::GetLastError());
}

// ---- waits ----------------------------------------------------------------------------------

// A handle that was closed may be another object's by now, so ours are looked up.
bool WindowsThreads::IsOpen(DWORD count, const HANDLE* objects, bool* threadEnd) const {
  const std::lock_guard lock(m_Mutex);
  for (DWORD i = 0; i < count; ++i) {
    if (!m_Handles.contains(objects[i])) return false;
  }
  *threadEnd = count == 1 && Find(objects[0]) != nullptr;
  return true;
}

DWORD WindowsThreads::WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  return WaitForMultipleObjects(1, &object, FALSE, milliseconds);
}

DWORD WindowsThreads::WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL waitAll,
                                             DWORD milliseconds) {
  bool threadEnd = false;
  if (count == 0 || count >= MAXIMUM_WAIT_OBJECTS) {
    Fail(ERROR_INVALID_PARAMETER);
    return WAIT_FAILED;
  }
  if (!IsOpen(count, objects, &threadEnd)) {
    Fail(ERROR_INVALID_HANDLE);
    return WAIT_FAILED;
  }
  auto* const self = static_cast<Thread*>(t_pSelf);
  // A wait for a thread's end is what destructors do: no exception cuts it short.
  const bool abandonable = self && (milliseconds == INFINITE || !threadEnd);
  if (abandonable && (!waitAll || count == 1)) {
    return WaitAbandonably(*self, count, objects, milliseconds);
  }
  const DWORD result = ::WaitForMultipleObjects(count, objects, waitAll, milliseconds);
  if (result == WAIT_FAILED) Fail(::GetLastError());
  return result;
}

// The event by which the thread is given up comes last of all.
DWORD WindowsThreads::WaitAbandonably(Thread& self, DWORD count, const HANDLE* objects, DWORD ms) {
  ThrowIfAbandoned();
  if (self.abandoned) {  // it unwinds: it may wait for a time, but not for ever
    return ::WaitForMultipleObjects(count, objects, FALSE, ms == INFINITE ? 0 : ms);
  }
  HANDLE all[MAXIMUM_WAIT_OBJECTS];
  std::copy_n(objects, count, all);
  all[count] = self.giveUp;
  const DWORD result = ::WaitForMultipleObjects(count + 1, all, FALSE, ms);
  if (result == WAIT_FAILED) KeepLastError(::GetLastError());
  if (result != WAIT_OBJECT_0 + count) return result;
  ThrowIfAbandoned();
  return WAIT_TIMEOUT;
}

void WindowsThreads::Sleep(DWORD milliseconds) {
  ThrowIfAbandoned();
  const HANDLE giveUp = OwnGiveUpEvent();
  if (!giveUp || milliseconds == 0 || IsAbandoned()) {
    ::Sleep(milliseconds);
  } else {
    ::WaitForSingleObject(giveUp, milliseconds);
  }
  ThrowIfAbandoned();
}

// ---- locks ----------------------------------------------------------------------------------

void WindowsThreads::InitializeCriticalSection(CRITICAL_SECTION* section, const char* name,
                                               int rank) {
  ::InitializeCriticalSectionEx(new (section->storage)::CRITICAL_SECTION, kSpins,
                                CRITICAL_SECTION_NO_DEBUG_INFO);
  section->name = name ? name : "";
  section->rank = rank;
}

void WindowsThreads::EnterCriticalSection(CRITICAL_SECTION* section) {
  ::EnterCriticalSection(SectionOf(section));
}

void WindowsThreads::LeaveCriticalSection(CRITICAL_SECTION* section) {
  ::LeaveCriticalSection(SectionOf(section));
}

void WindowsThreads::DeleteCriticalSection(CRITICAL_SECTION* section) {
  ::DeleteCriticalSection(SectionOf(section));
}

}  // namespace corvane::platform::windows
