#include "platform/clock_api.h"

#include "platform/platform.h"

namespace corvane::platform {

namespace {

constexpr std::uint64_t kUnitsPerMs = 10'000;  // of 100 ns
constexpr std::uint64_t kMsPerDay = 86'400'000;
constexpr std::int64_t kDaysFrom1601To1970 = 134'774;
constexpr std::uint64_t kSecondsFrom1601To1970 = 11'644'473'600;

// Days since 1970-01-01 of a date of the Gregorian calendar. Years are counted from March, so that
// the leap day is the last one; an era is 400 years.
constexpr std::int64_t DaysFromCivil(std::int64_t year, unsigned month, unsigned day) {
  year -= month <= 2;
  const std::int64_t era = year / 400;
  const auto yearOfEra = static_cast<std::uint64_t>(year - era * 400);
  const std::uint64_t dayOfYear = (153U * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const std::uint64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return era * 146'097 + static_cast<std::int64_t>(dayOfEra) - 719'468;
}
static_assert(DaysFromCivil(1970, 1, 1) == 0);
static_assert(DaysFromCivil(1601, 1, 1) == -kDaysFrom1601To1970);

struct Civil {
  std::int64_t year;
  unsigned month;
  unsigned day;
};

constexpr Civil CivilFromDays(std::int64_t days) {  // days not before 1601
  days += 719'468;
  const std::int64_t era = days / 146'097;
  const std::int64_t dayOfEra = days - era * 146'097;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t shifted = (5 * dayOfYear + 2) / 153;
  const auto month = static_cast<unsigned>(shifted < 10 ? shifted + 3 : shifted - 9);
  return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month,
          static_cast<unsigned>(dayOfYear - (153 * shifted + 2) / 5 + 1)};
}

constexpr bool IsLeap(unsigned year) {
  return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

constexpr unsigned DaysInMonth(unsigned year, unsigned month) {
  constexpr unsigned kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

std::uint64_t Units(const FILETIME& time) {
  return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

}  // namespace

ULONGLONG ClockApi::GetTickCount64() { return 0; }

void ClockApi::GetSystemTimeAsFileTime(FILETIME* now) { *now = {}; }

bool FileTimeToSystemTime(const FILETIME& time, SYSTEMTIME* out) {
  const std::uint64_t units = Units(time);
  if (units >> 63) return false;
  const std::uint64_t ms = units / kUnitsPerMs;
  const auto days = static_cast<std::int64_t>(ms / kMsPerDay);
  const std::uint64_t msOfDay = ms % kMsPerDay;
  const Civil date = CivilFromDays(days - kDaysFrom1601To1970);
  out->wYear = static_cast<WORD>(date.year);
  out->wMonth = static_cast<WORD>(date.month);
  out->wDay = static_cast<WORD>(date.day);
  out->wDayOfWeek = static_cast<WORD>((days + 1) % 7);  // 1601-01-01 was a Monday
  out->wHour = static_cast<WORD>(msOfDay / 3'600'000);
  out->wMinute = static_cast<WORD>(msOfDay / 60'000 % 60);
  out->wSecond = static_cast<WORD>(msOfDay / 1000 % 60);
  out->wMilliseconds = static_cast<WORD>(msOfDay % 1000);
  return true;
}

bool SystemTimeToFileTime(const SYSTEMTIME& time, FILETIME* out) {
  const bool valid = time.wYear >= 1601 && time.wYear <= 30'827 && time.wMonth >= 1 &&
                     time.wMonth <= 12 && time.wDay >= 1 &&
                     time.wDay <= DaysInMonth(time.wYear, time.wMonth) && time.wHour < 24 &&
                     time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
  if (!valid) return false;
  const auto days = static_cast<std::uint64_t>(DaysFromCivil(time.wYear, time.wMonth, time.wDay) +
                                               kDaysFrom1601To1970);
  const std::uint64_t ms = days * kMsPerDay + time.wHour * 3'600'000ULL + time.wMinute * 60'000ULL +
                           time.wSecond * 1000ULL + time.wMilliseconds;
  // The last year of the calendar ends past what 63 bits of 100 ns units hold.
  if (ms > (~std::uint64_t{0} >> 1) / kUnitsPerMs) return false;
  const std::uint64_t units = ms * kUnitsPerMs;
  out->dwLowDateTime = static_cast<DWORD>(units);
  out->dwHighDateTime = static_cast<DWORD>(units >> 32);
  return true;
}

SYSTEMTIME SystemTimeNow() {
  FILETIME now;
  Os().clock.GetSystemTimeAsFileTime(&now);
  SYSTEMTIME time;
  FileTimeToSystemTime(now, &time);
  return time;
}

std::uint32_t UnixSecondsNow() {
  FILETIME now;
  Os().clock.GetSystemTimeAsFileTime(&now);
  const std::uint64_t seconds = Units(now) / (kUnitsPerMs * 1000);
  return seconds < kSecondsFrom1601To1970
             ? 0
             : static_cast<std::uint32_t>(seconds - kSecondsFrom1601To1970);
}

}  // namespace corvane::platform
