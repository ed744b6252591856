#include "settings/config_select_arbitrary.h"

#include "foundation/exception.h"
#include "foundation/log_lines.h"
#include "settings/program_file.h"
#include "store/ap_list_json.h"

namespace corvane {

bool CConfigSelectArbitrary::LoadConfiguration(PreferredApRows* rows) const {
  const std::size_t before = rows->size();
  try {
    return ReadPreferredRows(ReadProgramFile("preferred_ap"), rows);
  } catch (const Exception& e) {
    LOG_ERROR(u"CConfigSelectArbitrary::LoadConfiguration: Exception: %S", e.what());
  } catch (const std::exception& e) {
    LOG_ERROR(u"CConfigSelectArbitrary::LoadConfiguration: std:exception: %S", e.what());
  }
  return rows->size() > before;
}

}  // namespace corvane
