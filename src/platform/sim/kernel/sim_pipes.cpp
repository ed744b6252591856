#include "platform/sim/kernel/sim_pipes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "platform/session_api.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_text.h"
#include "platform/token_user.h"

namespace corvane::platform::sim {

namespace {

constexpr std::u16string_view kPrefix = u"\\\\.\\pipe\\";
constexpr DWORD kSddlRevision = 1;
constexpr DWORD kInvalidSid = 1337;
constexpr std::uint32_t kSystemAccount = 18;  // S-1-5-18
constexpr std::uint8_t kNtAuthority = 5;

}  // namespace

SimPipes::SimPipes(Scheduler& scheduler, KernelObjects& objects, SeamGate& gate)
    : m_Scheduler(scheduler), m_Objects(objects), m_Gate(gate) {}

SimPipes::~SimPipes() {
  for (const Block& block : m_Blocks) std::free(block.memory);
}

bool SimPipes::Passes(const char* operation, DWORD ordinary) {
  const DWORD code = m_Gate.Enter(operation, ordinary);
  if (code != ERROR_SUCCESS) Fail(code);
  return code == ERROR_SUCCESS;
}

BOOL SimPipes::Fail(DWORD code) {
  m_Scheduler.Current().lastError = code;
  return FALSE;
}

SimPipeInstance* SimPipes::Find(HANDLE pipe) {
  const auto found = m_Pipes.find(reinterpret_cast<std::uintptr_t>(pipe));
  if (found != m_Pipes.end()) return found->second.instance.get();
  Fail(ERROR_INVALID_HANDLE);
  return nullptr;
}

HANDLE SimPipes::CreateNamedPipeW(LPCWSTR path, DWORD, DWORD, DWORD maxInstances,
                                  DWORD outBufferSize, DWORD, DWORD,
                                  const SECURITY_ATTRIBUTES* attributes) {
  if (!Passes("CreateNamedPipeW", ERROR_NOT_ENOUGH_MEMORY)) return nullptr;
  std::u16string_view name(path ? path : u"");
  if (!name.starts_with(kPrefix) || name.size() == kPrefix.size()) {
    Fail(ERROR_BAD_PATHNAME);
    return nullptr;
  }
  name.remove_prefix(kPrefix.size());
  if (maxInstances < PIPE_UNLIMITED_INSTANCES && CountInstances(name) >= maxInstances) {
    Fail(ERROR_PIPE_BUSY);
    return nullptr;
  }
  Pipe pipe{std::make_shared<SimPipeInstance>(m_Objects, FoldCase(name), outBufferSize), u""};
  if (attributes && attributes->lpSecurityDescriptor) {
    const auto descriptor = m_Descriptors.find(attributes->lpSecurityDescriptor);
    if (descriptor == m_Descriptors.end()) {
      Fail(ERROR_INVALID_PARAMETER);
      return nullptr;
    }
    pipe.security = *descriptor->second;
  }
  const std::uintptr_t handle = NextHandle();
  m_Pipes.emplace(handle, std::move(pipe));
  return reinterpret_cast<HANDLE>(handle);
}

BOOL SimPipes::ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped) {
  if (!Passes("ConnectNamedPipe", ERROR_GEN_FAILURE)) return FALSE;
  SimPipeInstance* instance = Find(pipe);
  return instance ? Fail(instance->Listen(overlapped)) : FALSE;
}

BOOL SimPipes::GetOverlappedResult(HANDLE pipe, OVERLAPPED* overlapped, DWORD* transferred,
                                   BOOL wait) {
  if (!Passes("GetOverlappedResult", ERROR_GEN_FAILURE) || !Find(pipe)) return FALSE;
  if (wait && !HasOverlappedIoCompleted(*overlapped) && overlapped->hEvent) {
    m_Scheduler.ThrowIfAbandoned();
    m_Objects.Wait(1, &overlapped->hEvent, false, INFINITE);
  }
  if (!HasOverlappedIoCompleted(*overlapped)) return Fail(ERROR_IO_INCOMPLETE);
  *transferred = static_cast<DWORD>(overlapped->InternalHigh);
  return overlapped->Internal == ERROR_SUCCESS ? TRUE
                                               : Fail(static_cast<DWORD>(overlapped->Internal));
}

BOOL SimPipes::ReadFileEx(HANDLE pipe, void* buffer, DWORD size, OVERLAPPED* overlapped,
                          OVERLAPPED_COMPLETION_ROUTINE completion) {
  if (!Passes("ReadFileEx", ERROR_GEN_FAILURE)) return FALSE;
  SimPipeInstance* instance = Find(pipe);
  if (!instance) return FALSE;
  const DWORD code = instance->Read(m_Scheduler.Current(), buffer, size, overlapped, completion);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL SimPipes::WriteFileEx(HANDLE pipe, const void* buffer, DWORD size, OVERLAPPED* overlapped,
                           OVERLAPPED_COMPLETION_ROUTINE completion) {
  if (!Passes("WriteFileEx", ERROR_GEN_FAILURE)) return FALSE;
  SimPipeInstance* instance = Find(pipe);
  if (!instance) return FALSE;
  const DWORD code = instance->Write(m_Scheduler.Current(), buffer, size, overlapped, completion);
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL SimPipes::DisconnectNamedPipe(HANDLE pipe) {
  if (!Passes("DisconnectNamedPipe", ERROR_GEN_FAILURE)) return FALSE;
  SimPipeInstance* instance = Find(pipe);
  if (!instance) return FALSE;
  const DWORD code = instance->Disconnect();
  return code == ERROR_SUCCESS ? TRUE : Fail(code);
}

BOOL SimPipes::CloseHandle(HANDLE pipe) {
  if (!Passes("CloseHandle", ERROR_GEN_FAILURE)) return FALSE;
  SimPipeInstance* instance = Find(pipe);
  if (!instance) return FALSE;
  instance->CancelAll();
  instance->Disconnect();
  m_Pipes.erase(reinterpret_cast<std::uintptr_t>(pipe));
  ReleaseFreed();
  return TRUE;
}

BOOL SimPipes::GetNamedPipeClientProcessId(HANDLE pipe, ULONG* processId) {
  if (!Passes("GetNamedPipeClientProcessId", ERROR_NOT_SUPPORTED)) return FALSE;
  SimPipeInstance* instance = Find(pipe);
  if (!instance) return FALSE;
  if (!instance->Client()) return Fail(ERROR_PIPE_NOT_CONNECTED);
  *processId = instance->Client()->processId;
  return TRUE;
}

DWORD SimPipes::WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll,
                                         DWORD milliseconds, BOOL alertable) {
  if (!Passes("WaitForMultipleObjectsEx", ERROR_GEN_FAILURE)) return WAIT_FAILED;
  m_Scheduler.ThrowIfAbandoned();
  return m_Objects.Wait(count, objects, waitAll != FALSE, milliseconds, alertable != FALSE);
}

DWORD SimPipes::QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data) {
  if (!Passes("QueueUserAPC", ERROR_GEN_FAILURE)) return 0;
  return m_Objects.QueueCall(thread, {nullptr, [routine, data] { routine(data); }}) ? 1 : 0;
}

// ---- records --------------------------------------------------------------------------------

void* SimPipes::GlobalAlloc(std::size_t bytes) {
  if (!Passes("GlobalAlloc", ERROR_NOT_ENOUGH_MEMORY)) return nullptr;
  void* const memory = std::calloc(1, bytes);
  if (!memory) {
    Fail(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  m_Blocks.push_back({memory, bytes});
  return memory;
}

// A call that faults has freed the memory all the same: nobody could free it again.
void SimPipes::GlobalFree(void* memory) {
  const auto block = std::ranges::find(m_Blocks, memory, &Block::memory);
  if (block != m_Blocks.end()) block->freed = true;
  ReleaseFreed();
  m_Gate.Enter("GlobalFree");
}

void SimPipes::ReleaseFreed() {
  std::erase_if(m_Blocks, [this](const Block& block) {
    const bool used = std::ranges::any_of(m_Pipes, [&block](const auto& entry) {
      return entry.second.instance->Uses(block.memory, block.size);
    });
    if (!block.freed || used) return false;
    std::free(block.memory);
    return true;
  });
}

std::size_t SimPipes::OpenRecords() {
  ReleaseFreed();
  return m_Blocks.size();
}

// ---- security -------------------------------------------------------------------------------

BOOL SimPipes::OpenThreadToken(HANDLE*) {
  return Passes("OpenThreadToken", ERROR_ACCESS_DENIED) ? Fail(ERROR_NO_TOKEN) : FALSE;
}

BOOL SimPipes::OpenProcessToken(HANDLE* token) {
  if (!Passes("OpenProcessToken", ERROR_ACCESS_DENIED)) return FALSE;
  const std::uintptr_t handle = NextHandle();
  m_Tokens.insert(handle);
  *token = reinterpret_cast<HANDLE>(handle);
  return TRUE;
}

BOOL SimPipes::CloseToken(HANDLE token) {
  if (!Passes("CloseToken", ERROR_GEN_FAILURE)) return FALSE;
  return m_Tokens.erase(reinterpret_cast<std::uintptr_t>(token)) ? TRUE
                                                                 : Fail(ERROR_INVALID_HANDLE);
}

BOOL SimPipes::GetTokenUser(HANDLE token, void* buffer, DWORD bufferSize, DWORD* size) {
  if (!Passes("GetTokenUser", ERROR_ACCESS_DENIED)) return FALSE;
  if (!m_Tokens.contains(reinterpret_cast<std::uintptr_t>(token))) {
    return Fail(ERROR_INVALID_HANDLE);
  }
  const auto user = MakeTokenUser(kNtAuthority, {kSystemAccount});
  *size = static_cast<DWORD>(user.size());
  if (!buffer || bufferSize < user.size()) return Fail(ERROR_INSUFFICIENT_BUFFER);
  std::memcpy(buffer, user.data(), user.size());
  return TRUE;
}

BOOL SimPipes::ConvertSidToStringSidW(const void* tokenUser, std::u16string* sid) {
  if (!Passes("ConvertSidToStringSidW", kInvalidSid)) return FALSE;
  auto text = SidText(tokenUser);
  if (!text) return Fail(kInvalidSid);
  *sid = *std::move(text);
  return TRUE;
}

BOOL SimPipes::ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR sddl, DWORD revision,
                                                                    void** descriptor) {
  if (!Passes("ConvertStringSecurityDescriptorToSecurityDescriptorW", ERROR_INVALID_PARAMETER)) {
    return FALSE;
  }
  if (revision != kSddlRevision || !IsSecurityText(sddl)) return Fail(ERROR_INVALID_PARAMETER);
  auto text = std::make_unique<std::u16string>(sddl);
  *descriptor = text.get();
  m_Descriptors.emplace(*descriptor, std::move(text));
  return TRUE;
}

void SimPipes::LocalFree(void* descriptor) {
  m_Descriptors.erase(descriptor);
  m_Gate.Enter("LocalFree");
}

DWORD SimPipes::GetMajorVersion() {
  return Passes("GetMajorVersion", ERROR_GEN_FAILURE) ? m_MajorVersion : 0;
}

// ---- for clients and tests ------------------------------------------------------------------

std::size_t SimPipes::CountInstances(std::u16string_view shortName) const {
  const std::u16string name = FoldCase(shortName);
  return static_cast<std::size_t>(std::ranges::count_if(
      m_Pipes, [&name](const auto& entry) { return entry.second.instance->Name() == name; }));
}

std::u16string SimPipes::SecurityOf(std::u16string_view shortName) const {
  const std::u16string name = FoldCase(shortName);
  std::u16string security;
  for (const auto& [handle, pipe] : m_Pipes) {
    if (pipe.instance->Name() == name) security = pipe.security;
  }
  return security;
}

std::size_t SimPipes::OpenHandles() const {
  return m_Pipes.size() + m_Tokens.size() + m_Descriptors.size();
}

std::shared_ptr<SimPipeInstance> SimPipes::Connect(std::u16string_view shortName,
                                                   std::shared_ptr<SimPipeEnd> client) {
  const std::u16string name = FoldCase(shortName);
  std::shared_ptr<SimPipeInstance> free;
  std::size_t connected = 0;
  for (const auto& [handle, pipe] : m_Pipes) {
    if (pipe.instance->Name() != name) continue;
    if (pipe.instance->HasClient()) ++connected;
    if (!free && pipe.instance->IsFree()) free = pipe.instance;
  }
  if (!free || connected >= kMostClients) return nullptr;
  free->Connect(std::move(client));
  return free;
}

}  // namespace corvane::platform::sim
