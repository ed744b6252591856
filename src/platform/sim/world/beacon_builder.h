#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/wlan_types.h"

namespace corvane::platform::sim {

// Authentication and key management suites, OUI 00-0F-AC (IEEE 802.11-2020, table 9-151).
enum Akm : std::uint32_t {
  AKM_8021X = 1,
  AKM_PSK = 2,
  AKM_FT_8021X = 3,
  AKM_FT_PSK = 4,
  AKM_8021X_SHA256 = 5,
  AKM_PSK_SHA256 = 6,
  AKM_SAE = 8,
  AKM_FT_SAE = 9,
  AKM_OWE = 18,
};

// The elements of a beacon or probe response from the facts that they tell:
//   Beacon(u8"Office").Channel(36).Vht80(2).Rsn({AKM_PSK}).Bytes()
// Elements stand in the order of IEEE 802.11-2020, table 9-32. Streams are 1 to 8.
class Beacon {
 public:
  explicit Beacon(std::string_view ssid);
  explicit Beacon(std::u8string_view ssid);
  Beacon();  // an empty SSID

  // The primary channel: 1 to 14 in 2.4 GHz, above in 5 GHz. Chooses the rates of its band.
  Beacon& Channel(int channel);
  Beacon& Channel6GHz(int channel);
  // Supported rates in units of 500 kbit/s, the basic bit (0x80) where it is wanted; replaces those
  // of the band.
  Beacon& Rates(std::vector<BYTE> rates);
  Beacon& Only80211b();

  Beacon& Ht20(int streams);
  Beacon& Ht40(int streams);
  Beacon& Vht20(int streams);  // with the HT elements that belong to it
  Beacon& Vht40(int streams);
  Beacon& Vht80(int streams);
  Beacon& Vht160(int streams);
  Beacon& MuBeamformer();     // a VHT or HE access point that serves several stations at once
  Beacon& He20(int streams);  // with HT and, in 5 GHz, VHT
  Beacon& He40(int streams);
  Beacon& He80(int streams);
  Beacon& He160(int streams);

  Beacon& Rsn(std::vector<std::uint32_t> akms);  // CCMP
  Beacon& Wpa();  // the vendor element that came before RSN, TKIP and a key
  Beacon& FastTransition(WORD mobilityDomain);

  Beacon& QbssLoad(int stations, int utilisation);  // utilisation 0 to 255
  Beacon& Country(const char* twoLetters);
  Beacon& Vendor(std::uint32_t oui, std::vector<BYTE> data);  // the OUI in its three low bytes
  Beacon& Append(BYTE id, const std::vector<BYTE>& data);     // any other element, at the end

  std::vector<BYTE> Bytes() const;
  int GetChannel() const { return m_Channel; }
  ULONG FrequencyMhz() const;

 private:
  enum class Generation { kLegacy, kHt, kVht, kHe };
  Beacon& Use(Generation generation, int widthMhz, int streams);
  bool OnlyDsss() const;
  std::uint32_t SecondaryChannel() const;
  void PutBasics(std::vector<BYTE>* out) const;
  void PutGenerations(std::vector<BYTE>* out) const;
  bool In2GHz() const { return !m_b6GHz && m_Channel <= 14; }

  std::string m_Ssid;
  int m_Channel = 1;
  bool m_b6GHz = false;
  std::vector<BYTE> m_Rates;  // empty: those of the band
  Generation m_Generation = Generation::kLegacy;
  int m_WidthMhz = 20;
  int m_Streams = 1;
  bool m_bMuBeamformer = false;
  std::vector<std::uint32_t> m_Akms;
  bool m_bWpa = false;
  bool m_bFastTransition = false;
  WORD m_MobilityDomain = 0;
  int m_Stations = -1;  // -1: no load element
  int m_Utilisation = 0;
  std::string m_Country;
  std::vector<BYTE> m_Rest;  // vendor and appended elements, ready
};

}  // namespace corvane::platform::sim
