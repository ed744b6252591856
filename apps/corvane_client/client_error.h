#pragma once
#include <stdexcept>
#include <string>

namespace corvane::client {

// Exit statuses of the program.
enum ExitStatus : int {
  kDone = 0,
  kRefused = 1,    // by the service, or it did not succeed
  kBadCall = 2,    // the words of the call, or a file that they name
  kNoService = 3,  // there is nobody to ask
};

// Ends a command: what to tell on standard error, and the exit status.
struct ClientError : std::runtime_error {
  ClientError(ExitStatus theStatus, const std::string& text)
      : std::runtime_error(text), status(theStatus) {}
  ExitStatus status;
};

}  // namespace corvane::client
