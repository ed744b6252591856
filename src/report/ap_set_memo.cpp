#include "report/ap_set_memo.h"

#include "foundation/format.h"
#include "platform/clock_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {
constexpr std::uint32_t kLowestSpecialFlag = 0xFFFFFFFE;
}

bool CApSetMemo::Add(bool stamp, const char16_t* ssid, const char16_t* bssid, const char16_t* text1,
                     const char16_t* text2, std::uint32_t flag, std::uint32_t sq) {
  if (!ssid || !bssid || !text1 || !text2) return false;
  const std::uint64_t now = Os().clock.GetTickCount64();
  const std::uint64_t unixNow = stamp ? platform::UnixSecondsNow() : 0;
  const CCritSecLock lock(m_Lock);
  Network& network = m_Networks[ssid];
  const auto [at, isNew] = network.aps.try_emplace(bssid);
  Ap& ap = at->second;
  if (isNew) {
    ap = {text1, text2, now, flag, sq};
    m_NewestSsid = ssid;
    m_NewestBssid = bssid;
  } else {
    ap.m_seen_tick = now;
    if (flag < kLowestSpecialFlag && flag != ap.m_flag) {
      ap.m_flag = flag;
      ap.m_sq = sq;
    }
  }
  if (stamp) {
    network.m_suggest_tick = now;
    network.m_suggest_unix_time = unixNow;
    network.m_suggest_time_set = true;
  }
  return true;
}

bool CApSetMemo::RemoveAp(WStringView ssid, WStringView bssid) {
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) return false;
  const auto ap = network->second.aps.find(bssid);
  if (ap == network->second.aps.end()) return false;
  network->second.aps.erase(ap);
  if (network->second.aps.empty()) m_Networks.erase(network);
  if (m_NewestSsid == ssid && m_NewestBssid == bssid) FindNewest();
  return true;
}

bool CApSetMemo::RemoveNetwork(WStringView ssid) {
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) return false;
  m_Networks.erase(network);
  if (m_NewestSsid == ssid) FindNewest();
  return true;
}

void CApSetMemo::FindNewest() {
  const Ap* newest = nullptr;
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, ap] : network.aps) {
      if (newest && ap.m_seen_tick <= newest->m_seen_tick) continue;
      newest = &ap;
      m_NewestSsid = ssid;
      m_NewestBssid = bssid;
    }
  }
}

bool CApSetMemo::GetNewest(Newest* out) {
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(m_NewestSsid);
  if (network == m_Networks.end()) return false;
  const auto ap = network->second.aps.find(m_NewestBssid);
  if (ap == network->second.aps.end()) return false;
  *out = {m_NewestSsid, m_NewestBssid, ap->second.text1, ap->second.text2};
  return true;
}

bool CApSetMemo::HasNetwork(WStringView ssid) {
  const CCritSecLock lock(m_Lock);
  return m_Networks.find(ssid) != m_Networks.end();
}

bool CApSetMemo::HasAp(WStringView ssid, WStringView bssid) {
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  return network != m_Networks.end() &&
         network->second.aps.find(bssid) != network->second.aps.end();
}

std::uint64_t CApSetMemo::BumpRepeats(WStringView ssid, std::uint64_t* unixTime) {
  if (unixTime) *unixTime = 0;
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) return 0;
  ++network->second.m_consec_repeats;
  if (!network->second.m_suggest_time_set) return 0;
  if (unixTime) *unixTime = network->second.m_suggest_unix_time;
  return network->second.m_suggest_tick;
}

void CApSetMemo::ResetRepeats(WStringView ssid) {
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  if (network != m_Networks.end()) network->second.m_consec_repeats = 0;
}

std::uint32_t CApSetMemo::GetRepeats(WStringView ssid) {
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  return network == m_Networks.end() ? 0 : network->second.m_consec_repeats;
}

std::uint32_t CApSetMemo::GetFlag(WStringView ssid, WStringView bssid) {
  const CCritSecLock lock(m_Lock);
  const auto network = m_Networks.find(ssid);
  if (network == m_Networks.end()) return kNoFlag;
  const auto ap = network->second.aps.find(bssid);
  return ap == network->second.aps.end() ? kNoFlag : ap->second.m_flag;
}

void CApSetMemo::ClearStamps() {
  const CCritSecLock lock(m_Lock);
  for (auto& [ssid, network] : m_Networks) network.m_suggest_time_set = false;
}

void CApSetMemo::Clear() {
  const CCritSecLock lock(m_Lock);
  m_Networks.clear();
}

bool CApSetMemo::IsEmpty() {
  const CCritSecLock lock(m_Lock);
  return m_Networks.empty();
}

WString CApSetMemo::GetSummary(WString* shortText) {
  const CCritSecLock lock(m_Lock);
  WString whole, brief;
  for (const auto& [ssid, network] : m_Networks) {
    if (!whole.empty()) whole += u", ", brief += u", ";
    whole += ssid + u"[";
    brief += ssid + u"[";
    bool first = true;
    for (const auto& [bssid, ap] : network.aps) {
      if (!first) whole += u", ", brief += u", ";
      first = false;
      whole += Format(u"%s(SQ %lu)", bssid, ap.m_sq);
      brief += bssid;
    }
    whole += u"]";
    brief += u"]";
  }
  if (whole.empty()) whole = u"none";
  if (shortText) *shortText = std::move(brief);
  return whole;
}

void CApSetMemo::GetLists(WString* ssids, WString* bssids, WString* sqs) {
  const CCritSecLock lock(m_Lock);
  ssids->clear(), bssids->clear(), sqs->clear();
  const auto append = [](WString* list, const WString& one) {
    if (!list->empty()) *list += u", ";
    *list += one;
  };
  for (const auto& [ssid, network] : m_Networks) {
    for (const auto& [bssid, ap] : network.aps) {
      append(ssids, ssid);
      append(bssids, bssid);
      append(sqs, Format(u"%lu", ap.m_sq));
    }
  }
}

}  // namespace corvane
