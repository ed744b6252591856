#include "support/basic_platform.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace corvane::test {

using namespace platform;

namespace {

std::chrono::microseconds RealTime(DWORD milliseconds) {
  return std::chrono::microseconds(std::uint64_t{milliseconds} * 10);
}

thread_local DWORD t_LastError = 0;

}  // namespace

// ---- threads
// ----------------------------------------------------------------------------------------

struct BasicThreads::Object {
  enum class Kind { kEvent, kSemaphore, kThread } kind;
  bool manualReset = false;
  LONG count = 0;        // above 0: signalled
  LONG maximum = 1;      // of a semaphore
  DWORD exitCode = 259;  // STILL_ACTIVE
  DWORD threadId = 1;
  bool abandoned = false;
};

namespace {
thread_local const bool* t_pAbandoned = nullptr;  // of the calling thread; under the mutex
thread_local DWORD t_ThreadId = 1;
}  // namespace

void BasicThreads::JoinAll() {
  for (std::thread& thread : m_Threads) thread.join();
  m_Threads.clear();
}

std::size_t BasicThreads::OpenHandles() {
  const std::lock_guard guard(m_Mutex);
  return m_Handles.size();
}

int BasicThreads::OpenSections() {
  const std::lock_guard guard(m_Mutex);
  return m_Sections;
}

HANDLE BasicThreads::Open(ObjectPtr object) {
  const HANDLE handle = reinterpret_cast<HANDLE>(m_NextHandle += 4);
  m_Handles.emplace(handle, std::move(object));
  return handle;
}

BasicThreads::ObjectPtr BasicThreads::Find(HANDLE handle) {
  const auto found = m_Handles.find(handle);
  if (found != m_Handles.end()) return found->second;
  t_LastError = ERROR_INVALID_HANDLE;
  return nullptr;
}

bool BasicThreads::Fails(const char* operation) {
  const DWORD code = m_Failures.CodeFor(operation);
  if (code == FailureSwitch::kFault) throw PlatformFault{code};
  if (code != ERROR_SUCCESS) t_LastError = code;
  return code != ERROR_SUCCESS;
}

void BasicThreads::ThrowIfAbandoned() {
  if (t_pAbandoned && *t_pAbandoned) throw ThreadAbandoned();
}

HANDLE BasicThreads::CreateThread(ThreadProc start, void* parameter, const char*, DWORD* threadId) {
  if (Fails("CreateThread")) return nullptr;
  auto object = std::make_shared<Object>(Object{Object::Kind::kThread, true});
  const std::lock_guard guard(m_Mutex);
  object->threadId = m_NextThreadId++;
  if (threadId) *threadId = object->threadId;
  m_Threads.emplace_back([this, object, start, parameter] {
    t_pAbandoned = &object->abandoned;
    t_ThreadId = object->threadId;
    DWORD exitCode = 0xFFFFFFFF;
    try {
      exitCode = start(parameter);
    } catch (const ThreadAbandoned&) {
    }
    const std::lock_guard atEnd(m_Mutex);
    if (!object->abandoned) object->exitCode = exitCode;
    object->count = 1;
    m_Changed.notify_all();
  });
  return Open(std::move(object));
}

BOOL BasicThreads::TerminateThread(HANDLE thread, DWORD exitCode) {
  const std::lock_guard guard(m_Mutex);
  const ObjectPtr object = Find(thread);
  if (!object) return FALSE;
  object->abandoned = true;
  object->exitCode = exitCode;
  object->count = 1;
  m_Changed.notify_all();
  return TRUE;
}

BOOL BasicThreads::GetExitCodeThread(HANDLE thread, DWORD* exitCode) {
  const std::lock_guard guard(m_Mutex);
  const ObjectPtr object = Find(thread);
  if (!object) return FALSE;
  *exitCode = object->exitCode;
  return TRUE;
}

DWORD BasicThreads::GetCurrentThreadId() { return t_ThreadId; }

HANDLE BasicThreads::CreateEventW(BOOL manualReset, BOOL initialState, const char*) {
  if (Fails("CreateEventW")) return nullptr;
  const std::lock_guard guard(m_Mutex);
  return Open(std::make_shared<Object>(
      Object{Object::Kind::kEvent, manualReset != FALSE, initialState ? 1 : 0}));
}

BOOL BasicThreads::SetEvent(HANDLE event) {
  if (Fails("SetEvent")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  const ObjectPtr object = Find(event);
  if (!object) return FALSE;
  object->count = 1;
  m_Changed.notify_all();
  return TRUE;
}

BOOL BasicThreads::ResetEvent(HANDLE event) {
  if (Fails("ResetEvent")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  const ObjectPtr object = Find(event);
  if (!object) return FALSE;
  object->count = 0;
  return TRUE;
}

HANDLE BasicThreads::CreateSemaphoreW(LONG initialCount, LONG maximumCount, const char*) {
  if (Fails("CreateSemaphoreW")) return nullptr;
  const std::lock_guard guard(m_Mutex);
  return Open(std::make_shared<Object>(
      Object{Object::Kind::kSemaphore, false, initialCount, maximumCount}));
}

BOOL BasicThreads::ReleaseSemaphore(HANDLE semaphore, LONG releaseCount, LONG* previousCount) {
  if (Fails("ReleaseSemaphore")) return FALSE;
  const std::lock_guard guard(m_Mutex);
  const ObjectPtr object = Find(semaphore);
  if (!object) return FALSE;
  if (object->count + releaseCount > object->maximum) {
    t_LastError = ERROR_TOO_MANY_POSTS;
    return FALSE;
  }
  if (previousCount) *previousCount = object->count;
  object->count += releaseCount;
  m_Changed.notify_all();
  return TRUE;
}

BOOL BasicThreads::CloseHandle(HANDLE handle) {
  {
    const std::lock_guard guard(m_Mutex);
    if (!m_Handles.erase(handle)) {
      t_LastError = ERROR_INVALID_HANDLE;
      return FALSE;
    }
  }
  return !Fails("CloseHandle");  // the handle is gone in any case
}

DWORD BasicThreads::WaitForSingleObject(HANDLE object, DWORD milliseconds) {
  if (Fails("WaitForSingleObject")) return WAIT_FAILED;
  return WaitForMultipleObjects(1, &object, FALSE, milliseconds);
}

DWORD BasicThreads::TakeSignalled(const std::vector<ObjectPtr>& objects, bool all) {
  const auto signalled = [](const ObjectPtr& object) { return object->count > 0; };
  const auto take = [](Object& object) {
    if (object.kind != Object::Kind::kThread && !object.manualReset) --object.count;
  };
  if (all) {
    if (!std::all_of(objects.begin(), objects.end(), signalled)) return WAIT_TIMEOUT;
    for (const ObjectPtr& object : objects) take(*object);
    return WAIT_OBJECT_0;
  }
  const auto first = std::find_if(objects.begin(), objects.end(), signalled);
  if (first == objects.end()) return WAIT_TIMEOUT;
  take(**first);
  return WAIT_OBJECT_0 + static_cast<DWORD>(first - objects.begin());
}

DWORD BasicThreads::WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL waitAll,
                                           DWORD milliseconds) {
  if (Fails("WaitForMultipleObjects")) return WAIT_FAILED;
  std::unique_lock lock(m_Mutex);
  std::vector<ObjectPtr> objects;
  for (DWORD i = 0; i < count; ++i) {
    objects.push_back(Find(handles[i]));
    if (!objects.back()) return WAIT_FAILED;
  }
  const auto deadline = std::chrono::steady_clock::now() + RealTime(milliseconds);
  for (;;) {
    ThrowIfAbandoned();
    const DWORD result = TakeSignalled(objects, waitAll != FALSE);
    if (result != WAIT_TIMEOUT) return result;
    if (milliseconds == INFINITE) {
      m_Changed.wait(lock);
    } else if (std::chrono::steady_clock::now() >= deadline) {
      return WAIT_TIMEOUT;
    } else {
      m_Changed.wait_until(lock, deadline);
    }
  }
}

void BasicThreads::Sleep(DWORD milliseconds) {
  std::unique_lock lock(m_Mutex);
  const auto deadline = std::chrono::steady_clock::now() + RealTime(milliseconds);
  do {
    ThrowIfAbandoned();
  } while (m_Changed.wait_until(lock, deadline) != std::cv_status::timeout);
  ThrowIfAbandoned();
}

void BasicThreads::InitializeCriticalSection(CRITICAL_SECTION* section, const char* name,
                                             int rank) {
  section->name = name;
  section->rank = rank;
  *reinterpret_cast<std::recursive_mutex**>(section->storage) = new std::recursive_mutex;
  const std::lock_guard guard(m_Mutex);
  ++m_Sections;
}

void BasicThreads::EnterCriticalSection(CRITICAL_SECTION* section) {
  (*reinterpret_cast<std::recursive_mutex**>(section->storage))->lock();
}

void BasicThreads::LeaveCriticalSection(CRITICAL_SECTION* section) {
  (*reinterpret_cast<std::recursive_mutex**>(section->storage))->unlock();
}

void BasicThreads::DeleteCriticalSection(CRITICAL_SECTION* section) {
  delete *reinterpret_cast<std::recursive_mutex**>(section->storage);
  const std::lock_guard guard(m_Mutex);
  --m_Sections;
}

DWORD BasicThreads::GetLastError() { return t_LastError; }

void BasicThreads::SetLastError(DWORD code) { t_LastError = code; }

// ---- console
// ----------------------------------------------------------------------------------------

std::string BasicConsole::Output() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Output, {});
}

std::string BasicConsole::Error() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Error, {});
}

void BasicConsole::WriteOutput(std::string_view text) {
  const std::lock_guard guard(m_Mutex);
  if (keep) m_Output += text;
}

void BasicConsole::WriteError(std::string_view text) {
  const std::lock_guard guard(m_Mutex);
  if (keep) m_Error += text;
}

// ---- files
// ------------------------------------------------------------------------------------------

BOOL BasicFiles::Refuse(DWORD code) {
  m_Threads.SetLastError(code);
  return FALSE;
}

bool BasicFiles::Fails(const char* operation) {
  const DWORD code = m_Failures.CodeFor(operation);
  if (code == FailureSwitch::kFault) throw PlatformFault{code};
  if (code != ERROR_SUCCESS) Refuse(code);
  return code != ERROR_SUCCESS;
}

HANDLE BasicFiles::CreateFileW(LPCWSTR path, DWORD access, DWORD disposition) {
  if (Fails("CreateFileW")) return nullptr;
  if (disposition == OPEN_EXISTING && !files.contains(path)) {
    Refuse(ERROR_FILE_NOT_FOUND);
    return nullptr;
  }
  std::string& content = files[path];
  if (disposition == CREATE_ALWAYS) content.clear();
  const HANDLE handle = reinterpret_cast<HANDLE>(m_NextHandle += 4);
  m_Open[handle] = {path, 0, access == FILE_APPEND_DATA};
  return handle;
}

BOOL BasicFiles::ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read) {
  *read = 0;
  if (Fails("ReadFile")) return FALSE;
  const auto open = m_Open.find(file);
  if (open == m_Open.end()) return Refuse(ERROR_INVALID_HANDLE);
  const std::string& content = files[open->second.path];
  const std::size_t from = std::min(open->second.position, content.size());
  *read = static_cast<DWORD>(content.copy(static_cast<char*>(buffer), size, from));
  open->second.position = from + *read;
  return TRUE;
}

BOOL BasicFiles::WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written) {
  *written = 0;
  if (Fails("WriteFile")) return FALSE;
  const auto open = m_Open.find(file);
  if (open == m_Open.end()) return Refuse(ERROR_INVALID_HANDLE);
  std::string& content = files[open->second.path];
  const std::size_t at = open->second.append ? content.size() : open->second.position;
  if (content.size() < at + size) content.resize(at + size);
  content.replace(at, size, static_cast<const char*>(data), size);
  open->second.position = at + size;
  *written = size;
  return TRUE;
}

BOOL BasicFiles::FlushFileBuffers(HANDLE file) {
  return m_Open.contains(file) ? TRUE : Refuse(ERROR_INVALID_HANDLE);
}

BOOL BasicFiles::CloseFile(HANDLE file) {
  if (!m_Open.erase(file)) return Refuse(ERROR_INVALID_HANDLE);
  return !Fails("CloseFile");  // the handle is gone in any case
}

BOOL BasicFiles::GetFileSizeEx(HANDLE file, ULONGLONG* size) {
  const auto open = m_Open.find(file);
  if (open == m_Open.end()) return Refuse(ERROR_INVALID_HANDLE);
  *size = files[open->second.path].size();
  return TRUE;
}

BOOL BasicFiles::CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
  if (Fails("CopyFileW")) return FALSE;
  if (!files.contains(from)) return Refuse(ERROR_FILE_NOT_FOUND);
  if (failIfExists && files.contains(to)) return Refuse(ERROR_ALREADY_EXISTS);
  files[to] = std::string(files[from]);
  return TRUE;
}

BOOL BasicFiles::MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  if (Fails("MoveFileExW")) return FALSE;
  if (!files.contains(from)) return Refuse(ERROR_FILE_NOT_FOUND);
  if (!(flags & MOVEFILE_REPLACE_EXISTING) && files.contains(to))
    return Refuse(ERROR_ALREADY_EXISTS);
  std::string content = std::move(files[from]);
  files.erase(from);
  files[to] = std::move(content);
  return TRUE;
}

BOOL BasicFiles::DeleteFileW(LPCWSTR path) {
  if (Fails("DeleteFileW")) return FALSE;
  return files.erase(path) ? TRUE : Refuse(ERROR_FILE_NOT_FOUND);
}

BOOL BasicFiles::CreateDirectoryW(LPCWSTR path) {
  return directories.insert(path).second ? TRUE : Refuse(ERROR_ALREADY_EXISTS);
}

DWORD BasicFiles::GetFileAttributesW(LPCWSTR path) {
  if (files.contains(path)) return FILE_ATTRIBUTE_NORMAL;
  if (directories.contains(path)) return FILE_ATTRIBUTE_DIRECTORY;
  Refuse(ERROR_FILE_NOT_FOUND);
  return INVALID_FILE_ATTRIBUTES;
}

HRESULT BasicFiles::SHGetFolderPathW(int csidl, std::u16string* path) {
  if (csidl != CSIDL_COMMON_APPDATA || commonAppData.empty()) return E_FAIL;
  *path = commonAppData;
  return S_OK;
}

// ---- the whole
// --------------------------------------------------------------------------------------

BasicPlatform::BasicPlatform(IpHelperApi* ipHelper)
    : m_Platform{threads,
                 clock,
                 console,
                 m_Crypto,
                 m_EventTrace,
                 files,
                 ipHelper ? *ipHelper : m_IpHelper,
                 m_NetworkList,
                 m_PerfCounters,
                 m_Power,
                 m_Registry,
                 m_Session,
                 m_Wlan} {
  SetPlatform(&m_Platform);
}

BasicPlatform::~BasicPlatform() {
  threads.JoinAll();
  SetPlatform(nullptr);
}

}  // namespace corvane::test
