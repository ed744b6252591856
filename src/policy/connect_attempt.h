#pragma once
#include <string>

#include "policy/round.h"

namespace corvane {

// How an attempt ended. Without a profile that may be used the user is asked for credentials: such
// an attempt has not failed, yet nothing is connected.
enum class ConnectOutcome { kConnected, kElsewhere, kCredentialsAsked, kFailed };
struct ConnectAttempt {
  ConnectOutcome outcome = ConnectOutcome::kFailed;
  std::string failure;  // its kind and its text, for the log
};

// One attempt at one entry, with what it leaves on the entry and in `ConnectStatus`: once connected
// the good count and the mark of an entry ever connected; on failure the reason code, of which
// there is none otherwise, and "error". Failed attempts are counted by the caller.
ConnectAttempt TryConnect(const Round& round, CWlanBssEntry& entry, const WString& profileXml,
                          bool save, std::uint32_t timeoutMs);

// The same for the automatic ways: failed attempts count, and the failure is logged under `stage`.
ConnectOutcome TryConnectCounted(const Round& round, CWlanBssEntry& entry, const char* stage);

// Back to the connection of the round after a move that failed; throws Exception when that fails,
// too. The platform chooses the access point, unless the profile goes back to the very one.
void RestoreConnection(const Round& round);

// Moves of the whole program, kept over restarts: within one network, else between networks.
void CountMove(bool withinNetwork);

}  // namespace corvane
