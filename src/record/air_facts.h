#pragma once
// What the recording takes of a moment: copied by the thread that knows it, written by another.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "foundation/text.h"
#include "policy/round_watch.h"
#include "score/network_facts.h"
#include "store/address_text.h"
#include "wlan/air_inputs.h"
#include "wlan/air_watch.h"

namespace corvane {

// One reading of the platform's two lists by an adapter, as the platform gave them.
struct ListFacts {
  int adapter = 0;
  bool scanned = false;                // a scan has just run
  std::vector<std::uint8_t> networks;  // WLAN_AVAILABLE_NETWORK_LIST; empty: there was none
  std::vector<std::uint8_t>
      entries;  // WLAN_BSS_LIST, element bytes included; empty: there was none
  std::vector<AirInputs::Profile> profiles;  // of the networks, as far as they are listed by name
  std::shared_ptr<const KnownNetworks> known;
  std::shared_ptr<const NetworkFilters> filters;
};

struct RecordedAdapter {
  int adapter = 0;  // index
  std::string guid, name, description, mac;
  std::string phyClass;  // "ax", the best standard that it speaks
  friend bool operator==(const RecordedAdapter&, const RecordedAdapter&) = default;
};

struct LinkFacts {
  MacAddress bssid{};
  std::string ssid;  // bytes
  std::uint32_t quality = 0;
  std::uint32_t rxKbps = 0, txKbps = 0;
  bool own = false;  // the service made it
  friend bool operator==(const LinkFacts&, const LinkFacts&) = default;
};

// How one round of an adapter ended.
struct RoundFacts {
  struct Step {
    RoundStep step{};
    MacAddress bssid{};  // zero for what concerns no access point
  };
  struct Score {
    MacAddress bssid{};
    std::int32_t score = -1;
  };
  RecordedAdapter adapter;
  std::uint64_t ms = 0;  // that it took
  std::vector<Step> steps;
  std::vector<Score> scores;  // of the entries that the round came to
  std::optional<LinkFacts> link;
  double mbps = 0.0;
  bool vpn = false, realTimeAudio = false;
};

// An operation of the service has ended.
struct TookFacts {
  int adapter = 0;
  WlanOperation kind{};
  std::uint64_t ms = 0;
};

struct OutsideFacts {
  int adapter = 0;
  OutsideEvent event{};
  std::string ssid;  // UTF-8
};

// What a client asked for, without its token: a JSON object.
struct OrderFacts {
  std::string text;
};

struct AirFact {
  std::uint64_t tick = 0;
  std::variant<ListFacts, RoundFacts, OrderFacts, TookFacts, OutsideFacts> what;
};

// How much of the memory one takes, about; in bytes.
std::size_t SizeOf(const AirFact& fact);

}  // namespace corvane
