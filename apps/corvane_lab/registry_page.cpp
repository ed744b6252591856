#include "corvane_lab/registry_page.h"

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "foundation/text.h"
#include "store/value_table.h"

namespace corvane::lab {

namespace {

constexpr char kHead[] = R"(# The registry

What the service keeps in the registry, who writes it and who reads it. *Clients* are the programs
that go along with the service: they may read every value. What they want changed they send
through the pipe where a command is named, see [protocol.md](protocol.md), and write themselves
where "clients" stands.

All keys lie under `HKEY_LOCAL_MACHINE`. On Linux they are in the table `registry` of
`registry.db` in the home directory, see [architecture.md](architecture.md).

- **Type.** A flag is a DWORD: 0 is off, anything else is on. A number is a DWORD, a long number a
  QWORD, a text a REG_SZ of up to 20,480 bytes; a longer one counts as missing.
- **Default.** In force until a value can be read. One that goes missing later, or has another
  type, leaves in force what was there before; with a `*` the default comes back.
- **Takes.** The range. A number outside it is *cut* to the nearer end, or *refused*, which leaves
  in force what was there before; without a word on it, it is taken as it is. `MiscCommand`
  refuses whatever lies outside, and a flag other than 0 and 1; `WriteRegDW` writes any number.
- **At a start.** What the service writes by itself. A *start* is that of the service, or a change
  of the adapters, with which it begins anew. "First run": only while `FreshDone` of the home key
  is not 1. The settings of an adapter are put back at each start; a client that wants others
  sends them again.
- **Read by.** And when: at a *start*, in each *round* of the main loop (home key, 2 s) or of the
  adapter's worker (its key, 10 s).

This page is printed from the program's own table: `corvane-lab registry > docs/registry.md`.
)";

constexpr char kHomeHead[] = R"(
## The home key

`SOFTWARE\OstrelNetworks\Corvane`

)";
constexpr char kAdapterHead[] = R"(
## The key of an adapter

`SOFTWARE\OstrelNetworks\Corvane\{GUID of the adapter}`

)";
constexpr char kEngineHead[] = R"(
## The key of the load-balance engine

`SYSTEM\CurrentControlSet\Services\Vantor Network Service\SLibCFG`, read when the engine starts

)";
constexpr char kColumns[] =
    "| Value | Type | Default | Takes | At a start | Written by | Read by | What it is |\n"
    "|---|---|---|---|---|---|---|---|\n";

std::string NameText(const ValueRow& row) {
  const std::string name = Narrow(row.name);
  return "`" + name + "`" + (row.secondAdapter ? ", `" + name + "2`" : "");
}

const char* KindText(ValueKind kind) {
  switch (kind) {
    case ValueKind::kFlag:
      return "flag";
    case ValueKind::kNumber:
      return "number";
    case ValueKind::kLongNumber:
      return "long number";
    case ValueKind::kText:
      break;
  }
  return "text";
}

std::string NumberText(const ValueRow& row, std::uint32_t number) {
  return row.kind == ValueKind::kFlag ? (number != 0 ? "on" : "off") : std::to_string(number);
}

std::string DefaultText(const ValueRow& row) {
  if (!row.start) return std::string(row.startWords);
  return NumberText(row, *row.start) + (row.returns ? " *" : "");
}

// Of a value that only the service writes the range tells nothing.
std::string TakesText(const ValueRow& row) {
  const bool isStatus = !row.start && row.range.empty() && row.least == 0 && row.most == kAnyNumber;
  if (isStatus) return {};
  switch (row.outside) {
    case Outside::kCut:
      return RangeText(row) + ", else cut";
    case Outside::kRefused:
      return RangeText(row) + ", else refused";
    case Outside::kTaken:
      break;
  }
  return RangeText(row);
}

std::string WrittenText(const ValueRow& row) {
  if (row.written.when == StartWrite::kNever) return {};
  const std::string what = row.written.words.empty() ? NumberText(row, row.written.number)
                                                     : std::string(row.written.words);
  const bool isFirst = row.written.when == StartWrite::kFresh && row.key == ValueKey::kHome;
  return what + (isFirst ? ", first run" : "");
}

std::string ReadText(const ValueRow& row) {
  const char* when = row.atStart != 0 && row.eachRound != 0 ? " (start, round)"
                     : row.atStart != 0                     ? " (start)"
                     : row.eachRound != 0                   ? " (round)"
                                                            : "";
  return std::string(row.readers) + when;
}

std::string Line(const ValueRow& row) {
  std::string line = "|";
  for (const std::string& cell :
       {NameText(row), std::string(KindText(row.kind)), DefaultText(row), TakesText(row),
        WrittenText(row), std::string(row.writers), ReadText(row), std::string(row.meaning)}) {
    line += cell.empty() ? " |" : " " + cell + " |";
  }
  return line + "\n";
}

}  // namespace

std::string RegistryPage() {
  std::string page = kHead;
  const auto add = [&](const char* head, ValueKey key) {
    page += head;
    page += kColumns;
    for (const ValueRow& row : ValuesOf(key)) page += Line(row);
  };
  add(kHomeHead, ValueKey::kHome);
  add(kAdapterHead, ValueKey::kAdapter);
  add(kEngineHead, ValueKey::kEngine);
  return page;
}

int RegistryCommand(const std::vector<std::string>& words) {
  if (!words.empty()) throw UsageError("registry takes no words");
  const std::string page = RegistryPage();
  std::fwrite(page.data(), 1, page.size(), stdout);
  return 0;
}

}  // namespace corvane::lab
