#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "launch/launcher.h"
#include "launch/session_launch.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

bool EndProcess(DWORD id) {
  const CSessionHandle process(Os().session.OpenProcess(PROCESS_ALL_ACCESS, FALSE, id));
  return process && Os().session.TerminateProcess(process.Get(), 0);
}

// Ends every process whose executable has this name, in all sessions.
bool EndProcesses(const char* operation, WStringView executable) {
  return Guarded("Launcher", operation, false, [&] {
    auto& session = Os().session;
    const CSessionHandle snapshot(session.CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry;
    // The first entry is the idle process.
    if (!snapshot || !session.Process32FirstW(snapshot.Get(), &entry)) return false;
    bool ended = false;
    while (session.Process32NextW(snapshot.Get(), &entry)) {
      if (EqualsIgnoreCase(entry.szExeFile, executable) && EndProcess(entry.th32ProcessID))
        ended = true;
    }
    return ended;
  });
}

}  // namespace

bool KillNudgeDialog() { return EndProcesses("KillNudgeDialog", u"NudgeDialog.exe"); }
bool KillTrayApp() { return EndProcesses("KillTrayApp", u"Corvane_TrayApp.exe"); }
bool KillConfigApp() { return EndProcesses("KillConfigApp", u"Corvane_ConfigApp.exe"); }

}  // namespace corvane
