#pragma once
#include <stdexcept>
#include <string>

#include "platform/sim/world/world.h"

namespace corvane::platform::sim {

// What is wrong with a world; the text names the file, the JSON path (or the line) and the reason:
// "walk.json: /accessPoints/2/bssid: not six pairs of hexadecimal digits".
struct WorldError : std::invalid_argument {
  using std::invalid_argument::invalid_argument;
};

// A world from its JSON text ("docs/worlds.md"). `fileName` is for error texts. Members that are
// not known are refused; nothing is loaded by half. Throws WorldError.
World ParseWorld(const std::string& jsonText, const std::string& fileName);

// A world out of captured beacons, one JSON object a line: one HE-capable, disconnected adapter
// that hears each line's BSS at its `rssi_dbm`, -60 where it has none. A later line replaces an
// earlier one of its BSSID. No profiles, nothing in the network list. Throws WorldError with the
// number of a bad line.
struct AirCount {
  std::size_t lines = 0;
  std::size_t wild = 0;         // with a reading out of all range, which counts as none
  std::size_t noFrequency = 0;  // left out
  std::size_t noBssid = 0;      // all zero: left out
};
World WorldFromAir(const std::string& jsonlText, const std::string& fileName,
                   AirCount* count = nullptr);

// The world that the program carries in itself.
World BuiltInWorld();

// One entry of a timeline from its JSON object, for `world`: what it names there must exist.
// Without `at` its time is 0. Throws WorldError.
Action ParseAction(const std::string& jsonText, const World& world);

}  // namespace corvane::platform::sim
