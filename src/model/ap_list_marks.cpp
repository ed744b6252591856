#include "model/ap_list_marks.h"

#include <unordered_map>
#include <utility>

namespace corvane {

namespace {

constexpr std::size_t kPriorityStep = 100;
constexpr std::uint32_t kMissingScansTooMany = 3;

// Calls mark(entry) with the entries of the network that the row names.
template <class Mark>
void ForEachNamed(const ApListRow& row, CWlanNetwork& network, Mark&& mark) {
  if (row.IsWildcard()) {
    for (auto& [bssid, entry] : network.m_BssMap) mark(*entry);
  } else if (const auto at = network.m_BssMap.find(row.mac); at != network.m_BssMap.end()) {
    mark(*at->second);
  }
}

// The networks by their names in lower case, the first of those that fold alike. Made when it is
// first needed: a list that is spelled as the networks are costs no folding.
class FoldedNames {
 public:
  explicit FoldedNames(NetworkMap& networks) : m_Networks(networks) {}

  CWlanNetwork* Find(WStringView ssid) {
    if (m_Folded.empty()) {
      m_Folded.reserve(m_Networks.size());
      for (auto& [name, network] : m_Networks) m_Folded.try_emplace(ToLower(name), network.get());
    }
    const auto at = m_Folded.find(ToLower(ssid));
    return at == m_Folded.end() ? nullptr : at->second;
  }

 private:
  NetworkMap& m_Networks;
  std::unordered_map<WString, CWlanNetwork*> m_Folded;
};

}  // namespace

bool MarkPreferred(const PreferredApRows& rows, NetworkMap* networks) {
  bool changed = false;
  auto priority = static_cast<std::int32_t>((rows.size() / kPriorityStep + 1) * kPriorityStep);
  for (const PreferredApRow& row : rows) {
    if (const auto at = networks->find(row.ssid); at != networks->end()) {
      ForEachNamed(row, *at->second, [&](CWlanBssEntry& entry) {
        if (!entry.m_bss_scanned && entry.m_unscanned_count >= kMissingScansTooMany) return;
        changed |= std::exchange(entry.m_arbitrary_priority, priority) != priority;
        changed |= std::exchange(entry.m_arbitrary_min_lq, row.min_lq) != row.min_lq;
      });
    }
    --priority;  // whether the row matched or not: rows out of range keep their place
  }
  return changed;
}

bool MarkDenied(const ApListRows& rows, NetworkMap* networks) {
  bool changed = false;
  FoldedNames folded(*networks);
  for (const ApListRow& row : rows) {
    const auto at = networks->find(row.ssid);
    CWlanNetwork* network = at != networks->end() ? at->second.get() : folded.Find(row.ssid);
    if (!network) continue;
    ForEachNamed(row, *network, [&changed](CWlanBssEntry& entry) {
      changed |= !std::exchange(entry.m_bDenied, true);
    });
  }
  return changed;
}

}  // namespace corvane
