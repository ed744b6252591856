#pragma once
// What a recording's lines are called. Each is a JSON object of the time "t", in ms since the run
// began, and one member of these, whose form docs/recording.md tells.

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace corvane::recording {

inline constexpr int kForm = 1;  // of the lines; a reader takes no other

inline constexpr std::string_view kBegin = "begin";
inline constexpr std::string_view kAdapter = "adapter";
inline constexpr std::string_view kValues = "values";
inline constexpr std::string_view kElement = "element";
inline constexpr std::string_view kAccessPoint = "ap";
inline constexpr std::string_view kHeard = "heard";
inline constexpr std::string_view kNetworks = "networks";
inline constexpr std::string_view kKnown = "known";
inline constexpr std::string_view kFilters = "filters";
inline constexpr std::string_view kLink = "link";
inline constexpr std::string_view kTraffic = "mbps";
inline constexpr std::string_view kMachine = "machine";
inline constexpr std::string_view kMains = "mains";
inline constexpr std::string_view kRound = "round";
inline constexpr std::string_view kTook = "took";
inline constexpr std::string_view kOutside = "outside";
inline constexpr std::string_view kOrder = "order";
inline constexpr std::string_view kLost = "lost";

// By WlanOperation; there is none of the first.
inline constexpr std::array<std::string_view, 4> kOperationWords = {"none", "scan", "connect",
                                                                    "disconnect"};
// By OutsideEvent.
inline constexpr std::array<std::string_view, 9> kOutsideWords = {
    "scan",     "connecting", "connected", "disconnecting", "disconnected",
    "radio-on", "radio-off",  "suspend",   "resume"};

// Two lower-case digits a byte, and back; nothing for a text that is none.
std::string ToHex(std::string_view bytes);
std::optional<std::string> FromHex(std::string_view text);

}  // namespace corvane::recording
