// The AP lists on an adapter with many entries: what each round of the worker pays for them.

#include <benchmark/benchmark.h>

#include "foundation/format.h"
#include "model/ap_list_marks.h"
#include "platform/sim/kernel/sim_kernel.h"
#include "store/ap_list_json.h"
#include "support/pc_fixture.h"

namespace {

using namespace corvane;

constexpr int kNetworks = 500;
constexpr int kEntries = 1000;

// The platform for objects that live outside a test.
class Bench : public test::KernelTest {
 public:
  Bench() {
    for (int i = 0; i < kEntries; ++i) {
      auto& network = networks[Format(u"Network number %i", i % kNetworks)];
      if (!network) network = CWlanNetwork::CreateObject();
      auto entry = CWlanBssEntry::CreateObject();
      entry->m_bss_scanned = true;
      network->m_BssMap[Mac(i)] = entry;
    }
  }
  ~Bench() override {
    networks.clear();
    TearDown();
  }
  void TestBody() override {}

  static MacAddress Mac(int i) {
    return {
        0x00, 0x11, 0x22, 0x33, static_cast<std::uint8_t>(i >> 8), static_cast<std::uint8_t>(i)};
  }
  NetworkMap networks;
};

// Rows with the networks' own names, with names that differ in case, and with names that are not
// there.
enum Names : int { kExact, kOtherCase, kAbsent };

std::string DenyJson(int rows, int names) {
  constexpr const char* kFormats[] = {"Network number %i", "NETWORK NUMBER %i",
                                      "Somewhere else %i"};
  std::string json = "[";
  for (int i = 0; i < rows; ++i) {
    if (i > 0) json += ',';
    const std::string bssid = i % 2 == 0 ? MacTextA(Bench::Mac(i)) : "any";
    json += "[\"" + FormatA(kFormats[names], i) + "\",\"" + bssid + "\"]";
  }
  return json + "]";
}

void BM_ApplyDenyRows(benchmark::State& state) {
  Bench bench;
  ApListRows rows;
  ReadDenyRows(DenyJson(static_cast<int>(state.range(0)), static_cast<int>(state.range(1))), &rows);
  for (auto _ : state) MarkDenied(rows, &bench.networks);
}
BENCHMARK(BM_ApplyDenyRows)
    ->ArgsProduct({{400}, {kExact, kOtherCase, kAbsent}})
    ->Unit(benchmark::kMicrosecond);

// The round's reload: the rows out of the text.
void BM_ReadDenyRows(benchmark::State& state) {
  const std::string json = DenyJson(static_cast<int>(state.range(0)), kExact);
  for (auto _ : state) {
    ApListRows rows;
    ReadDenyRows(json, &rows);
    benchmark::DoNotOptimize(rows.size());
  }
}
BENCHMARK(BM_ReadDenyRows)->Arg(400)->Arg(4000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
