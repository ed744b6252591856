#pragma once
#include <map>

#include "foundation/crit_sec.h"
#include "foundation/singleton.h"
#include "foundation/text.h"

namespace corvane {

// Mirror of the registry value DCInfo, which other programs write. For the main thread.
class CGlobalDCInfoMemo {
 public:
  struct Record {
    bool flag = false;
    WString text;
  };
  using Map = std::map<WString, Record, std::less<>>;

  static CGlobalDCInfoMemo& GetInstance() { return Singleton<CGlobalDCInfoMemo>::GetInstance(); }

  void Load();  // once until Clear
  void Clear();
  Map GetRecords();

 private:
  friend class Singleton<CGlobalDCInfoMemo>;
  CGlobalDCInfoMemo() = default;

  CCritSec m_Lock{"domain controller memo", LockRank::kMaps};
  bool m_bLoaded = false;
  Map m_Records;
};

// Records are separated by TAB, their fields (key, flag, text) by VT. One of fewer than 2 fields is
// passed over; a later record of a key adds to the earlier one.
void ParseDCInfo(WStringView text, CGlobalDCInfoMemo::Map* records);

}  // namespace corvane
