#pragma once
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "platform/pipe_api.h"
#include "platform/sim/kernel/sim_pipe_instance.h"

namespace corvane::platform::sim {

class SeamGate;

// The named pipes of the simulated PC, and the clients at their other ends, in virtual time. The
// program's calls pass the gate; clients act without it. An operation of a thread that has ended is
// forgotten, and its record with it.
class SimPipes final : public PipeApi {
 public:
  static constexpr std::size_t kMostClients = 1024;  // of one pipe; the next one is turned away

  SimPipes(Scheduler& scheduler, KernelObjects& objects, SeamGate& gate);
  ~SimPipes() override;

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

  void SetMajorVersion(DWORD version) { m_MajorVersion = version; }  // 10 at start
  std::size_t CountInstances(std::u16string_view shortName) const;
  // The security of the youngest instance of a pipe, as SDDL; empty without one.
  std::u16string SecurityOf(std::u16string_view shortName) const;
  std::size_t OpenHandles() const;  // pipes, tokens, descriptors
  std::size_t OpenRecords();        // blocks that are not freed

  // For clients: the connected instance; null when nobody serves the pipe or nobody can be served.
  std::shared_ptr<SimPipeInstance> Connect(std::u16string_view shortName,
                                           std::shared_ptr<SimPipeEnd> client);

 private:
  struct Block {
    void* memory = nullptr;
    std::size_t size = 0;
    bool freed = false;
  };
  struct Pipe {
    std::shared_ptr<SimPipeInstance> instance;
    std::u16string security;
  };

  bool Passes(const char* operation, DWORD ordinary);
  BOOL Fail(DWORD code);
  SimPipeInstance* Find(HANDLE pipe);  // null with the last error set
  std::uintptr_t NextHandle() { return m_LastHandle += 4; }
  void ReleaseFreed();  // frees the blocks that no operation uses any more

  Scheduler& m_Scheduler;
  KernelObjects& m_Objects;
  SeamGate& m_Gate;
  std::uintptr_t m_LastHandle = 0x900000;
  std::map<std::uintptr_t, Pipe> m_Pipes;  // oldest first
  std::set<std::uintptr_t> m_Tokens;
  std::map<void*, std::unique_ptr<std::u16string>> m_Descriptors;
  std::list<Block> m_Blocks;
  DWORD m_MajorVersion = 10;
};

// A client of the simulated PC. Its calls come from the driving thread or a device thread, never
// block, and are no seam calls: they fail by no plan and give the baton to nobody.
class SimPipeClient {
 public:
  SimPipeClient(SimPipes& pipes, DWORD processId);
  ~SimPipeClient();  // vanishes
  SimPipeClient(const SimPipeClient&) = delete;
  SimPipeClient& operator=(const SimPipeClient&) = delete;

  // "TRLSPipe". False when nobody serves it at this moment. A client that is connected leaves
  // first.
  bool Connect(std::u16string_view shortName);
  bool Send(std::u16string_view message);  // with its NUL; false when the pipe is broken
  bool SendBytes(std::string_view bytes);  // one message of any bytes
  // The next whole message that has come, without its NUL. None while it stalls.
  std::optional<std::u16string> Receive();
  void Stall(bool on);                              // reads nothing: the server's buffer fills
  void Vanish();                                    // both ends break
  bool IsBroken() const { return m_pEnd->broken; }  // the server has disconnected
  DWORD ProcessId() const { return m_pEnd->processId; }

 private:
  SimPipes& m_Pipes;
  std::shared_ptr<SimPipeEnd> m_pEnd;
  std::shared_ptr<SimPipeInstance> m_pInstance;
};

}  // namespace corvane::platform::sim
