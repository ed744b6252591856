#pragma once
#include "platform/service_api.h"

namespace corvane {

// The driver's service, held open while the engine runs. Where the manager or the service cannot be
// opened, the device is tried all the same.
class CLBDriverService {
 public:
  CLBDriverService() = default;
  ~CLBDriverService();
  CLBDriverService(const CLBDriverService&) = delete;
  CLBDriverService& operator=(const CLBDriverService&) = delete;

  // Starts the service where it does not run.
  void Start();

 private:
  platform::SC_HANDLE m_hManager = nullptr;
  platform::SC_HANDLE m_hService = nullptr;
};

}  // namespace corvane
