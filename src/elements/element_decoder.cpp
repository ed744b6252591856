#include "elements/element_decoder.h"

#include <algorithm>

#include "elements/element_parsers.h"

namespace corvane {

namespace {

// Element ids (IEEE Std 802.11-2020 Table 9-92).
enum : std::uint8_t {
  kSsid = 0,
  kSupportedRates = 1,
  kFhParameterSet = 2,
  kDsParameterSet = 3,
  kHoppingParameters = 8,
  kHoppingTable = 9,
  kBssLoad = 11,
  kErp = 42,
  kHtCapabilities = 45,
  kErpEarly = 47,
  kRsn = 48,
  kExtendedRates = 50,
  kHtOperation = 61,
  kVhtCapabilities = 191,
  kVhtOperation = 192,
  kVendorSpecific = 221,
  kExtension = 255,
};

// IEEE Std 802.11-2020 9.4.2.3 and 9.4.2.13.
void ParseRates(Bytes value, ElementFields& out) {
  for (const std::uint8_t byte : value) {
    const std::int32_t kbps = out.m_LegacyRates.Add(byte & 0x7F);
    if (kbps == 0) continue;
    out.m_MaxLegacyRateKbps = std::max(out.m_MaxLegacyRateKbps, kbps);
    switch (kbps) {
      case 1000:
      case 2000:
        out.m_Has1Or2Mbps = out.m_HasDsssRate = true;
        break;
      case 11000:
        out.m_Has11Mbps = out.m_HasDsssRate = true;
        break;
      case 54000:
        out.m_Has54Mbps = out.m_HasErp = true;
        break;
      default:
        break;
    }
  }
  if (out.m_MaxLegacyRateKbps > 11000) out.m_HasOfdmRate = true;
}

void Dispatch(const Element& element, ElementFields& out, ElementNotes& notes) {
  const Bytes value = element.value;
  switch (element.id) {
    case kSsid:
      out.m_SSID.assign(value.begin(), value.end());
      break;
    case kSupportedRates:
      ParseRates(value, out);
      break;
    case kFhParameterSet:
    case kHoppingParameters:
    case kHoppingTable:
      out.m_HasPhyParamSet = true;
      break;
    case kDsParameterSet:
      out.m_HasPhyParamSet = true;
      if (!value.empty()) out.m_DSChannel = value[0];
      break;
    case kBssLoad:  // IEEE Std 802.11-2020 9.4.2.27
      if (value.size() == 5) {
        out.m_QBSSLoadPct = value[2] / 255.0 * 100.0;
        out.m_StationCount = FieldU16(value, 0);
      }
      break;
    case kErp:
    case kErpEarly:
      out.m_HasErp = true;
      break;
    case kHtCapabilities:
      ParseHTCapabilities(value, out);
      break;
    case kRsn:
      ParseRSN(value, out, notes);
      break;
    case kExtendedRates:
      ParseRates(value, out);
      out.m_HasErp = true;
      break;
    case kHtOperation:
      ParseHTOperation(value, out);
      break;
    case kVhtCapabilities:
      out.m_VHTPresent = true;
      ParseVHTCapabilitiesData(value, out);
      break;
    case kVhtOperation:
      ParseVHTOperation(value, out);
      break;
    case kVendorSpecific:
      ParseVendorSpecificData(value, out, notes);
      break;
    case kExtension:
      out.m_ExtElementSeen = true;
      ParseExtendedIEData(value, out, notes);
      break;
    default:
      break;
  }
}

}  // namespace

void DecodeElements(Bytes elements, ElementFields& out, ElementNotes& notes) {
  if (out.m_ChannelWidth == 0) out.m_ChannelWidth = 20;
  ElementCursor cursor(elements);
  for (Element element; cursor.Next(&element);) Dispatch(element, out, notes);

  if (out.m_VHTPresent) ComputeVHTRate(out);
  if (out.m_HECapsGood) {
    ComputeHERate(out, notes);
    notes.Add(kNoteDetail, kParseFault,
              u"CIEBlob::Parse_internal:[%s] VHT: %i kbps <vs> HE: %i kbps\n", out.m_SSID,
              out.m_MaxVHTRateKbps, out.m_MaxHERateKbps);
  }
  out.m_LoadCenterChannel = static_cast<std::int32_t>(out.m_CenterChannel);
  if (out.m_VHTSeg0Channel >= 1) {
    out.m_LoadSeg0Channel = static_cast<std::int32_t>(out.m_VHTSeg0Channel);
    out.m_LoadSeg1Channel = static_cast<std::int32_t>(out.m_VHTSeg1Channel);
  } else {
    out.m_LoadSeg0Channel = static_cast<std::int32_t>(out.m_HTPrimaryChannel);
    out.m_LoadSeg1Channel = std::max(static_cast<std::int32_t>(out.m_SecondaryChannel), 0);
  }
}

}  // namespace corvane
