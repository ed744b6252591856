#pragma once
#include <optional>
#include <string>
#include <string_view>

namespace corvane::test {

// A client of a pipe on the Linux host: a plain socket that blocks, for up to ten seconds a call.
class PipePeer {
 public:
  explicit PipePeer(const std::string& socketPath);  // IsConnected tells
  ~PipePeer() { Vanish(); }
  PipePeer(PipePeer&& other) noexcept;
  PipePeer& operator=(PipePeer&&) = delete;

  bool IsConnected() const { return m_Socket >= 0; }
  bool Send(std::u16string_view message);  // with its NUL
  bool SendBytes(std::string_view bytes);  // false when the server has gone
  // The next message, without its NUL; none at the end of the stream.
  std::optional<std::u16string> Receive();
  bool IsAtEnd();  // waits for what comes next: the end, and not a byte
  void EndSending();
  void EndReceiving();
  void Vanish();

 private:
  int m_Socket;
  std::string m_Received;
};

}  // namespace corvane::test
