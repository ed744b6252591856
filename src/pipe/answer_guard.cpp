#include "pipe/answer_guard.h"

#include "pipe/json_print.h"
#include "platform/console_api.h"
#include "platform/platform.h"

namespace corvane {

void PrintRequest(const char* head, const std::string& text) {
  Os().console.WriteOutput(head + PrettyJson(text) + "\n");
}

}  // namespace corvane
