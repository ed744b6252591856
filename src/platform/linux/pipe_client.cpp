#include "platform/linux/pipe_client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace corvane::platform::linux_host {

namespace {

constexpr std::size_t kLongestMessage = 1'000'000;  // bytes with the NUL
constexpr int kSendSeconds = 10;

}  // namespace

std::unique_ptr<PipeClient> PipeClient::Connect(const std::string& path, std::string* reason) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof(address.sun_path)) {
    *reason = "the path is too long for a socket";
    return nullptr;
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0 ||
      connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    *reason = std::strerror(errno);
    if (descriptor >= 0) close(descriptor);
    return nullptr;
  }
  const timeval limit{.tv_sec = kSendSeconds, .tv_usec = 0};
  setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
  return std::unique_ptr<PipeClient>(new PipeClient(descriptor));
}

PipeClient::~PipeClient() { close(m_Socket); }

std::uint32_t PipeClient::ServerProcess() const {
  ucred credentials{};
  socklen_t size = sizeof credentials;
  if (getsockopt(m_Socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) return 0;
  return static_cast<std::uint32_t>(credentials.pid);
}

bool PipeClient::Send(std::u16string_view message) {
  std::string bytes(reinterpret_cast<const char*>(message.data()), message.size() * 2);
  bytes.append(2, '\0');
  for (std::size_t at = 0; at < bytes.size();) {
    const ssize_t sent = send(m_Socket, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return false;
    at += static_cast<std::size_t>(sent);
  }
  return true;
}

PipeClient::Result PipeClient::Receive(int ms, std::u16string* message) {
  while (!m_Stream.IsReady(kLongestMessage)) {
    pollfd wait{.fd = m_Socket, .events = POLLIN, .revents = 0};
    if (poll(&wait, 1, ms) <= 0) return Result::kNothing;
    char block[65536];
    const ssize_t count = recv(m_Socket, block, sizeof(block), 0);
    if (count < 0 && errno == EINTR) return Result::kNothing;
    if (count <= 0) return Result::kEnd;
    m_Stream.Add({block, static_cast<std::size_t>(count)});
  }
  message->resize(kLongestMessage / 2);
  const PipeStream::Piece piece = m_Stream.Take(message->data(), kLongestMessage);
  message->resize(piece.size / 2);
  if (!message->empty() && message->back() == u'\0') message->pop_back();
  return Result::kMessage;
}

}  // namespace corvane::platform::linux_host
