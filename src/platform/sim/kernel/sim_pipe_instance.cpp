#include "platform/sim/kernel/sim_pipe_instance.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace corvane::platform::sim {

SimPipeInstance::~SimPipeInstance() { CancelAll(); }

DWORD SimPipeInstance::Listen(OVERLAPPED* overlapped) {
  switch (m_State) {
    case State::kConnected:
    case State::kClientGone:  // the first read tells that it went
      return ERROR_PIPE_CONNECTED;
    case State::kListening:
      return ERROR_INVALID_PARAMETER;
    case State::kCreated:
    case State::kDisconnected:
      break;
  }
  m_State = State::kListening;
  m_pListening = overlapped;
  overlapped->Internal = STATUS_PENDING;
  overlapped->InternalHigh = 0;
  if (overlapped->hEvent) m_Objects.ResetEvent(overlapped->hEvent);
  return ERROR_IO_PENDING;
}

void SimPipeInstance::Connect(std::shared_ptr<SimPipeEnd> client) {
  m_pClient = std::move(client);
  m_pClient->broken = false;
  m_State = State::kConnected;
  if (OVERLAPPED* overlapped = std::exchange(m_pListening, nullptr)) {
    overlapped->Internal = ERROR_SUCCESS;
    if (overlapped->hEvent) m_Objects.SetEvent(overlapped->hEvent);
  }
}

DWORD SimPipeInstance::Read(SimThread& self, void* buffer, DWORD size, OVERLAPPED* overlapped,
                            OVERLAPPED_COMPLETION_ROUTINE completion) {
  if (m_State == State::kClientGone && m_ToServer.empty()) return ERROR_BROKEN_PIPE;
  return Begin(std::make_shared<Operation>(Operation{.overlapped = overlapped,
                                                     .completion = completion,
                                                     .thread = &self,
                                                     .threadObject = self.object,
                                                     .target = buffer,
                                                     .size = size}));
}

DWORD SimPipeInstance::Write(SimThread& self, const void* buffer, DWORD size,
                             OVERLAPPED* overlapped, OVERLAPPED_COMPLETION_ROUTINE completion) {
  if (m_State == State::kClientGone) return ERROR_BROKEN_PIPE;
  std::string message(static_cast<const char*>(buffer), size);
  return Begin(std::make_shared<Operation>(Operation{.overlapped = overlapped,
                                                     .completion = completion,
                                                     .thread = &self,
                                                     .threadObject = self.object,
                                                     .size = size,
                                                     .message = std::move(message),
                                                     .isWrite = true}));
}

DWORD SimPipeInstance::Begin(OperationPtr operation) {
  if (m_State != State::kConnected && m_State != State::kClientGone) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  operation->overlapped->Internal = STATUS_PENDING;
  operation->overlapped->InternalHigh = 0;
  m_Operations.push_back(std::move(operation));
  Pump();
  return ERROR_SUCCESS;
}

SimPipeInstance::OperationPtr SimPipeInstance::FirstPending(bool isWrite) const {
  const auto found = std::ranges::find_if(m_Operations, [isWrite](const OperationPtr& one) {
    return one->isWrite == isWrite && !one->complete;
  });
  return found == m_Operations.end() ? nullptr : *found;
}

void SimPipeInstance::Complete(const OperationPtr& operation, DWORD error, std::size_t bytes) {
  operation->complete = true;
  operation->overlapped->Internal = error;
  operation->overlapped->InternalHigh = bytes;
  m_Objects.QueueCall(*operation->thread,
                      {operation.get(), [this, operation] { Deliver(operation); }});
}

// The routine is told what the OVERLAPPED holds when it runs, as Windows does. It may close this
// instance, so nothing of it is touched afterwards. The call that runs this owns the operation.
void SimPipeInstance::Deliver(const OperationPtr& operation) {
  std::erase(m_Operations, operation);
  OVERLAPPED* const overlapped = operation->overlapped;
  const DWORD error = HasOverlappedIoCompleted(*overlapped)
                          ? static_cast<DWORD>(overlapped->Internal)
                          : ERROR_IO_PENDING;
  operation->completion(error, static_cast<DWORD>(overlapped->InternalHigh), overlapped);
}

// What a thread has begun ends with it.
void SimPipeInstance::DropOrphans() {
  std::erase_if(m_Operations, [](const OperationPtr& one) { return one->IsOrphan(); });
}

void SimPipeInstance::CancelAll() {
  DropOrphans();
  for (const OperationPtr& operation : m_Operations) {
    if (!operation->complete) operation->overlapped->Internal = ERROR_OPERATION_ABORTED;
    KernelObjects::ForgetCalls(*operation->thread, operation.get());
  }
  m_Operations.clear();
  m_pListening = nullptr;
}

bool SimPipeInstance::Uses(const void* memory, std::size_t size) {
  DropOrphans();
  const auto* const begin = static_cast<const char*>(memory);
  return std::ranges::any_of(m_Operations, [&](const OperationPtr& one) {
    const auto* const at = reinterpret_cast<const char*>(one->overlapped);
    return at >= begin && at < begin + size;
  });
}

void SimPipeInstance::Pump() {
  DropOrphans();
  while (PumpRead() || PumpWrite()) {
  }
}

bool SimPipeInstance::PumpRead() {
  const OperationPtr read = FirstPending(false);
  if (!read) return false;
  if (m_ToServer.empty()) {
    if (m_State == State::kConnected) return false;
    Complete(read, ERROR_BROKEN_PIPE, 0);
    return true;
  }
  std::string& message = m_ToServer.front();
  const std::size_t taken = std::min<std::size_t>(message.size(), read->size);
  if (taken > 0) std::memcpy(read->target, message.data(), taken);
  const bool whole = taken == message.size();
  if (whole) {
    m_ToServer.pop_front();
  } else {
    message.erase(0, taken);
  }
  Complete(read, whole ? ERROR_SUCCESS : ERROR_MORE_DATA, taken);
  return true;
}

// A message larger than the buffer goes through it once the buffer is empty and the client reads.
bool SimPipeInstance::PumpWrite() {
  const bool reads = m_State == State::kConnected && !m_pClient->stalled;
  if (reads && !m_ToClient.empty()) {
    m_pClient->inbox.insert(m_pClient->inbox.end(), m_ToClient.begin(), m_ToClient.end());
    m_ToClient.clear();
    m_BytesToClient = 0;
  }
  const OperationPtr write = FirstPending(true);
  if (!write) return false;
  if (m_State != State::kConnected) {
    Complete(write, ERROR_BROKEN_PIPE, 0);
    return true;
  }
  if (!reads && m_BytesToClient + write->size > m_BufferSize) return false;
  m_BytesToClient += write->size;
  m_ToClient.push_back(std::move(write->message));
  Complete(write, ERROR_SUCCESS, write->size);
  return true;
}

bool SimPipeInstance::Send(std::string message) {
  if (m_State != State::kConnected) return false;
  m_ToServer.push_back(std::move(message));
  Pump();
  return true;
}

// What it has sent can still be read; what was on its way to it is lost.
void SimPipeInstance::ClientVanishes() {
  if (m_State != State::kConnected) return;
  m_State = State::kClientGone;
  m_pClient->broken = true;
  m_ToClient.clear();
  m_BytesToClient = 0;
  Pump();
}

DWORD SimPipeInstance::Disconnect() {
  if (m_State == State::kDisconnected || m_State == State::kCreated) {
    return ERROR_PIPE_NOT_CONNECTED;
  }
  m_State = State::kDisconnected;
  m_pListening = nullptr;
  if (m_pClient) m_pClient->broken = true;
  m_pClient.reset();
  m_ToServer.clear();
  m_ToClient.clear();
  m_BytesToClient = 0;
  Pump();
  return ERROR_SUCCESS;
}

}  // namespace corvane::platform::sim
