#include "history/global_ap_gateway_map_memo.h"

#include "foundation/ignored.h"
#include "foundation/log_lines.h"
#include "store/csv_helper.h"
#include "store/registry.h"
#include "store/value_names.h"

namespace corvane {

namespace {

constexpr char16_t kRecordSeparator = u'\t';
constexpr char16_t kFieldSeparator = u'\v';
constexpr char16_t kMacSeparator = u',';
constexpr char16_t kDashes[] =
    u"--------------------------------------------------------------------";
static_assert(std::size(kDashes) == 68 + 1);

// Drops rows from the front until the text is no longer than the registry gives it back.
WString LastRowsThatFit(WString rows) {
  constexpr std::size_t kUnits = kLongestTextBytes / sizeof(char16_t);
  if (rows.size() <= kUnits) return rows;
  const std::size_t end = rows.find(kRecordSeparator, rows.size() - kUnits - 1);
  return end == WString::npos ? WString() : rows.substr(end + 1);
}

WString MacListText(const MacList& macs) {
  CSVHelper list(kMacSeparator);
  for (const MacAddress& mac : macs) list.AddString(MacText(mac), true);
  return list.GetString();
}

void ParseMacList(WStringView text, MacList* macs) {
  CSVHelper list(kMacSeparator);
  list.AddStringAll(text);
  for (std::size_t i = 0; i < list.GetCount(); ++i) {
    MacAddress mac{};
    if (MacStringToBinary(u'-', *list.GetItem(i), &mac)) macs->push_back(mac);
  }
}

}  // namespace

WString GatewayMapText(const CGlobalAPGatewayMapMemo::Map& records) {
  CSVHelper rows(kRecordSeparator);
  for (const auto& [bssid, macs] : records) {
    CSVHelper fields(kFieldSeparator);
    fields.AddString(bssid, true);
    fields.AddString(MacListText(macs.ip4), true);
    fields.AddString(MacListText(macs.ip6), true);
    rows.AddString(fields.GetString(), true);
  }
  return LastRowsThatFit(rows.GetString());
}

void ParseGatewayMap(WStringView text, CGlobalAPGatewayMapMemo::Map* records) {
  CSVHelper rows(kRecordSeparator);
  rows.AddStringAll(text);
  for (std::size_t i = 0; i < rows.GetCount(); ++i) {
    CSVHelper fields(kFieldSeparator);
    fields.AddStringAll(*rows.GetItem(i));
    if (fields.GetCount() < 2) continue;
    GatewayMacs& record = (*records)[*fields.GetItem(0)];
    record = {};
    ParseMacList(*fields.GetItem(1), &record.ip4);
    if (fields.GetCount() > 2) ParseMacList(*fields.GetItem(2), &record.ip6);
  }
}

void CGlobalAPGatewayMapMemo::Load() {
  const CCritSecLock lock(m_Lock);
  if (m_bLoaded) return;
  m_bLoaded = true;
  WString text;
  if (CRegistry(kHomeKeyPath).GetRegistryStringValue(value::kGatewayMacs, &text))
    ParseGatewayMap(text, &m_Records);
}

void CGlobalAPGatewayMapMemo::Clear() {
  const CCritSecLock lock(m_Lock);
  m_Records.clear();
  m_bLoaded = false;
}

void CGlobalAPGatewayMapMemo::Update(WStringView bssidText, const MacList& ip4,
                                     const MacList& ip6) {
  const CCritSecLock lock(m_Lock);
  const auto known = m_Records.find(bssidText);
  if (known != m_Records.end() && known->second.ip4 == ip4 && known->second.ip6 == ip6) return;
  m_Records.insert_or_assign(WString(bssidText), GatewayMacs{ip4, ip6});
  Ignored(CRegistry(kHomeKeyPath)
              .SetRegistryStringValue(value::kGatewayMacs, GatewayMapText(m_Records)));
  if (const log::Open open(DBG(41)); open) Dump();
}

GatewayMacs CGlobalAPGatewayMapMemo::LookUp(WStringView bssidText) {
  const CCritSecLock lock(m_Lock);
  return m_Records.try_emplace(WString(bssidText)).first->second;
}

void CGlobalAPGatewayMapMemo::Dump() {
  const CCritSecLock lock(m_Lock);
  LOG_INFO(u"%s", kDashes);
  LOG_INFO(u"%s", GatewayMapText(m_Records));
  LOG_INFO(u"%s\n\n", kDashes);
}

}  // namespace corvane
