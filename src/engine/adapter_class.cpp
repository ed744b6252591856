#include "engine/adapter_class.h"

#include "engine/engine_bits.h"
#include "platform/ip_types.h"

namespace corvane {

namespace {

using platform::IF_TYPE_ETHERNET_CSMACD;
using platform::IF_TYPE_IEEE80211;
using platform::IF_TYPE_PPP;
using platform::IF_TYPE_WWANPP;
using platform::IF_TYPE_WWANPP2;

constexpr WStringView kMaker = u"Vantor";
constexpr WStringView kMakersChips = u"Aquantia";
constexpr WStringView kIntel = u"Intel";
constexpr WStringView kVendors[] = {u"Marvel", u"Realtek", u"Linksys", u"Broadcom",
                                    kIntel,    u"Qualcom", u"Atheros"};
constexpr WStringView kCheckedModel = u"Intel(R) Wireless-AC 9";
constexpr WStringView kLoopback = u"Software Loopback";

struct Facts {
  WStringView description;
  std::uint32_t ifType;
  LBSettings settings;
  WStringView vendor;  // the word of a known vendor; empty for others
  bool own;

  bool Begins(WStringView text) const { return description.starts_with(text); }
  bool Holds(WStringView text) const { return description.find(text) != WStringView::npos; }
  bool IsMobileType() const { return ifType == IF_TYPE_WWANPP || ifType == IF_TYPE_WWANPP2; }
  bool IsShort() const { return description.size() < kLoopback.size(); }
};

enum class Flags { kKeep, kGain, kBecome, kGainClassBaseBecomes };
enum class Managed { kKeep, kYes, kNo, kKeepButMarked };  // marked: the state says not managed
enum class Name { kKeep, kOfManaged, kTaken };
enum class Then { kGoOn, kEnd };

// What one row does to an adapter that fits it.
struct Row {
  bool (*fits)(const Facts& facts, const LBAdapterClass& soFar);
  Flags how;
  std::uint32_t flags;
  Managed managed;
  bool LBAdapterClass::*mark;  // a flag to raise; null for none
  Name name;
  Then then;
};

// Kinds that are told by one word and a type, whoever made them.
constexpr Row kPlainKinds[] = {
    {[](const Facts& f, const LBAdapterClass&) {
       return f.IsMobileType() && f.Holds(u"Mobile Broadband Adapter");
     },
     Flags::kBecome, 0x84000, Managed::kYes, &LBAdapterClass::mobile, Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) {
       return f.settings.Has11ad() && f.Begins(u"Qualcomm Atheros Sparrow 11ad");
     },
     Flags::kBecome, 0x10C006, Managed::kYes, &LBAdapterClass::is11ad, Name::kTaken, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) {
       return f.settings.Has11ad() && f.Begins(u"Qualcomm Atheros QCA61x4A");
     },
     Flags::kBecome, 0xC006, Managed::kYes, nullptr, Name::kTaken, Then::kEnd},
};

// Everything that is neither of these nor the maker's own.
constexpr Row kOtherKinds[] = {
    {[](const Facts& f, const LBAdapterClass&) { return f.ifType == IF_TYPE_PPP; }, Flags::kBecome,
     0x22001, Managed::kNo, &LBAdapterClass::ppp, Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) { return !f.vendor.empty(); }, Flags::kBecome,
     0x4000, Managed::kYes, nullptr, Name::kKeep, Then::kGoOn},
    {[](const Facts& f, const LBAdapterClass&) { return f.vendor.empty(); }, Flags::kBecome, 0x2000,
     Managed::kNo, nullptr, Name::kKeep, Then::kGoOn},
    {[](const Facts& f, const LBAdapterClass&) { return f.ifType == IF_TYPE_ETHERNET_CSMACD; },
     Flags::kGain, 0x1, Managed::kKeep, nullptr, Name::kOfManaged, Then::kGoOn},
    {[](const Facts& f, const LBAdapterClass& a) {
       return f.ifType == IF_TYPE_IEEE80211 && a.wifiDirect;
     },
     Flags::kGain, 0x2802, Managed::kKeep, nullptr, Name::kTaken, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) { return f.ifType == IF_TYPE_IEEE80211; },
     Flags::kGain, 0x4402, Managed::kKeep, nullptr, Name::kTaken, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) {
       return f.settings.HasOpenVpn() && f.Begins(u"TAP Adapter");
     },
     Flags::kGain, 0x4009, Managed::kYes, &LBAdapterClass::tunnel, Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) { return f.Begins(u"TAP Adapter"); }, Flags::kGain,
     0x2009, Managed::kKeepButMarked, &LBAdapterClass::tunnel, Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) { return f.Begins(u"LogMeIn"); },
     Flags::kGainClassBaseBecomes, 0x204001, Managed::kKeepButMarked, &LBAdapterClass::tunnel,
     Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) { return f.Begins(u"Bluetooth"); }, Flags::kGain,
     0x2002, Managed::kNo, nullptr, Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass& a) {
       return !a.wifiDirect && f.Begins(u"Microsoft");
     },
     Flags::kGain, 0x2002, Managed::kNo, nullptr, Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) { return f.IsShort() && f.Holds(u"VPN"); },
     Flags::kGain, 0x9, Managed::kKeepButMarked, &LBAdapterClass::tunnel, Name::kKeep, Then::kEnd},
    {[](const Facts& f, const LBAdapterClass&) {
       return f.IsShort() && f.settings.Has11ad() && f.IsMobileType();
     },
     Flags::kBecome, 0x84000, Managed::kYes, &LBAdapterClass::mobile, Name::kTaken, Then::kEnd},
};

void Apply(const Row& row, const Facts& facts, LBAdapterClass* adapter) {
  if (row.how == Flags::kBecome) adapter->classFlags = adapter->baseFlags = 0;
  adapter->classFlags |= row.flags;
  adapter->baseFlags =
      row.how == Flags::kGainClassBaseBecomes ? row.flags : adapter->baseFlags | row.flags;
  if (row.managed == Managed::kYes || row.managed == Managed::kNo) {
    adapter->managed = row.managed == Managed::kYes;
    adapter->state = adapter->managed ? 0 : slot_state::kNotManaged;
  } else if (row.managed == Managed::kKeepButMarked) {
    adapter->state = slot_state::kNotManaged;
  }
  if (row.mark) adapter->*row.mark = true;
  if (row.name == Name::kTaken || (row.name == Name::kOfManaged && adapter->managed)) {
    adapter->name = facts.description.substr(0, kNameChars);
  }
}

// True when a row ended the search.
template <std::size_t N>
bool Walk(const Row (&rows)[N], const Facts& facts, LBAdapterClass* adapter) {
  for (const Row& row : rows) {
    if (!row.fits(facts, *adapter)) continue;
    Apply(row, facts, adapter);
    if (row.then == Then::kEnd) return true;
  }
  return false;
}

// The vendor, and what Windows itself makes of an adapter that is no known vendor's.
void ReadMaker(Facts* facts, LBAdapterClass* adapter) {
  facts->own = facts->Begins(kMaker);
  if (facts->own) return;
  facts->own = facts->Begins(kMakersChips);
  if (!facts->own) {
    for (const WStringView vendor : kVendors) {
      if (!facts->Holds(vendor)) continue;
      facts->vendor = vendor;
      break;
    }
  }
  if (!facts->vendor.empty()) {
    adapter->needsVersionCheck = facts->vendor == kIntel && facts->ifType == IF_TYPE_IEEE80211 &&
                                 facts->Holds(kCheckedModel);
    return;
  }
  adapter->wifiDirect = facts->Holds(u"Wi-Fi Direct");
  adapter->hyperV = !adapter->wifiDirect && facts->Holds(u"Hyper-V");
  if (adapter->wifiDirect || adapter->hyperV) adapter->state = slot_state::kNotManaged;
}

}  // namespace

LBAdapterClass LBClassifyAdapter(WStringView description, std::uint32_t ifType,
                                 const LBSettings& settings) {
  LBAdapterClass adapter;
  Facts facts{description, ifType, settings, {}, false};
  ReadMaker(&facts, &adapter);
  if (Walk(kPlainKinds, facts, &adapter)) return adapter;
  if (facts.own) {
    LBClassifyOwnAdapter(description, ifType, settings, &adapter);
    adapter.state = adapter.managed ? 0 : slot_state::kNotManaged;
    return adapter;
  }
  if (!Walk(kOtherKinds, facts, &adapter)) adapter.report = !facts.Begins(kLoopback);
  return adapter;
}

}  // namespace corvane
