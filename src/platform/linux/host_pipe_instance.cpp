#include "platform/linux/host_pipe_instance.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace corvane::platform::linux_host {

namespace {

constexpr std::size_t kReceiveBytes = 65'536;  // at once

DWORD ProcessAtTheOtherEnd(int socket) {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return 0;
  return static_cast<DWORD>(credentials.pid);
}

}  // namespace

HostPipeInstance::~HostPipeInstance() {
  CancelAll();
  Close();
}

DWORD HostPipeInstance::Listen(OVERLAPPED* overlapped) {
  if (m_State == State::kConnected) return ERROR_PIPE_CONNECTED;
  if (m_State == State::kListening) return ERROR_INVALID_PARAMETER;
  m_State = State::kListening;
  m_pListening = overlapped;
  overlapped->Internal = STATUS_PENDING;
  overlapped->InternalHigh = 0;
  return ERROR_IO_PENDING;
}

OVERLAPPED* HostPipeInstance::Connect(int socket) {
  m_Socket = socket;
  m_ClientProcess = ProcessAtTheOtherEnd(socket);
  m_State = State::kConnected;
  m_bEnded = m_bBroken = false;
  m_EndCode = ERROR_BROKEN_PIPE;
  OVERLAPPED* const overlapped = std::exchange(m_pListening, nullptr);
  if (overlapped) overlapped->Internal = ERROR_SUCCESS;
  return overlapped;
}

DWORD HostPipeInstance::Read(AlertsPtr alerts, void* buffer, DWORD size, OVERLAPPED* overlapped,
                             OVERLAPPED_COMPLETION_ROUTINE completion) {
  if (m_State != State::kConnected) return ERROR_PIPE_NOT_CONNECTED;
  Attend(alerts);
  Begin(std::make_shared<Operation>(Operation{.overlapped = overlapped,
                                              .completion = completion,
                                              .alerts = std::move(alerts),
                                              .isWrite = false,
                                              .target = buffer,
                                              .size = size}));
  return ERROR_SUCCESS;
}

// Most messages go straight to the socket.
DWORD HostPipeInstance::Write(AlertsPtr alerts, const void* buffer, DWORD size,
                              OVERLAPPED* overlapped, OVERLAPPED_COMPLETION_ROUTINE completion) {
  if (m_State != State::kConnected) return ERROR_PIPE_NOT_CONNECTED;
  Attend(alerts);
  std::string_view rest(static_cast<const char*>(buffer), size);
  if (m_ToClient.empty() && !IsPending(true)) rest.remove_prefix(Send(rest));
  if (m_bBroken) return m_EndCode;
  Begin(std::make_shared<Operation>(Operation{.overlapped = overlapped,
                                              .completion = completion,
                                              .alerts = std::move(alerts),
                                              .isWrite = true,
                                              .size = size,
                                              .message = std::string(rest)}));
  return ERROR_SUCCESS;
}

void HostPipeInstance::Begin(OperationPtr operation) {
  operation->overlapped->Internal = STATUS_PENDING;
  operation->overlapped->InternalHigh = 0;
  m_Operations.push_back(std::move(operation));
  Pump();
}

void HostPipeInstance::Complete(const OperationPtr& operation, DWORD error, std::size_t bytes) {
  operation->complete = true;
  operation->message = {};
  operation->overlapped->Internal = error;
  operation->overlapped->InternalHigh = bytes;
  m_Deliver(operation);
}

HostPipeInstance::OperationPtr HostPipeInstance::FirstPending(bool isWrite) const {
  const auto found = std::ranges::find_if(m_Operations, [isWrite](const OperationPtr& one) {
    return one->isWrite == isWrite && !one->complete;
  });
  return found == m_Operations.end() ? nullptr : *found;
}

void HostPipeInstance::Remove(const OperationPtr& operation) {
  std::erase(m_Operations, operation);
}

void HostPipeInstance::CancelAll() {
  for (const OperationPtr& operation : m_Operations) {
    if (!operation->complete) operation->overlapped->Internal = ERROR_OPERATION_ABORTED;
    operation->alerts->Forget(operation.get());
  }
  m_Operations.clear();
  m_pListening = nullptr;
}

bool HostPipeInstance::Uses(const void* memory, std::size_t size) const {
  const auto* const begin = static_cast<const char*>(memory);
  return std::ranges::any_of(m_Operations, [&](const OperationPtr& one) {
    const auto* const at = reinterpret_cast<const char*>(one->overlapped);
    return at >= begin && at < begin + size;
  });
}

DWORD HostPipeInstance::Disconnect() {
  if (m_State == State::kDisconnected || m_State == State::kCreated)
    return ERROR_PIPE_NOT_CONNECTED;
  m_State = State::kDisconnected;
  m_pListening = nullptr;
  Close();
  m_bEnded = m_bBroken = true;
  Pump();
  return ERROR_SUCCESS;
}

void HostPipeInstance::Close() {
  Unwatch();
  if (m_Socket >= 0) close(m_Socket);
  m_Socket = -1;
  m_FromClient.Clear();
  std::string().swap(m_ToClient);
  m_Sent = 0;
}

// ---- the socket -----------------------------------------------------------------------------

void HostPipeInstance::Attend(AlertsPtr alerts) {
  if (m_pAlerts == alerts) return;
  Unwatch();
  m_pAlerts = std::move(alerts);
}

void HostPipeInstance::Unwatch() {
  if (m_bWatched) m_pAlerts->Unwatch(m_Socket);
  m_bWatched = false;
}

// A client that has gone is always told, and again and again: then nothing is watched any more.
// No operation is pending by then, and each later one finds it gone by itself. False when the
// system refuses to tell of the client.
bool HostPipeInstance::UpdateWatch() {
  if (m_Socket < 0 || m_bBroken) {
    Unwatch();
    return true;
  }
  std::uint32_t events = 0;
  if (IsPending(false) && !m_bEnded) events |= EPOLLIN;
  if (!m_ToClient.empty()) events |= EPOLLOUT;
  if (m_bWatched && events == m_Watched) return true;
  const bool done = m_bWatched ? m_pAlerts->Change(m_Socket, m_Id, events)
                               : m_pAlerts->Watch(m_Socket, m_Id, events);
  m_bWatched |= done;
  m_Watched = events;
  return done;
}

// A client that nobody would hear of again is at its end, and what was begun for it says why.
void HostPipeInstance::GiveUp() {
  Unwatch();
  shutdown(m_Socket, SHUT_RDWR);
  m_bEnded = m_bBroken = true;
  m_EndCode = ERROR_NOT_ENOUGH_MEMORY;
  std::string().swap(m_ToClient);
  m_Sent = 0;
}

void HostPipeInstance::OnReady(std::uint32_t events) {
  if (m_Socket < 0) return;
  if (events & (EPOLLHUP | EPOLLERR)) {
    m_bBroken = true;
    std::string().swap(m_ToClient);
    m_Sent = 0;
  }
  Pump();
}

// Moves what can move.
void HostPipeInstance::Pump() {
  if (!m_bBroken) Flush();
  for (;;) {
    while (PumpWrite() || PumpRead()) {
    }
    if (UpdateWatch()) return;
    GiveUp();
  }
}

// A client that has closed its sending half gets the whole of what is on its way to it before the
// end is told. One that can be sent nothing any more is at its end with the last whole message.
bool HostPipeInstance::PumpRead() {
  const OperationPtr read = FirstPending(false);
  if (!read) return false;
  while (!m_FromClient.IsReady(read->size)) {
    if (Receive()) continue;
    const bool atEnd = m_bEnded && m_ToClient.empty();
    if (!m_bBroken && !atEnd) return false;
    Complete(read, m_EndCode, 0);
    return true;
  }
  const PipeStream::Piece piece = m_FromClient.Take(read->target, read->size);
  Complete(read, piece.whole ? ERROR_SUCCESS : ERROR_MORE_DATA, piece.size);
  return true;
}

// Whether something came.
bool HostPipeInstance::Receive() {
  if (m_bEnded || m_Socket < 0) return false;
  char bytes[kReceiveBytes];
  ssize_t count;
  do {
    count = recv(m_Socket, bytes, sizeof bytes, 0);
  } while (count < 0 && errno == EINTR);
  if (count > 0) {
    m_FromClient.Add({bytes, static_cast<std::size_t>(count)});
    return true;
  }
  if (count == 0 || errno != EAGAIN) m_bEnded = true;
  return false;
}

// A message has the buffer's room as a whole, or waits; one that is larger than the buffer has it
// to itself.
bool HostPipeInstance::PumpWrite() {
  const OperationPtr write = FirstPending(true);
  if (!write) return false;
  if (m_bBroken) {
    Complete(write, m_EndCode, 0);
    return true;
  }
  const std::size_t waiting = m_ToClient.size() - m_Sent;
  if (waiting > 0 && waiting + write->message.size() > m_BufferSize) return false;
  if (m_ToClient.empty()) {
    m_ToClient.swap(write->message);
  } else {
    m_ToClient += write->message;
  }
  Complete(write, ERROR_SUCCESS, write->size);
  Flush();
  return true;
}

// How much the socket has taken.
std::size_t HostPipeInstance::Send(std::string_view bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = send(m_Socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count >= 0) {
      sent += static_cast<std::size_t>(count);
    } else if (errno != EINTR) {
      m_bBroken = errno != EAGAIN;
      break;
    }
  }
  return sent;
}

void HostPipeInstance::Flush() {
  if (m_ToClient.empty()) return;
  m_Sent += Send(std::string_view(m_ToClient).substr(m_Sent));
  if (m_bBroken || m_Sent == m_ToClient.size()) {
    std::string().swap(m_ToClient);
    m_Sent = 0;
  } else if (m_Sent > m_ToClient.size() / 2) {
    m_ToClient.erase(0, m_Sent);
    m_Sent = 0;
  }
}

}  // namespace corvane::platform::linux_host
