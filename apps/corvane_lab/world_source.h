#pragma once
#include <string>
#include <vector>

#include "corvane_lab/arguments.h"
#include "platform/sim/world/world.h"
#include "platform/sim/world/world_loader.h"

namespace corvane::lab {

// What the beacons of a capture hold that no access point could be made of. A command declares it
// before all else: at its end, behind the command's own output, it prints the counts to standard
// error for whoever wonders where a beacon is. A capture without any adds nothing.
class AirReport {
 public:
  AirReport() = default;
  ~AirReport();
  AirReport(const AirReport&) = delete;
  AirReport& operator=(const AirReport&) = delete;

  platform::sim::World Load(const std::string& file);

 private:
  std::string m_File;
  platform::sim::AirCount m_Count;
};

// The world that a command is to work on: a world file, captured beacons with `--air`, of which the
// report then tells, or what `--recording` recorded; with `--mode` its adapters act in that mode.
// Throws UsageError, and std::runtime_error for a file that cannot be read, with file and place.
platform::sim::World WorldOf(const Arguments& arguments, AirReport* airReport);

// Every adapter acts in this mode ("autoswitch", "event", "popup") from its first seconds on,
// whatever the world says of it.
void SetMode(platform::sim::World* world, const std::string& mode);
// The profile of the policy, classic or balanced; throws UsageError for another.
void SetProfile(platform::sim::World* world, const std::string& profile);

}  // namespace corvane::lab
