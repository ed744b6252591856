#include "monitors/nlm_table.h"

#include "foundation/log_lines.h"

namespace corvane {

namespace {

#define NLM_LOG(level, ...)                                \
  do {                                                     \
    if (NlmDebugLevel() >= (level)) LOG_INFO(__VA_ARGS__); \
  } while (0)

WString Brief(const NlmNetworkRecord& one) {
  return Format(u"name=%s, base=%s, cat=%s, connectivity=0x%08x, desc=%s", one.name, one.base,
                NetworkCategoryName(one.cat), one.connectivity, one.desc);
}

WString WithState(const NlmNetworkRecord& one) {
  return Format(u"%s, iscon=%i/%i", Brief(one), one.iscon, one.isinet);
}

bool IsLive(const NlmNetworkRecord& one) { return one.iscon || one.isinet; }

}  // namespace

void NlmTable::SeedPass(const Listed& listed) {
  for (const auto& network : listed) Seed(network);
}

void NlmTable::StrictPass(const Listed& listed) {
  for (auto& [base, record] : m_Records) record.seen = false;
  for (const auto& network : listed) Strict(network);
}

void NlmTable::LoosePass(const Listed& listed) {
  for (const auto& network : listed) Loose(network);
}

const NlmNetworkRecord* NlmTable::Find(WStringView base) const {
  const auto at = m_Records.find(base);
  return at == m_Records.end() ? nullptr : &at->second;
}

bool NlmTable::SetConnectivity(WStringView base, std::uint32_t connectivity) {
  const auto at = m_Records.find(base);
  if (at == m_Records.end()) return false;
  at->second.connectivity = connectivity;
  return true;
}

void NlmTable::Store(const NlmNetworkRecord& network) {
  NlmNetworkRecord& record = m_Records[network.base];
  record = network;
  record.seen = true;
}

void NlmTable::Replace(NlmNetworkRecord* old, const NlmNetworkRecord& network) {
  auto others = std::move(old->others);
  *old = network;
  old->others.insert(others.begin(), others.end());
  old->seen = true;
}

void NlmTable::Seed(const NlmNetworkRecord& network) {
  const auto at = m_Records.find(network.base);
  if (at == m_Records.end()) {
    Store(network);
    NLM_LOG(1,
            u"NLM-SEED: ADD:[new entry] name=%s, base=%s, cat=%s, connectivity=0x%08x, desc=%s\n",
            network.name, network.base, NetworkCategoryName(network.cat), network.connectivity,
            network.desc);
    return;
  }
  NlmNetworkRecord& old = at->second;
  if (network.connectedTime <= old.connectedTime) {
    NLM_LOG(1, u"NLM-SEED: [SKIP] NEW: %s, 0x%08I64x ==> OLD: %s, 0x%08I64x\n", Brief(network),
            network.connectedTime, Brief(old), old.connectedTime);
    return;
  }
  NLM_LOG(1, u"NLM-SEED: [SMASH] NEW: %s ==> OLD: %s\n", Brief(network), Brief(old));
  Replace(&old, network);
}

void NlmTable::Strict(const NlmNetworkRecord& network) {
  const auto at = m_Records.find(network.base);
  if (at == m_Records.end()) {
    if (IsLive(network) || network.desc == network.name) {
      Store(network);
      NLM_LOG(1, u"NLM-STRICT __CREATE_NEW__: %s [EXACT NAME MATCH, OR iscon is true]\n",
              WithState(network));
    } else {
      NLM_LOG(1,
              u"NLM-STRICT __SKIP-INVALID?__:[Existing NOT found] %s [NAME MISMATCH & iscon is "
              u"false]\n",
              WithState(network));
    }
    return;
  }
  NlmNetworkRecord& old = at->second;
  if (old.name == network.name) {
    NLM_LOG(1, u"NLM-STRICT [UPDATE-INSTANCE]: NEW: %s ==> OLD: %s\n", WithState(network),
            WithState(old));
    Replace(&old, network);
  } else if (IsLive(network) && !IsLive(old)) {
    NLM_LOG(1,
            u"NLM-STRICT SWAP:[Existing found] TAKE-NEW: name=%s, base=%s, cat=%s%s, "
            u"connectivity=0x%08x, "
            u"desc=%s, iscon=%i/%i\n",
            network.name, network.base, NetworkCategoryName(network.cat),
            network.cat == old.cat ? u"" : u"[_CHANGED_]", network.connectivity, network.desc,
            network.iscon, network.isinet);
    NLM_LOG(1, u"NLM-STRICT SWAP:[Existing found] REPL-OLD: %s\n", WithState(old));
    Replace(&old, network);
  } else {
    NLM_LOG(1,
            u"NLM-STRICT SKIP:[Existing found] name=%s[add name to 'others' under base], base=%s, "
            u"cat=%s, "
            u"connectivity=0x%08x[IGNORE], desc=%s, iscon=%i/%i\n",
            network.name, network.base, NetworkCategoryName(network.cat), network.connectivity,
            network.desc, network.iscon, network.isinet);
    old.others.emplace(network.name, 1);
  }
}

void NlmTable::Loose(const NlmNetworkRecord& network) {
  const auto at = m_Records.find(network.base);
  if (at == m_Records.end()) {
    Store(network);
    NLM_LOG(1, u"NLM-LOOSE: ADD:[new entry] %s\n", Brief(network));
  } else if (!at->second.seen) {
    NLM_LOG(1, u"NLM-LOOSE: [SMASH] NEW: %s ==> OLD: %s\n", Brief(network), Brief(at->second));
    Replace(&at->second, network);
  }
}

}  // namespace corvane
