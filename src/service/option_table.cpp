#include "service/option_table.h"

#include <algorithm>
#include <iterator>

namespace corvane {

namespace {

constexpr WStringView kUsage = u"usage: %prog [OPTION]";
constexpr WStringView kVersionText = u"%prog 1.0\nAP Selector program";
constexpr WStringView kDescription =
    u"This application allows for dynamic select/connect to Wireless APs based on fitness rankings "
    u"and configured preferences.";
constexpr WStringView kEpilog = u"epilog";

constexpr std::size_t kWidth = 79;       // columns of the help
constexpr std::size_t kHelpColumn = 24;  // where an option's text begins

using enum OptionKind;
constexpr OptionRow kRows[] = {
    {Option::kCount, kHelp, 0, u"help", u"", u"", u"", u"show this help message and exit"},
    {Option::kCount, kShowVersion, 0, u"version", u"", u"", u"",
     u"show program's version number and exit"},
    {Option::kVerbose, kConstant, u'v', u"verbose", u"", u"100", u"50", u"be verbose!"},
    {Option::kNlmDebug, kInt, u'n', u"nlmdebug", u"MODE", u"", u"1",
     u"Set NLM Debug Mode (0, 1, or 2)"},
    {Option::kTestConnect, kConstant, u't', u"testconnect", u"", u"1", u"",
     u"Test connect and exit"},
    {Option::kConnect, kText, u'c', u"connect", u"SSID", u"", u"none", u"Connect to this SSID"},
    {Option::kBssid, kText, u'b', u"bssid", u"aa:bb:cc:dd:ee", u"", u"none", u"Connect this BSSID"},
    {Option::kIfIndex, kInt, u'x', u"ifindex", u"INDEX", u"", u"-1",
     u"Index of interface to target (from IFTable)"},
    {Option::kForceLQEtw, kConstant, u'w', u"forcelqetw", u"", u"1", u"",
     u"Force Signal Quality ETW"},
    {Option::kNotifyMsg, kInt, u'y', u"notifymsg", u"MSGID", u"", u"127",
     u"POST WM_COMMAND MSGID to Try Application and exit."},
    {Option::kNotifyInt, kInt, u'i', u"notifyint", u"INDEX", u"", u"0",
     u"Interface INDEX associated with POST WM_COMMAND MSGID."},
    {Option::kPostFile, kText, u'p', u"postfile", u"filename", u"", u"none",
     u"post contents of file name to stat. cloud, check for web proxy"},
    {Option::kTestHttp, kConstant, u'y', u"testhttp", u"", u"1", u"",
     u"Test winhttp client and exit"},
    {Option::kUserEnv, kConstant, u'u', u"userenv", u"", u"1", u"", u"dump user env"},
    {Option::kDebugVPN, kConstant, u'z', u"debugvpn", u"", u"1", u"",
     u"Enable debug output for vpn detector"},
};

WString WithProgram(WStringView text, WStringView program) {
  constexpr WStringView kPlace = u"%prog";
  WString out(text);
  const std::size_t at = out.find(kPlace);
  if (at != out.npos) out.replace(at, kPlace.size(), BaseName(program));
  return out;
}

// Lines of at most kWidth columns, broken at blanks, that begin at the column. The first goes on
// where `used` columns are taken.
WString Wrapped(WStringView text, std::size_t column, std::size_t used) {
  WString out;
  std::size_t at = used;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find(u' '), text.size());
    const WStringView word = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    const bool first = at <= column;
    if (!first && at + 1 + word.size() > kWidth) {
      out += u'\n';
      at = 0;
    } else if (!first) {
      out += u' ';
      ++at;
    }
    if (at < column) {
      out.append(column - at, u' ');
      at = column;
    }
    out += word;
    at += word.size();
  }
  return out + u"\n";
}

WString OptionLines(const OptionRow& row) {
  WString line = u"  ";
  const WString value = row.valueName;
  if (row.letter && RowOfLetter(row.letter) == &row) {
    line += u'-';
    line += row.letter;
    if (!value.empty()) line += u" " + value;
    line += u", ";
  }
  line += u"--" + WString(row.name);
  if (!value.empty()) line += u"=" + value;
  WString help = row.help;
  if (*row.standard) help += u" (default: " + WString(row.standard) + u")";
  std::size_t used = line.size();
  if (used + 2 > kHelpColumn) {
    line += u'\n';
    used = 0;
  }
  return line + Wrapped(help, kHelpColumn, used);
}

}  // namespace

std::vector<const OptionRow*> RowsWithPrefix(WStringView prefix) {
  std::vector<const OptionRow*> found;
  for (const OptionRow& row : kRows) {
    const WStringView name = row.name;
    if (name == prefix) return {&row};
    if (name.starts_with(prefix)) found.push_back(&row);
  }
  return found;
}

const OptionRow* RowOfLetter(char16_t letter) {
  const auto found = std::find_if(std::rbegin(kRows), std::rend(kRows),
                                  [&](const OptionRow& row) { return row.letter == letter; });
  return letter == 0 || found == std::rend(kRows) ? nullptr : &*found;
}

WString BaseName(WStringView program) {
  const std::size_t slash = program.find_last_of(u"/\\");
  return WString(slash == program.npos ? program : program.substr(slash + 1));
}

WString UsageText(WStringView program) { return WithProgram(kUsage, program) + u"\n"; }

WString VersionText(WStringView program) { return WithProgram(kVersionText, program) + u"\n"; }

WString HelpText(WStringView program) {
  WString text = UsageText(program) + u"\n" + Wrapped(kDescription, 0, 0) + u"\nOptions:\n";
  for (const OptionRow& row : kRows) text += OptionLines(row);
  return text + u"\n" + WString(kEpilog) + u"\n";
}

}  // namespace corvane
