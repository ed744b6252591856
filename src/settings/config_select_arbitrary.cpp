#include "settings/config_select_arbitrary.h"

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "settings/program_file.h"
#include "store/ap_list_json.h"

namespace corvane {

bool CConfigSelectArbitrary::LoadConfiguration(PreferredApRows* rows) const {
  const std::size_t before = rows->size();
  return Contained([&] { return ReadPreferredRows(ReadProgramFile("preferred_ap"), rows); },
                   [&](const Failure& failure) {
                     ReportFailure("CConfigSelectArbitrary::LoadConfiguration", failure);
                     return rows->size() > before;
                   });
}

}  // namespace corvane
