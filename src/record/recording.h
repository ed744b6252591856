#pragma once
// A recording as it is read back. docs/recording.md tells the form of its lines.

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "store/address_text.h"
#include "wlan/air_watch.h"

namespace corvane {

// One run of the service. Times are in ms since it started or, where the recording begins much
// later, since a moment before that. What refers to another thing does so by its position here.
struct Recording {
  struct Adapter {
    int index = 0;
    std::string guid, name, description, mac;
    std::string phyClass;  // "ax", the best standard that it speaks
  };
  // An access point as one adapter hears it.
  struct AccessPoint {
    int adapter = 0;  // index
    MacAddress bssid{};
    std::string ssid;  // bytes
    std::uint32_t frequencyKhz = 0;
    std::int32_t phy = 0, type = 0;
    std::uint16_t capability = 0, beaconPeriod = 0;
  };
  struct Heard {
    std::size_t accessPoint = 0;
    std::int32_t rssi = 0;      // dBm
    std::uint32_t quality = 0;  // 0 to 100
    std::size_t elements = 0;   // of elementBytes
  };
  // What has been heard since the reading before, and what is not listed any more.
  struct Reading {
    std::uint64_t ms = 0;
    int adapter = 0;
    bool scanned = false;
    std::vector<Heard> heard;
    std::vector<std::size_t> gone;
  };
  struct Profile {
    std::string name;
    bool autoConnect = false, nonBroadcast = false;
    std::uint32_t grantedAccess = 0;
  };
  struct Network {
    std::string ssid;
    bool secured = false;
    std::int32_t auth = 0, cipher = 0;
    std::uint32_t refusal = 0;  // WLAN reason code; 0 for none
    std::optional<Profile> profile;
  };
  struct Networks {
    std::uint64_t ms = 0;
    int adapter = 0;
    std::vector<Network> networks;
  };
  struct KnownNetwork {
    std::string name;
    std::int32_t category = 0;
    std::uint32_t connectivity = 0;
  };
  struct Known {
    std::uint64_t ms = 0;
    std::vector<KnownNetwork> networks;
  };
  struct Filters {
    std::uint64_t ms = 0;
    std::map<std::string, std::uint32_t> bySsid;  // NetworkFilter
  };
  struct Value {
    std::uint64_t ms = 0;
    int key = 0;  // of an adapter, or kHomeValues
    std::string name;
    std::variant<std::uint32_t, std::string> what;
  };
  struct Link {
    std::uint64_t ms = 0;
    int adapter = 0;
    bool connected = false;
    MacAddress bssid{};
    std::string ssid;
    std::uint32_t quality = 0, rxKbps = 0, txKbps = 0;
    bool own = false;
  };
  struct Traffic {
    std::uint64_t ms = 0;
    int adapter = 0;
    double mbps = 0.0;
  };
  struct Machine {
    std::uint64_t ms = 0;
    bool vpn = false, realTimeAudio = false;
  };
  struct Mains {
    std::uint64_t ms = 0;
    bool on = true;
  };
  struct Step {
    std::string name;
    MacAddress bssid{};
  };
  struct Round {
    std::uint64_t ms = 0;  // when it ended
    int adapter = 0;
    std::uint64_t tookMs = 0;
    std::vector<Step> steps;
    bool weighed = false;                       // it came to its lists
    std::map<MacAddress, std::int32_t> scores;  // of its lists, or of the last ones before
    std::uint64_t BeganMs() const { return ms - (tookMs < ms ? tookMs : ms); }
    bool Has(std::string_view step) const {
      return std::ranges::any_of(steps, [step](const Step& one) { return one.name == step; });
    }
  };
  struct Took {
    std::uint64_t ms = 0;  // when the operation ended
    int adapter = 0;
    WlanOperation kind{};
    std::uint32_t tookMs = 0;
  };
  struct Outside {
    std::uint64_t ms = 0;
    int adapter = 0;
    OutsideEvent event{};
    std::string ssid;  // UTF-8
  };
  struct Order {
    std::uint64_t ms = 0;
    std::string json;
  };

  std::string utc;                          // of its beginning
  bool goesOn = false;                      // what came before it is lost
  std::uint64_t beginMs = 0, lengthMs = 0;  // the times of the first line and the last
  std::uint64_t lost = 0;                   // facts that found no room when they were recorded
  std::uint64_t unfinished = 0;             // lines that were cut off
  std::vector<std::string> elementBytes;    // each once, of all elements of an access point
  std::vector<Adapter> adapters;
  std::vector<AccessPoint> accessPoints;
  std::vector<Reading> readings;
  std::vector<Networks> networks;
  std::vector<Known> known;
  std::vector<Filters> filters;
  std::vector<Value> values;
  std::vector<Link> links;
  std::vector<Traffic> traffic;
  std::vector<Machine> machine;
  std::vector<Mains> mains;
  std::vector<Round> rounds;
  std::vector<Took> took;
  std::vector<Outside> outside;
  std::vector<Order> orders;
};

// The text of a file, by the file's name.
struct RecordingPart {
  std::string name, text;
};

// The runs of a recording in one or more files, in their order. A line that was cut off, at the end
// of a file or in front of a beginning, is passed over; any other fault throws std::runtime_error
// "<name>:<line>: ...".
std::vector<Recording> ReadRecording(std::span<const RecordingPart> parts);

}  // namespace corvane
