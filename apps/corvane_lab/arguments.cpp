#include "corvane_lab/arguments.h"

#include <algorithm>
#include <charconv>

namespace corvane::lab {

namespace {

bool Contains(const std::vector<std::string>& list, const std::string& word) {
  return std::find(list.begin(), list.end(), word) != list.end();
}

}  // namespace

Arguments::Arguments(const std::vector<std::string>& words,
                     const std::vector<std::string>& withValue,
                     const std::vector<std::string>& flags) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (Contains(flags, word)) {
      m_Options.emplace_back(word, "");
    } else if (Contains(withValue, word)) {
      if (i + 1 == words.size()) throw UsageError(word + " needs a value");
      m_Options.emplace_back(word, words[++i]);
    } else if (word.rfind("--", 0) == 0) {
      throw UsageError("unknown option " + word);
    } else {
      m_Rest.push_back(word);
    }
  }
}

bool Arguments::Has(const std::string& option) const { return Value(option).has_value(); }

std::optional<std::string> Arguments::Value(const std::string& option) const {
  for (const auto& [name, value] : m_Options) {
    if (name == option) return value;
  }
  return std::nullopt;
}

std::uint64_t Arguments::Number(const std::string& option, std::uint64_t fallback) const {
  const auto text = Value(option);
  if (!text) return fallback;
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
  if (error != std::errc() || end != text->data() + text->size()) {
    throw UsageError(option + " needs a whole number, not \"" + *text + "\"");
  }
  return number;
}

std::uint64_t ParseDuration(const std::string& text) {
  struct Unit {
    std::string_view word;
    std::uint64_t ms;
  };
  static constexpr Unit kUnits[] = {
      {"ms", 1}, {"s", 1000}, {"m", 60'000}, {"h", 3'600'000}, {"", 1000}};
  constexpr std::uint64_t kLimit = 1'000'000'000'000;
  std::string_view rest = text;
  std::uint64_t total = 0;
  while (!rest.empty()) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (error != std::errc() || number > kLimit) break;
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    const Unit* unit = std::find_if(std::begin(kUnits), std::end(kUnits),
                                    [&](const Unit& one) { return rest.rfind(one.word, 0) == 0; });
    if (unit->word.empty() && !rest.empty()) break;
    total += number * unit->ms;
    if (total > kLimit) break;
    rest.remove_prefix(unit->word.size());
    if (rest.empty()) return total;
  }
  throw UsageError("\"" + text + "\" is no duration; examples: 90, 90s, 1m30s, 2h");
}

void ParseSeeds(const std::string& text, std::uint64_t* first, std::uint64_t* last) {
  const std::size_t dash = text.find('-');
  const auto number = [&](const std::string& part) {
    return Arguments({"--seed", part}, {"--seed"}, {}).Number("--seed", 0);
  };
  *first = number(text.substr(0, dash));
  *last = dash == std::string::npos ? *first : number(text.substr(dash + 1));
  if (*last < *first) throw UsageError("--seeds needs a rising range such as 1-200");
}

}  // namespace corvane::lab
