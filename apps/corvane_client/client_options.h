#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvane::client {

// The words of a call.
struct ClientOptions {
  std::string command;             // empty: only --help or nothing was said
  std::vector<std::string> words;  // behind the command, without the options
  std::string home;                // --home
  std::optional<std::string> adapter;
  bool json = false;
  bool help = false;
  bool all = false;
  bool wait = false;
  int timeoutSecs = 60;
  std::vector<std::string> special;  // options that were said and only some commands take
};

// Options may stand before and behind the command; "--" ends them. Throws ClientError (kBadCall).
ClientOptions ParseOptions(const std::vector<std::string>& words);

// A whole number in decimal, up to 4,294,967,295; also on and off where `onOff`. None otherwise.
std::optional<std::uint32_t> ParseNumber(const std::string& text, bool onOff = false);

}  // namespace corvane::client
