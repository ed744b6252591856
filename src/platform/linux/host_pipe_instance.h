#pragma once
#include <list>
#include <memory>
#include <string>

#include "platform/linux/host_alerts.h"
#include "platform/linux/pipe_stream.h"
#include "platform/pipe_api.h"

namespace corvane::platform::linux_host {

// One instance of a pipe: the socket of its client, and the operations that the program has begun.
// All of it is touched under the mutex of HostPipes, which is not held while a completion routine
// runs. The thread that began the last operation attends to the socket, in its alertable wait.
class HostPipeInstance {
 public:
  using AlertsPtr = std::shared_ptr<HostAlerts>;

  // A read or write that was begun, until its completion routine is called.
  struct Operation {
    OVERLAPPED* overlapped;
    OVERLAPPED_COMPLETION_ROUTINE completion;
    AlertsPtr alerts;  // of the thread that began it
    bool isWrite;
    void* target = nullptr;  // of a read
    DWORD size = 0;
    std::string message = {};  // of a write: what the buffer has no room for yet
    bool complete = false;
  };
  using OperationPtr = std::shared_ptr<Operation>;
  // Has the operation's completion routine called on its thread.
  using Deliver = std::function<void(const OperationPtr&)>;

  HostPipeInstance(std::uint64_t id, std::size_t bufferSize, Deliver deliver)
      : m_Id(id), m_BufferSize(bufferSize), m_Deliver(std::move(deliver)) {}
  ~HostPipeInstance();
  HostPipeInstance(const HostPipeInstance&) = delete;
  HostPipeInstance& operator=(const HostPipeInstance&) = delete;

  bool IsListening() const { return m_State == State::kListening; }
  bool HasClient() const { return m_Socket >= 0; }
  DWORD ClientProcess() const { return m_ClientProcess; }

  // They give ERROR_SUCCESS, ERROR_IO_PENDING or why not.
  DWORD Listen(OVERLAPPED* overlapped);
  DWORD Read(AlertsPtr alerts, void* buffer, DWORD size, OVERLAPPED* overlapped,
             OVERLAPPED_COMPLETION_ROUTINE completion);
  DWORD Write(AlertsPtr alerts, const void* buffer, DWORD size, OVERLAPPED* overlapped,
              OVERLAPPED_COMPLETION_ROUTINE completion);
  DWORD Disconnect();
  void CancelAll();                            // no completion routine is called any more
  void Remove(const OperationPtr& operation);  // its completion routine is called now
  bool Uses(const void* memory, std::size_t size) const;  // an operation lies in the memory

  // Takes a connected socket over. What Listen was given, and has to be told; else null.
  OVERLAPPED* Connect(int socket);
  void OnReady(std::uint32_t events);  // epoll's

 private:
  enum class State { kCreated, kListening, kConnected, kDisconnected };

  bool IsPending(bool isWrite) const { return FirstPending(isWrite) != nullptr; }
  OperationPtr FirstPending(bool isWrite) const;
  void Begin(OperationPtr operation);
  void Complete(const OperationPtr& operation, DWORD error, std::size_t bytes);
  void Attend(AlertsPtr alerts);
  bool UpdateWatch();
  void GiveUp();
  void Unwatch();
  void Pump();
  bool PumpRead();
  bool Receive();
  bool PumpWrite();
  std::size_t Send(std::string_view bytes);
  void Flush();
  void Close();

  const std::uint64_t m_Id;
  const std::size_t m_BufferSize;  // bytes towards the client
  const Deliver m_Deliver;
  State m_State = State::kCreated;
  OVERLAPPED* m_pListening = nullptr;
  int m_Socket = -1;
  DWORD m_ClientProcess = 0;
  bool m_bEnded = false;                // the client sends nothing any more
  bool m_bBroken = false;               // nor does it read
  DWORD m_EndCode = ERROR_BROKEN_PIPE;  // of operations on a client that is broken
  PipeStream m_FromClient;
  std::string m_ToClient;  // what the socket has no room for, from m_Sent on
  std::size_t m_Sent = 0;
  std::list<OperationPtr> m_Operations;  // oldest first
  AlertsPtr m_pAlerts;
  std::uint32_t m_Watched = 0;  // epoll's events
  bool m_bWatched = false;
};

}  // namespace corvane::platform::linux_host
