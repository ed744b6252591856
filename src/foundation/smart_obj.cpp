#include "foundation/smart_obj.h"

#include <algorithm>
#include <functional>
#include <string>
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

Node* s_pFirst = nullptr;  // under s_Lock, as all links

}  // namespace

void Add(Node* node, const void* object) {
  node->object = object;
  const CSpinLockGuard guard(s_Lock);
  node->next = s_pFirst;
  if (s_pFirst) s_pFirst->previous = node;
  s_pFirst = node;
  g_dbgSmartObjCount.fetch_add(1, std::memory_order_relaxed);
}

void Remove(Node* node) {
  const CSpinLockGuard guard(s_Lock);
  (node->previous ? node->previous->next : s_pFirst) = node->next;
  if (node->next) node->next->previous = node->previous;
  g_dbgSmartObjCount.fetch_sub(1, std::memory_order_relaxed);
}

std::size_t Size() {
  const CSpinLockGuard guard(s_Lock);
  std::size_t count = 0;
  for (const Node* node = s_pFirst; node; node = node->next) ++count;
  return count;
}

void ForEach(void (*visit)(const Entry& entry, void* context), void* context) {
  std::vector<Entry> entries;
  {
    const CSpinLockGuard guard(s_Lock);
    for (const Node* node = s_pFirst; node; node = node->next)
      entries.push_back({node->object, node->name.load(std::memory_order_relaxed)});
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
