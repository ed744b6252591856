#include "store/csv_helper.h"

#include <algorithm>

#include "foundation/log_lines.h"

namespace corvane {

namespace {

// The next field of *rest, without the separator; false at the end. An empty text has no field, and
// a separator at the very end adds none.
bool TakeField(char16_t separator, WStringView* rest, WStringView* field) {
  if (rest->empty()) return false;
  const std::size_t end = rest->find(separator);
  *field = rest->substr(0, end);
  *rest = end == WStringView::npos ? WStringView() : rest->substr(end + 1);
  return true;
}

}  // namespace

CSVHelper::CSVHelper(char16_t separator, std::size_t limit)
    : m_Separator(separator), m_Limit(limit) {}

int CSVHelper::AddString(WStringView text, bool bAllowDuplicates) {
  WStringView field;
  do {
    if (!TakeField(m_Separator, &text, &field)) return -1;
  } while (field.empty());
  if (!bAllowDuplicates && std::find(_csvItems.begin(), _csvItems.end(), field) != _csvItems.end())
    return 0;
  DropOldest("AddString");
  _csvItems.emplace_back(field);
  return 1;
}

int CSVHelper::AddStringAll(WStringView text) {
  int added = 0;
  for (WStringView field; TakeField(m_Separator, &text, &field);) {
    if (field.empty()) continue;
    DropOldest("AddStringAll");
    _csvItems.emplace_back(field);
    ++added;
  }
  return added;
}

void CSVHelper::DropOldest(const char* operation) {
  if (_csvItems.size() < m_Limit) return;
  LOG_INFO(u"CSVHelper::%S: [_csvItems.size() %u >= %u] Removing old item=%s", operation,
           _csvItems.size(), m_Limit, _csvItems.front());
  _csvItems.pop_front();
}

WString CSVHelper::GetString() const {
  std::size_t length = 0;
  for (const WString& item : _csvItems) length += item.size() + 1;
  WString text;
  text.reserve(length);
  for (const WString& item : _csvItems) {
    if (!text.empty()) text += m_Separator;
    text += item;
  }
  return text;
}

const WString* CSVHelper::GetItem(std::size_t index) const {
  return index < _csvItems.size() ? &_csvItems[index] : nullptr;
}

void CSVHelper::Clear() { _csvItems.clear(); }

}  // namespace corvane
