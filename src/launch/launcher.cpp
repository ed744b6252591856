#include "launch/launcher.h"

#include <algorithm>
#include <exception>

#include "foundation/exception.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "launch/session_launch.h"
#include "platform/file_api.h"
#include "platform/platform.h"
#include "store/registry.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::uint64_t kLaunchLog = DBG(14);
constexpr std::size_t kMaxCommandLine = 1023;  // of a buffer of 1,024 characters

// No exception leaves the launcher, and a fault of a platform call is a failure of the launch.
template <class Body>
bool Launch(const char* operation, Body body) {
  return Contained([&] { return Guarded("Launcher", operation, false, body); },
                   [operation](const Failure& failure) {
                     ReportFailure(operation, failure);
                     return false;
                   });
}

// A longer line would start something else than was meant.
bool Fits(const char* operation, const WString& commandLine) {
  if (commandLine.size() <= kMaxCommandLine) return true;
  LOG_ERROR(u"-FATAL- | [%S] the command line has %u characters, more than %u\n", operation,
            commandLine.size(), kMaxCommandLine);
  return false;
}

bool IsFile(LPCWSTR path) {
  const DWORD attributes = Os().files.GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

// The command interpreter would end a quoted argument there, or put a variable's value in its
// place.
bool BreaksQuotes(WStringView text) {
  return std::ranges::any_of(
      text, [](char16_t unit) { return unit == u'"' || unit == u'%' || unit < 0x20; });
}

constexpr char16_t kBrowserPolicies[] = u"SOFTWARE\\Policies\\Microsoft\\Internet Explorer\\Main";
constexpr char16_t kFirstRunPolicy[] = u"DisableFirstRunCustomize";
constexpr char16_t kEdgePolicies[] = u"SOFTWARE\\Policies\\Microsoft\\MicrosoftEdge\\Main";
constexpr char16_t kEdgeFirstRunPolicy[] = u"PreventFirstRunPage";

// A policy that keeps the browser from showing a first-run screen. Failing to set it harms nothing.
void SetBrowserPolicy(WStringView key, WStringView name) {
  Launch("SetBrowserPolicy", [&] {
    return CRegistry::CreateHomeKey(key) && CRegistry::WriteRegistryDWORDParameter(key, name, 1);
  });
}

constexpr char16_t kPassphraseDesk[] = u"PassphraseDesk.exe";

// The prompt's command line: the program as the platform finds it when it lies in the current
// directory or nowhere, else by the path in a client's directory.
WString PassphraseDeskCommand(const char* operation, const char16_t* head, int index,
                              WStringView ssid, WStringView bssid, std::uint32_t authentication,
                              IClientFileFinder& finder) {
  const auto format = [&](WStringView program) {
    return Format(u"%s%s %i \"%s\" %s %x %x", head, program, index, ssid, bssid, authentication,
                  authentication);
  };
  WString bare = format(kPassphraseDesk);
  if (IsFile(kPassphraseDesk)) {
    LOG_DEBUG(kLaunchLog, u"=INFO= | __?_?_?___ [%S] [USING CURRENT DIR] buffer = %s\n", operation,
              bare);
    return bare;
  }
  WString path;
  WString line = finder.FindFileInClientDirs(kPassphraseDesk, &path) ? format(path) : bare;
  LOG_DEBUG(kLaunchLog, u"=INFO= | __?_?_?___ [%S] [USING CLIENT DIR] buffer = %s\n", operation,
            line);
  return line;
}

}  // namespace

bool StartNudgeDialogFromService(int index) {
  constexpr char kName[] = "StartNudgeDialogFromService";
  return Launch(kName, [&] {
    return LaunchInSession({kName, "NudgeDialog.exe", DBG(8), index},
                           Format(u"NudgeDialog.exe %i", index));
  });
}

bool StartPassphraseDeskAsUser(int index, WStringView ssid, WStringView bssid,
                               std::uint32_t authentication, IClientFileFinder& finder) {
  constexpr char kName[] = "StartPassphraseDeskAsUser";
  return Launch(kName, [&] {
    const WString line =
        PassphraseDeskCommand(kName, u"", index, ssid, bssid, authentication, finder);
    return Fits(kName, line) && LaunchInSession({kName, "PassphraseDesk.exe", kLaunchLog}, line);
  });
}

bool StartPassphraseDeskAsApp(int index, WStringView ssid, WStringView bssid,
                              std::uint32_t authentication, IClientFileFinder& finder) {
  constexpr char kName[] = "StartPassphraseDeskAsApp";
  return Launch(kName, [&] {
    const WString line =
        PassphraseDeskCommand(kName, u"start ", index, ssid, bssid, authentication, finder);
    if (!Fits(kName, line)) return false;
    // Anybody can broadcast an SSID; it must not become a command.
    if (BreaksQuotes(ssid)) {
      LOG_ERROR(u"StartPassphraseDeskAsApp: the SSID can't be given to the command interpreter");
      return false;
    }
    const int result = Os().session._wsystem(line.c_str());
    if (result == 0) {
      LOG_INFO(u"StartPassphraseDeskAsApp: system(...) SUCCEEDED");
    } else {
      LOG_ERROR(u"StartPassphraseDeskAsApp: system(...) FAILED, rc=%i", result);
    }
    return result == 0;
  });
}

bool StartBrowserUrlAsUser(WStringView url) {
  constexpr char kName[] = "StartBrowserUrlAsUser";
  return Launch(kName, [&] {
    const WString line = Format(u"cmd /c start /MAX iexplore \"%s\"", url);
    return Fits(kName, line) && LaunchInSession({kName, "", kLaunchLog}, line);
  });
}

bool StartBrowserUrl(WStringView url, WStringView machineGuid) {
  return Launch("StartBrowserUrl", [&] {
    SetBrowserPolicy(kBrowserPolicies, kFirstRunPolicy);
    SetBrowserPolicy(kEdgePolicies, kEdgeFirstRunPolicy);
    const WString page = Format(u"%s?GUID=%s", url, machineGuid);
    if (StartBrowserUrlAsUser(page)) {
      LOG_INFO(u"StartBrowserUrl: StartBrowserUrlAsUser() SUCCEEDED");
      return true;
    }
    LOG_ERROR(u"StartBrowserUrl: StartBrowserUrlAsUser() FAILED - trying system(...)");
    const int result =
        Os().session._wsystem(Format(u"cmd /c start /MAX iexplore \"%s\"", page).c_str());
    if (result == 0) {
      LOG_INFO(u"StartBrowserUrl: system(...) SUCCEEDED");
    } else {
      LOG_ERROR(u"StartBrowserUrl: system(...) FAILED, rc=%i", result);
    }
    return result == 0;
  });
}

bool StartAvailableNetworksFromService() {
  constexpr char kName[] = "StartAvailableNetworksFromService";
  return Launch(kName, [&] {
    return LaunchInSession({kName, "explorer.exe", kLaunchLog},
                           u"explorer.exe ms-availablenetworks:");
  });
}

void DoAvailableNetworks() {
  if (StartAvailableNetworksFromService()) {
    LOG_DEBUG(kLaunchLog, u"DoAvailableNetworks: StartAvailableNetworksFromService() SUCCEEDED");
    return;
  }
  LOG_ERROR(
      u"DoAvailableNetworks: StartAvailableNetworksFromService() FAILED - trying "
      u"system(...explorer.exe "
      u"ms-availablenetworks:)");
  Launch("DoAvailableNetworks", [] {
    const int result =
        Os().session.system("start /B cmd.exe /c explorer.exe ms-availablenetworks:");
    if (result == 0) {
      LOG_INFO(u"DoAvailableNetworks: system(...explorer.exe ms-availablenetworks:) Succeeded");
    } else {
      LOG_ERROR(u"DoAvailableNetworks: system(...explorer.exe ms-availablenetworks:) FAILED, rc=%i",
                result);
    }
    return result == 0;
  });
}

}  // namespace corvane
