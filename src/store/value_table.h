#pragma once
// What each registry value is: one row a value. The settings start, are read, are kept in their
// ranges and are written at the service's start by these rows, and docs/registry.md is printed from
// them.

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "foundation/text.h"

namespace corvane {

struct AdapterSettings;
struct GlobalSettings;

enum class ValueKey : std::uint8_t { kHome, kAdapter, kEngine };
// A flag is a DWORD that is on unless it is 0, a number is a DWORD, a long number is a QWORD.
enum class ValueKind : std::uint8_t { kFlag, kNumber, kLongNumber, kText };
// What becomes of a number that is read and lies outside its range.
enum class Outside : std::uint8_t { kTaken, kCut, kRefused };

// How a settings struct keeps the number of a row; null for none.
template <class Settings>
struct SettingMember {
  void (*store)(Settings& settings, std::uint32_t number) = nullptr;
  std::uint32_t (*load)(const Settings& settings) = nullptr;
};

template <class Settings, class T>
Settings SettingsOf(std::atomic<T> Settings::*);

// In the one member.
template <auto kMember>
constexpr auto In() {
  using Settings = decltype(SettingsOf(kMember));
  return SettingMember<Settings>{
      [](Settings& settings, std::uint32_t number) {
        settings.*kMember =
            static_cast<typename std::remove_cvref_t<decltype(settings.*kMember)>::value_type>(
                number);
      },
      [](const Settings& settings) { return std::uint32_t{(settings.*kMember).load()}; }};
}

// What the service writes when it starts.
struct StartWrite {
  enum When : std::uint8_t { kNever, kFresh, kAlways };  // fresh: FreshDone of the key is not 1
  When when = kNever;
  std::uint8_t place = 0;  // in the order of writing
  std::uint32_t number = 0;
  std::string_view words{};  // instead of a number: what the owner of the settings writes
};

inline constexpr std::uint32_t kAnyNumber = 0xFFFFFFFF;

struct ValueRow {
  WStringView name;
  ValueKey key = ValueKey::kHome;
  ValueKind kind = ValueKind::kText;
  std::optional<std::uint32_t> start{};  // in force until a number is read
  std::string_view startWords{};         // the same of what is no number
  std::uint32_t least = 0, most = kAnyNumber;
  std::string_view range{};  // in words, where the limits do not tell it
  Outside outside = Outside::kTaken;
  // A value that goes missing, or that has another type, leaves what is in force; with this, the
  // start value comes back.
  bool returns = false;
  // The places in the order of reading, at the start of a pass and in each round of the thread that
  // reads; 0: not read then.
  std::uint8_t atStart = 0, eachRound = 0;
  StartWrite written{};
  SettingMember<GlobalSettings> global{};
  SettingMember<AdapterSettings> adapter{};
  bool secondAdapter = false;  // of the second adapter the name ends with "2"
  std::string_view writers{}, readers{}, meaning{};
};

// The rows of a key by name, without regard to case.
std::span<const ValueRow> ValuesOf(ValueKey key);
const ValueRow* FindValue(ValueKey key, WStringView name);  // null: no such value

// Rows in the order in which they are read or written.
enum class ValueStep : std::uint8_t { kReadAtStart, kReadEachRound, kWriteFresh, kWriteAlways };
std::span<const ValueRow* const> ValuesIn(ValueKey key, ValueStep step);

// A number within the range that the row names for those who write it.
bool IsInRange(const ValueRow& row, std::uint32_t number);
// What a number that was read comes to; nothing when it is refused.
std::optional<std::uint32_t> TakeNumber(const ValueRow& row, std::uint32_t number);
// "0 to 100", "on, off", "10 to 3600 s": the range for people.
std::string RangeText(const ValueRow& row);

}  // namespace corvane
