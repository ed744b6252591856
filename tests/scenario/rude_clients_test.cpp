// Clients that come, ask, say anything and go, while threads change hands and calls fail by the
// seed.

#include <memory>

#include "corvane_lab/service_run.h"
#include "foundation/smart_obj.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/seeded_random.h"
#include "platform/sim/kernel/sim_crypto.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "platform/sim/kernel/sim_pipes.h"
#include "support/pc_fixture.h"
#include "support/world_builder.h"

namespace corvane::test {

using platform::sim::SimCrypto;
using platform::sim::SimPipeClient;

struct RudeRun {
  std::uint64_t seed;
  double faultRate;
};

class RudeClients : public PcTest, public testing::WithParamInterface<RudeRun> {
 protected:
  // One step of one client.
  void Act(SimPipeClient& client) {
    switch (m_Random.Below(8)) {
      case 0:
        client.Connect(m_Random.Below(2) == 0 ? u"TRLSPipe" : u"TRLSPipe_N");
        break;
      case 1:
        client.Send(uR"({"cmd":"Subscribe"})");
        break;
      case 2:
        client.Vanish();
        break;
      case 3:
        client.Stall(m_Random.Below(2) == 0);
        break;
      case 4:
        client.SendBytes(std::string(m_Random.Below(3000), static_cast<char>(m_Random.Below(256))));
        break;
      default:
        client.Send(Request(client.ProcessId()));
    }
    while (const auto text = client.Receive()) {
      m_Answered += text->starts_with(u"{ \"status\":\"ok\"") ? 1 : 0;
      m_Heard += text->starts_with(u"{ \"evtNamespace\"") ? 1 : 0;
    }
  }
  WString Request(platform::DWORD pid) {
    static constexpr const char* kMembers[] = {
        R"("cmd":"AppLog")",
        R"("cmd":"MiscCommand","name":"Diag1","value":1)",
        R"("cmd":"MiscCommand","name":"IDET","value":1)",
        R"("cmd":"UICommand","idx":0,"guid":"","name":"NoDelay","value":1)",
        R"("cmd":"UICommand","idx":0,"guid":"","name":"NoDelay","value":0)",
        R"("cmd":"UICommand","idx":0,"guid":"","name":"GetAPsForNetwork","value":"Office")",
        R"("cmd":"EventRouter","type":"json1","event":{"evtNamespace":"a","evtCategory":"b",)"
        R"("evtType":"c","evtTimestamp":"","evtState":"","evtData1":"","evtData2":"",)"
        R"("evtData3":"","evtData4":"","evtData5":""})"};
    const std::string token = "s" + std::to_string(pid) + "," + std::to_string(pid) + "," +
                              std::to_string(++m_Nonce) + ",";
    return Utf8ToWide("{\"art\":\"" + SimCrypto::EncryptToken(token) + "\"," +
                      kMembers[m_Random.Below(std::size(kMembers))] + "}");
  }

  platform::sim::SeededRandom m_Random{GetParam().seed};
  int m_Nonce = 0;
  int m_Answered = 0;
  int m_Heard = 0;
};

TEST_P(RudeClients, LeaveNothingBehind) {
  WorldBuilder world;
  world.Adapter()
      .Ap(Beacon(u8"Office").Channel(36).Vht80(2).Rsn({AKM_PSK}), 1, -60.0)
      .Profile("Office")
      .Connected(1);
  PcOptions options;
  options.seed = GetParam().seed;
  options.interleave = true;
  options.faultRate = GetParam().faultRate;
  auto& pc = Boot(world.Build(), options);
  lab::ServiceRun service(pc);
  service.Start();
  {
    std::vector<std::unique_ptr<SimPipeClient>> clients;
    for (int i = 0; i < 6; ++i) {
      clients.push_back(std::make_unique<SimPipeClient>(
          pc.Kernel().Pipes(), pc.Kernel().Session().StartProcess(u"corvane-client")));
    }
    for (int step = 0; step < 600; ++step) {
      Act(*clients[m_Random.Below(clients.size())]);
      RunFor(std::chrono::milliseconds(m_Random.Below(400)));
    }
    pc.Faults().Clear();
    EXPECT_TRUE(service.Stop());
  }
  if (GetParam().faultRate == 0.0) {
    EXPECT_GT(m_Answered + m_Heard, 5) << "nobody was served";
  }
  EXPECT_EQ(LiveObjectCount(), 0u);
  EXPECT_EQ(pc.Kernel().Pipes().OpenRecords(), 0u);
}

std::vector<RudeRun> Runs() {
  std::vector<RudeRun> runs;
  for (std::uint64_t seed = 1; seed <= 12; ++seed)
    runs.push_back({seed, seed % 2 == 0 ? 0.0 : 0.01});
  return runs;
}

INSTANTIATE_TEST_SUITE_P(Seeds, RudeClients, testing::ValuesIn(Runs()),
                         [](const auto& info) { return std::to_string(info.param.seed); });

}  // namespace corvane::test
