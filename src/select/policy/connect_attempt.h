#pragma once
#include <functional>

#include "wlan/binding/wlan_interface.h"

namespace corvane {

// How an attempt ended. `what` and `code` are those of the failure; an exception of the standard library
// has the code 0.
struct ConnectOutcome {
  bool connected = false;
  bool standard = false;  // the failure is std::exception's
  std::string what;
  std::uint32_t code = 0;
};

// One attempt at one entry, with what it leaves on the entry and in `ConnectStatus`: on success the good
// count, the mark of an entry ever connected, no reason code; on failure the code and "error". Failed
// attempts are counted by the caller.
ConnectOutcome TryConnect(CWlanInterface& adapter, CQUAYInterfaceConfig& config, CWlanBssEntry& entry,
                          const WString& profileXml, bool save, std::uint32_t timeoutMs);

// The same for the automatic ways: failed attempts count, and the failure is logged under `stage`.
bool TryConnectCounted(CWlanInterface& adapter, CQUAYInterfaceConfig& config, CWlanBssEntry& entry,
                       const char* stage);

// Moves of the whole program, kept over restarts: within one network, else between networks.
void CountMove(bool withinNetwork);

}  // namespace corvane
