#include "corvane_client/client_options.h"

#include <charconv>

#include "corvane_client/client_error.h"

namespace corvane::client {

namespace {

[[noreturn]] void BadCall(const std::string& text) { throw ClientError(kBadCall, text); }

bool TakeFlag(const std::string& word, ClientOptions* options) {
  if (word == "--json") return options->json = true;
  if (word == "--help" || word == "-h") return options->help = true;
  if (word == "--all" || word == "--wait") options->special.push_back(word);
  if (word == "--all") return options->all = true;
  if (word == "--wait") return options->wait = true;
  return false;
}

void TakeValue(const std::string& option, const std::string& value, ClientOptions* options) {
  if (value.empty()) BadCall(option + " needs a value");
  if (option != "--home") options->special.push_back(option);
  if (option == "--home") {
    options->home = value;
  } else if (option == "--adapter") {
    options->adapter = value;
  } else {
    const auto seconds = ParseNumber(value);
    if (!seconds || *seconds == 0 || *seconds > 86'400) {
      BadCall("--timeout needs a number of seconds from 1 to 86400, not \"" + value + "\"");
    }
    options->timeoutSecs = static_cast<int>(*seconds);
  }
}

}  // namespace

std::optional<std::uint32_t> ParseNumber(const std::string& text, bool onOff) {
  if (onOff && text == "on") return 1;
  if (onOff && text == "off") return 0;
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

ClientOptions ParseOptions(const std::vector<std::string>& words) {
  ClientOptions options;
  bool optionsEnded = false;
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    const std::size_t equals = word.find('=');
    const std::string option = word.substr(0, equals);
    if (optionsEnded || !word.starts_with('-') || word == "-") {
      if (options.command.empty()) {
        options.command = word;
      } else {
        options.words.push_back(word);
      }
    } else if (word == "--") {
      optionsEnded = true;
    } else if (option == "--home" || option == "--adapter" || option == "--timeout") {
      if (equals == word.npos && i + 1 == words.size()) BadCall(option + " needs a value");
      TakeValue(option, equals == word.npos ? words[++i] : word.substr(equals + 1), &options);
    } else if (!TakeFlag(word, &options)) {
      BadCall("unknown option " + word);
    }
  }
  return options;
}

}  // namespace corvane::client
