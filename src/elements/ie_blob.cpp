#include "elements/ie_blob.h"

#include <algorithm>
#include <utility>

#include "elements/element_guard.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"

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

}  // namespace

CIEBlob::CIEBlob() : SmartObjEx("IE blob") {}

void CIEBlob::Load(const std::uint8_t* ies, std::uint32_t cbIEs, std::uint32_t channel,
                   std::uint32_t width, const platform::WLAN_BSS_ENTRY& bss) {
  const std::uint64_t now = Os().clock.GetTickCount64();
  if (std::exchange(m_bLoaded, true)) Clear();
  m_ParsedAtTick = now;
  m_ChannelWidth = width;
  m_CenterChannel = channel;
  m_CenterFreqGHz = bss.ulChCenterFrequency / 1e6;
  if (!ies || cbIEs < 2) return;
  m_RawIEs.CreateObject();
  m_RawIEs->Initialize(ies, cbIEs, 2);
  Parse();
}

// Back to the start values, but for the texts that are built on demand.
void CIEBlob::Clear() {
  ElementFields start;
  start.m_PhyModeString = std::move(m_PhyModeString);
  start.m_WidthString = std::move(m_WidthString);
  start.m_WidthSeparator = std::move(m_WidthSeparator);
  static_cast<ElementFields&>(*this) = std::move(start);
}

void ReportElementFault(const char16_t* line, platform::DWORD code) {
  LOG_ERROR(u"filterException 0x%x", code);
  LOG_ERROR(line, code);
}

// A fault while parsing ends the parse; what was read so far stands.
void CIEBlob::Parse() {
  GuardElement(u"CIEBlob::Parse: EXCEPTION: 0x%08x", [this] { Parse_internal(); });
}

void CIEBlob::Parse_internal() {
  if (m_ChannelWidth == 0) m_ChannelWidth = 20;
  if (!m_RawIEs || m_RawIEs->GetSize() == 0) return;

  ElementCursor cursor({m_RawIEs->GetData(), m_RawIEs->GetSize()});
  for (Element element; cursor.Next(&element);) Dispatch(element);

  if (m_VHTPresent) ComputeVHTRate();
  if (m_HECapsGood) {
    ComputeHERate();
    LOG_DEBUG(DBG(26), u"CIEBlob::Parse_internal:[%s] VHT: %i kbps <vs> HE: %i kbps\n", m_SSID,
              m_MaxVHTRateKbps, m_MaxHERateKbps);
  }
  m_LoadCenterChannel = static_cast<std::int32_t>(m_CenterChannel);
  if (m_VHTSeg0Channel >= 1) {
    m_LoadSeg0Channel = static_cast<std::int32_t>(m_VHTSeg0Channel);
    m_LoadSeg1Channel = static_cast<std::int32_t>(m_VHTSeg1Channel);
  } else {
    m_LoadSeg0Channel = static_cast<std::int32_t>(m_HTPrimaryChannel);
    m_LoadSeg1Channel = std::max(static_cast<std::int32_t>(m_SecondaryChannel), 0);
  }
}

void CIEBlob::Dispatch(const Element& element) {
  const Bytes value = element.value;
  switch (element.id) {
    case kSsid:
      m_SSID.assign(value.begin(), value.end());
      break;
    case kSupportedRates:
      ParseRates(value);
      break;
    case kFhParameterSet:
    case kHoppingParameters:
    case kHoppingTable:
      m_HasPhyParamSet = true;
      break;
    case kDsParameterSet:
      m_HasPhyParamSet = true;
      if (!value.empty()) m_DSChannel = value[0];
      break;
    case kBssLoad:  // IEEE Std 802.11-2020 9.4.2.27
      if (value.size() == 5) {
        m_QBSSLoadPct = value[2] / 255.0 * 100.0;
        m_StationCount = FieldU16(value, 0);
      }
      break;
    case kErp:
    case kErpEarly:
      m_HasErp = true;
      break;
    case kHtCapabilities:
      ParseHTCapabilities(value);
      break;
    case kRsn:
      ParseRSN(value);
      break;
    case kExtendedRates:
      ParseRates(value);
      m_HasErp = true;
      break;
    case kHtOperation:
      ParseHTOperation(value);
      break;
    case kVhtCapabilities:
      m_VHTPresent = true;
      ParseVHTCapabilitiesData(value);
      break;
    case kVhtOperation:
      ParseVHTOperation(value);
      break;
    case kVendorSpecific:
      ParseVendorSpecificData(value);
      break;
    case kExtension:
      m_ExtElementSeen = true;
      ParseExtendedIEData(value);
      break;
    default:
      break;
  }
}

// IEEE Std 802.11-2020 9.4.2.3 and 9.4.2.13.
void CIEBlob::ParseRates(Bytes value) {
  for (const std::uint8_t byte : value) {
    const std::int32_t kbps = m_LegacyRates.Add(byte & 0x7F);
    if (kbps == 0) continue;
    m_MaxLegacyRateKbps = std::max(m_MaxLegacyRateKbps, kbps);
    switch (kbps) {
      case 1000:
      case 2000:
        m_Has1Or2Mbps = m_HasDsssRate = true;
        break;
      case 11000:
        m_Has11Mbps = m_HasDsssRate = true;
        break;
      case 54000:
        m_Has54Mbps = m_HasErp = true;
        break;
      default:
        break;
    }
  }
  if (m_MaxLegacyRateKbps > 11000) m_HasOfdmRate = true;
}

std::int32_t CIEBlob::GetMaxRateMbps(bool bAdapterHE, bool bHalved) const {
  const std::int32_t divisor = bHalved ? 2 : 1;
  const auto mbps = [](std::int32_t kbps) { return static_cast<std::int32_t>(kbps / 1000.0); };
  if (m_HECapsGood && bAdapterHE) return mbps(m_MaxHERateKbps) / divisor;
  if (m_VHTPresent && m_CenterFreqGHz >= 5.0) return mbps(m_MaxVHTRateKbps) / divisor;
  if (m_HTPresent) {
    constexpr std::int32_t kTwoStreams20MHz = 144;
    const std::int32_t rate = mbps(m_MaxHTRateKbps);
    return rate > kTwoStreams20MHz ? rate / divisor : rate;
  }
  return mbps(m_MaxLegacyRateKbps);
}

const WString& CIEBlob::GetChannelWidthString(bool bDescending, WStringView separator,
                                              bool bMaxOnly) {
  if (!m_WidthSeparator.empty() && m_WidthSeparator == separator) return m_WidthString;
  m_WidthSeparator = separator;

  WStringView top;
  bool forty = m_HTChannelWidth == 40;
  if (m_VHT80Plus80) {
    top = u"80+80";
  } else if (m_VHTChannelWidth == 160) {
    top = u"160";
  } else if (m_VHTChannelWidth == 80) {
    top = u"80";
  } else if (forty) {
    // Without a VHT width the text follows the operating width.
    top = u"40";
    forty = false;
  }
  if (top.empty() || bMaxOnly) {
    m_WidthString = top.empty() ? u"20" : top;
    return m_WidthString;
  }
  const WStringView parts[] = {u"20", forty ? WStringView(u"40") : WStringView(), top};
  m_WidthString.clear();
  for (std::size_t i = 0; i < std::size(parts); ++i) {
    const WStringView part = parts[bDescending ? std::size(parts) - 1 - i : i];
    if (part.empty()) continue;
    if (!m_WidthString.empty()) m_WidthString += separator;
    m_WidthString += part;
  }
  return m_WidthString;
}

}  // namespace corvane
