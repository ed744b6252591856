#include "service/service_main.h"

#include "foundation/singleton.h"
#include "foundation/text.h"
#include "log/log.h"
#include "platform/console_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "service/service.h"

namespace corvane {

int ServiceMain(int argc, const char16_t* const* argv) {
  if (argc > 1) {
    Os().console.WriteError("corvane: unknown option: " + WideToUtf8(argv[1]) + "\n");
    return 2;
  }
  int result = 1;
  try {
    result = Service(argc > 0 ? argv[0] : u"corvane").Run();
  } catch (const std::exception& e) {
    // Before the outer loop: the logger could not be started.
    Os().console.WriteError(std::string("corvane: ") + e.what() + "\n");
    StopLogger();
  }
  // A thread that was given up and still runs may look at a process-wide object.
  if (Os().threads.AwaitAbandoned(0)) singletons::DropAll();
  return result;
}

}  // namespace corvane
