#include "platform/linux/host_pipes.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <utility>

#include "platform/linux/host_pipe_socket.h"
#include "platform/linux/host_threads.h"
#include "platform/session_api.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/token_user.h"

namespace corvane::platform::linux_host {

namespace {

constexpr std::u16string_view kPrefix = u"\\\\.\\pipe\\";
constexpr DWORD kSddlRevision = 1;
constexpr DWORD kInvalidSid = 1337;
constexpr DWORD kMajorVersion = 10;           // of the system that this host stands for
constexpr std::uint32_t kSystemAccount = 18;  // S-1-5-18
constexpr std::uint8_t kNtAuthority = 5;
constexpr std::uint8_t kUnixAuthority = 22;  // S-1-22-1-N is the user N of a UNIX system
constexpr std::uint32_t kUnixUser = 1;

// Of pipes, servers and tokens, never given twice in the life of the process: a thread may still
// be told of the sockets of pipes that have gone.
std::uint64_t NextId() {
  static std::atomic<std::uint64_t> last{0x900000};
  return last += 4;
}

HANDLE HandleOf(std::uint64_t id) { return reinterpret_cast<HANDLE>(id); }
std::uint64_t IdOf(HANDLE handle) { return reinterpret_cast<std::uint64_t>(handle); }

void RaiseDescriptorLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= limit.rlim_max) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

HostPipes::HostPipes(sim::SeamGate& gate, HostThreads& threads, std::string folder)
    : m_Gate(gate), m_Threads(threads), m_Folder(std::move(folder)) {
  RaiseDescriptorLimit();
}

HostPipes::~HostPipes() {
  m_Pipes.clear();
  for (auto& [name, server] : m_Servers) Unwatch(server);
  for (const auto& [memory, block] : m_Blocks) munmap(memory, block.size);
}

BOOL HostPipes::Fail(DWORD code) {
  m_Threads.SetLastError(code);
  return FALSE;
}

HostPipeInstance* HostPipes::Find(HANDLE pipe) {
  const auto found = m_Pipes.find(IdOf(pipe));
  if (found != m_Pipes.end()) return found->second.instance.get();
  Fail(ERROR_INVALID_HANDLE);
  return nullptr;
}

// ---- pipes and their clients ----------------------------------------------------------------

HANDLE HostPipes::CreateNamedPipeW(LPCWSTR path, DWORD, DWORD, DWORD maxInstances,
                                   DWORD outBufferSize, DWORD, DWORD, const SECURITY_ATTRIBUTES*) {
  m_Gate.Enter("CreateNamedPipeW");
  const auto refuse = [this](DWORD code) {
    Fail(code);
    return nullptr;
  };
  std::u16string_view whole = sim::ViewOf(path);
  if (!whole.starts_with(kPrefix)) return refuse(ERROR_BAD_PATHNAME);
  const std::string name = sim::ToUtf8(whole.substr(kPrefix.size()));
  if (!IsPipeFileName(name)) return refuse(ERROR_BAD_PATHNAME);
  if (maxInstances == 0) return refuse(ERROR_INVALID_PARAMETER);

  const std::lock_guard lock(m_Mutex);
  if (const DWORD code = OpenServer(name); code != ERROR_SUCCESS) return refuse(code);
  Server& server = m_Servers[name];
  if (maxInstances < PIPE_UNLIMITED_INSTANCES && server.instances >= maxInstances)
    return refuse(ERROR_PIPE_BUSY);
  const std::uint64_t id = NextId();
  m_Pipes[id] = {
      name, std::make_shared<HostPipeInstance>(
                id, outBufferSize, [this, id](const auto& operation) { Deliver(operation, id); })};
  ++server.instances;
  return HandleOf(id);
}

DWORD HostPipes::OpenServer(const std::string& name) {
  if (m_Servers.contains(name)) return ERROR_SUCCESS;
  DWORD code = ERROR_SUCCESS;
  auto socket = HostPipeSocket::Open(m_Folder, name, &code);
  if (socket) m_Servers[name] = {.socket = std::move(socket), .id = NextId()};
  return code;
}

void HostPipes::CloseServer(const std::string& name) {
  const auto server = m_Servers.find(name);
  if (--server->second.instances > 0) return;
  Unwatch(server->second);
  m_Servers.erase(server);
}

// False: nobody would hear of a client.
bool HostPipes::Watch(Server& server, std::shared_ptr<HostAlerts> watcher) {
  if (server.watcher == watcher) return true;
  Unwatch(server);
  if (!watcher->Watch(server.socket->Descriptor(), server.id, EPOLLIN)) return false;
  server.watcher = std::move(watcher);
  return true;
}

void HostPipes::Unwatch(Server& server) {
  if (server.watcher) server.watcher->Unwatch(server.socket->Descriptor());
  server.watcher = nullptr;
}

HostPipes::Pipe* HostPipes::Listening(const std::string& name) {
  for (auto& [id, pipe] : m_Pipes) {
    if (pipe.name == name && pipe.instance->IsListening()) return &pipe;
  }
  return nullptr;
}

std::size_t HostPipes::CountClients(const std::string& name) const {
  return static_cast<std::size_t>(std::ranges::count_if(m_Pipes, [&name](const auto& entry) {
    return entry.second.name == name && entry.second.instance->HasClient();
  }));
}

BOOL HostPipes::ConnectNamedPipe(HANDLE handle, OVERLAPPED* overlapped) {
  m_Gate.Enter("ConnectNamedPipe");
  auto alerts = m_Threads.OwnSharedAlerts();
  if (!alerts->IsOpen()) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  if (overlapped->hEvent) m_Threads.ResetEvent(overlapped->hEvent);
  const std::lock_guard lock(m_Mutex);
  HostPipeInstance* const instance = Find(handle);
  if (!instance) return FALSE;
  if (!Watch(m_Servers[m_Pipes[IdOf(handle)].name], std::move(alerts)))
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
  return Fail(instance->Listen(overlapped));
}

// Gives the clients that wait to the instances that listen. Without such an instance they wait.
// One client too many a time is turned away: the rest of them are told of again, and those who are
// served come in between.
void HostPipes::Accept(const std::string& name, Server& server) {
  while (Pipe* const pipe = Listening(name)) {
    const int socket = server.socket->Accept();
    if (socket < 0) return;
    if (CountClients(name) >= kMostClients) {
      close(socket);
      return;
    }
    if (OVERLAPPED* const overlapped = pipe->instance->Connect(socket)) {
      if (overlapped->hEvent) m_Threads.SetEvent(overlapped->hEvent);
    }
  }
  Unwatch(server);
}

BOOL HostPipes::GetOverlappedResult(HANDLE pipe, OVERLAPPED* overlapped, DWORD* transferred,
                                    BOOL wait) {
  m_Gate.Enter("GetOverlappedResult");
  const auto isPending = [&] {
    const std::lock_guard lock(m_Mutex);
    return !HasOverlappedIoCompleted(*overlapped);
  };
  if (wait && overlapped->hEvent && isPending()) {
    auto& alerts = m_Threads.OwnAlerts();
    // Not an alertable wait: calls that are queued stay so, and do not shorten the sleep.
    m_Threads.WaitAlertably(1, &overlapped->hEvent, TRUE, INFINITE, [&](auto until) {
      AttendToSockets(alerts, until);
      return false;
    });
  }
  const std::lock_guard lock(m_Mutex);
  if (!Find(pipe)) return FALSE;
  if (!HasOverlappedIoCompleted(*overlapped)) return Fail(ERROR_IO_INCOMPLETE);
  *transferred = static_cast<DWORD>(overlapped->InternalHigh);
  return overlapped->Internal == ERROR_SUCCESS ? TRUE
                                               : Fail(static_cast<DWORD>(overlapped->Internal));
}

BOOL HostPipes::ReadFileEx(HANDLE pipe, void* buffer, DWORD size, OVERLAPPED* overlapped,
                           OVERLAPPED_COMPLETION_ROUTINE completion) {
  m_Gate.Enter("ReadFileEx");
  auto alerts = m_Threads.OwnSharedAlerts();
  if (!alerts->IsOpen()) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  const std::lock_guard lock(m_Mutex);
  HostPipeInstance* const instance = Find(pipe);
  if (!instance) return FALSE;
  const DWORD code = instance->Read(std::move(alerts), buffer, size, overlapped, completion);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL HostPipes::WriteFileEx(HANDLE pipe, const void* buffer, DWORD size, OVERLAPPED* overlapped,
                            OVERLAPPED_COMPLETION_ROUTINE completion) {
  m_Gate.Enter("WriteFileEx");
  auto alerts = m_Threads.OwnSharedAlerts();
  if (!alerts->IsOpen()) return Fail(ERROR_NOT_ENOUGH_MEMORY);
  const std::lock_guard lock(m_Mutex);
  HostPipeInstance* const instance = Find(pipe);
  if (!instance) return FALSE;
  const DWORD code = instance->Write(std::move(alerts), buffer, size, overlapped, completion);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL HostPipes::DisconnectNamedPipe(HANDLE pipe) {
  m_Gate.Enter("DisconnectNamedPipe");
  const std::lock_guard lock(m_Mutex);
  HostPipeInstance* const instance = Find(pipe);
  if (!instance) return FALSE;
  const DWORD code = instance->Disconnect();
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL HostPipes::CloseHandle(HANDLE handle) {
  m_Gate.Enter("CloseHandle");
  const std::lock_guard lock(m_Mutex);
  HostPipeInstance* const instance = Find(handle);
  if (!instance) return FALSE;
  instance->CancelAll();
  instance->Disconnect();
  const std::string name = m_Pipes[IdOf(handle)].name;
  m_Pipes.erase(IdOf(handle));
  CloseServer(name);
  ReleaseFreed();
  return TRUE;
}

BOOL HostPipes::GetNamedPipeClientProcessId(HANDLE pipe, ULONG* processId) {
  m_Gate.Enter("GetNamedPipeClientProcessId");
  const std::lock_guard lock(m_Mutex);
  HostPipeInstance* const instance = Find(pipe);
  if (!instance) return FALSE;
  if (!instance->HasClient()) return Fail(ERROR_PIPE_NOT_CONNECTED);
  *processId = instance->ClientProcess();
  return TRUE;
}

// ---- the alertable wait ---------------------------------------------------------------------

void HostPipes::Deliver(const HostPipeInstance::OperationPtr& operation, std::uint64_t id) {
  const auto call = [this, operation, id] {
    DWORD error = ERROR_SUCCESS;
    DWORD bytes = 0;
    {
      const std::lock_guard lock(m_Mutex);
      if (const auto pipe = m_Pipes.find(id); pipe != m_Pipes.end())
        pipe->second.instance->Remove(operation);
      // What the record holds by now, as Windows does.
      const OVERLAPPED& overlapped = *operation->overlapped;
      error = HasOverlappedIoCompleted(overlapped) ? static_cast<DWORD>(overlapped.Internal)
                                                   : ERROR_IO_PENDING;
      bytes = static_cast<DWORD>(overlapped.InternalHigh);
    }
    operation->completion(error, bytes, operation->overlapped);
  };
  const bool isOwn = operation->alerts == m_Threads.OwnSharedAlerts();
  operation->alerts->Queue({operation.get(), call}, !isOwn);
}

DWORD HostPipes::WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll,
                                          DWORD milliseconds, BOOL alertable) {
  m_Gate.Enter("WaitForMultipleObjectsEx");
  if (!alertable) return m_Threads.WaitForMultipleObjects(count, objects, waitAll, milliseconds);
  auto& alerts = m_Threads.OwnAlerts();
  if (!alerts.IsOpen()) {
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return WAIT_FAILED;
  }
  const DWORD result = m_Threads.WaitAlertably(count, objects, waitAll, milliseconds,
                                               [&](auto until) { return Attend(alerts, until); });
  if (result == WAIT_IO_COMPLETION) MakeCalls(alerts);
  return result;
}

// Sleeps once, and moves what is on the sockets; whether there are calls to make. Calls that are
// there already let it look at the sockets, but not sleep.
bool HostPipes::Attend(HostAlerts& alerts, HostTime::RealClock::time_point until) {
  if (alerts.CountCalls() > 0) until = HostTime::RealClock::time_point::min();
  AttendToSockets(alerts, until);
  return alerts.CountCalls() > 0;
}

void HostPipes::AttendToSockets(HostAlerts& alerts, HostTime::RealClock::time_point until) {
  const auto ready = alerts.Poll(until);
  const std::lock_guard lock(m_Mutex);
  for (const HostAlerts::Ready& one : ready) OnReady(one);
}

void HostPipes::OnReady(const HostAlerts::Ready& ready) {
  if (const auto pipe = m_Pipes.find(ready.id); pipe != m_Pipes.end())
    return pipe->second.instance->OnReady(ready.events);
  for (auto& [name, server] : m_Servers) {
    if (server.id == ready.id) return Accept(name, server);
  }
}

// As many as there are now: those that they bring about come at the next wait, so that a client
// that sends without a pause does not keep others out.
void HostPipes::MakeCalls(HostAlerts& alerts) {
  HostAlerts::Call call;
  for (std::size_t left = alerts.CountCalls(); left > 0 && alerts.TakeCall(&call); --left) {
    call.run();
    HostThreads::ThrowIfAbandoned();
  }
}

DWORD HostPipes::QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data) {
  m_Gate.Enter("QueueUserAPC");
  const auto alerts = m_Threads.AlertsOf(thread);
  if (!alerts || !alerts->IsOpen()) {
    Fail(alerts ? ERROR_NOT_ENOUGH_MEMORY : ERROR_INVALID_HANDLE);
    return 0;
  }
  alerts->Queue({this, [routine, data] { routine(data); }});
  return 1;
}

// ---- records --------------------------------------------------------------------------------

// In pages of its own. A huge page would cost two megabytes at the first byte.
void* HostPipes::GlobalAlloc(std::size_t bytes) {
  m_Gate.Enter("GlobalAlloc");
  void* const memory = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) {
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  madvise(memory, bytes, MADV_NOHUGEPAGE);
  const std::lock_guard lock(m_Mutex);
  m_Blocks[memory] = {bytes};
  return memory;
}

void HostPipes::GlobalFree(void* memory) {
  m_Gate.Enter("GlobalFree");
  const std::lock_guard lock(m_Mutex);
  const auto block = m_Blocks.find(memory);
  if (block == m_Blocks.end()) return;
  block->second.freed = true;
  ReleaseFreed();
}

void HostPipes::ReleaseFreed() {
  std::erase_if(m_Blocks, [this](const auto& entry) {
    const auto& [memory, block] = entry;
    if (!block.freed) return false;
    const bool used = std::ranges::any_of(m_Pipes, [&entry](const auto& pipe) {
      return pipe.second.instance->Uses(entry.first, entry.second.size);
    });
    if (!used) munmap(memory, block.size);
    return !used;
  });
}

std::size_t HostPipes::OpenRecords() const {
  const std::lock_guard lock(m_Mutex);
  return m_Blocks.size();
}

// ---- security -------------------------------------------------------------------------------

BOOL HostPipes::OpenThreadToken(HANDLE*) {
  m_Gate.Enter("OpenThreadToken");
  return Fail(ERROR_NO_TOKEN);
}

BOOL HostPipes::OpenProcessToken(HANDLE* token) {
  m_Gate.Enter("OpenProcessToken");
  *token = HandleOf(NextId());
  const std::lock_guard lock(m_Mutex);
  m_Tokens.insert(IdOf(*token));
  return TRUE;
}

BOOL HostPipes::CloseToken(HANDLE token) {
  m_Gate.Enter("CloseToken");
  const std::lock_guard lock(m_Mutex);
  return m_Tokens.erase(IdOf(token)) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

BOOL HostPipes::GetTokenUser(HANDLE token, void* buffer, DWORD bufferSize, DWORD* size) {
  m_Gate.Enter("GetTokenUser");
  {
    const std::lock_guard lock(m_Mutex);
    if (!m_Tokens.contains(IdOf(token))) return Fail(ERROR_INVALID_HANDLE);
  }
  const uid_t account = geteuid();
  const auto user = account == 0 ? MakeTokenUser(kNtAuthority, {kSystemAccount})
                                 : MakeTokenUser(kUnixAuthority, {kUnixUser, account});
  *size = static_cast<DWORD>(user.size());
  if (!buffer || bufferSize < user.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(buffer, user.data(), user.size());
  return TRUE;
}

BOOL HostPipes::ConvertSidToStringSidW(const void* tokenUser, std::u16string* sid) {
  m_Gate.Enter("ConvertSidToStringSidW");
  auto text = SidText(tokenUser);
  if (!text) return Fail(kInvalidSid);
  *sid = *std::move(text);
  return TRUE;
}

// The folder's and the sockets' modes say who may connect; a descriptor is checked, and no more.
BOOL HostPipes::ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR sddl, DWORD revision,
                                                                     void** descriptor) {
  m_Gate.Enter("ConvertStringSecurityDescriptorToSecurityDescriptorW");
  if (revision != kSddlRevision || !IsSecurityText(sim::ViewOf(sddl)))
    return Fail(ERROR_INVALID_PARAMETER);
  *descriptor = HandleOf(NextId());
  const std::lock_guard lock(m_Mutex);
  m_Descriptors.insert(*descriptor);
  return TRUE;
}

void HostPipes::LocalFree(void* descriptor) {
  m_Gate.Enter("LocalFree");
  const std::lock_guard lock(m_Mutex);
  m_Descriptors.erase(descriptor);
}

DWORD HostPipes::GetMajorVersion() {
  m_Gate.Enter("GetMajorVersion");
  return kMajorVersion;
}

std::size_t HostPipes::OpenHandles() const {
  const std::lock_guard lock(m_Mutex);
  return m_Pipes.size() + m_Tokens.size() + m_Descriptors.size();
}

}  // namespace corvane::platform::linux_host
