#pragma once
#include "platform/crypto_api.h"
#include "platform/sim/kernel/seeded_random.h"

namespace corvane::platform::sim {

class SeamGate;

// Random numbers of the simulated PC: a function of the seed.
class SimCrypto final : public CryptoApi {
 public:
  SimCrypto(SeamGate& gate, std::uint64_t seed) : m_Gate(gate), m_Random(seed) {}

  HRESULT CoCreateGuid(GUID* guid) override;

 private:
  SeamGate& m_Gate;
  SeededRandom m_Random;
};

}  // namespace corvane::platform::sim
