#pragma once
#include <rapidjson/document.h>

#include <string_view>

namespace corvane {

// Parses a JSON text in UTF-8. Without recursion: a text that nests without end costs heap, not the
// stack of the thread that reads it.
inline void ParseJson(std::string_view text, rapidjson::Document* document) {
  document->Parse<rapidjson::kParseIterativeFlag>(text.data(), text.size());
}

inline std::string_view JsonText(const rapidjson::Value& string) {
  return {string.GetString(), string.GetStringLength()};
}

}  // namespace corvane
