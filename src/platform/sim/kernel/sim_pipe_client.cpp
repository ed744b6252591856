#include <cstring>
#include <utility>

#include "platform/sim/kernel/sim_pipes.h"

namespace corvane::platform::sim {

SimPipeClient::SimPipeClient(SimPipes& pipes, DWORD processId)
    : m_Pipes(pipes), m_pEnd(std::make_shared<SimPipeEnd>()) {
  m_pEnd->processId = processId;
}

SimPipeClient::~SimPipeClient() { Vanish(); }

bool SimPipeClient::Connect(std::u16string_view shortName) {
  Vanish();
  m_pEnd->inbox.clear();
  m_pInstance = m_Pipes.Connect(shortName, m_pEnd);
  return m_pInstance != nullptr;
}

bool SimPipeClient::Send(std::u16string_view message) {
  const std::u16string text(message);
  return SendBytes({reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * 2});
}

bool SimPipeClient::SendBytes(std::string_view bytes) {
  return !IsBroken() && m_pInstance->Send(std::string(bytes));
}

std::optional<std::u16string> SimPipeClient::Receive() {
  if (m_pEnd->stalled || m_pEnd->inbox.empty()) return std::nullopt;
  const std::string bytes = std::move(m_pEnd->inbox.front());
  m_pEnd->inbox.pop_front();
  std::u16string text(bytes.size() / 2, u'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * 2);
  if (text.ends_with(u'\0')) text.pop_back();
  return text;
}

void SimPipeClient::Stall(bool on) {
  m_pEnd->stalled = on;
  if (!IsBroken()) m_pInstance->Pump();
}

void SimPipeClient::Vanish() {
  if (!IsBroken()) m_pInstance->ClientVanishes();
  m_pInstance.reset();
}

}  // namespace corvane::platform::sim
