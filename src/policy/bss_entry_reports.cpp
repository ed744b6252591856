#include "policy/bss_entry_reports.h"

#include "foundation/format.h"

namespace corvane {

ReportedAp ReportedApOf(const CWlanBssEntry& entry) {
  return {entry.m_SSIDW, entry.m_BSSIDText, Format(u"[%s]", entry.GetBandText()),
          Format(u"[Channel %lu]", entry.m_Channel)};
}

bool NotifyAlreadyBestAP(const CWlanBssEntry& entry, CEtwTrellis& etw, bool clearSuggestion) {
  if (clearSuggestion) etw.ClearSuggestedAP_If_Equal(entry.m_SSIDW, entry.m_BSSIDText);
  return etw.NotifyAlreadyBestAP(ReportedApOf(entry));
}

}  // namespace corvane
