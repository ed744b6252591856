#pragma once
// The one routine by which a program is started in the session of the logged-on user.

#include "foundation/text.h"
#include "platform/session_api.h"

namespace corvane {

// Who starts what: for the log lines, which name the starting operation and its program.
struct LaunchTag {
  const char* operation = "";      // "StartNudgeDialogFromService"
  const char* program = "";        // in the parentheses of the failure line
  std::uint64_t progressBits = 0;  // debug bits of the lines that report progress
  int adapter = -1;                // whose log bit these need too; -1 for none
  bool colon = false;              // "operation:" in the place of "[operation]"
};

// A handle of the session service, closed at the end of its scope.
class CSessionHandle {
 public:
  CSessionHandle() = default;
  explicit CSessionHandle(platform::HANDLE handle) : m_hHandle(handle) {}
  ~CSessionHandle() { Close(); }
  CSessionHandle(const CSessionHandle&) = delete;
  CSessionHandle& operator=(const CSessionHandle&) = delete;

  platform::HANDLE Get() const { return m_hHandle; }
  platform::HANDLE* Receive();  // for a call that gives a handle
  void Close();
  explicit operator bool() const { return m_hHandle != nullptr; }

 private:
  platform::HANDLE m_hHandle = nullptr;
};

// The token of the user at the console, else of the first session that has a user.
bool QueryUserToken(const LaunchTag& tag, CSessionHandle* token);

// Starts the command line on the user's desktop with the user's environment. `startup` may carry
// standard handles, which are then inherited. The process handle is the caller's.
bool LaunchAsUser(const LaunchTag& tag, const CSessionHandle& token, WStringView commandLine,
                  const platform::STARTUPINFOW& startup, CSessionHandle* process,
                  platform::DWORD* processId);

// Both in one, for a program that is on its own.
bool LaunchInSession(const LaunchTag& tag, WStringView commandLine);

// A line at the tag's progress bits.
void LogProgress(const LaunchTag& tag, const WString& text);

}  // namespace corvane
