#include "engine/driver_service.h"

#include "engine/driver_records.h"
#include "foundation/guarded.h"
#include "platform/platform.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "CLBDriverService";

}  // namespace

CLBDriverService::~CLBDriverService() {
  for (const SC_HANDLE handle : {m_hService, m_hManager}) {
    if (!handle) continue;
    GiveBack(kClassName, "Close", [handle] { Os().services.CloseServiceHandle(handle); });
  }
}

void CLBDriverService::Start() {
  Guarded(kClassName, "Start", FALSE, [this]() -> BOOL {
    ServiceApi& services = Os().services;
    m_hManager = services.OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    if (!m_hManager) return FALSE;
    m_hService = services.OpenServiceW(m_hManager, kServiceName, SERVICE_ALL_ACCESS);
    if (!m_hService) return FALSE;
    SERVICE_STATUS status;
    if (services.QueryServiceStatus(m_hService, &status) &&
        status.dwCurrentState == SERVICE_RUNNING) {
      return TRUE;
    }
    return services.StartServiceW(m_hService, 0, nullptr);
  });
}

}  // namespace corvane
