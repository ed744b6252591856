#include "elements/ie_blob.h"

#include <utility>

#include "elements/element_decoder.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"

namespace corvane {

namespace {

constexpr std::uint64_t kDetailLog = DBG(26), kMalformedLog = DBG(27), kSecurityLog = DBG(44);

std::uint32_t TopicsWatched() {
  return (log::IsOpen(kDetailLog) ? std::uint32_t{kNoteDetail} : 0u) |
         (log::IsOpen(kMalformedLog) ? std::uint32_t{kNoteMalformed} : 0u) |
         (log::IsOpen(kSecurityLog) ? std::uint32_t{kNoteSecurity} : 0u);
}

// A fault of the platform that a line meets is told of, and ends that line alone.
void Write(const ElementNote& note) {
  try {
    const log::Scope scope;
    log::LineInfo(note.text);
  } catch (const platform::PlatformFault& fault) {
    LOG_ERROR(u"filterException 0x%x", fault.code);
    LOG_ERROR(note.faultLine, fault.code);
  }
}

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
  ElementNotes notes(TopicsWatched());
  DecodeElements({m_RawIEs->GetData(), m_RawIEs->GetSize()}, *this, notes);
  for (const ElementNote& note : notes) Write(note);
}

// Back to the start values, but for the texts that are built on demand.
void CIEBlob::Clear() {
  ElementFields start;
  start.m_PhyModeString = std::move(m_PhyModeString);
  start.m_WidthString = std::move(m_WidthString);
  start.m_WidthSeparator = std::move(m_WidthSeparator);
  static_cast<ElementFields&>(*this) = std::move(start);
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
