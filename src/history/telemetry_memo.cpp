#include "history/telemetry_memo.h"

#include <limits>

#include "foundation/format.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "store/csv_helper.h"
#include "store/registry.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr std::size_t kItems = 3;  // first seen, ap, net

WString TimeStamp() {
  const platform::SYSTEMTIME now = platform::SystemTimeNow();
  return Format(u"%02d-%02d-%02dT%02d:%02d:%02d.%dZ", now.wYear, now.wMonth, now.wDay, now.wHour,
                now.wMinute, now.wSecond, now.wMilliseconds);
}

// The decimal number at the start of the text, 0 without one; held at the type's greatest value.
std::uint32_t ToNumber(WStringView text) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint32_t>::max();
  std::uint64_t number = 0;
  for (const char16_t unit : text) {
    if (unit < u'0' || unit > u'9') break;
    number = number * 10 + static_cast<std::uint64_t>(unit - u'0');
    if (number > kMax) return static_cast<std::uint32_t>(kMax);
  }
  return static_cast<std::uint32_t>(number);
}

}  // namespace

CTelemetryMemo::CTelemetryMemo() { LoadFromRegistry(); }

void CTelemetryMemo::LoadFromRegistry() {
  const CCritSecLock lock(m_Lock);
  m_FirstSeen.clear();
  m_Ap = m_Net = 0;
  const auto registry = CRegistry::CreateObject(kHomeKeyPath);
  WString text;
  if (!registry->GetRegistryStringValue(value::kTelemetryMemo, &text)) {
    m_FirstSeen = TimeStamp();
    LOG_INFO(u"CTelemetryMemo::LoadFromRegistry: Value %s not found", value::kTelemetryMemo);
    return;
  }
  const auto items = CSVHelper::CreateObject();
  items->AddStringAll(text);
  if (items->GetCount() < kItems) {
    LOG_ERROR(u"CTelemetryMemo::LoadFromRegistry: ERROR GOT ONLY %i items from CSV string: %s",
              items->GetCount(), text);
    return;
  }
  m_FirstSeen = *items->GetItem(0);
  m_Ap = ToNumber(*items->GetItem(1));
  m_Net = ToNumber(*items->GetItem(2));
  LOG_INFO(u"CTelemetryMemo::LoadFromRegistry:Read ValueName %s --> %s [V %u, P %u]",
           value::kTelemetryMemo, text, m_Ap, m_Net);
}

bool CTelemetryMemo::SaveToRegistry() {
  const CCritSecLock lock(m_Lock);
  // A memo that could not be read begins now; a text without its time would not be read back
  // either.
  if (m_FirstSeen.empty()) m_FirstSeen = TimeStamp();
  const auto items = CSVHelper::CreateObject();
  items->AddString(m_FirstSeen, true);
  items->AddString(Format(u"%u", m_Ap), true);
  items->AddString(Format(u"%u", m_Net), true);
  const WString text = items->GetString();
  const bool saved =
      CRegistry::CreateObject(kHomeKeyPath)->SetRegistryStringValue(value::kTelemetryMemo, text);
  if (saved) m_SavedText = text;
  LOG_INFO(u"CTelemetryMemo::SaveToRegistry:Saved under ValueName %s --> %s [ap %u, net %u]%s",
           value::kTelemetryMemo, text, m_Ap, m_Net, saved ? u"" : u" ___FAILED___");
  return saved;
}

void CTelemetryMemo::IncrementAp() {
  const CCritSecLock lock(m_Lock);
  ++m_Ap;
}

void CTelemetryMemo::IncrementNet() {
  const CCritSecLock lock(m_Lock);
  ++m_Net;
}

std::uint32_t CTelemetryMemo::GetAp() {
  const CCritSecLock lock(m_Lock);
  return m_Ap;
}

std::uint32_t CTelemetryMemo::GetNet() {
  const CCritSecLock lock(m_Lock);
  return m_Net;
}

}  // namespace corvane
