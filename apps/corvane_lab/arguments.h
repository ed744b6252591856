#pragma once
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace corvane::lab {

// What the user typed wrong.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The words behind a command: options with or without a value, and the rest in order.
class Arguments {
 public:
  // `withValue` and `flags` are the options that the command knows. Throws UsageError.
  Arguments(const std::vector<std::string>& words, const std::vector<std::string>& withValue,
            const std::vector<std::string>& flags);

  bool Has(const std::string& option) const;
  std::optional<std::string> Value(const std::string& option) const;
  const std::vector<std::string>& Rest() const { return m_Rest; }
  // A whole number; `fallback` without the option.
  std::uint64_t Number(const std::string& option, std::uint64_t fallback) const;

 private:
  std::vector<std::pair<std::string, std::string>> m_Options;
  std::vector<std::string> m_Rest;
};

// "90", "90s", "1m30s", "2h", "250ms" in milliseconds; throws UsageError.
std::uint64_t ParseDuration(const std::string& text);
// "7" or "1-200" as the first and the last seed; throws UsageError.
void ParseSeeds(const std::string& text, std::uint64_t* first, std::uint64_t* last);

}  // namespace corvane::lab
