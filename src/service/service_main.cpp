#include "service/service_main.h"

#include "foundation/guarded.h"
#include "foundation/singleton.h"
#include "foundation/text.h"
#include "log/log.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "service/one_shot_modes.h"
#include "service/service.h"

namespace corvane {

int ServiceMain(int argc, const char16_t* const* argv) {
  return ServiceMain(ParseCommandLine(std::vector<WString>(argv, argv + argc)));
}

int ServiceMain(const CommandLine& line) {
  if (line.ends) {
    Os().console.WriteOutput(WideToUtf8(line.output));
    Os().console.WriteError(WideToUtf8(line.error));
    return *line.ends;
  }
  int result = 1;
  try {
    const auto ends = RunOneShotModes(line);
    result = ends ? *ends : Service(line).Run();
  } catch (const std::exception& e) {
    // Before the outer loop: the logger could not be started.
    Os().console.WriteError(std::string("corvane: ") + e.what() + "\n");
    StopLogger();
  } catch (const platform::PlatformFault& fault) {
    ReportFault("Main", "ServiceMain", fault.code);
    StopLogger();
  }
  // A thread that was given up and still runs may look at a process-wide object.
  if (Os().threads.AwaitAbandoned(0)) singletons::DropAll();
  return result;
}

}  // namespace corvane
