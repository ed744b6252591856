#include "platform/sim/world/beacon_builder.h"

#include <algorithm>
#include <initializer_list>
#include <stdexcept>

namespace corvane::platform::sim {

namespace {

// Element ids of IEEE 802.11-2020, table 9-92, and extensions behind id 255.
constexpr BYTE kIdSsid = 0, kIdRates = 1, kIdDsss = 3, kIdCountry = 7, kIdBssLoad = 11, kIdErp = 42,
               kIdHtCapabilities = 45, kIdRsn = 48, kIdExtendedRates = 50, kIdMobilityDomain = 54,
               kIdHtOperation = 61, kIdVhtCapabilities = 191, kIdVhtOperation = 192,
               kIdVendor = 221, kIdExtension = 255;
constexpr BYTE kExtHeCapabilities = 35, kExtHeOperation = 36, kExt6GHzCapabilities = 59;

constexpr std::size_t kMostSsid = 32, kMostRates = 8, kMostValue = 255;

// Bytes in the order in which they stand in the frame; numbers go least significant byte first.
class Body {
 public:
  Body() = default;
  Body(std::initializer_list<BYTE> bytes) : m_Bytes(bytes) {}
  Body& U8(std::uint32_t value) {
    m_Bytes.push_back(static_cast<BYTE>(value));
    return *this;
  }
  Body& U16(std::uint32_t value) { return U8(value).U8(value >> 8); }
  Body& U24(std::uint32_t value) { return U16(value).U8(value >> 16); }
  Body& U32(std::uint32_t value) { return U16(value).U16(value >> 16); }
  Body& Zeros(std::size_t count) {
    m_Bytes.resize(m_Bytes.size() + count);
    return *this;
  }
  template <class Range>
  Body& All(const Range& range) {
    for (const auto byte : range) U8(static_cast<BYTE>(byte));
    return *this;
  }
  // A suite selector: the OUI in the order of its writing, and the type.
  Body& Suite(std::uint32_t oui, std::uint32_t type) {
    return U8(oui >> 16).U8(oui >> 8).U8(oui).U8(type);
  }
  const std::vector<BYTE>& Get() const { return m_Bytes; }

 private:
  std::vector<BYTE> m_Bytes;
};

std::uint32_t Unsigned(int value) { return static_cast<std::uint32_t>(value); }

void Put(std::vector<BYTE>* out, BYTE id, const std::vector<BYTE>& value) {
  if (value.size() > kMostValue) throw std::invalid_argument("an element holds at most 255 bytes");
  out->push_back(id);
  out->push_back(static_cast<BYTE>(value.size()));
  out->insert(out->end(), value.begin(), value.end());
}
void Put(std::vector<BYTE>* out, BYTE id, const Body& value) { Put(out, id, value.Get()); }

// The channel in the middle of the 5 GHz or 6 GHz channel of `widthMhz` that `primary` belongs to
// (IEEE 802.11-2020, annex E: blocks begin at 36, 100 and 149, in 6 GHz at 1).
int CentreChannel(int primary, int widthMhz, bool b6GHz) {
  const int first = b6GHz ? 1 : primary >= 149 ? 149 : primary >= 100 ? 100 : 36;
  const int last = b6GHz ? 233 : first == 149 ? 177 : first == 100 ? 144 : 64;
  const int span = widthMhz / 5;  // in channel numbers
  const int block = first + (primary - first) / span * span;
  if (primary < first || (primary - first) % 4 != 0 || block + span - 4 > last) {
    throw std::invalid_argument("channel " + std::to_string(primary) + " is not part of one of " +
                                std::to_string(widthMhz) + " MHz");
  }
  return block + span / 2 - 2;
}

// The two bits of each of eight streams: `support` up to `streams`, 3 (none) above.
std::uint32_t McsMap(int streams, std::uint32_t support) {
  std::uint32_t map = 0;
  for (int i = 0; i < 8; ++i) map |= (i < streams ? support : 3u) << (2 * i);
  return map;
}

// Clause 9.4.2.55.
Body HtCapabilities(int streams, bool b40) {
  constexpr std::uint32_t kLdpc = 0x0001, k40 = 0x0002, kNoSmps = 0x000C, kShortGi20 = 0x0020,
                          kShortGi40 = 0x0040;
  Body body;
  body.U16(kLdpc | kNoSmps | kShortGi20 | (b40 ? k40 | kShortGi40 : 0));
  body.U8(0x17);  // A-MPDU: 64 KiB, 4 us
  for (int i = 0; i < 10; ++i) body.U8(i < std::min(streams, 4) ? 0xFF : 0);
  body.U16(0).U8(0x01).Zeros(3);    // the transmit set is that of receiving
  return body.U16(0).U32(0).U8(0);  // extended capabilities, beamforming, antenna selection
}

// Clause 9.4.2.56. `secondary` is 0 for none, 1 above, 3 below.
Body HtOperation(int channel, std::uint32_t secondary) {
  constexpr std::uint32_t kAnyWidth = 0x04;
  Body body;
  return body.U8(Unsigned(channel)).U8(secondary | (secondary ? kAnyWidth : 0)).Zeros(20);
}

// Clause 9.4.2.157.
Body VhtCapabilities(int streams, bool b160, bool muBeamformer) {
  constexpr std::uint32_t kMpdu11454 = 2, k160 = 1 << 2, kLdpc = 1 << 4, kShortGi80 = 1 << 5,
                          kShortGi160 = 1 << 6, kSuBeamformer = 1 << 11, kMuBeamformer = 1 << 19,
                          kAmpdu = 7 << 23;
  Body body;
  body.U32(kMpdu11454 | kLdpc | kShortGi80 | kAmpdu | (b160 ? k160 | kShortGi160 : 0) |
           (muBeamformer ? kSuBeamformer | kMuBeamformer : 0));
  const std::uint32_t map = McsMap(streams, 2);  // MCS 0 to 9
  return body.U16(map).U16(0).U16(map).U16(0);
}

// Clause 9.4.2.158: segment 0 is the middle of 80 MHz, segment 1 that of 160 MHz.
Body VhtOperation(int channel, int widthMhz) {
  Body body;
  body.U8(widthMhz >= 80 ? 1 : 0);
  body.U8(widthMhz >= 80 ? Unsigned(CentreChannel(channel, 80, false)) : 0);
  body.U8(widthMhz >= 160 ? Unsigned(CentreChannel(channel, 160, false)) : 0);
  return body.U16(0xFFFC);  // basic: one stream, MCS 0 to 7
}

// Clause 9.4.2.248.
Body HeCapabilities(int streams, int widthMhz, bool in2GHz, bool muBeamformer) {
  constexpr std::uint32_t k40In2GHz = 1 << 1, k80 = 1 << 2, k160 = 1 << 3;
  std::uint32_t widths = in2GHz ? (widthMhz >= 40 ? k40In2GHz : 0) : k80;
  if (widthMhz >= 160) widths |= k160;
  Body body;
  body.U8(kExtHeCapabilities).Zeros(6);          // MAC capabilities
  body.U8(widths).Zeros(2);                      // PHY capabilities, bits 0 to 23
  body.U8(muBeamformer ? 0x80 : 0);              // bit 31: SU beamformer
  body.U8(muBeamformer ? 0x02 : 0).Zeros(6);     // bit 33: MU beamformer
  const std::uint32_t map = McsMap(streams, 2);  // MCS 0 to 11
  body.U16(map).U16(map);
  if (widthMhz >= 160) body.U16(map).U16(map);
  return body;
}

// Clause 9.4.2.249, with the 6 GHz operation information where it belongs.
Body HeOperation(int channel, int widthMhz, bool b6GHz) {
  constexpr std::uint32_t kPe16us = 4, kNoRtsByTime = 0x3FF << 4, k6GHzInfo = 1 << 17;
  Body body;
  body.U8(kExtHeOperation).U24(kPe16us | kNoRtsByTime | (b6GHz ? k6GHzInfo : 0));
  body.U8(0x01).U16(0xFFFC);  // BSS colour; basic: one stream, MCS 0 to 7
  if (!b6GHz) return body;
  body.U8(Unsigned(channel));
  body.U8(widthMhz >= 160 ? 3 : widthMhz >= 80 ? 2 : widthMhz >= 40 ? 1 : 0);
  const int segment = std::min(widthMhz, 80);
  body.U8(Unsigned(segment == 20 ? channel : CentreChannel(channel, segment, true)));
  body.U8(widthMhz >= 160 ? Unsigned(CentreChannel(channel, 160, true)) : 0);
  return body.U8(6);  // lowest rate, Mbit/s
}

// Clause 9.4.2.8: one range of channels, at 20 or 23 dBm.
Body CountryElement(const std::string& country, bool in2GHz) {
  Body body;
  body.All(country).U8(' ');
  return in2GHz ? body.U8(1).U8(13).U8(20) : body.U8(36).U8(8).U8(23);
}

// Clause 9.4.2.25: CCMP for both ciphers. Protected management frames as SAE and OWE want them.
Body RsnElement(const std::vector<std::uint32_t>& akms) {
  constexpr std::uint32_t kOui = 0x000FAC, kCcmp = 4, kMfpRequired = 0x40, kMfpCapable = 0x80;
  const auto protectedOnly = [](std::uint32_t akm) {
    return akm == AKM_SAE || akm == AKM_FT_SAE || akm == AKM_OWE;
  };
  Body body;
  body.U16(1).Suite(kOui, kCcmp).U16(1).Suite(kOui, kCcmp);
  body.U16(static_cast<std::uint32_t>(akms.size()));
  for (const std::uint32_t akm : akms) body.Suite(kOui, akm);
  std::uint32_t capabilities = 0;
  if (std::any_of(akms.begin(), akms.end(), protectedOnly)) capabilities = kMfpCapable;
  if (std::all_of(akms.begin(), akms.end(), protectedOnly)) capabilities |= kMfpRequired;
  return body.U16(capabilities);
}

// The element of Wi-Fi Protected Access, version 1.
Body WpaElement() {
  constexpr std::uint32_t kOui = 0x0050F2, kTkip = 2, kPsk = 2;
  Body body;
  return body.Suite(kOui, 1)
      .U16(1)
      .Suite(kOui, kTkip)
      .U16(1)
      .Suite(kOui, kTkip)
      .U16(1)
      .Suite(kOui, kPsk);
}

}  // namespace

Beacon::Beacon(std::string_view ssid) : m_Ssid(ssid) {
  if (ssid.size() > kMostSsid) throw std::invalid_argument("an SSID has at most 32 bytes");
}
Beacon::Beacon(std::u8string_view ssid)
    : Beacon(std::string_view(reinterpret_cast<const char*>(ssid.data()), ssid.size())) {}
Beacon::Beacon() = default;

Beacon& Beacon::Channel(int channel) {
  m_Channel = channel;
  m_b6GHz = false;
  return *this;
}

Beacon& Beacon::Channel6GHz(int channel) {
  m_Channel = channel;
  m_b6GHz = true;
  return *this;
}

Beacon& Beacon::Rates(std::vector<BYTE> rates) {
  m_Rates = std::move(rates);
  return *this;
}

Beacon& Beacon::Only80211b() { return Rates({0x82, 0x84, 0x8B, 0x96}); }

Beacon& Beacon::Use(Generation generation, int widthMhz, int streams) {
  if (streams < 1 || streams > 8) throw std::invalid_argument("streams are 1 to 8");
  m_Generation = generation;
  m_WidthMhz = widthMhz;
  m_Streams = streams;
  return *this;
}

Beacon& Beacon::Ht20(int streams) { return Use(Generation::kHt, 20, streams); }
Beacon& Beacon::Ht40(int streams) { return Use(Generation::kHt, 40, streams); }
Beacon& Beacon::Vht20(int streams) { return Use(Generation::kVht, 20, streams); }
Beacon& Beacon::Vht40(int streams) { return Use(Generation::kVht, 40, streams); }
Beacon& Beacon::Vht80(int streams) { return Use(Generation::kVht, 80, streams); }
Beacon& Beacon::Vht160(int streams) { return Use(Generation::kVht, 160, streams); }
Beacon& Beacon::He20(int streams) { return Use(Generation::kHe, 20, streams); }
Beacon& Beacon::He40(int streams) { return Use(Generation::kHe, 40, streams); }
Beacon& Beacon::He80(int streams) { return Use(Generation::kHe, 80, streams); }
Beacon& Beacon::He160(int streams) { return Use(Generation::kHe, 160, streams); }

Beacon& Beacon::MuBeamformer() {
  m_bMuBeamformer = true;
  return *this;
}

Beacon& Beacon::Rsn(std::vector<std::uint32_t> akms) {
  m_Akms = std::move(akms);
  return *this;
}

Beacon& Beacon::Wpa() {
  m_bWpa = true;
  return *this;
}

Beacon& Beacon::FastTransition(WORD mobilityDomain) {
  m_bFastTransition = true;
  m_MobilityDomain = mobilityDomain;
  return *this;
}

Beacon& Beacon::QbssLoad(int stations, int utilisation) {
  m_Stations = stations;
  m_Utilisation = utilisation;
  return *this;
}

Beacon& Beacon::Country(const char* twoLetters) {
  m_Country = twoLetters;
  return *this;
}

Beacon& Beacon::Vendor(std::uint32_t oui, std::vector<BYTE> data) {
  data.insert(data.begin(),
              {static_cast<BYTE>(oui >> 16), static_cast<BYTE>(oui >> 8), static_cast<BYTE>(oui)});
  return Append(kIdVendor, data);
}

Beacon& Beacon::Append(BYTE id, const std::vector<BYTE>& data) {
  Put(&m_Rest, id, data);
  return *this;
}

ULONG Beacon::FrequencyMhz() const {
  const int channel = m_Channel;
  if (m_b6GHz) return channel == 2 ? 5935u : static_cast<ULONG>(5950 + 5 * channel);
  if (channel == 14) return 2484;
  return static_cast<ULONG>((channel < 14 ? 2407 : 5000) + 5 * channel);
}

bool Beacon::OnlyDsss() const {
  const auto ofdm = [](BYTE rate) {
    constexpr int kDsss[] = {2, 4, 11, 22};
    return std::find(std::begin(kDsss), std::end(kDsss), rate & 0x7F) == std::end(kDsss);
  };
  return !m_Rates.empty() && std::none_of(m_Rates.begin(), m_Rates.end(), ofdm);
}

std::vector<BYTE> Beacon::Bytes() const {
  if (m_WidthMhz >= 80 && In2GHz()) {
    throw std::invalid_argument("2.4 GHz has no channel above 40 MHz");
  }
  if (m_b6GHz && m_Generation != Generation::kHe) throw std::invalid_argument("6 GHz wants HE");
  std::vector<BYTE> out;
  PutBasics(&out);
  PutGenerations(&out);
  if (m_bWpa) Put(&out, kIdVendor, WpaElement());
  out.insert(out.end(), m_Rest.begin(), m_Rest.end());
  return out;
}

void Beacon::PutBasics(std::vector<BYTE>* out) const {
  std::vector<BYTE> rates = m_Rates;
  if (rates.empty() && In2GHz()) {
    rates = {0x82, 0x84, 0x8B, 0x96, 0x0C, 0x12, 0x18, 0x24, 0x30, 0x48, 0x60, 0x6C};
  } else if (rates.empty()) {
    rates = {0x8C, 0x12, 0x98, 0x24, 0xB0, 0x48, 0x60, 0x6C};
  }
  const auto plain =
      rates.begin() + static_cast<std::ptrdiff_t>(std::min(rates.size(), kMostRates));

  Put(out, kIdSsid, Body().All(m_Ssid));                            // 9.4.2.2
  Put(out, kIdRates, std::vector<BYTE>(rates.begin(), plain));      // 9.4.2.3
  if (In2GHz()) Put(out, kIdDsss, Body().U8(Unsigned(m_Channel)));  // 9.4.2.4
  if (!m_Country.empty()) Put(out, kIdCountry, CountryElement(m_Country, In2GHz()));
  if (In2GHz() && !OnlyDsss()) Put(out, kIdErp, Body({0}));  // 9.4.2.11
  if (plain != rates.end()) {                                // 9.4.2.12
    Put(out, kIdExtendedRates, std::vector<BYTE>(plain, rates.end()));
  }
  if (!m_Akms.empty()) Put(out, kIdRsn, RsnElement(m_Akms));
  if (m_Stations >= 0) {  // 9.4.2.27
    Put(out, kIdBssLoad, Body().U16(Unsigned(m_Stations)).U8(Unsigned(m_Utilisation)).U16(0));
  }
  if (m_bFastTransition) {  // 9.4.2.46
    Put(out, kIdMobilityDomain, Body().U16(m_MobilityDomain).U8(0));
  }
}

void Beacon::PutGenerations(std::vector<BYTE>* out) const {
  if (m_Generation >= Generation::kHt && !m_b6GHz) {
    Put(out, kIdHtCapabilities, HtCapabilities(m_Streams, m_WidthMhz >= 40));
    Put(out, kIdHtOperation, HtOperation(m_Channel, SecondaryChannel()));
  }
  const bool heIn5GHz = m_Generation == Generation::kHe && !In2GHz() && !m_b6GHz;
  if (m_Generation == Generation::kVht || heIn5GHz) {
    Put(out, kIdVhtCapabilities, VhtCapabilities(m_Streams, m_WidthMhz >= 160, m_bMuBeamformer));
    Put(out, kIdVhtOperation, VhtOperation(m_Channel, m_WidthMhz));
  }
  if (m_Generation != Generation::kHe) return;
  Put(out, kIdExtension, HeCapabilities(m_Streams, m_WidthMhz, In2GHz(), m_bMuBeamformer));
  Put(out, kIdExtension, HeOperation(m_Channel, m_WidthMhz, m_b6GHz));
  constexpr std::uint32_t kLongest = 7 << 3 | 2 << 6;  // A-MPDU exponent, MPDU of 11454 bytes
  if (m_b6GHz) Put(out, kIdExtension, Body({kExt6GHzCapabilities}).U16(kLongest));  // 9.4.2.263
}

// Of the HT operation element: 0 for none, 1 above, 3 below.
std::uint32_t Beacon::SecondaryChannel() const {
  constexpr int kLastWithOneAbove = 7;  // in 2.4 GHz, where both would do
  if (m_WidthMhz < 40) return 0;
  if (In2GHz()) return m_Channel <= kLastWithOneAbove ? 1 : 3;
  return CentreChannel(m_Channel, 40, false) > m_Channel ? 1 : 3;
}

}  // namespace corvane::platform::sim
