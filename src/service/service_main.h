#pragma once

namespace corvane {

class CommandLine;

// The body of `main`: the service until a console key asks for its end, or one of the command-line
// modes. Runs on the platform in force, which the caller has set; gives the process's exit code. On
// return no thread of the program runs, the logger is closed, and the process-wide objects are
// dropped.
int ServiceMain(const CommandLine& line);
int ServiceMain(int argc, const char16_t* const* argv);

}  // namespace corvane
