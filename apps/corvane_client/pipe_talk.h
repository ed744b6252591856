#pragma once
// What clients say on the pipes, on every host.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>

#include "corvane_client/client_error.h"
#include "foundation/text.h"

namespace corvane::client {

// A diagnosis takes seconds, and other clients are served before it.
inline constexpr int kReplyLimitMs = 60'000;
inline constexpr int kReplySliceMs = 500;

// The request with a token as its member "art"; an "art" of its own is kept. Throws ClientError
// (kBadCall) for a text that is no JSON object.
std::string WithToken(const std::string& request, const std::string& token);

// What a token says before it is encrypted.
std::string TokenText(const std::string& session, std::uint32_t processId, std::uint64_t nonce);

// That nobody serves there, and what to do.
std::string NoService(const std::string& where, const std::string& reason, const std::string& how);

// A message within `limitMs`; nothing when the time is over, or once isInterrupted() says so. Pipe
// is the client's end on a host.
template <typename Pipe, typename IsInterrupted>
std::optional<std::string> ReceiveReply(Pipe& pipe, int limitMs, IsInterrupted isInterrupted) {
  std::u16string message;
  for (int waited = 0;; waited += kReplySliceMs) {
    const int slice = std::min(kReplySliceMs, limitMs - waited);
    if (slice <= 0 || isInterrupted()) return std::nullopt;
    switch (pipe.Receive(slice, &message)) {
      case Pipe::Result::kMessage:
        return WideToUtf8(message);
      case Pipe::Result::kEnd:
        throw ClientError(kNoService, "the service has closed the connection");
      case Pipe::Result::kNothing:
        break;
    }
  }
}

}  // namespace corvane::client
