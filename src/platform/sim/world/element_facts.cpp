#include "platform/sim/world/element_facts.h"

#include <algorithm>
#include <optional>
#include <span>

#include "platform/sim/world/beacon_builder.h"

namespace corvane::platform::sim {

namespace {

constexpr BYTE kIdSsid = 0, kIdRates = 1, kIdBssLoad = 11, kIdErp = 42, kIdHt = 45, kIdRsn = 48,
               kIdExtendedRates = 50, kIdMobilityDomain = 54, kIdVht = 191, kIdVendor = 221,
               kIdExtension = 255;
constexpr BYTE kExtHeCapabilities = 35;

using Bytes = std::span<const BYTE>;

// The value of the first element of this id that is whole and begins with `head`.
std::optional<Bytes> Find(const std::vector<BYTE>& elements, BYTE id,
                          std::initializer_list<BYTE> head = {}) {
  Bytes rest(elements);
  while (rest.size() >= 2 && rest.size() - 2 >= rest[1]) {
    const Bytes value = rest.subspan(2, rest[1]);
    const bool begins =
        value.size() >= head.size() && std::equal(head.begin(), head.end(), value.begin());
    if (rest[0] == id && begins) return value;
    rest = rest.subspan(2 + value.size());
  }
  return std::nullopt;
}

std::ptrdiff_t OffsetOf(const std::vector<BYTE>& elements, Bytes value) {
  return value.data() - elements.data();
}

// The type of the first key management suite of an RSN element (IEEE 802.11-2020, clause 9.4.2.25),
// 802.1X where it ends before.
std::uint32_t FirstAkm(Bytes rsn) {
  constexpr std::size_t kPairwiseCount = 6, kPairwise = 8, kSuite = 4, kAkmCount = 2;
  if (rsn.size() < kPairwise) return AKM_8021X;
  const std::size_t pairwise = rsn[kPairwiseCount] + 256u * rsn[kPairwiseCount + 1];
  const std::size_t akm = kPairwise + kSuite * pairwise + kAkmCount;
  return rsn.size() < akm + kSuite ? static_cast<std::uint32_t>(AKM_8021X) : rsn[akm + 3];
}

}  // namespace

std::string SsidOf(const std::vector<BYTE>& elements) {
  const auto value = Find(elements, kIdSsid);
  if (!value) return {};
  const std::size_t size = std::min(value->size(), sizeof(DOT11_SSID::ucSSID));
  return std::string(value->begin(), value->begin() + static_cast<std::ptrdiff_t>(size));
}

std::vector<BYTE> CarryNoSsid(const std::vector<BYTE>& elements) {
  std::vector<BYTE> out = elements;
  const auto value = Find(elements, kIdSsid);
  if (!value) return out;
  const std::ptrdiff_t at = OffsetOf(elements, *value);
  out.erase(out.begin() + at, out.begin() + at + static_cast<std::ptrdiff_t>(value->size()));
  out[static_cast<std::size_t>(at) - 1] = 0;
  return out;
}

void SetQbssLoad(std::vector<BYTE>* elements, int stations, int utilisation) {
  constexpr std::size_t kLength = 5;  // clause 9.4.2.27
  auto value = Find(*elements, kIdBssLoad);
  if (!value || value->size() != kLength) {
    elements->insert(elements->end(), {kIdBssLoad, kLength, 0, 0, 0, 0, 0});
    value = Bytes(*elements).last(kLength);
  }
  BYTE* const load = elements->data() + OffsetOf(*elements, *value);
  if (stations >= 0) {
    load[0] = static_cast<BYTE>(stations);
    load[1] = static_cast<BYTE>(stations >> 8);
  }
  if (utilisation >= 0) load[2] = static_cast<BYTE>(utilisation);
}

std::optional<int> UtilisationOf(const std::vector<BYTE>& elements) {
  const auto value = Find(elements, kIdBssLoad);
  if (!value || value->size() < 3) return std::nullopt;
  return (*value)[2];
}

std::optional<int> MobilityDomainOf(const std::vector<BYTE>& elements) {
  const auto value = Find(elements, kIdMobilityDomain);  // clause 9.4.2.46
  if (!value || value->size() < 2) return std::nullopt;
  return (*value)[0] + 256 * (*value)[1];
}

WLAN_RATE_SET RateSetOf(const std::vector<BYTE>& elements) {
  WLAN_RATE_SET rates;
  for (const BYTE id : {kIdRates, kIdExtendedRates}) {
    const auto value = Find(elements, id);
    if (!value) continue;
    for (const BYTE rate : *value) {
      const std::size_t count = rates.uRateSetLength / sizeof(WORD);
      if (count == std::size(rates.usRateSet)) return rates;
      rates.usRateSet[count] = static_cast<WORD>((rate & 0x7F) | (rate & 0x80 ? 0x8000 : 0));
      rates.uRateSetLength += sizeof(WORD);
    }
  }
  return rates;
}

LONG PhyOf(const std::vector<BYTE>& elements, ULONG frequencyMhz) {
  constexpr ULONG kAbove2GHz = 3000;
  if (Find(elements, kIdExtension, {kExtHeCapabilities})) return dot11_phy_type_he;
  if (Find(elements, kIdVht)) return dot11_phy_type_vht;
  if (Find(elements, kIdHt)) return dot11_phy_type_ht;
  if (frequencyMhz > kAbove2GHz) return dot11_phy_type_ofdm;
  return Find(elements, kIdErp) ? dot11_phy_type_erp : dot11_phy_type_hrdsss;
}

Security SecurityOf(const std::vector<BYTE>& elements) {
  Security security;
  if (const auto rsn = Find(elements, kIdRsn)) {
    security.cipher = DOT11_CIPHER_ALGO_CCMP;
    switch (FirstAkm(*rsn)) {
      case AKM_PSK:
      case AKM_FT_PSK:
      case AKM_PSK_SHA256:
        security.auth = DOT11_AUTH_ALGO_RSNA_PSK;
        break;
      case AKM_SAE:
      case AKM_FT_SAE:
        security.auth = DOT11_AUTH_ALGO_WPA3_SAE;
        break;
      case AKM_OWE:
        security.auth = kAuthOwe;
        break;
      default:
        security.auth = DOT11_AUTH_ALGO_RSNA;
        break;
    }
  } else if (Find(elements, kIdVendor, {0x00, 0x50, 0xF2, 0x01})) {
    security.auth = DOT11_AUTH_ALGO_WPA_PSK;
    security.cipher = DOT11_CIPHER_ALGO_TKIP;
  }
  return security;
}

}  // namespace corvane::platform::sim
