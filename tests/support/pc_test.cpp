// Apart from the rest of the fixtures, so that only tests of a whole PC draw in the devices.

#include "platform/sim/devices/sim_devices.h"
#include "support/pc_fixture.h"

namespace corvane::test {

using platform::sim::SimulatedPc;
using platform::sim::World;

PcTest::PcTest() = default;

PcTest::~PcTest() {
  if (!m_pPc) return;
  RunRecord::CheckNothingIsLeft(m_pPc->Kernel());
  m_pPc.reset();
  m_Record->CheckReports();
}

SimulatedPc& PcTest::Boot(const World& world, const PcOptions& options) {
  m_Record.emplace(options);
  m_pPc = std::make_unique<SimulatedPc>(world, options);
  m_pPc->SetReportHandler(RunRecord::Add, &*m_Record);
  return *m_pPc;
}

void PcTest::TearDown() {
  if (!m_pPc) return;
  m_pPc->Faults().Clear();
  m_pPc->EndThreads();
  ResetProcessState();
}

}  // namespace corvane::test
