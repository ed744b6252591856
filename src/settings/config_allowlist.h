#pragma once
#include "settings/config_ap_list.h"

namespace corvane {

// While it has rows and AllowlistEnabled is on, only its APs may be candidates.
class CConfigAllowlist : public CConfigApList {
 public:
  CConfigAllowlist();

  bool MoveAllowlistAPFileToBackup() const { return MoveToBackup(); }

 private:
  static const Kind kKind;
};

// A row names this BSS. No rows allow nothing: whether the list counts at all is the caller's
// matter.
inline bool IsAllowed(const ApListRows& rows, WStringView ssid, const MacAddress& mac) {
  return IsListed(rows, ssid, mac);
}

}  // namespace corvane
