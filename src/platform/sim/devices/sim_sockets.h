#pragma once
#include <atomic>

#include "platform/sim/kernel/seam_gate.h"
#include "platform/socket_api.h"

namespace corvane::platform::sim {

// The start and the end of Windows sockets, and no socket.
class SimSockets final : public SocketApi {
 public:
  explicit SimSockets(SeamGate& gate) : m_Gate(gate) {}

  int WSAStartup(WORD) override {
    const DWORD code = m_Gate.Enter("WSAStartup", 10091);  // WSASYSNOTREADY
    if (code == ERROR_SUCCESS) ++m_Users;
    return static_cast<int>(code);
  }
  int WSACleanup() override {
    if (m_Users > 0) --m_Users;  // a call that fails by injection has ended them all the same
    m_Gate.Enter("WSACleanup");
    return 0;
  }

  int Users() const { return m_Users; }  // starts that no cleanup has ended

 private:
  SeamGate& m_Gate;
  std::atomic<int> m_Users{0};
};

}  // namespace corvane::platform::sim
