#pragma once
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

namespace corvane::platform::windows {

// The client's end of a pipe, in message mode. One thread at a time. Ctrl-C ends its waits
// (InterruptEvent).
class WindowsPipeClient {
 public:
  enum class Result { kMessage, kNothing, kEnd };

  // `path` is \\.\pipe\ and a name. Null when nobody serves it, with the system's reason in
  // *reason. Waits a few seconds for a server that is busy.
  static std::unique_ptr<WindowsPipeClient> Connect(const std::u16string& path,
                                                    std::string* reason);
  ~WindowsPipeClient();
  WindowsPipeClient(const WindowsPipeClient&) = delete;
  WindowsPipeClient& operator=(const WindowsPipeClient&) = delete;

  // Sends the message with its NUL. False when the service has gone, or does not take it within ten
  // seconds.
  bool Send(std::u16string_view message);
  // Waits up to `ms` for the next message and gives it without its NUL.
  Result Receive(int ms, std::u16string* message);
  // The folder of the program at the other end, in UTF-8 without a separator at its end. None where
  // this account may not see it.
  std::optional<std::string> ServerFolder() const;

 private:
  struct Operation;

  explicit WindowsPipeClient(HANDLE pipe);

  const HANDLE m_Pipe;
  std::unique_ptr<Operation> m_pWrite;
  std::unique_ptr<Operation> m_pRead;  // goes on between calls: what it has read is the next one's
  bool m_bReading = false;
  std::u16string m_Buffer;
};

}  // namespace corvane::platform::windows
