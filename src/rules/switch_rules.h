#pragma once
// Connect or suggest, by which way, with what percent; and what a round without fresh data may ask
// for. Pure: plain inputs, plain results.

#include <cstdint>

namespace corvane {

// By whom a move is made known. A mode is one of autoswitch, event and popup.
struct SuggestionMode {
  bool passive = false;        // PassiveSuggestMode 1 or 2
  bool popup = false;          // PassiveSuggestMode 2
  bool popupOverride = false;  // somebody else made the present connection
  bool allowlistActive = false;
  bool IsEventMode() const { return passive && !popup; }
};

enum class MoveWay { kConnect, kSuggestByEvent, kSuggestByPopup };
// A connected adapter's move to a better access point. In autoswitch every move connects by itself,
// in the passive modes only a roam does. An allow list asks the user in every mode; autoswitch has
// no reporter of its own and does so by the dialog.
MoveWay WayOfSwitch(const SuggestionMode& mode, bool roam, bool roamingEnabled);
// A disconnected adapter's move. With an allow list in force there is nothing to ask.
MoveWay WayOfConnect(const SuggestionMode& mode);

// How much better a suggestion is, in percent of the present score.
struct SuggestionPercent {
  bool shown = false;  // enough to be shown
  std::int32_t percent = 0;
};
// `minimumPoints` stand in for a difference of 0 (0 for none). A connection without any score is
// worse by any measure: the suggestion is shown, with 100 percent.
SuggestionPercent PercentOf(std::int32_t score, std::int32_t current, std::uint32_t minimumPoints,
                            std::uint32_t requiredPercent);

// What a connected round without fresh scan data comes to.
enum class FastScan {
  kAlreadySuggested,  // the best one is the last suggestion: not scanned for twice
  kBusy,              // traffic or real-time audio
  kNothingBetter,     // forced scans are called off
  kAlreadyForced,
  kForceScans,
};
struct FastScanInputs {
  bool matchesSuggestion = false;
  bool openSuggestion = false;  // overrides it
  bool linkBusy = false;
  bool betterPossible = false;
  std::int32_t forcedScans = 0;
};
FastScan JudgeFastScan(const FastScanInputs& in);

// A switch waits while real-time audio runs, or from this rate on (Mbps).
constexpr bool IsLinkBusy(bool realTimeAudio, double rate, double gate) {
  return realTimeAudio || !(rate < gate);
}

}  // namespace corvane
