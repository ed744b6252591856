#include "monitors/bluetooth_monitor_singleton.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/registry_api.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClassName[] = "CBluetoothMonitorSingleton";
constexpr std::uint64_t kBluetoothLog = DBG(13) | DBG(46);
// The system's device class of Bluetooth.
constexpr char16_t kClassKey[] =
    u"SYSTEM\\CurrentControlSet\\Control\\Class\\{e0cbf06c-cd8b-4647-bb8a-263b43f0f974}";
constexpr char16_t kDescriptionValue[] = u"DriverDesc";
constexpr std::uint64_t kMinPollMs = 500;
constexpr std::uint64_t kActivityMs = 30000;
constexpr std::size_t kNameChars = 255;         // of a subkey
constexpr std::size_t kDescriptionChars = 260;  // with the NUL
constexpr PDH_STATUS kFaulted = -1;
constexpr PDH_STATUS PDH_NO_DATA = static_cast<PDH_STATUS>(0x800007D5);

constexpr const char16_t* kCounterNames[] = {
    u"Classic ACL bytes read/sec", u"Classic ACL bytes written/sec",
    u"LE ACL bytes read/sec",      u"LE ACL bytes written/sec",
    u"SCO bytes read/sec",         u"SCO bytes written/sec"};

std::uint64_t Now() { return Os().clock.GetTickCount64(); }

template <class Fn>
LONG Call(const char* operation, Fn&& fn) {
  return Guarded(kClassName, operation, LONG{kFaulted}, fn);
}

// A key that is open for reading, and is closed in the end.
class OpenKey {
 public:
  OpenKey(HKEY parent, const char16_t* path) {
    if (Call("RegOpenKeyExW",
             [&] { return Os().registry.RegOpenKeyExW(parent, path, 0, KEY_READ, &m_hKey); }) != 0)
      m_hKey = nullptr;
  }
  ~OpenKey() {
    if (m_hKey) GiveBack(kClassName, "RegCloseKey", [this] { Os().registry.RegCloseKey(m_hKey); });
  }
  OpenKey(const OpenKey&) = delete;
  OpenKey& operator=(const OpenKey&) = delete;
  explicit operator bool() const { return m_hKey != nullptr; }
  HKEY Get() const { return m_hKey; }

 private:
  HKEY m_hKey = nullptr;
};

bool ReadDescription(HKEY key, WString* description) {
  std::array<char16_t, kDescriptionChars> text{};
  auto size = static_cast<DWORD>(sizeof text);
  DWORD type = 0;
  const LONG read = Call("RegQueryValueExW", [&] {
    return Os().registry.RegQueryValueExW(key, kDescriptionValue, &type,
                                          reinterpret_cast<BYTE*>(text.data()), &size);
  });
  if (read != 0 || type != REG_SZ) return false;
  const WStringView whole(text.data(), std::min<std::size_t>(size / sizeof(char16_t), text.size()));
  *description = whole.substr(0, whole.find(u'\0'));
  return true;
}

void TakeSubkey(HKEY classKey, const char16_t* name, bool verbose, std::list<WString>* list) {
  const OpenKey key(classKey, name);
  if (!key) {
    if (WStringView(name) == u"Properties") return;  // belongs to the system alone
    LOG_INFO(
        u"CBluetoothMonitorSingleton::CountBTAdaptersInRegistry: [SUBKEY] RegOpenKeyEx(hKey, "
        u"%s,...) failed\n",
        name);
    return;
  }
  WString description;
  if (!ReadDescription(key.Get(), &description)) {
    LOG_INFO(
        u"CBluetoothMonitorSingleton::CountBTAdaptersInRegistry: [SUBKEY] "
        u"RegQueryValueEx(hSubKey, 'DriverDesc',...) failed\n");
    return;
  }
  if (!IsBluetoothAdapter(description)) return;
  if (verbose) {
    LOG_DEBUG(kBluetoothLog,
              u"CBluetoothMonitorSingleton::CountBTAdaptersInRegistry: [SUBKEY] "
              u"RegQueryValueEx(hSubKey, 'DriverDesc',...) = %s [_KEEP_]\n",
              description);
  }
  list->push_back(std::move(description));
}

}  // namespace

bool IsBluetoothAdapter(WStringView description) {
  static constexpr WStringView kOthers[] = {u"Enum", u"Protocol", u"Device"};
  return std::ranges::none_of(
      kOthers, [&](WStringView word) { return description.find(word) != description.npos; });
}

std::uint32_t CBluetoothMonitorSingleton::CountBTAdaptersInRegistry(std::list<WString>* list,
                                                                    bool verbose) {
  list->clear();
  const OpenKey classKey(HKEY_LOCAL_MACHINE, kClassKey);
  if (!classKey) {
    LOG_DEBUG(kBluetoothLog,
              u"CBluetoothMonitorSingleton::CountBTAdaptersInRegistry: RegOpenKeyEx(HKLM, %s,...) "
              u"failed\n",
              kClassKey);
    return 0;
  }
  auto& registry = Os().registry;
  DWORD subkeys = 0;
  if (Call("RegQueryInfoKeyW",
           [&] { return registry.RegQueryInfoKeyW(classKey.Get(), &subkeys, nullptr); }) != 0) {
    subkeys = 0;
  }
  for (DWORD i = 0; i < subkeys; ++i) {
    std::array<char16_t, kNameChars + 1> name{};
    DWORD chars = kNameChars;
    if (Call("RegEnumKeyExW",
             [&] { return registry.RegEnumKeyExW(classKey.Get(), i, name.data(), &chars); }) != 0) {
      continue;
    }
    TakeSubkey(classKey.Get(), name.data(), verbose, list);
  }
  return static_cast<std::uint32_t>(list->size());
}

void CBluetoothMonitorSingleton::InitPDHCounters() {
  ClosePDHCounters();
  m_AdapterCount = CountBTAdaptersInRegistry(&m_AdapterNames, true);
  if (m_AdapterCount == 0 || !OpenQuery()) return;
  for (const WString& adapter : m_AdapterNames) AddCounters(adapter);
  if (m_Counters.empty()) return;
  // A rate takes two samples; this is the first.
  const PDH_STATUS status = Call(
      "PdhCollectQueryData", [this] { return Os().perfCounters.PdhCollectQueryData(m_hQuery); });
  if (status == 0) {
    m_LastPollTick = Now();
  } else if (status == PDH_NO_DATA) {
    LOG_ERROR(
        u"CBluetoothMonitorSingleton::InitPDHCounters: 1st PdhCollectQueryData(0x%I64x) failed, "
        u"rc=0x%08lx[PDH_NO_DATA]\n",
        reinterpret_cast<std::uintptr_t>(m_hQuery), status);
  } else {
    LOG_ERROR(
        u"CBluetoothMonitorSingleton::InitPDHCounters: 1st PdhCollectQueryData(0x%I64x) failed, "
        u"rc=0x%08lx\n",
        reinterpret_cast<std::uintptr_t>(m_hQuery), status);
  }
}

bool CBluetoothMonitorSingleton::OpenQuery() {
  if (Call("PdhOpenQueryW",
           [this] { return Os().perfCounters.PdhOpenQueryW(nullptr, 0, &m_hQuery); }) == 0) {
    return true;
  }
  m_hQuery = nullptr;
  LOG_ERROR(u"CBluetoothMonitorSingleton::InitPDHCounters: PdhOpenQuery() failed!\n");
  return false;
}

void CBluetoothMonitorSingleton::AddCounters(const WString& adapter) {
  for (const char16_t* name : kCounterNames) {
    const WString path = Format(u"\\Bluetooth Radio(%s)\\%s", adapter, name);
    PDH_HCOUNTER counter = nullptr;
    if (Call("PdhAddCounterW", [&] {
          return Os().perfCounters.PdhAddCounterW(m_hQuery, path.c_str(), 0, &counter);
        }) == 0) {
      m_Counters.push_back(counter);
    } else {
      LOG_ERROR(u"CBluetoothMonitorSingleton::InitPDHCounters: PdhAddCounter(... %s ...) failed!\n",
                path);
    }
  }
}

void CBluetoothMonitorSingleton::Poll() {
  const std::uint64_t now = Now();
  if (!m_hQuery || m_Counters.empty() || now - m_LastPollTick <= kMinPollMs) return;
  if (Call("PdhCollectQueryData",
           [this] { return Os().perfCounters.PdhCollectQueryData(m_hQuery); }) == 0) {
    ReadCounters(now);
  }
  m_LastPollTick = now;
}

// A value that is no number counts as one that can't be read.
void CBluetoothMonitorSingleton::ReadCounters(std::uint64_t now) {
  m_TotalBitsPerSec = 0.0;
  for (const PDH_HCOUNTER counter : m_Counters) {
    PDH_FMT_COUNTERVALUE value;
    const PDH_STATUS status = Call("PdhGetFormattedCounterValue", [&] {
      return Os().perfCounters.PdhGetFormattedCounterValue(
          counter, PDH_FMT_DOUBLE | PDH_FMT_NOSCALE, nullptr, &value);
    });
    if (status == 0 && std::isfinite(value.doubleValue)) m_TotalBitsPerSec += value.doubleValue * 8;
    TakeSum(now);
  }
}

// Called after each counter with the sum so far: one with traffic is enough for a period.
void CBluetoothMonitorSingleton::TakeSum(std::uint64_t now) {
  if (m_TotalBitsPerSec > 0.0) {
    if (!std::exchange(m_bActive, true))
      LogRecord(kLogMemory, "<I>", "Bluetooth Activity detected.");
    m_ActivityEndTick = now + kActivityMs;
  } else if (m_bActive && now >= m_ActivityEndTick) {
    m_bActive = false;
    LogRecord(kLogMemory, "<I>", "Bluetooth Activity ended.");
  }
}

void CBluetoothMonitorSingleton::ClosePDHCounters() {
  auto& pdh = Os().perfCounters;
  for (const PDH_HCOUNTER counter : std::exchange(m_Counters, {})) {
    PDH_STATUS status = 0;
    GiveBack(kClassName, "PdhRemoveCounter", [&] { status = pdh.PdhRemoveCounter(counter); });
    if (status != 0) {
      LOG_ERROR(
          u"CBluetoothMonitorSingleton::ClosePDHCounters: Failed to remove PDH_COUNTER %p "
          u"[pdh_status=0x%08lx]\n",
          counter, status);
    }
  }
  if (const PDH_HQUERY query = std::exchange(m_hQuery, nullptr)) {
    PDH_STATUS status = 0;
    GiveBack(kClassName, "PdhCloseQuery", [&] { status = pdh.PdhCloseQuery(query); });
    if (status != 0) {
      LOG_ERROR(
          u"CBluetoothMonitorSingleton::ClosePDHCounters: PdhCloseQuery(%p) FAILED! "
          u"[pdh_status=0x%08lx]\n",
          query, status);
    }
  }
  m_AdapterNames.clear();
  m_AdapterCount = 0;
}

bool CBluetoothMonitorSingleton::AdapterCountChanged() const {
  std::list<WString> present;
  return CountBTAdaptersInRegistry(&present, false) != m_AdapterCount;
}

}  // namespace corvane
