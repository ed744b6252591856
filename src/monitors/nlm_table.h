#pragma once
// The table of networks by base name, and the passes that settle which of several instances of one
// name speaks for it. Pure, but for its log lines.

#include <map>
#include <vector>

#include "monitors/network_list_manager.h"

namespace corvane {

class NlmTable {
 public:
  using Map = std::map<WString, NlmNetworkRecord, std::less<>>;

  // One refresh from what the operating system lists, in its order: seeds an empty table, then lets a
  // live instance take over from a dead one (strict), then fills what is left (loose). Nothing is ever
  // removed, and instance names are never forgotten.
  void Refresh(const std::vector<NlmNetworkRecord>& listed);

  const NlmNetworkRecord* Find(WStringView base) const;
  bool SetConnectivity(WStringView base, std::uint32_t connectivity);
  const Map& Records() const { return m_Records; }

 private:
  void Seed(const NlmNetworkRecord& network);
  void Strict(const NlmNetworkRecord& network);
  void Loose(const NlmNetworkRecord& network);
  void Store(const NlmNetworkRecord& network);
  void Replace(NlmNetworkRecord* old, const NlmNetworkRecord& network);

  Map m_Records;
};

// Debug level of the network list: from 1 the refresh decisions, above 2 dump and misses.
int NlmDebugLevel();

}  // namespace corvane
