#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::test {

// A client of a pipe as a program of this host makes one, by a plain socket or a plain handle. It
// blocks, for up to ten seconds a call.
class PipePeer {
 public:
  explicit PipePeer(const std::string& place);  // the socket's path, or the pipe's; see IsConnected
  ~PipePeer() { Vanish(); }
  PipePeer(PipePeer&& other) noexcept;
  PipePeer& operator=(PipePeer&&) = delete;

  bool IsConnected() const { return m_End != kNone; }
  bool Send(std::u16string_view message);  // with its NUL
  bool SendBytes(std::string_view bytes);  // a message where the pipe has them; false: it has gone
  // The next message, without its NUL; none at the end of the stream.
  std::optional<std::u16string> Receive();
  bool IsAtEnd();       // waits for what comes next: the end, and not a byte
  void EndSending();    // of a socket
  void EndReceiving();  // likewise
  void Vanish();

 private:
  static constexpr std::intptr_t kNone = -1;

  std::intptr_t m_End = kNone;  // a descriptor or a handle
  std::string m_Received;       // of a stream
};

}  // namespace corvane::test
