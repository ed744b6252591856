#include "engine/adapter_class.h"
#include "engine/engine_bits.h"
#include "platform/ip_types.h"

namespace corvane {

namespace {

struct Model {
  WStringView prefix;
  WStringView otherSpelling;  // empty: there is one spelling
  std::uint32_t classFlags;   // without the managed bit
  std::uint32_t baseFlags;
  bool keepsName = true;
  bool needsVersionCheck = false;

  // The length of the spelling that the description begins with; npos for none.
  std::size_t Hit(WStringView description) const {
    if (description.starts_with(prefix)) return prefix.size();
    if (!otherSpelling.empty() && description.starts_with(otherSpelling)) {
      return otherSpelling.size();
    }
    return WStringView::npos;
  }
};

// The first that fits is it; the last fits all.
constexpr Model kWiredModels[] = {
    {u"Vantor Gale G1", u"Vantor GALE G1", 0x8011, 0x11},
    {u"Vantor Gale G2", u"Vantor GALE G2", 0x8021, 0x21},
    {u"Vantor Gale G3", u"Vantor GALE G3", 0x8041, 0x41},
    {u"Vantor Gale G4", {}, 0x1008001, 0x1000001},
    {u"Vantor Gale G5", {}, 0x408001, 0x400001},
    {u"Vantor Gale V5", {}, 0x808001, 0x800001},
    {u"Vantor Gale 5GbE", {}, 0x8201, 0x201, false},
    {u"Vantor Gale 10GbE", {}, 0x9001, 0x1001, false},
    {{}, {}, 0x1, 0x1, false},
};

// Their base flags are their class flags.
constexpr Model kWirelessModels[] = {
    {u"Vantor Breeze W1", u"Vantor BREEZE W1", 0xC106, 0},
    {u"Vantor Breeze W2", {}, 0xC086, 0},
    {u"Vantor Breeze W3", {}, 0x4C002, 0, true, true},
    {u"Vantor Wi-Fi", {}, 0x200C002, 0},
    {u"Vantor Wireless", {}, 0xC006, 0},
    {{}, {}, 0xC002, 0, false},
};

template <std::size_t N>
const Model& FindModel(const Model (&models)[N], WStringView description) {
  for (const Model& model : models) {
    if (model.Hit(description) != WStringView::npos) return model;
  }
  return models[N - 1];
}

}  // namespace

void LBClassifyOwnAdapter(WStringView description, std::uint32_t ifType, const LBSettings& settings,
                          LBAdapterClass* adapter) {
  switch (ifType) {
    case platform::IF_TYPE_ETHERNET_CSMACD: {
      const Model& model = FindModel(kWiredModels, description);
      adapter->managed = true;
      adapter->classFlags = model.classFlags | adapter_class::kManaged;
      adapter->baseFlags = model.baseFlags;
      if (model.keepsName) adapter->name = description.substr(0, model.Hit(description));
      break;
    }
    case platform::IF_TYPE_IEEE80211: {
      const Model& model = FindModel(kWirelessModels, description);
      adapter->managed = true;
      adapter->classFlags = adapter->baseFlags = model.classFlags;
      adapter->needsVersionCheck = model.needsVersionCheck;
      adapter->name =
          description.substr(0, model.keepsName ? model.Hit(description) : kLongNameChars);
      break;
    }
    case platform::IF_TYPE_WWANPP:
    case platform::IF_TYPE_WWANPP2:
      adapter->managed = settings.Has11ad();
      adapter->mobile = true;
      adapter->classFlags = adapter->baseFlags = adapter->managed ? 0x8C000 : 0x82000;
      break;
    default:
      break;
  }
}

}  // namespace corvane
