#include "store/value_table.h"

#include <algorithm>
#include <array>
#include <vector>

#include "store/adapter_settings.h"
#include "store/global_settings.h"
#include "store/value_rows.h"

namespace corvane {

namespace {

constexpr std::size_t kKeys = 3, kSteps = 4;

// 0: not in this step.
int PlaceIn(const ValueRow& row, ValueStep step) {
  switch (step) {
    case ValueStep::kReadAtStart:
      return row.atStart;
    case ValueStep::kReadEachRound:
      return row.eachRound;
    case ValueStep::kWriteFresh:
      return row.written.when == StartWrite::kFresh ? row.written.place : 0;
    case ValueStep::kWriteAlways:
      return row.written.when == StartWrite::kAlways ? row.written.place : 0;
  }
  return 0;
}

using Rows = std::vector<const ValueRow*>;

Rows Ordered(ValueKey key, ValueStep step) {
  Rows rows;
  for (const ValueRow& row : ValuesOf(key)) {
    if (PlaceIn(row, step) != 0) rows.push_back(&row);
  }
  std::sort(rows.begin(), rows.end(), [&](const ValueRow* a, const ValueRow* b) {
    return PlaceIn(*a, step) < PlaceIn(*b, step);
  });
  return rows;
}

template <class Settings>
void Start(ValueKey key, SettingMember<Settings> ValueRow::*member, Settings& settings) {
  for (const ValueRow& row : ValuesOf(key)) {
    if ((row.*member).store && row.start) (row.*member).store(settings, *row.start);
  }
}

}  // namespace

std::span<const ValueRow> ValuesOf(ValueKey key) {
  return key == ValueKey::kHome      ? HomeValues()
         : key == ValueKey::kAdapter ? AdapterValues()
                                     : EngineValues();
}

const ValueRow* FindValue(ValueKey key, WStringView name) {
  const auto rows = ValuesOf(key);
  const auto found =
      std::find_if(rows.begin(), rows.end(), [&](const ValueRow& row) { return row.name == name; });
  return found == rows.end() ? nullptr : &*found;
}

std::span<const ValueRow* const> ValuesIn(ValueKey key, ValueStep step) {
  static const auto orders = [] {
    std::array<std::array<Rows, kSteps>, kKeys> all;
    for (std::size_t key = 0; key < kKeys; ++key) {
      for (std::size_t step = 0; step < kSteps; ++step) {
        all[key][step] = Ordered(static_cast<ValueKey>(key), static_cast<ValueStep>(step));
      }
    }
    return all;
  }();
  return orders[static_cast<std::size_t>(key)][static_cast<std::size_t>(step)];
}

bool IsInRange(const ValueRow& row, std::uint32_t number) {
  const std::uint32_t most = row.kind == ValueKind::kFlag ? 1 : row.most;
  return number >= row.least && number <= most;
}

std::optional<std::uint32_t> TakeNumber(const ValueRow& row, std::uint32_t number) {
  if (row.kind == ValueKind::kFlag) return number != 0 ? 1 : 0;
  switch (row.outside) {
    case Outside::kTaken:
      return number;
    case Outside::kCut:
      return std::clamp(number, row.least, row.most);
    case Outside::kRefused:
      break;
  }
  return IsInRange(row, number) ? std::optional(number) : std::nullopt;
}

std::string RangeText(const ValueRow& row) {
  if (!row.range.empty()) return std::string(row.range);
  switch (row.kind) {
    case ValueKind::kFlag:
      return "on, off";
    case ValueKind::kText:
      return {};
    case ValueKind::kNumber:
    case ValueKind::kLongNumber:
      break;
  }
  if (row.most == kAnyNumber) return row.least == 0 ? "a number" : "not 0";
  return std::to_string(row.least) + " to " + std::to_string(row.most);
}

GlobalSettings::GlobalSettings() { Start(ValueKey::kHome, &ValueRow::global, *this); }
AdapterSettings::AdapterSettings() { Start(ValueKey::kAdapter, &ValueRow::adapter, *this); }

}  // namespace corvane
