#pragma once
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>

#include "platform/linux/host_pipe_instance.h"
#include "platform/pipe_api.h"

namespace corvane::platform::sim {
class SeamGate;
}

namespace corvane::platform::linux_host {

class HostPipeSocket;
class HostThreads;

// Named pipes over UNIX stream sockets in one folder: the socket of a pipe has the pipe's name and
// is there as long as the pipe has an instance. A message is its bytes up to and with the NUL.
// Sockets move only in alertable waits, and in the calls that begin an operation.
class HostPipes final : public PipeApi {
 public:
  static constexpr std::size_t kMostClients = 1024;  // of one pipe; the next one is turned away

  // `folder` is made when the first pipe is. Raises this process's limit of open descriptors to
  // what it may have.
  HostPipes(sim::SeamGate& gate, HostThreads& threads, std::string folder);
  ~HostPipes() override;

  HANDLE CreateNamedPipeW(LPCWSTR path, DWORD openMode, DWORD pipeMode, DWORD maxInstances,
                          DWORD outBufferSize, DWORD inBufferSize, DWORD defaultTimeoutMs,
                          const SECURITY_ATTRIBUTES* attributes) override;
  BOOL ConnectNamedPipe(HANDLE pipe, OVERLAPPED* overlapped) override;
  BOOL GetOverlappedResult(HANDLE pipe, OVERLAPPED* overlapped, DWORD* transferred,
                           BOOL wait) override;
  BOOL ReadFileEx(HANDLE pipe, void* buffer, DWORD size, OVERLAPPED* overlapped,
                  OVERLAPPED_COMPLETION_ROUTINE completion) override;
  BOOL WriteFileEx(HANDLE pipe, const void* buffer, DWORD size, OVERLAPPED* overlapped,
                   OVERLAPPED_COMPLETION_ROUTINE completion) override;
  BOOL DisconnectNamedPipe(HANDLE pipe) override;
  BOOL CloseHandle(HANDLE pipe) override;
  // A process that cannot be seen from here has the id 0.
  BOOL GetNamedPipeClientProcessId(HANDLE pipe, ULONG* processId) override;
  DWORD WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL waitAll,
                                 DWORD milliseconds, BOOL alertable) override;
  DWORD QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data) override;
  void* GlobalAlloc(std::size_t bytes) override;
  void GlobalFree(void* memory) override;
  BOOL OpenThreadToken(HANDLE* token) override;
  BOOL OpenProcessToken(HANDLE* token) override;
  BOOL CloseToken(HANDLE token) override;
  BOOL GetTokenUser(HANDLE token, void* buffer, DWORD bufferSize, DWORD* size) override;
  BOOL ConvertSidToStringSidW(const void* tokenUser, std::u16string* sid) override;
  BOOL ConvertStringSecurityDescriptorToSecurityDescriptorW(LPCWSTR sddl, DWORD revision,
                                                            void** descriptor) override;
  void LocalFree(void* descriptor) override;
  DWORD GetMajorVersion() override;

  std::size_t OpenHandles() const;  // pipes, tokens, descriptors
  std::size_t OpenRecords() const;  // blocks that are not freed

 private:
  // A pipe by its name, as long as it has instances.
  struct Server {
    std::unique_ptr<HostPipeSocket> socket;
    std::size_t instances = 0;
    std::shared_ptr<HostAlerts> watcher = {};  // null: nobody waits for a client
    std::uint64_t id = 0;                      // by which the watcher tells it
  };
  struct Pipe {
    std::string name;
    std::shared_ptr<HostPipeInstance> instance;
  };
  struct Block {
    std::size_t size = 0;
    bool freed = false;
  };

  BOOL Fail(DWORD code);
  // These need the mutex.
  HostPipeInstance* Find(HANDLE pipe);  // null with the last error set
  DWORD OpenServer(const std::string& name);
  void CloseServer(const std::string& name);
  bool Watch(Server& server, std::shared_ptr<HostAlerts> watcher);
  static void Unwatch(Server& server);
  Pipe* Listening(const std::string& name);
  std::size_t CountClients(const std::string& name) const;
  void Accept(const std::string& name, Server& server);
  void OnReady(const HostAlerts::Ready& ready);
  void ReleaseFreed();

  void Deliver(const HostPipeInstance::OperationPtr& operation, std::uint64_t id);
  bool Attend(HostAlerts& alerts, HostTime::RealClock::time_point until);
  void AttendToSockets(HostAlerts& alerts, HostTime::RealClock::time_point until);
  void MakeCalls(HostAlerts& alerts);

  sim::SeamGate& m_Gate;
  HostThreads& m_Threads;
  const std::string m_Folder;
  mutable std::mutex m_Mutex;  // guards all below; that of the threads may be taken under it
  std::map<std::string, Server> m_Servers;
  std::map<std::uint64_t, Pipe> m_Pipes;  // by handle, oldest first
  std::set<std::uintptr_t> m_Tokens;
  std::set<void*> m_Descriptors;
  std::map<void*, Block> m_Blocks;
};

}  // namespace corvane::platform::linux_host
