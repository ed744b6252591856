#pragma once
// Programs in the session of the logged-on user, and the ending of programs by name. Nothing lives
// between two calls, so any thread may call. No operation throws; false means that the program was
// not started (or, for the Kill operations, that none was ended), and the log tells the step that
// failed.

#include <string>

#include "foundation/text.h"

namespace corvane {

// Where clients have said that their programs lie.
class IClientFileFinder {
 public:
  // True and the path of the first file of this name in the announced directories.
  virtual bool FindFileInClientDirs(WStringView name, WString* path) = 0;

 protected:
  ~IClientFileFinder() = default;
};

// The suggestion dialog of an adapter.
bool StartNudgeDialogFromService(int index);

// The prompt for credentials: in the user's session, or from an application by the command
// interpreter. It is looked for in the current directory, then in the clients' directories.
// `authentication` is a DOT11_AUTH_ALGORITHM.
bool StartPassphraseDeskAsUser(int index, WStringView ssid, WStringView bssid,
                               std::uint32_t authentication, IClientFileFinder& finder);
bool StartPassphraseDeskAsApp(int index, WStringView ssid, WStringView bssid,
                              std::uint32_t authentication, IClientFileFinder& finder);

// Opens a page in the user's browser, "?GUID=" and `machineGuid` (in braces) behind the address.
bool StartBrowserUrl(WStringView url, WStringView machineGuid);
bool StartBrowserUrlAsUser(WStringView url);

// The system's list of available networks.
void DoAvailableNetworks();
bool StartAvailableNetworksFromService();

// Runs this program in the user's session to learn the user's environment; gives what it wrote.
// Waits for its end, at most kProbeLimitMs, after which the child is ended.
inline constexpr std::uint32_t kProbeLimitMs = 60'000;
bool InvokeSelfFromServiceToGetUserTempPath(std::string* text);

// End every process of that name, in all sessions.
bool KillNudgeDialog();
bool KillTrayApp();
bool KillConfigApp();

}  // namespace corvane
