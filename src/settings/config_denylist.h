#pragma once
#include "settings/config_ap_list.h"

namespace corvane {

class CEtwTrellis;
class CPopupSuggestion;

// APs that the engine must never use; a connection to one of them is dropped.
class CConfigDenylist : public CConfigApList {
 public:
  CConfigDenylist();

  // Takes back what is being suggested of the APs that the rows name. After each reload.
  void ClearSuggestions(CPopupSuggestion& popup, CEtwTrellis& events) const;
  bool MoveDenylistAPFileToBackup() const { return MoveToBackup(); }

 private:
  static const Kind kKind;
};

// A row names this BSS, or the platform's own filter lists deny the network.
bool IsDenied(const ApListRows& rows, WStringView ssid, const MacAddress& mac);

}  // namespace corvane
