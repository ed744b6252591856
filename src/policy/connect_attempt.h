#pragma once
#include <functional>

#include "policy/round.h"

namespace corvane {

// How an attempt ended. Without a profile that may be used the user is asked for credentials: such
// an attempt has not failed, yet nothing is connected. `what` and `code` are those of the failure;
// an exception of the standard library has the code 0.
struct ConnectOutcome {
  bool failed = false;
  bool connected = false;  // the adapter is on the entry
  bool standard = false;   // the failure is std::exception's
  std::string what;
  std::uint32_t code = 0;
};

// One attempt at one entry, with what it leaves on the entry and in `ConnectStatus`: once connected
// the good count and the mark of an entry ever connected; on failure the reason code, of which
// there is none otherwise, and "error". Failed attempts are counted by the caller.
ConnectOutcome TryConnect(const Round& round, CWlanBssEntry& entry, const WString& profileXml,
                          bool save, std::uint32_t timeoutMs);

// The same for the automatic ways: failed attempts count, and the failure is logged under `stage`.
ConnectOutcome TryConnectCounted(const Round& round, CWlanBssEntry& entry, const char* stage);

// Moves of the whole program, kept over restarts: within one network, else between networks.
void CountMove(bool withinNetwork);

}  // namespace corvane
