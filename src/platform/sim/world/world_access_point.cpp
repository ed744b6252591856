// Access points of a world: elements given as hex or built from fields.

#include <algorithm>
#include <stdexcept>

#include "platform/sim/world/beacon_builder.h"
#include "platform/sim/world/element_facts.h"
#include "platform/sim/world/radio_model.h"
#include "platform/sim/world/world_sections.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

constexpr WORD kEssBit = 0x0001, kIbssBit = 0x0002, kPrivacyBit = 0x0010;

constexpr SecurityKind kSecurityKinds[] = {
    {"open", 0, DOT11_AUTH_ALGO_80211_OPEN, DOT11_CIPHER_ALGO_NONE},
    {"wep", 1, DOT11_AUTH_ALGO_80211_OPEN, DOT11_CIPHER_ALGO_WEP40},
    {"wpa", 2, DOT11_AUTH_ALGO_WPA_PSK, DOT11_CIPHER_ALGO_TKIP},
    {"wpa2", 3, DOT11_AUTH_ALGO_RSNA_PSK, DOT11_CIPHER_ALGO_CCMP},
    {"wpa/wpa2", 4, DOT11_AUTH_ALGO_RSNA_PSK, DOT11_CIPHER_ALGO_CCMP},
    {"wpa3", 5, DOT11_AUTH_ALGO_WPA3_SAE, DOT11_CIPHER_ALGO_CCMP},
    {"wpa2/wpa3", 6, DOT11_AUTH_ALGO_WPA3_SAE, DOT11_CIPHER_ALGO_CCMP},
    {"wpa2-enterprise", 7, DOT11_AUTH_ALGO_RSNA, DOT11_CIPHER_ALGO_CCMP},
    {"wpa3-enterprise", 8, DOT11_AUTH_ALGO_WPA3, DOT11_CIPHER_ALGO_CCMP},
    {"owe", 9, kAuthOwe, DOT11_CIPHER_ALGO_CCMP},
};

void Secure(Beacon* beacon, const SecurityKind& kind) {
  const std::string name = kind.name;
  if (name == "wpa") beacon->Wpa();
  if (name == "wpa2") beacon->Rsn({AKM_PSK});
  if (name == "wpa/wpa2") beacon->Rsn({AKM_PSK}).Wpa();
  if (name == "wpa3") beacon->Rsn({AKM_SAE});
  if (name == "wpa2/wpa3") beacon->Rsn({AKM_PSK, AKM_SAE});
  if (name == "wpa2-enterprise") beacon->Rsn({AKM_8021X});
  if (name == "wpa3-enterprise") beacon->Rsn({AKM_8021X_SHA256});
  if (name == "owe") beacon->Rsn({AKM_OWE});
}

using BeaconOf = Beacon& (Beacon::*)(int streams);
struct PhyKind {
  const char* name;
  int value;
  BeaconOf widths[4];  // 20, 40, 80, 160 MHz
};
constexpr PhyKind kPhyKinds[] = {
    {"b", 0, {}},
    {"a/g", 1, {}},
    {"ht", 2, {&Beacon::Ht20, &Beacon::Ht40}},
    {"vht", 3, {&Beacon::Vht20, &Beacon::Vht40, &Beacon::Vht80, &Beacon::Vht160}},
    {"he", 4, {&Beacon::He20, &Beacon::He40, &Beacon::He80, &Beacon::He160}},
};

// `phy`, `widthMHz` and `streams`.
void TakePhy(JsonFields& fields, Beacon* beacon) {
  const auto phy = fields.Find("phy");
  const PhyKind& kind = kPhyKinds[phy ? phy->Choice(kPhyKinds) : 2];
  int streams = 2, width = 20;
  fields.Integer("streams", 1, 8, &streams);
  const auto widthNode = fields.Find("widthMHz");
  if (widthNode) width = static_cast<int>(widthNode->Integer(20, 160));
  if (kind.value == 0) beacon->Only80211b();
  const std::size_t step = width == 20    ? 0
                           : width == 40  ? 1
                           : width == 80  ? 2
                           : width == 160 ? 3
                                          : 4;
  const BeaconOf build = step < 4 ? kind.widths[step] : nullptr;
  if (build) {
    (beacon->*build)(streams);
  } else if (kind.value >= 2 || width != 20) {
    widthNode->Fail(std::string("is no width of \"") + kind.name + "\"");
  }
  bool mu = false;
  fields.Flag("muMimo", &mu);
  if (mu) beacon->MuBeamformer();
}

void TakeLoad(JsonFields& fields, Beacon* beacon) {
  const auto node = fields.Find("load");
  if (!node) return;
  JsonFields load(*node);
  const auto stations = load.Need("stations").Integer(0, 65535);
  const auto utilisation = load.Need("utilisation").Integer(0, 255);
  load.Finish();
  beacon->QbssLoad(static_cast<int>(stations), static_cast<int>(utilisation));
}

void BuildElements(JsonFields& fields, const SecurityKind& kind, AccessPoint* out) {
  out->ssid = fields.Need("ssid").Ssid();
  Beacon beacon{std::string_view(out->ssid)};
  if (const auto channel = fields.Find("channel6GHz")) {
    beacon.Channel6GHz(static_cast<int>(channel->Integer(1, 233)));
  } else {
    beacon.Channel(static_cast<int>(fields.Need("channel").Integer(1, 177)));
  }
  TakePhy(fields, &beacon);
  Secure(&beacon, kind);
  TakeLoad(fields, &beacon);
  if (const auto country = fields.Find("country")) {
    if (country->Text().size() != 2) country->Fail("wants a country as two letters");
    beacon.Country(country->Text().c_str());
  }
  int mobilityDomain = -1;
  fields.Integer("mobilityDomain", 0, 65535, &mobilityDomain);
  if (mobilityDomain >= 0) beacon.FastTransition(static_cast<WORD>(mobilityDomain));
  out->frequencyMhz = beacon.FrequencyMhz();
  if (BandOf(out->frequencyMhz) == 0) fields.Node().Fail("is on no channel of 2.4, 5 or 6 GHz");
  try {
    out->elements = beacon.Bytes();
  } catch (const std::invalid_argument& reason) {
    fields.Node().Fail(reason.what());
  }
}

void TakeHexElements(JsonFields& fields, AccessPoint* out) {
  const JsonNode node = fields.Need("elementsHex");
  std::string bytes;
  if (!ReadHex(node.Text(), &bytes)) node.Fail("wants pairs of hexadecimal digits");
  out->elements.assign(bytes.begin(), bytes.end());
  const JsonNode frequency = fields.Need("frequencyMHz");
  out->frequencyMhz = static_cast<ULONG>(frequency.Integer(2000, 7200));
  if (BandOf(out->frequencyMhz) == 0) frequency.Fail("is in no band");
  if (const auto ssid = fields.Find("ssid")) {
    out->ssid = ssid->Ssid();
  } else {
    out->ssid = SsidOf(out->elements);
  }
}

// A number for a signal that stays, or a list of [time, dBm].
std::vector<SignalPoint> ReadTrack(const JsonNode& node) {
  constexpr double kWeakest = -120.0, kStrongest = 0.0;
  if (node.Value().IsNumber()) return {{0, node.Number(kWeakest, kStrongest)}};
  std::vector<SignalPoint> track;
  for (const JsonNode& item : node.Items()) {
    if (!item.Value().IsArray() || item.Value().Size() != 2) item.Fail("wants [time, dBm]");
    const SignalPoint point{item.Item(0).Duration(), item.Item(1).Number(kWeakest, kStrongest)};
    if (!track.empty() && point.atMs <= track.back().atMs)
      item.Fail("is not later than the one before it");
    track.push_back(point);
  }
  if (track.empty()) node.Fail("wants at least one [time, dBm]");
  return track;
}

// [from, to], or [from] for all the time that follows.
Span ReadSpan(const JsonNode& node) {
  const auto items = node.Items();
  if (items.empty() || items.size() > 2) node.Fail("wants [from, to] or [from]");
  Span span{items[0].Duration(), items.size() == 2 ? items[1].Duration() : kForever};
  if (span.toMs <= span.fromMs) node.Fail("ends before it begins");
  return span;
}

}  // namespace

const SecurityKind& TakeSecurity(JsonFields& fields, Security* out) {
  const auto word = fields.Find("security");
  const SecurityKind& kind = kSecurityKinds[word ? word->Choice(kSecurityKinds) : 0];
  out->auth = kind.auth;
  out->cipher = kind.cipher;
  fields.Text("key", &out->key);
  return kind;
}

AccessPoint ReadAccessPoint(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  AccessPoint out;
  const JsonNode bssid = fields.Need("bssid");
  out.bssid = bssid.MacAddress();
  if (out.bssid == Mac{}) bssid.Fail("is no address of an access point");
  const bool known =
      std::any_of(world.accessPoints.begin(), world.accessPoints.end(),
                  [&](const AccessPoint& other) { return other.bssid == out.bssid; });
  if (known) bssid.Fail("another access point has it");

  const bool bHex = fields.Has("elementsHex"), bSecurity = fields.Has("security");
  const SecurityKind& kind = TakeSecurity(fields, &out.security);
  if (bHex) {
    TakeHexElements(fields, &out);
    const auto key = out.security.key;
    if (!bSecurity) out.security = SecurityOf(out.elements);
    out.security.key = key;
  } else {
    BuildElements(fields, kind, &out);
  }
  fields.Flag("hidden", &out.hidden);
  bool adHoc = false;
  fields.Flag("adHoc", &adHoc);
  if (adHoc) out.bssType = dot11_BSS_type_independent;
  out.capability =
      static_cast<WORD>((adHoc ? kIbssBit : kEssBit) | (out.security.Enabled() ? kPrivacyBit : 0));
  out.phy = PhyOf(out.elements, out.frequencyMhz);
  fields.Integer("beaconPeriod", 1, 65535, &out.beaconPeriod);
  fields.Number("txPowerDbm", -20.0, 40.0, &out.txPowerDbm);
  if (const auto at = fields.Find("at")) out.at = at->Place();
  if (const auto signal = fields.Find("signal")) out.track = ReadTrack(*signal);
  fields.Each("alive", [&](const JsonNode& item) { out.alive.push_back(ReadSpan(item)); });
  TakeHops(fields, &out.hops);
  TakeNoise(fields, &out.noise);
  fields.Integer("refuse", 0, 0xFFFFFFFF, &out.refuseReason);
  if (const auto network = fields.Find("network")) out.network = NetworkByName(*network, world);
  fields.Finish();
  return out;
}

}  // namespace corvane::platform::sim
