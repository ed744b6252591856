// The AP lists on the entries of an adapter.

#include "model/ap_list_marks.h"
#include "wlan/wlan_interface.h"

namespace corvane {

void CWlanInterface::ApplyPreferredRows(const PreferredApRows& rows) {
  const CCritSecLock lock(ObjectLock());
  MarkPreferred(rows, &m_Networks);
}

void CWlanInterface::ApplyDenyRows(const ApListRows& rows) {
  const CCritSecLock lock(ObjectLock());
  MarkDenied(rows, &m_Networks);
}

}  // namespace corvane
