#include "corvane_lab/service_run.h"

#include "core/service/service_main.h"
#include "platform/thread_api.h"

namespace corvane::lab {

ServiceRun::~ServiceRun() { Stop(); }

void ServiceRun::Start() {
  m_hThread = Os().threads.CreateThread(&ServiceRun::ThreadProc, this, "main", nullptr);
}

unsigned ServiceRun::ThreadProc(void* self) {
  const char16_t* arguments[] = {u"corvane"};
  static_cast<ServiceRun*>(self)->m_ExitCode = ServiceMain(1, arguments);
  return 0;
}

bool ServiceRun::IsRunning() const {
  return m_hThread && Os().threads.WaitForSingleObject(m_hThread, 0) == platform::WAIT_TIMEOUT;
}

bool ServiceRun::Stop() {
  constexpr platform::DWORD kLimitMs = 180'000;
  if (!m_hThread) return true;
  m_Pc.PressKey();
  const bool ended = Os().threads.WaitForSingleObject(m_hThread, kLimitMs) == platform::WAIT_OBJECT_0;
  Os().threads.CloseHandle(m_hThread);
  m_hThread = nullptr;
  return ended;
}

}  // namespace corvane::lab
