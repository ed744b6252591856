#include "policy/candidate_list.h"

#include <algorithm>
#include <set>

#include "policy/round_watch.h"
#include "rules/candidate_rules.h"

namespace corvane {

namespace {

constexpr std::uint32_t kMissingScansAllowed = 2;

bool IsOnSystemDenyList(const CWlanBssEntry& entry, const ScoreContext& scores) {
  return scores.FilterOf(entry.m_SSIDW) == kFilterDenied;
}

struct Ranked {
  CandidateRank rank;
  CSmartPointer<CWlanBssEntry> entry;
};

// Each entry is ranked once, so that the order stands still while it is worked out.
template <class RankOf>
void SortBy(BssEntryList* entries, bool preferPrivate, RankOf rankOf) {
  std::vector<Ranked> ranked;
  ranked.reserve(entries->size());
  for (auto& entry : *entries) {
    ranked.push_back({rankOf(*entry), std::move(entry)});
  }
  std::stable_sort(ranked.begin(), ranked.end(), [preferPrivate](const Ranked& a, const Ranked& b) {
    return RanksBelow(a.rank, b.rank, preferPrivate);
  });
  std::transform(ranked.rbegin(), ranked.rend(), entries->begin(),
                 [](Ranked& one) { return std::move(one.entry); });
}

// Removes the entries that do not stand as kQualified.
template <class Judge>
void KeepQualified(BssEntryList* entries, int adapter, std::vector<PassedOver>* passedOver,
                   Judge judge) {
  std::size_t kept = 0;
  for (auto& entry : *entries) {
    const CandidateStanding standing = judge(*entry);
    if (standing == CandidateStanding::kQualified) {
      (*entries)[kept++] = std::move(entry);
    } else {
      RoundWatches::Standing(adapter, *entry, standing);
      passedOver->push_back({std::move(entry), standing});
    }
  }
  entries->resize(kept);
}

}  // namespace

BssEntryList EntriesInRange(CWlanInterface& adapter) {
  const bool connected = adapter.IsConnected();
  return EntriesInRange(adapter, connected, adapter.GetConnectedBssid());
}

BssEntryList EntriesInRange(CWlanInterface& adapter, bool connected, const MacAddress& bssid) {
  BssEntryList entries = adapter.SnapshotEntries();
  std::erase_if(entries, [&](const CSmartPointer<CWlanBssEntry>& entry) {
    return !entry->m_bss_scanned && entry->m_unscanned_count > kMissingScansAllowed &&
           !(connected && entry->GetBssid() == bssid);
  });
  return entries;
}

void KeepCandidates(BssEntryList* entries, const ApListRows& denied, const ScoreContext& scores,
                    int adapter, std::vector<PassedOver>* passedOver) {
  const ApListIndex deniedBySsid(denied);
  KeepQualified(entries, adapter, passedOver, [&](const CWlanBssEntry& entry) {
    // A connection to what a row names in whatever case is ended, so it must not be made either:
    // the mark alone goes by one spelling of the SSID.
    const bool isDenied = entry.m_bDenied || deniedBySsid.IsListed(entry.m_SSIDW, entry.GetBssid());
    return JudgeAdmission({IsOnSystemDenyList(entry, scores), isDenied, entry.m_SSIDW.empty(),
                           entry.m_AuthAlgorithm, entry.HasUsableProfile(),
                           entry.m_bHasTempProfile});
  });
}

void SortCandidates(BssEntryList* entries, bool preferPrivate, const ScoreContext& scores) {
  SortBy(entries, preferPrivate, [&](CWlanBssEntry& entry) -> CandidateRank {
    return {preferPrivate && scores.CategoryOf(entry.m_SSIDW) == kCategoryPrivate,
            entry.GetLQ() >= entry.m_arbitrary_min_lq ? entry.m_arbitrary_priority : 0,
            entry.GetScore(true, scores), entry.GetLQ()};
  });
}

void KeepNetwork(BssEntryList* entries, WStringView ssid, int adapter,
                 std::vector<PassedOver>* passedOver) {
  KeepQualified(entries, adapter, passedOver, [&](const CWlanBssEntry& entry) {
    const bool same = !entry.m_SSIDW.empty() && EqualsIgnoreCase(entry.m_SSIDW, ssid);
    return same ? CandidateStanding::kQualified : CandidateStanding::kOtherNetwork;
  });
}

void KeepAllowed(BssEntryList* entries, const ApListRows& rows, int adapter,
                 std::vector<PassedOver>* passedOver) {
  const ApListIndex bySsid(rows);
  KeepQualified(entries, adapter, passedOver, [&](const CWlanBssEntry& entry) {
    return bySsid.IsListed(entry.m_SSIDW, entry.GetBssid()) ? CandidateStanding::kQualified
                                                            : CandidateStanding::kNotAllowed;
  });
}

BssEntryList OtherEntries(const BssEntryList& all, const BssEntryList& candidates,
                          const ScoreContext& scores) {
  std::set<MacAddress> taken;
  for (const auto& entry : candidates) taken.insert(entry->GetBssid());
  BssEntryList others;
  for (const auto& entry : all) {
    if (!taken.contains(entry->GetBssid()) && !IsOnSystemDenyList(*entry, scores))
      others.push_back(entry);
  }
  SortBy(&others, false, [&scores](CWlanBssEntry& entry) -> CandidateRank {
    return {false, 0, entry.GetScore(true, scores), entry.GetLQ()};
  });
  return others;
}

WString NetworksInRangeJson(const BssEntryList& entries, WStringView connectedSsid,
                            bool* connectedFound) {
  *connectedFound = std::any_of(entries.begin(), entries.end(),
                                [&](const auto& entry) { return entry->m_SSIDW == connectedSsid; });
  WString json = u"[";
  const auto append = [&json](WStringView ssid) {
    if (json.size() > 1) json += u',';
    json.append(u"\"").append(ssid).append(u"\"");
  };
  if (*connectedFound) append(connectedSsid);
  for (const auto& entry : entries) {
    if (entry->m_SSIDW != connectedSsid) append(entry->m_SSIDW);
  }
  return json += u']';
}

}  // namespace corvane
