// RSN and WPA elements.

#include <algorithm>

#include "elements/element_parsers.h"

namespace corvane {

namespace {

constexpr std::uint16_t kMfpRequired = 1u
                                       << 6;  // RSN capabilities, IEEE Std 802.11-2020 9.4.2.24.4

// The suites of one list; an element of at most 255 bytes holds no more. Those from `count` on are
// not written, for a beacon has several lists.
struct SuiteList {  // NOLINT(cppcoreguidelines-pro-type-member-init)
  std::array<std::uint32_t, 64> suites;
  std::size_t count = 0;
};

// A counted list of suites; false when the bytes end before it does.
bool TakeSuites(ValueReader* reader, SuiteList* list) {
  std::uint16_t count = 0;
  if (!reader->TakeU16(&count)) return false;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t suite = 0;
    if (!reader->TakeSuite(&suite)) return false;
    list->suites[list->count++] = suite;
  }
  return true;
}

// What a list of key management suites says (IEEE Std 802.11-2020 Table 9-151).
struct KeyManagement {
  bool enterprise = false;
  bool personal = false;
  bool f2 = false;  // FT over PSK, or PSK with SHA-256
  bool f3 = false;  // SAE
  bool fastTransition = false;
};

// Types of key management as bits.
template <class... Types>
constexpr std::uint32_t Akms(Types... types) {
  return (... | (1u << types));
}
constexpr std::uint32_t kEnterprise = Akms(1, 3, 5, 11, 12, 13);
constexpr std::uint32_t kPersonal = Akms(2, 4, 6, 8, 9);
constexpr std::uint32_t kF2 = Akms(4, 6);
constexpr std::uint32_t kF3 = Akms(8, 9);
constexpr std::uint32_t kFastTransition = Akms(3, 4, 9, 13);

KeyManagement ReadKeyManagement(const SuiteList& akms) {
  std::uint32_t types = 0;
  for (std::size_t i = 0; i < akms.count; ++i) {
    const std::uint32_t type = akms.suites[i] & 0xFF;
    if (type < 32) types |= 1u << type;
  }
  return {(types & kEnterprise) != 0, (types & kPersonal) != 0, (types & kF2) != 0,
          (types & kF3) != 0, (types & kFastTransition) != 0};
}

bool ApplySuiteToSecurityMask(ElementFields& out, std::uint32_t suite, bool bPersonal, bool f2,
                              bool f3, std::uint16_t rsnCaps) {
  if (suite < 0x000FAC01 || suite > 0x000FAC0D) return false;
  const bool strong = f3 || ((rsnCaps & kMfpRequired) != 0 && !f2);
  std::uint32_t bits = 0;
  switch (suite & 0xFF) {
    case 1:
    case 5:
      bits = bPersonal ? 0x01 : 0x10;
      break;
    case 2:
      bits = bPersonal ? 0x02 : 0x20;
      break;
    case 4:
    case 8:
    case 9:
    case 10:
    case 11:
      bits = bPersonal ? (strong ? 0x08 : 0x04) : (strong ? 0x80 : 0x40);
      break;
    case 6:
      bits = bPersonal ? (strong ? 0x08 : 0x04) : 0;
      break;
    case 12:
    case 13:
      bits = bPersonal ? 0x08 : 0x80;
      break;
    default:
      break;
  }
  out.SecurityMask |= bits;
  return bits != 0;
}

bool ApplyWpaSuite(ElementFields& out, std::uint32_t suite, bool bEnterprise) {
  std::uint32_t bits = 0;
  if (suite == 0x0050F201 || suite == 0x0050F205) bits = bEnterprise ? 0x10 : 0x01;
  if (suite == 0x0050F202) bits = bEnterprise ? 0x20 : 0x02;
  out.SecurityMask |= bits;
  return bits != 0;
}

// `applied`: the element set bits.
void NoteSecurity(const ElementFields& out, ElementNotes& notes, const char16_t* operation,
                  WStringView flags, bool applied, Bytes value) {
  if (applied) {
    notes.Add(kNoteSecurity, kParseFault, u"[%s - chan %i]%s: [UPDATED]%s SecurityMask=0x%08x\n",
              out.m_SSID, out.m_CenterChannel, operation, flags, out.SecurityMask);
    return;
  }
  notes.Add(kNoteSecurity, kParseFault, u"[%s - chan %i]%s: [NO CHANGE]%s SecurityMask=0x%08x\n",
            out.m_SSID, out.m_CenterChannel, operation, flags, out.SecurityMask);
  notes.Add(kNoteSecurity, kParseFault, u"\n[%s - chan %i]%s: WPA IE (NO SECURITY BITS SET!)\n",
            out.m_SSID, out.m_CenterChannel, operation);
  for (std::size_t row = 0; row < value.size(); row += 4) {
    WString line;
    for (const std::uint8_t byte :
         value.subspan(row, std::min<std::size_t>(4, value.size() - row))) {
      line += Format(u"%02x ", byte);
    }
    notes.Add(kNoteSecurity, kParseFault, u"%s\n", line);
  }
}

}  // namespace

// IEEE Std 802.11-2020 9.4.2.24.
void ParseRSN(Bytes value, ElementFields& out, ElementNotes& notes) {
  ValueReader reader(value);
  std::uint16_t version = 0, capabilities = 0;
  std::uint32_t group = 0;
  SuiteList pairwise, akms;
  if (!reader.TakeU16(&version) || !reader.TakeSuite(&group)) return;
  notes.Add(kNoteSecurity, kParseFault, u"[%s - chan %i]ParseRSN: version %u\n", out.m_SSID,
            out.m_CenterChannel, version);
  if (!TakeSuites(&reader, &pairwise) || !TakeSuites(&reader, &akms)) return;
  const KeyManagement keys = ReadKeyManagement(akms);
  if (keys.fastTransition) out.m_FastTransition = true;
  if (!reader.TakeU16(&capabilities)) return;
  if ((capabilities & kMfpRequired) != 0) {
    notes.Add(kNoteSecurity, kParseFault,
              u"[%s - chan %i]ParseRSN: rsn_caps=0x%04x [__MFPR is true__]\n", out.m_SSID,
              out.m_CenterChannel, capabilities);
  }

  bool applied = false;
  const auto apply = [&](std::uint32_t suite) {
    if (keys.enterprise || keys.personal) {
      applied |=
          ApplySuiteToSecurityMask(out, suite, !keys.enterprise, keys.f2, keys.f3, capabilities);
    }
  };
  apply(group);
  for (std::size_t i = 0; i < pairwise.count; ++i) apply(pairwise.suites[i]);

  std::uint16_t pmkids = 0;
  if (reader.TakeU16(&pmkids) && reader.Skip(std::size_t{pmkids} * 16)) {
    std::uint32_t groupManagement = 0;
    if (reader.TakeSuite(&groupManagement)) apply(groupManagement);
  }
  if (notes.Wants(kNoteSecurity)) {
    NoteSecurity(out, notes, u"ParseRSN", Format(u" [f2=%i/f3=%i]", keys.f2, keys.f3), applied,
                 value);
  }
}

// The WPA element of Microsoft (00 50 F2 type 1); every other vendor element is passed over.
void ParseVendorSpecificData(Bytes value, ElementFields& out, ElementNotes& notes) {
  constexpr std::uint32_t kWpa = 0x0050F201, kAkmEnterprise = 0x0050F201, kAkmPersonal = 0x0050F202;
  ValueReader reader(value);
  std::uint32_t type = 0, group = 0;
  std::uint16_t version = 0;
  SuiteList pairwise, akms;
  if (!reader.TakeSuite(&type) || type != kWpa) return;
  if (!reader.TakeU16(&version) || !reader.TakeSuite(&group)) return;
  notes.Add(kNoteSecurity, kParseFault, u"[%s - chan %i]ParseVendorSpecificData: version %u\n",
            out.m_SSID, out.m_CenterChannel, version);
  if (!TakeSuites(&reader, &pairwise) || !TakeSuites(&reader, &akms)) return;

  const auto listed = [&akms](std::uint32_t akm) {
    return std::find(akms.suites.begin(), akms.suites.begin() + akms.count, akm) !=
           akms.suites.begin() + akms.count;
  };
  const bool enterprise = listed(kAkmEnterprise);
  bool applied = false;
  if (enterprise || listed(kAkmPersonal)) {
    applied = ApplyWpaSuite(out, group, enterprise);
    for (std::size_t i = 0; i < pairwise.count; ++i)
      applied |= ApplyWpaSuite(out, pairwise.suites[i], enterprise);
  }
  if (notes.Wants(kNoteSecurity))
    NoteSecurity(out, notes, u"ParseVendorSpecificData", {}, applied, value);
}

}  // namespace corvane
