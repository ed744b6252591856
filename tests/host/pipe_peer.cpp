#include "any_host/pipe_peer.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace corvane::test {

namespace {

int DescriptorOf(std::intptr_t end) { return static_cast<int>(end); }

}  // namespace

PipePeer::PipePeer(const std::string& path) : m_End(socket(AF_UNIX, SOCK_STREAM, 0)) {
  const timeval limit{.tv_sec = 10, .tv_usec = 0};
  setsockopt(DescriptorOf(m_End), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(DescriptorOf(m_End), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof address.sun_path - 1));
  if (connect(DescriptorOf(m_End), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
    Vanish();
}

PipePeer::PipePeer(PipePeer&& other) noexcept
    : m_End(std::exchange(other.m_End, kNone)), m_Received(std::move(other.m_Received)) {}

bool PipePeer::Send(std::u16string_view message) {
  std::string bytes(reinterpret_cast<const char*>(message.data()), message.size() * 2);
  bytes.append(2, '\0');
  return SendBytes(bytes);
}

bool PipePeer::SendBytes(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = send(DescriptorOf(m_End), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (count <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

std::optional<std::u16string> PipePeer::Receive() {
  for (std::size_t at = 0;; at += 2) {
    while (at + 2 > m_Received.size()) {
      char block[65'536];
      const ssize_t count = recv(DescriptorOf(m_End), block, sizeof block, 0);
      if (count <= 0) return std::nullopt;
      m_Received.append(block, static_cast<std::size_t>(count));
    }
    if (m_Received[at] != '\0' || m_Received[at + 1] != '\0') continue;
    std::u16string message(at / 2, u'\0');
    std::memcpy(message.data(), m_Received.data(), at);
    m_Received.erase(0, at + 2);
    return message;
  }
}

bool PipePeer::IsAtEnd() {
  char byte;
  if (!m_Received.empty()) return false;
  const ssize_t count = recv(DescriptorOf(m_End), &byte, 1, 0);
  return count == 0 || (count < 0 && errno == ECONNRESET);
}

void PipePeer::EndSending() { shutdown(DescriptorOf(m_End), SHUT_WR); }

void PipePeer::EndReceiving() { shutdown(DescriptorOf(m_End), SHUT_RD); }

void PipePeer::Vanish() {
  if (m_End != kNone) close(DescriptorOf(m_End));
  m_End = kNone;
}

}  // namespace corvane::test
