#include "log/printf_log_policy.h"

#include "platform/console_api.h"
#include "platform/platform.h"

namespace corvane {

void printf_log_policy::write(std::string_view line) { Os().console.WriteOutput(line); }

}  // namespace corvane
