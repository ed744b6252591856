// The decoder over beacons as they stand on the air: whole loads a second, and what each allocates.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include "bench_platform.h"
#include "elements/frequency_table.h"
#include "foundation/log_lines.h"
#include "model/ie_blob.h"
#include "platform/sim/world/captured_beacons.h"
#include "platform/text_file.h"
#include "support/source_dir.h"

namespace {

std::size_t g_Allocations = 0;  // by operator new; a benchmark has one thread

[[gnu::noinline]] void* Allocate(std::size_t size) noexcept {
  ++g_Allocations;
  return std::malloc(size ? size : 1);
}

void* AllocateOrThrow(std::size_t size) {
  if (void* block = Allocate(size)) return block;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace corvane {
namespace {

struct HeardBeacon {
  std::vector<std::uint8_t> elements;
  platform::WLAN_BSS_ENTRY bss;
  ChannelAndWidth place;
};

HeardBeacon Heard(std::vector<std::uint8_t> elements, platform::ULONG mhz) {
  HeardBeacon beacon;
  beacon.elements = std::move(elements);
  beacon.bss.ulChCenterFrequency = mhz * 1000;
  beacon.place = ChannelOfFrequency(mhz * 1000);
  return beacon;
}

// The captured beacons of which the frequency is known.
std::vector<HeardBeacon> Beacons() {
  std::vector<HeardBeacon> beacons;
  const std::string path = test::SourceDir() + "/tests/data/beacons.jsonl";
  platform::sim::ForEachCapturedLine(
      platform::ReadTextFile(path), path, [&](const std::string& line, const std::string& place) {
        auto captured = platform::sim::ReadCapturedBeacon(line, place);
        if (captured.freqMhz)
          beacons.push_back(Heard(std::move(captured.elements), *captured.freqMhz));
      });
  return beacons;
}

void LoadOne(const HeardBeacon& beacon) {
  const auto blob = CIEBlob::CreateObject();
  blob->Load(beacon.elements.data(), static_cast<std::uint32_t>(beacon.elements.size()),
             beacon.place.channel, beacon.place.width, beacon.bss);
  benchmark::DoNotOptimize(blob->SecurityMask);
}

// A fresh object for each beacon, as each scan makes them.
void Load(benchmark::State& state) {
  const bench::BenchPlatform os;
  g_DebugMask = kDefaultDebugMask & ~(DBG(26) | DBG(27) | DBG(44));  // the decoder's own lines
  const std::vector<HeardBeacon> beacons = Beacons();
  std::vector<std::size_t> allocations;
  std::size_t bytes = 0;
  for (const HeardBeacon& beacon : beacons) {
    const std::size_t before = g_Allocations;
    LoadOne(beacon);
    allocations.push_back(g_Allocations - before);
    bytes += beacon.elements.size();
  }
  std::sort(allocations.begin(), allocations.end());

  for (auto _ : state) {
    for (const HeardBeacon& beacon : beacons) LoadOne(beacon);
  }
  const auto loads = state.iterations() * static_cast<std::int64_t>(beacons.size());
  state.SetItemsProcessed(loads);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
  state.counters["allocations_median"] = static_cast<double>(allocations[allocations.size() / 2]);
  state.counters["allocations_max"] = static_cast<double>(allocations.back());
  state.SetLabel(std::to_string(beacons.size()) + " captured beacons");
}
BENCHMARK(Load);

}  // namespace
}  // namespace corvane

BENCHMARK_MAIN();
