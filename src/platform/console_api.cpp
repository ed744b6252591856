#include "platform/console_api.h"

namespace corvane::platform {

bool ConsoleApi::_kbhit() { return false; }
void ConsoleApi::WriteOutput(std::string_view) {}
void ConsoleApi::WriteError(std::string_view) {}
void ConsoleApi::FlushOutput() {}

}  // namespace corvane::platform
