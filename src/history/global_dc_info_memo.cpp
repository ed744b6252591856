#include "history/global_dc_info_memo.h"

#include "store/csv_helper.h"
#include "store/registry.h"
#include "store/value_names.h"

namespace corvane {

void ParseDCInfo(WStringView text, CGlobalDCInfoMemo::Map* records) {
  CSVHelper rows(u'\t');
  rows.AddStringAll(text);
  for (std::size_t i = 0; i < rows.GetCount(); ++i) {
    CSVHelper fields(u'\v');
    fields.AddStringAll(*rows.GetItem(i));
    if (fields.GetCount() < 2) continue;
    CGlobalDCInfoMemo::Record& record = (*records)[*fields.GetItem(0)];
    record.flag = *fields.GetItem(1) == u"true";
    if (const WString* third = fields.GetItem(2)) record.text = *third;
  }
}

void CGlobalDCInfoMemo::Load() {
  const CCritSecLock lock(m_Lock);
  if (m_bLoaded) return;
  m_bLoaded = true;
  WString text;
  if (CRegistry(kHomeKeyPath).GetRegistryStringValue(value::kDCInfo, &text))
    ParseDCInfo(text, &m_Records);
}

void CGlobalDCInfoMemo::Clear() {
  const CCritSecLock lock(m_Lock);
  m_Records.clear();
  m_bLoaded = false;
}

CGlobalDCInfoMemo::Map CGlobalDCInfoMemo::GetRecords() {
  const CCritSecLock lock(m_Lock);
  return m_Records;
}

}  // namespace corvane
