#pragma once
// The table of networks by base name, and the passes that settle which of several instances of one
// name speaks for it. Pure, but for its log lines.

#include <map>
#include <vector>

#include "monitors/nlm_record.h"

namespace corvane {

class NlmTable {
 public:
  using Map = std::map<WString, NlmNetworkRecord, std::less<>>;

  using Listed = std::vector<NlmNetworkRecord>;  // as the operating system lists them

  // The passes of a refresh. Nothing is ever removed, and instance names are never forgotten.
  void SeedPass(const Listed& listed);    // of an empty table: the instance last connected speaks
  void StrictPass(const Listed& listed);  // a live instance takes over from a dead one
  void LoosePass(const Listed& listed);   // after the strict one: fills what is left

  const NlmNetworkRecord* Find(WStringView base) const;
  bool SetConnectivity(WStringView base, std::uint32_t connectivity);
  bool IsEmpty() const { return m_Records.empty(); }
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
