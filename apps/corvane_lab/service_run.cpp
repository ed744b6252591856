#include "corvane_lab/service_run.h"

#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/simulated_pc.h"
#include "platform/thread_api.h"
#include "service/one_shot_modes.h"
#include "service/service_main.h"

namespace corvane::lab {

ServiceRun::~ServiceRun() { Stop(); }

// The service's own child is the program itself, at its work for the user.
void ServiceRun::Start() {
  m_Pc.Kernel().Session().SetOwnProgram(&UserEnvironmentLine);
  m_hThread = Os().threads.CreateThread(&ServiceRun::ThreadProc, this, "main", nullptr);
}

unsigned ServiceRun::ThreadProc(void* self) {
  auto& run = *static_cast<ServiceRun*>(self);
  const char16_t* arguments[] = {u"corvane"};
  run.m_ExitCode = ServiceMain(1, arguments);
  run.m_bEnded = true;
  return 0;
}

// Asked of the run itself: a wait of the platform may be made to fail.
bool ServiceRun::IsRunning() const { return m_hThread && !m_bEnded; }

bool ServiceRun::Stop() {
  constexpr std::chrono::minutes kLimit(3);
  if (!m_hThread) return true;
  m_Pc.PressKey();
  const bool ended = m_Pc.RunUntil(
      [](void* self) { return static_cast<ServiceRun*>(self)->m_bEnded.load(); }, this, kLimit);
  Os().threads.CloseHandle(m_hThread);
  m_hThread = nullptr;
  return ended;
}

}  // namespace corvane::lab
