#pragma once
#include <deque>
#include <list>
#include <memory>
#include <string>
#include <string_view>

#include "platform/pipe_api.h"
#include "platform/sim/kernel/kernel_objects.h"

namespace corvane::platform::sim {

// A client's end of a pipe: what it has read, and whether it reads at all.
struct SimPipeEnd {
  DWORD processId = 0;
  bool stalled = false;
  bool broken = true;             // not connected, or the server has disconnected
  std::deque<std::string> inbox;  // whole messages, read and not yet received
};

// One instance of a named pipe: the messages on their way, and the operations that the server has
// begun. Touched only by the thread that has the baton; nothing here gives it up.
class SimPipeInstance {
 public:
  SimPipeInstance(KernelObjects& objects, std::u16string name, std::size_t bufferSize)
      : m_Objects(objects), m_Name(std::move(name)), m_BufferSize(bufferSize) {}
  ~SimPipeInstance();
  SimPipeInstance(const SimPipeInstance&) = delete;
  SimPipeInstance& operator=(const SimPipeInstance&) = delete;

  // The server's end. They give ERROR_SUCCESS, ERROR_IO_PENDING or why not.
  DWORD Listen(OVERLAPPED* overlapped);
  DWORD Read(SimThread& self, void* buffer, DWORD size, OVERLAPPED* overlapped,
             OVERLAPPED_COMPLETION_ROUTINE completion);
  DWORD Write(SimThread& self, const void* buffer, DWORD size, OVERLAPPED* overlapped,
              OVERLAPPED_COMPLETION_ROUTINE completion);
  DWORD Disconnect();
  void CancelAll();  // no completion routine of this instance is called any more
  // Whether a begun operation, or a completion routine still to come, lies in the memory.
  bool Uses(const void* memory, std::size_t size);

  // The client's end.
  bool IsFree() const { return m_State == State::kCreated || m_State == State::kListening; }
  bool HasClient() const { return m_State == State::kConnected; }
  void Connect(std::shared_ptr<SimPipeEnd> client);
  bool Send(std::string message);
  void ClientVanishes();
  void Pump();  // moves what can move

  const std::u16string& Name() const { return m_Name; }
  const SimPipeEnd* Client() const { return m_pClient.get(); }

 private:
  enum class State { kCreated, kListening, kConnected, kClientGone, kDisconnected };

  // A read or write that was begun, until its completion routine has been called.
  struct Operation {
    OVERLAPPED* overlapped;
    OVERLAPPED_COMPLETION_ROUTINE completion;
    SimThread* thread;
    std::shared_ptr<KernelObject> threadObject = {};  // null: the driving thread
    void* target = nullptr;                           // of a read
    DWORD size = 0;
    std::string message = {};  // of a write
    bool isWrite = false;
    bool complete = false;

    bool IsOrphan() const { return threadObject && !threadObject->thread; }
  };
  using OperationPtr = std::shared_ptr<Operation>;

  DWORD Begin(OperationPtr operation);
  OperationPtr FirstPending(bool isWrite) const;
  void Complete(const OperationPtr& operation, DWORD error, std::size_t bytes);
  void Deliver(const OperationPtr& operation);
  void DropOrphans();
  bool PumpRead();
  bool PumpWrite();

  KernelObjects& m_Objects;
  const std::u16string m_Name;
  const std::size_t m_BufferSize;  // bytes towards the client
  State m_State = State::kCreated;
  OVERLAPPED* m_pListening = nullptr;
  std::shared_ptr<SimPipeEnd> m_pClient;
  std::deque<std::string> m_ToServer;
  std::deque<std::string> m_ToClient;
  std::size_t m_BytesToClient = 0;
  std::list<OperationPtr> m_Operations;  // oldest first
};

}  // namespace corvane::platform::sim
