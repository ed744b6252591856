#include "model/ie_blob.h"

#include <cstring>
#include <utility>

#include "elements/bss_reading.h"
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
  m_Terms = TermsOf(channel, width, bss);
  m_bNoted = false;
  m_ChannelWidth = width;
  m_CenterChannel = channel;
  m_CenterFreqGHz = bss.ulChCenterFrequency / 1e6;
  if (!ies || cbIEs < 2) return;
  m_RawIEs.CreateObject();
  m_RawIEs->Initialize(ies, cbIEs, 2);
  ElementNotes notes(m_Terms.topics);
  DecodeElements({m_RawIEs->GetData(), m_RawIEs->GetSize()}, *this, notes);
  for (const ElementNote& note : notes) {
    m_bNoted = true;
    Write(note);
  }
}

CIEBlob::Terms CIEBlob::TermsOf(std::uint32_t channel, std::uint32_t width,
                                const platform::WLAN_BSS_ENTRY& bss) {
  return {channel, width, bss.ulChCenterFrequency, TopicsWatched()};
}

bool CIEBlob::Renew(const std::uint8_t* ies, std::uint32_t cbIEs, std::uint32_t channel,
                    std::uint32_t width, const platform::WLAN_BSS_ENTRY& bss) {
  const bool same = !m_bNoted && m_RawIEs && m_RawIEs->GetSize() == cbIEs &&
                    m_Terms == TermsOf(channel, width, bss) &&
                    std::memcmp(m_RawIEs->GetData(), ies, cbIEs) == 0;
  if (!same) return false;
  m_ParsedAtTick = Os().clock.GetTickCount64();
  m_PhyModeString.clear();  // who asks first for a text decides its form
  m_WidthSeparator.clear();
  return true;
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
  return MaxRateMbps(*this, bAdapterHE, bHalved);
}

const WString& CIEBlob::GetChannelWidthString(bool bDescending, WStringView separator,
                                              bool bMaxOnly) {
  if (m_WidthSeparator.empty() || m_WidthSeparator != separator) {
    m_WidthSeparator = separator;
    m_WidthString = ChannelWidths(*this, bDescending, separator, bMaxOnly);
  }
  return m_WidthString;
}

}  // namespace corvane
