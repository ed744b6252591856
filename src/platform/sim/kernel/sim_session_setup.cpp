// What worlds and tests set and ask of the session: no calls of the program, so nothing of it
// fails.

#include <algorithm>
#include <utility>

#include "platform/clock_api.h"
#include "platform/sim/kernel/sim_session.h"
#include "platform/sim/kernel/sim_text.h"

namespace corvane::platform::sim {

void SimSession::SetWindows(std::vector<std::u16string> titles) {
  const std::lock_guard guard(m_Mutex);
  m_Windows = std::move(titles);
}

void SimSession::SetDnsDomain(std::u16string name) {
  const std::lock_guard guard(m_Mutex);
  m_DnsDomain = std::move(name);
}

void SimSession::SetDomainController(std::u16string_view domain, std::u16string name) {
  const std::lock_guard guard(m_Mutex);
  m_DomainControllers[FoldCase(domain)] = std::move(name);
}

void SimSession::SetConsoleSession(DWORD session) {
  const std::lock_guard guard(m_Mutex);
  m_ConsoleSession = session;
}

void SimSession::AddSession(DWORD session, bool user) {
  const std::lock_guard guard(m_Mutex);
  m_Sessions[session] = user;
}

void SimSession::RemoveSession(DWORD session) {
  const std::lock_guard guard(m_Mutex);
  m_Sessions.erase(session);
}

void SimSession::Install(std::u16string_view executable, SimProgram program) {
  const std::lock_guard guard(m_Mutex);
  m_Programs[FoldCase(executable)] = std::move(program);
  if (FoldCase(executable) == FoldCase(kOwnProgram)) m_bOwnProgram = true;
}

void SimSession::SetOwnProgram(std::function<std::string()> say) {
  const std::lock_guard guard(m_Mutex);
  if (!m_bOwnProgram)
    m_Programs[FoldCase(kOwnProgram)] = {.runMs = kOwnRunMs, .say = std::move(say)};
}

void SimSession::Uninstall(std::u16string_view executable) {
  const std::lock_guard guard(m_Mutex);
  m_Programs.erase(FoldCase(executable));
}

DWORD SimSession::StartProcess(std::u16string_view executable) {
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  return Start(executable, {}, now)->id;
}

void SimSession::EndProcesses(std::u16string_view executable) {
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  for (const ProcessPtr& process : m_Processes) {
    if (FoldCase(process->executable) != FoldCase(executable) || HasEnded(*process, now)) continue;
    process->ended = true;
    process->exitCode = 0;
  }
}

std::size_t SimSession::CountRunning(std::u16string_view executable) const {
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  return static_cast<std::size_t>(
      std::ranges::count_if(m_Processes, [&](const ProcessPtr& process) {
        return FoldCase(process->executable) == FoldCase(executable) && !HasEnded(*process, now);
      }));
}

bool SimSession::IsRunning(DWORD processId) const {
  const ULONGLONG now = m_Clock.GetTickCount64();
  const std::lock_guard guard(m_Mutex);
  return std::ranges::any_of(m_Processes, [&](const ProcessPtr& process) {
    return process->id == processId && !HasEnded(*process, now);
  });
}

void SimSession::SetCommandResult(int result) {
  const std::lock_guard guard(m_Mutex);
  m_CommandResult = result;
}

void SimSession::SetTempPath(std::string path) {
  const std::lock_guard guard(m_Mutex);
  m_TempPath = std::move(path);
}

std::vector<SimSession::Launch> SimSession::TakeLaunches() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Launches, {});
}

std::vector<std::u16string> SimSession::TakeCommands() {
  const std::lock_guard guard(m_Mutex);
  return std::exchange(m_Commands, {});
}

std::size_t SimSession::OpenHandles() const {
  const std::lock_guard guard(m_Mutex);
  return m_Handles.size() + m_Lists.size();
}

}  // namespace corvane::platform::sim
