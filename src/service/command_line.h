#pragma once
// The options of the command line and their parser. Pure.

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/text.h"

namespace corvane {

// In the order of their definition, which is that of the help.
enum class Option {
  kVerbose,
  kNlmDebug,
  kTestConnect,
  kConnect,
  kBssid,
  kIfIndex,
  kForceLQEtw,
  kNotifyMsg,
  kNotifyInt,
  kPostFile,
  kTestHttp,
  kUserEnv,
  kDebugVPN,
  kCount
};

class CommandLine {
 public:
  const WString& Program() const { return m_Program; }  // as it was called
  // A mode runs when its option was given; defaults start nothing.
  bool Has(Option option) const { return At(option).has_value(); }
  // Of an option that was given: the value, or its number.
  const WString& Text(Option option) const { return *At(option); }
  int Number(Option option) const { return m_Numbers[static_cast<std::size_t>(option)]; }

  // Set when the parser ends the process: the result, and what goes to standard output and to
  // standard error before.
  std::optional<int> ends;
  WString output;
  WString error;
  bool wantsHelp = false;

 private:
  friend class CommandLineParser;
  const std::optional<WString>& At(Option option) const {
    return m_Values[static_cast<std::size_t>(option)];
  }

  static constexpr std::size_t kCount = static_cast<std::size_t>(Option::kCount);
  WString m_Program;
  std::array<std::optional<WString>, kCount> m_Values;
  std::array<int, kCount> m_Numbers{};
};

// `words` are the program's own name and its arguments.
CommandLine ParseCommandLine(const std::vector<WString>& words);

// Whether the options ask for one job that is done without the service's log and home: other
// instances may run beside it.
bool IsOneShot(const CommandLine& line);

}  // namespace corvane
