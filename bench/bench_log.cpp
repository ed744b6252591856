// What a log line costs: behind its closed gate, and as a record of the memory log.

#include <benchmark/benchmark.h>

#include "bench_platform.h"
#include "log/log.h"

namespace corvane {
namespace {

void ClosedGate(benchmark::State& state) {
  const bench::BenchPlatform os;
  g_DebugMask = kDefaultDebugMask & ~DBG(26);
  int value = 1;
  for (auto _ : state) {
    benchmark::DoNotOptimize(value);
    LOG_DEBUG(DBG(26), u"a line with a value %i\n", value);
  }
}
BENCHMARK(ClosedGate);

void ClosedAdapterGate(benchmark::State& state) {
  const bench::BenchPlatform os;
  g_DebugMask = kDefaultDebugMask;
  g_DebugIFMask = kDefaultDebugIFMask;
  int adapter = 2;  // its gate is closed, the line's is open
  for (auto _ : state) {
    benchmark::DoNotOptimize(adapter);
    LOG_ADAPTER(adapter, DBG(16) | DBG(31), u"[%i] a line with a value %i\n", adapter, adapter);
  }
}
BENCHMARK(ClosedAdapterGate);

// A record of a usual length, its message put together from pieces.
void MemoryRecord(benchmark::State& state) {
  const bench::BenchPlatform os;
  g_EnableFileLogging = 0;
  StartLogger("bench");
  const WString ssid = u"Office network", bssid = u"02-50-00-00-00-01";
  int adapter = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(adapter);
    LogRecord(kLogMemory, "<I>", "[Adapter ", adapter, "] CURRENTLY CONNECTED to: ", ssid, " {",
              bssid, "}");
  }
  StopLogger();
}
BENCHMARK(MemoryRecord);

// The same, formatted from a debug line's wide text on its way.
void FormattedMemoryRecord(benchmark::State& state) {
  const bench::BenchPlatform os;
  g_EnableFileLogging = 0;
  StartLogger("bench");
  const WString ssid = u"Office network", bssid = u"02-50-00-00-00-01";
  int adapter = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(adapter);
    LogRecord(kLogMemory, "<I>",
              Format(u"[Adapter %i] CURRENTLY CONNECTED to: %s {%s}", adapter, ssid, bssid));
  }
  StopLogger();
}
BENCHMARK(FormattedMemoryRecord);

}  // namespace
}  // namespace corvane

BENCHMARK_MAIN();
