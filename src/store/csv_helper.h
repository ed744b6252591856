#pragma once
#include <deque>

#include "foundation/smart_obj.h"
#include "foundation/text.h"

namespace corvane {

// A bounded list of wide strings with a separator; beyond the limit the oldest is dropped. For one
// thread at a time.
class CSVHelper : public SmartObjEx<CSVHelper, SmartObj<>> {
 public:
  explicit CSVHelper(char16_t separator = u'\t', std::size_t limit = 400);
  const char* GetClassName() const override { return "CSVHelper"; }

  // Stores the first non-empty field of `text`. 1 added, 0 a duplicate that is not allowed, -1 no
  // field.
  int AddString(WStringView text, bool bAllowDuplicates);
  // Stores every non-empty field; how many.
  int AddStringAll(WStringView text);
  WString GetString() const;                        // the items joined by the separator
  const WString* GetItem(std::size_t index) const;  // null past the end
  std::size_t GetCount() const { return _csvItems.size(); }
  void Clear();

 private:
  void DropOldest(const char* operation);

  char16_t m_Separator;
  std::size_t m_Limit;
  std::deque<WString> _csvItems;
};

}  // namespace corvane
