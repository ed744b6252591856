#include "foundation/smart_obj.h"

#include <algorithm>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "foundation/spin_lock.h"
#include "platform/clock_api.h"
#include "platform/console_api.h"
#include "platform/platform.h"

namespace corvane {

std::atomic<std::uint32_t> g_dbgSmartObjCount{0};

namespace live_objects {
namespace {

CSpinLock s_Lock;

// Never destroyed: objects may outlive every static.
std::unordered_map<const void*, const char*>& Map() {
  static auto& map = *new std::unordered_map<const void*, const char*>;
  return map;
}

}  // namespace

void Add(const void* object) {
  const CSpinLockGuard guard(s_Lock);
  Map().insert_or_assign(object, "SmartObj");
  g_dbgSmartObjCount.fetch_add(1);
}

void Rename(const void* object, const char* name) {
  const CSpinLockGuard guard(s_Lock);
  if (const auto entry = Map().find(object); entry != Map().end()) entry->second = name;
}

void Remove(const void* object) {
  const CSpinLockGuard guard(s_Lock);
  Map().erase(object);
  g_dbgSmartObjCount.fetch_sub(1);
}

std::size_t Size() {
  const CSpinLockGuard guard(s_Lock);
  return Map().size();
}

void ForEach(void (*visit)(const Entry& entry, void* context), void* context) {
  std::vector<Entry> entries;
  {
    const CSpinLockGuard guard(s_Lock);
    for (const auto& [object, name] : Map()) entries.push_back({object, name});
  }
  std::ranges::sort(entries, std::less<const void*>(), &Entry::object);
  for (const Entry& entry : entries) visit(entry, context);
}

}  // namespace live_objects

void ThrowOutOfMemory(const char* printed, const char* thrown) {
  const platform::SYSTEMTIME now = platform::SystemTimeNow();
  Os().console.WriteError(FormatA("%04u-%02u-%02u %02u:%02u:%02u.%03u %s\n", now.wYear, now.wMonth,
                                  now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds,
                                  printed));
  throw Exception(thrown);
}

}  // namespace corvane
