#pragma once
// The options that the program knows, and what is said about them. Pure.

#include <vector>

#include "service/command_line.h"

namespace corvane {

enum class OptionKind { kConstant, kInt, kText, kHelp, kShowVersion };

struct OptionRow {
  Option option;
  OptionKind kind;
  char16_t letter;            // 0 for none
  const char16_t* name;       // without its hyphens
  const char16_t* valueName;  // "" for an option without a value
  const char16_t* constant;   // what it stores then
  const char16_t* standard;   // shown in the help; "" for none
  const char16_t* help;
  bool TakesValue() const { return kind == OptionKind::kInt || kind == OptionKind::kText; }
};

// Options whose long name begins so; the one of exactly this name goes before all others.
std::vector<const OptionRow*> RowsWithPrefix(WStringView prefix);
// Null for none. A letter that two options name is the later one's.
const OptionRow* RowOfLetter(char16_t letter);

WString BaseName(WStringView program);
WString UsageText(WStringView program);
WString VersionText(WStringView program);
WString HelpText(WStringView program);

}  // namespace corvane
