#pragma once
// The lines of a recording. docs/recording.md tells their form.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "record/air_facts.h"

namespace corvane {

// Value names and what they hold, as JSON; of one key.
using RecordedValues = std::map<std::string, std::string>;
inline constexpr int kHomeValues = -1;  // in the place of an adapter's index

// Turns facts into lines, and tells each thing once: what a line says is remembered until Begin.
// One thread.
class RecordingWriter {
 public:
  // A new run of the service, or the same one in another file (`goesOn`), which stands on its own.
  // `utc` is text such as "2026-11-27T18:50:00Z", `upMs` for how long the service has run.
  std::string Begin(std::uint64_t tick, std::uint64_t upMs, std::string_view utc, bool goesOn);
  // Each line with its line feed; empty when nothing is new.
  std::string Lines(const AirFact& fact);
  std::string Values(std::uint64_t tick, int adapter, const RecordedValues& values);
  std::string Power(std::uint64_t tick, bool mains);
  // So many facts found no room in the queue.
  std::string Lost(std::uint64_t tick, std::uint64_t facts);

 private:
  // An access point as one adapter hears it; what changes with each hearing is apart.
  using Identity = std::tuple<int, MacAddress, std::string, std::uint32_t, std::int32_t,
                              std::int32_t, std::uint16_t, std::uint16_t>;
  struct Heard {
    int adapter = 0;
    std::uint64_t stamp = 0;  // of the access point's clock
    std::int32_t rssi = 0;
    std::uint32_t quality = 0;
    std::string bytes;          // of all elements
    std::vector<int> elements;  // their numbers
    bool listed = false;
  };
  struct Told {
    std::optional<RecordedAdapter> adapter;
    std::optional<std::optional<LinkFacts>> link;
    std::optional<std::string> networks, traffic;
    std::map<MacAddress, std::int32_t> scores;
  };

  void Take(const ListFacts& facts);
  void Take(const RoundFacts& facts);
  void Take(const OrderFacts& facts);
  void Take(const TookFacts& facts);
  void Take(const OutsideFacts& facts);
  void TakeEntries(const ListFacts& facts);
  void TakeNetworks(const ListFacts& facts);
  void TakeKnown(const ListFacts& facts);
  void TakeMachine(const RoundFacts& facts);
  int NumberOf(const platform::WLAN_BSS_ENTRY& bss, int adapter, std::string_view bytes);
  std::vector<int> ElementNumbers(std::string_view bytes);
  void Line(std::string_view name, std::string_view json);

  std::uint64_t m_Start = 0;  // tick of the run's first line
  std::uint64_t m_Now = 0;    // ms since then
  std::string m_Lines;
  std::map<std::string, int, std::less<>> m_Elements;
  std::map<Identity, int> m_Numbers;
  std::vector<Heard> m_Heard;  // by number
  std::map<int, Told> m_Told;  // by adapter
  std::map<int, RecordedValues> m_Values;
  std::string m_Known, m_Filters, m_Machine;
  std::optional<bool> m_Mains;
};

}  // namespace corvane
