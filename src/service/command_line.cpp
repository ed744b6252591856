#include "service/command_line.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "service/option_table.h"

namespace corvane {

namespace {

constexpr int kBadCommandLine = 2;

// An integer of 32 bits: digits with a sign or without.
bool ReadInteger(WStringView text, int* number) {
  const bool negative = text.starts_with(u'-');
  if (negative || text.starts_with(u'+')) text.remove_prefix(1);
  if (text.empty()) return false;
  std::int64_t value = 0;
  for (const char16_t digit : text) {
    if (digit < u'0' || digit > u'9') return false;
    value = value * 10 + (digit - u'0');
    if (value > std::int64_t{std::numeric_limits<int>::max()} + 1) return false;
  }
  if (negative) value = -value;
  if (value > std::numeric_limits<int>::max()) return false;
  *number = static_cast<int>(value);
  return true;
}

}  // namespace

// Reads the words from left to right, up to the first that ends the process.
class CommandLineParser {
 public:
  explicit CommandLineParser(const std::vector<WString>& words) : m_Words(words) {
    if (!words.empty()) m_Line.m_Program = words.front();
  }

  CommandLine Run() {
    while (++m_At < m_Words.size() && !m_Line.ends) {
      const WStringView word = m_Words[m_At];
      if (word == u"--") break;
      if (word.starts_with(u"--")) {
        ReadLong(word.substr(2));
      } else if (word.size() > 1 && word.starts_with(u'-')) {
        ReadShort(word.substr(1));
      }
    }
    return std::move(m_Line);
  }

 private:
  void ReadLong(WStringView text) {
    const std::size_t equals = text.find(u'=');
    const WStringView name = text.substr(0, equals);
    const auto rows = RowsWithPrefix(name);
    if (rows.empty()) return Fail(u"no such option: --" + WString(name));
    if (rows.size() > 1) {
      WString candidates;
      for (const OptionRow* row : rows) {
        if (!candidates.empty()) candidates += u", ";
        candidates += row->name;
      }
      return Fail(u"ambiguous option: --" + WString(name) + u" (" + candidates + u"?)");
    }
    const OptionRow& row = *rows.front();
    const WString shown = u"--" + WString(row.name);
    if (!row.TakesValue()) return Take(row, shown, row.constant);
    if (equals == text.npos) return TakeNext(row, shown);
    const WStringView value = text.substr(equals + 1);
    if (value.empty()) return Fail(shown + u" option requires an argument");
    Take(row, shown, value);
  }

  void ReadShort(WStringView letters) {
    while (!letters.empty() && !m_Line.ends) {
      const WString shown{u'-', letters.front()};
      const OptionRow* row = RowOfLetter(letters.front());
      letters.remove_prefix(1);
      if (!row) return Fail(u"no such option: " + shown);
      if (!row->TakesValue()) {
        Take(*row, shown, row->constant);
      } else if (letters.empty()) {
        TakeNext(*row, shown);
      } else {
        Take(*row, shown, std::exchange(letters, {}));
      }
    }
  }

  void TakeNext(const OptionRow& row, const WString& shown) {
    if (m_At + 1 >= m_Words.size()) return Fail(shown + u" option requires an argument");
    Take(row, shown, m_Words[++m_At]);
  }

  void Take(const OptionRow& row, const WString& shown, WStringView value) {
    if (row.kind == OptionKind::kHelp || row.kind == OptionKind::kShowVersion) {
      const bool help = row.kind == OptionKind::kHelp;
      m_Line.output = help ? HelpText(m_Line.m_Program) : VersionText(m_Line.m_Program);
      m_Line.wantsHelp = help;
      m_Line.ends = 0;
      return;
    }
    const auto at = static_cast<std::size_t>(row.option);
    if (row.kind == OptionKind::kInt && !ReadInteger(value, &m_Line.m_Numbers[at]))
      return Fail(u"option " + shown + u": invalid integer value: '" + WString(value) + u"'");
    m_Line.m_Values[at] = value;
  }

  void Fail(const WString& text) {
    m_Line.output = UsageText(m_Line.m_Program);
    m_Line.error = BaseName(m_Line.m_Program) + u": error: " + text + u"\n";
    m_Line.ends = kBadCommandLine;
  }

  const std::vector<WString>& m_Words;
  std::size_t m_At = 0;
  CommandLine m_Line;
};

CommandLine ParseCommandLine(const std::vector<WString>& words) {
  return CommandLineParser(words).Run();
}

bool IsOneShot(const CommandLine& line) {
  constexpr Option kModes[] = {Option::kUserEnv, Option::kTestHttp, Option::kPostFile,
                               Option::kConnect, Option::kBssid,    Option::kTestConnect};
  return line.ends.has_value() ||
         std::ranges::any_of(kModes, [&](Option mode) { return line.Has(mode); });
}

}  // namespace corvane
