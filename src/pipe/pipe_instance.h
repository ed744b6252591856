#pragma once
#include <cstddef>
#include <memory>
#include <string>

#include "foundation/smart_obj.h"
#include "platform/pipe_api.h"
#include "platform/wipe.h"

namespace corvane {

class CNamedPipeListener;

// A message is UTF-16 with its NUL, in at most this many units.
inline constexpr std::size_t kPipeUnits = 500'000;
inline constexpr platform::DWORD kPipeBytes = kPipeUnits * sizeof(char16_t);

// What a listener remembers of a client besides its buffers.
struct PipeClientState {
  PipeClientState() = default;
  ~PipeClientState() { platform::Wipe(&plain); }
  PipeClientState(const PipeClientState&) = delete;
  PipeClientState& operator=(const PipeClientState&) = delete;

  platform::DWORD requestBytes = 0;  // of the last message: what has to be cleared
  platform::DWORD replyBytes = 0;
  bool writing = false;     // from the start of a write until its completion routine runs
  bool subscribed = false;  // on the notification pipe, from the first request on
  std::string cipher;       // the last token that could be read, and what it says
  std::string plain;        // wiped when it goes
};

// The record of one connected client: one block of the platform, zeroed when it comes. The
// platform's OVERLAPPED is its head, so that completion routines find the whole. Belongs to the
// listener's thread.
//
// The buffers read as zeroed wherever no message stands. They are cleared as far as the last
// message went, so that a small message touches little memory.
struct PipeInstanceCtx : platform::OVERLAPPED {
  // The buffers stay as the platform gave them.
  PipeInstanceCtx();
  ~PipeInstanceCtx();

  platform::HANDLE hPipeInst = nullptr;
  char16_t request[kPipeUnits];
  char16_t reply[kPipeUnits];
  platform::DWORD cbToWrite = 0;  // bytes of the pending write, the NUL among them
  bool NOTIFICATION = false;
  CSmartPointer<CNamedPipeListener> owner;  // alive as long as the client exists
  std::unique_ptr<PipeClientState> state;
};
static_assert(sizeof(PipeInstanceCtx) == 2'000'072);

}  // namespace corvane
