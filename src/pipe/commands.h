#pragma once
// The commands of the request pipe. Each takes a request whose token is good, acts, and gives the
// reply. They run on the listener's thread under the global configuration lock.

#include <cstdint>

#include "foundation/log_lines.h"
#include "pipe/client_request.h"
#include "settings/interface_config.h"

namespace corvane::commands {

inline constexpr std::uint32_t kNoDelayMs = 15'000;
// Debug bits of lines about clients.
inline constexpr std::uint64_t kClientLog = DBG(5) | DBG(6) | DBG(45);

// Of one adapter: settings_commands.cpp, ui_command.cpp, connect_commands.cpp.
WString WriteRegDW(const CClientRequest& request);
WString WriteRegString(const CClientRequest& request);
WString UICommand(const CClientRequest& request);
WString ConnectAP(const CClientRequest& request);
WString DeleteProfile(const CClientRequest& request);

// Of the service: misc_command.cpp, lb_command.cpp, event_router.cpp, service_commands.cpp.
WString MiscCommand(const CClientRequest& request);
WString LBCommand(const CClientRequest& request);
WString EventRouter(const CClientRequest& request);
WString AppLog(const CClientRequest& request);
WString ClientDir(const CClientRequest& request);

// The adapter that the member "guid" names: code 0, kReplyBadRequest without such a member, or
// kReplyUnknownAdapter.
std::uint32_t FindAdapter(const CClientRequest& request,
                          CSmartPointer<CQUAYInterfaceConfig>* config);
// On the adapters with the indices 0 and 1, where they exist.
void OpenFirstWindows();

}  // namespace corvane::commands
