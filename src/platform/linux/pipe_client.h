#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/pipe_stream.h"

namespace corvane::platform::linux_host {

// The client's end of a pipe on the Linux host. One thread at a time.
class PipeClient {
 public:
  enum class Result { kMessage, kNothing, kEnd };

  // Null when nobody serves the socket, with the system's reason in *reason.
  static std::unique_ptr<PipeClient> Connect(const std::string& path, std::string* reason);
  ~PipeClient();
  PipeClient(const PipeClient&) = delete;
  PipeClient& operator=(const PipeClient&) = delete;

  std::uint32_t ServerProcess() const;  // 0 for one that cannot be seen from here
  // Sends the message with its NUL. False when the service has gone, or does not take it within ten
  // seconds.
  bool Send(std::u16string_view message);
  // Waits up to `ms` for the next message and gives it without its NUL. A signal ends the wait with
  // nothing.
  Result Receive(int ms, std::u16string* message);

 private:
  explicit PipeClient(int descriptor) : m_Socket(descriptor) {}

  const int m_Socket;
  PipeStream m_Stream;
};

}  // namespace corvane::platform::linux_host
