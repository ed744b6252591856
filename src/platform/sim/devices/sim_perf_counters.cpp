#include "platform/sim/devices/sim_perf_counters.h"

#include <algorithm>

#include "platform/sim/kernel/sim_text.h"

namespace corvane::platform::sim {

namespace {

constexpr PDH_STATUS Status(std::uint32_t code) { return static_cast<PDH_STATUS>(code); }
constexpr PDH_STATUS kNoInstance = Status(0x800007D1);     // PDH_CSTATUS_NO_INSTANCE
constexpr PDH_STATUS kNoData = Status(0x800007D5);         // PDH_NO_DATA
constexpr PDH_STATUS kNoObject = Status(0xC0000BB8);       // PDH_CSTATUS_NO_OBJECT
constexpr PDH_STATUS kNoCounter = Status(0xC0000BB9);      // PDH_CSTATUS_NO_COUNTER
constexpr PDH_STATUS kInvalidHandle = Status(0xC0000BBC);  // PDH_INVALID_HANDLE
constexpr PDH_STATUS kInvalidArgument = Status(0xC0000BBD);
constexpr PDH_STATUS kBadName = Status(0xC0000BC0);      // PDH_CSTATUS_BAD_COUNTERNAME
constexpr PDH_STATUS kInvalidData = Status(0xC0000BC6);  // PDH_INVALID_DATA

std::uintptr_t NumberOf(void* handle) { return reinterpret_cast<std::uintptr_t>(handle); }

std::u16string InstanceName(std::u16string_view description) {
  std::u16string text(description);
  std::ranges::replace(text, u'#', u'_');
  std::ranges::replace(text, u'(', u'[');
  std::ranges::replace(text, u')', u']');
  return FoldCase(text);
}

}  // namespace

std::optional<PDH_STATUS> SimPerfCounters::Refused(const char* operation) {
  const DWORD code = m_Gate.Enter(operation, static_cast<DWORD>(kNoData));
  return code == ERROR_SUCCESS ? std::nullopt : std::optional(Status(code));
}

PDH_STATUS SimPerfCounters::PdhOpenQueryW(LPCWSTR, std::uintptr_t, PDH_HQUERY* query) {
  if (const auto refused = Refused("PdhOpenQueryW")) return *refused;
  if (!query) return kInvalidArgument;
  m_Machine.loop.WithLock([&] {
    m_Queries.insert(++m_LastHandle);
    *query = reinterpret_cast<PDH_HQUERY>(m_LastHandle);
  });
  return 0;
}

// "\Network Adapter(instance)\counter", or the same of a Bluetooth radio.
bool SimPerfCounters::ParsePath(std::u16string_view path, Counter* counter, PDH_STATUS* status) {
  constexpr std::u16string_view kObject = u"\\network adapter(";
  constexpr std::u16string_view kBluetooth = u"\\bluetooth radio(";
  const std::u16string folded = FoldCase(path);
  *status = kBadName;
  const std::size_t end = folded.rfind(u")\\");
  if (folded.empty() || folded[0] != u'\\' || end == folded.npos) return false;
  const std::u16string_view name = std::u16string_view(folded).substr(end + 2);
  *status = kNoCounter;
  if (folded.starts_with(kBluetooth)) {
    counter->instance = folded.substr(kBluetooth.size(), end - kBluetooth.size());
    counter->bluetooth = FindBluetoothFigure(name);
    return counter->bluetooth.has_value();
  }
  *status = kNoObject;
  if (!folded.starts_with(kObject)) return false;
  counter->instance = folded.substr(kObject.size(), end - kObject.size());
  constexpr std::pair<std::u16string_view, Figure> kNames[] = {
      {u"bytes received/sec", Figure::kBytesIn},
      {u"bytes sent/sec", Figure::kBytesOut},
      {u"packets received errors", Figure::kErrorsIn},
      {u"packets outbound errors", Figure::kErrorsOut}};
  *status = kNoCounter;
  for (const auto& [known, figure] : kNames) {
    if (name != known) continue;
    counter->figure = figure;
    return true;
  }
  return false;
}

PDH_STATUS SimPerfCounters::PdhAddCounterW(PDH_HQUERY query, LPCWSTR path, std::uintptr_t,
                                           PDH_HCOUNTER* counter) {
  if (const auto refused = Refused("PdhAddCounterW")) return *refused;
  if (!path || !counter) return kInvalidArgument;
  Counter made;
  made.query = NumberOf(query);
  PDH_STATUS status = 0;
  if (!ParsePath(path, &made, &status)) return status;
  return m_Machine.loop.WithLock([&]() -> PDH_STATUS {
    if (!m_Queries.contains(made.query)) return kInvalidHandle;
    m_Counters[++m_LastHandle] = std::move(made);
    *counter = reinterpret_cast<PDH_HCOUNTER>(m_LastHandle);
    return 0;
  });
}

std::optional<double> SimPerfCounters::Read(const Counter& counter,
                                            const std::vector<SimInterface>& interfaces) {
  for (const SimInterface& face : interfaces) {
    if (InstanceName(face.description) != counter.instance) continue;
    switch (counter.figure) {
      case Figure::kBytesIn:
        return face.totals.inBytes;
      case Figure::kBytesOut:
        return face.totals.outBytes;
      case Figure::kErrorsIn:
        return face.totals.inErrors;
      case Figure::kErrorsOut:
        return face.totals.outErrors;
    }
  }
  return std::nullopt;
}

PDH_STATUS SimPerfCounters::PdhCollectQueryData(PDH_HQUERY query) {
  if (const auto refused = Refused("PdhCollectQueryData")) return *refused;
  return m_Machine.loop.WithLock([&]() -> PDH_STATUS {
    if (!m_Queries.contains(NumberOf(query))) return kInvalidHandle;
    bool any = false;
    const auto interfaces = InterfacesOf(m_Machine, m_Adapters, m_Traffic);
    for (auto& [handle, counter] : m_Counters) {
      if (counter.query != NumberOf(query)) continue;
      counter.before = counter.last;
      counter.last.reset();
      const std::uint64_t now = m_Machine.loop.NowMs();
      const auto figure = counter.bluetooth ? BluetoothBytes(m_Machine.world, counter.instance,
                                                             *counter.bluetooth, now)
                                            : Read(counter, interfaces);
      if (figure) {
        counter.last = Sample{now, *figure};
        any = true;
      }
    }
    return any ? 0 : kNoData;
  });
}

PDH_STATUS SimPerfCounters::PdhGetFormattedCounterValue(PDH_HCOUNTER counter, DWORD format,
                                                        DWORD* type, PDH_FMT_COUNTERVALUE* value) {
  if (const auto refused = Refused("PdhGetFormattedCounterValue")) return *refused;
  if (!value || (format & PDH_FMT_DOUBLE) == 0) return kInvalidArgument;
  return m_Machine.loop.WithLock([&]() -> PDH_STATUS {
    const auto found = m_Counters.find(NumberOf(counter));
    if (found == m_Counters.end()) return kInvalidHandle;
    const Counter& known = found->second;
    *value = {};
    if (type) *type = 0;
    if (!known.last) return kNoInstance;
    const bool isRate =
        known.bluetooth || known.figure == Figure::kBytesIn || known.figure == Figure::kBytesOut;
    if (!isRate) {
      value->doubleValue = known.last->figure;
      return 0;
    }
    if (!known.before || known.last->atMs <= known.before->atMs) return kInvalidData;
    const double seconds = static_cast<double>(known.last->atMs - known.before->atMs) / 1000.0;
    value->doubleValue = std::max(known.last->figure - known.before->figure, 0.0) / seconds;
    return 0;
  });
}

PDH_STATUS SimPerfCounters::PdhRemoveCounter(PDH_HCOUNTER counter) {
  if (const auto refused = Refused("PdhRemoveCounter")) return *refused;
  return m_Machine.loop.WithLock(
      [&] { return m_Counters.erase(NumberOf(counter)) == 1 ? 0 : kInvalidHandle; });
}

PDH_STATUS SimPerfCounters::PdhCloseQuery(PDH_HQUERY query) {
  const bool closed = m_Machine.loop.WithLock([&] {
    std::erase_if(m_Counters,
                  [&](const auto& entry) { return entry.second.query == NumberOf(query); });
    return m_Queries.erase(NumberOf(query)) == 1;
  });
  if (const auto refused = Refused("PdhCloseQuery")) return *refused;
  return closed ? 0 : kInvalidHandle;
}

std::size_t SimPerfCounters::OpenHandles() {
  return m_Machine.loop.WithLock([&] { return m_Queries.size() + m_Counters.size(); });
}

}  // namespace corvane::platform::sim
