// HT, VHT and HE elements.

#include <algorithm>

#include "elements/element_guard.h"
#include "elements/ie_blob.h"
#include "elements/rate_tables.h"
#include "foundation/log_lines.h"

namespace corvane {

namespace {

std::int32_t ToKbps(double mbps) { return static_cast<std::int32_t>(mbps * 1000.0); }

void AppendNumber(std::string* text, unsigned number) {
  *text += '{';
  if (number >= 10) *text += static_cast<char>('0' + number / 10);
  *text += static_cast<char>('0' + number % 10);
  *text += '}';
}

}  // namespace

// IEEE Std 802.11-2020 9.4.2.55.
void CIEBlob::ParseHTCapabilities(Bytes value) {
  m_HTPresent = true;
  if (value.size() < 26) return;
  m_HT40Capable = Bit(value[0], 1);
  m_HTShortGI20 = Bit(value[0], 5);
  m_HTShortGI40 = Bit(value[0], 6);
  std::copy_n(value.begin() + 3, m_HTMcsBitmap.size(), m_HTMcsBitmap.begin());
  m_HTMcsValid = true;
  m_HTImplicitTxBF = Bit(value[21], 0);
  double rate = 0.0;
  Process_HT_MCS_Support_String(m_HTMcsBitmap, m_HT40Capable, m_HTShortGI20, m_HTShortGI40,
                                &m_HTStreamsString, &rate, &m_HTMcsString);
  m_MaxHTRateKbps = ToKbps(rate);
}

void CIEBlob::Process_HT_MCS_Support_String(const std::array<std::uint8_t, 10>& bitmap, bool b40,
                                            bool bSGI20, bool bSGI40, std::string* streamsText,
                                            double* rateMbps, std::string* mcsText) {
  constexpr unsigned kLastMcs = 76;
  streamsText->clear();
  mcsText->clear();
  *rateMbps = 0.0;
  const auto isSet = [&bitmap](unsigned mcs) { return Bit(bitmap[mcs / 8], mcs % 8); };

  for (unsigned mcs = 0; mcs <= kLastMcs;) {
    if (!isSet(mcs)) {
      ++mcs;
      continue;
    }
    const unsigned first = mcs;
    for (; mcs <= kLastMcs && isSet(mcs); ++mcs) {
      *rateMbps = std::max(*rateMbps, HtRateMbps(mcs, b40, bSGI20, bSGI40));
    }
    if (!mcsText->empty()) *mcsText += ',';
    AppendNumber(mcsText, first);
    if (mcs - first >= 2) {
      *mcsText += '-';
      AppendNumber(mcsText, mcs - 1);
    }
  }
  for (unsigned byte = 0; byte < 4; ++byte) {
    if (bitmap[byte] == 0) continue;
    if (!streamsText->empty()) *streamsText += ", ";
    AppendNumber(streamsText, byte + 1);
  }
}

// IEEE Std 802.11-2020 9.4.2.56.
void CIEBlob::ParseHTOperation(Bytes value) {
  m_HTPresent = true;
  m_HTChannelWidth = 20;
  GuardElement(u"CIEBlob::ParseHTOperationData: EXCEPTION: 0x%08x",
               [&] { ParseHTOperationData(value); });

  constexpr unsigned kAbove = 1, kBelow = 3;
  const unsigned offset = m_HTOpInfo1 & 3;
  const bool forty = offset == kAbove || offset == kBelow;
  if (m_VHTChannelWidth > 40) {
    if (forty) m_HTChannelWidth = 40;
  } else if (m_HTPrimaryChannel >= 1) {
    m_CenterChannel = m_HTPrimaryChannel;
    if (!forty) return;
    m_CenterChannel = offset == kAbove ? m_HTPrimaryChannel + 2 : m_HTPrimaryChannel - 2;
    m_SecondaryChannel = offset == kAbove ? m_HTPrimaryChannel + 4 : m_HTPrimaryChannel - 4;
    m_HTChannelWidth = m_ChannelWidth = 40;
  }
}

void CIEBlob::ParseHTOperationData(Bytes value) {
  if (value.size() < 22) return;
  m_HTPrimaryChannel = value[0];
  m_HTOpInfo1 = value[1];
}

// IEEE Std 802.11-2020 9.4.2.157.
void CIEBlob::ParseVHTCapabilitiesData(Bytes value) {
  if (value.size() < 12) return;
  static constexpr std::uint32_t kMpduLength[] = {3895, 7991, 11454};
  const unsigned length = value[0] & 3;
  if (length < std::size(kMpduLength)) m_VHTMaxMpduLength = kMpduLength[length];
  m_VHTSupportedWidthSet = value[0] >> 2 & 3;
  m_VHTShortGI80 = Bit(value[0], 5);
  m_VHTShortGI160 = Bit(value[0], 6);
  m_VHTRxLDPC = Bit(value[0], 7);
  m_VHTRxSTBC = value[1] & 7;
  m_VHTSUBeamformer = Bit(value[1], 3);
  m_VHTSUBeamformee = Bit(value[1], 4);
  m_VHTBeamformeeSts = (value[1] >> 5 & 3) + 1u;
  m_VHTSoundingDimensions = (value[2] & 3) + 1u;
  m_VHTMUBeamformer = Bit(value[2], 3);
  m_VHTMUBeamformee = Bit(value[2], 4);
  m_VHTRxMcsMap = FieldU16(value, 4);
  m_VHTTxMcsMap = FieldU16(value, 8);
}

// IEEE Std 802.11-2020 9.4.2.158.
void CIEBlob::ParseVHTOperation(Bytes value) {
  m_VHTPresent = true;
  GuardElement(u"CIEBlob::ParseVHTOperationData: EXCEPTION: 0x%08x",
               [&] { ParseVHTOperationData(value); });
  if (m_VHT80Plus80) {
    m_ChannelWidth = m_VHTChannelWidth;
  } else if (m_VHTChannelWidth > 40) {
    m_ChannelWidth = m_VHTChannelWidth;
    m_CenterChannel = m_VHTSeg0Channel;
  }
}

void CIEBlob::ParseVHTOperationData(Bytes value) {
  if (value.size() < 5) return;
  switch (value[0]) {
    case 0:
      m_VHTChannelWidth = 20;
      break;
    case 1:
      m_VHTChannelWidth = 80;
      break;
    case 2:
      m_VHTChannelWidth = 160;
      break;
    case 3:
      m_VHTChannelWidth = 80;
      m_VHT80Plus80 = true;
      break;
    default:
      break;
  }
  m_VHTSeg0Channel = value[1];
  m_VHTSeg1Channel = value[2];
}

void CIEBlob::ParseExtendedIEData(Bytes value) {
  GuardElement(u"CIEBlob::ParseExtendedIEData: EXCEPTION: 0x%08x",
               [&] { ParseExtendedIEData_internal(value); });
}

// IEEE Std 802.11ax-2021 9.4.2.248 to 9.4.2.250.
void CIEBlob::ParseExtendedIEData_internal(Bytes value) {
  enum : std::uint8_t { kHeCapabilities = 35, kHeOperation = 36, kHeMuEdca = 38 };
  if (value.empty()) return;
  switch (value[0]) {
    case kHeCapabilities:
      ParseHECapabilities(value);
      break;
    case kHeOperation:
      m_HEOperSeen = true;
      if (value.size() >= 7) {
        m_HEOperRaw.fill(0);
        std::copy_n(value.begin() + 1, std::min(value.size() - 1, m_HEOperRaw.size()),
                    m_HEOperRaw.begin());
        m_HEOperGood = true;
        LOG_DEBUG(DBG(26), u"CIEBlob::ParseExtendedIEData_internal:[%s] Got good HE Oper!\n",
                  m_SSID);
      } else {
        LOG_DEBUG(DBG(27),
                  u"CIEBlob::ParseExtendedIEData_internal:[%s] Got bad HE Oper! [%u <= 6]\n",
                  m_SSID, value.size());
      }
      break;
    case kHeMuEdca:
      m_HEEdcaSeen = true;
      if (value.size() >= 14) {
        std::copy_n(value.begin() + 1, m_HEEdcaRaw.size(), m_HEEdcaRaw.begin());
        m_HEEdcaGood = true;
        LOG_DEBUG(
            DBG(26),
            u"CIEBlob::ParseExtendedIEData_internal:[%s] Got good HE Edca Param Set [len=%u]\n",
            m_SSID, value.size());
      } else {
        LOG_DEBUG(
            DBG(27),
            u"CIEBlob::ParseExtendedIEData_internal:[%s] Got bad HE Edca Param Set [%u <= %u]\n",
            m_SSID, value.size(), 13);
      }
      break;
    default:
      LOG_DEBUG(DBG(26),
                u"CIEBlob::ParseExtendedIEData_internal:[%s] Got unsupported EXT-EID %u [len %u]\n",
                m_SSID, value[0], value.size());
      break;
  }
}

// Extension id, 6 bytes of MAC and 11 of PHY capabilities, then 4, 8 or 12 bytes of MCS and NSS
// sets (IEEE Std 802.11ax-2021 9.4.2.248).
void CIEBlob::ParseHECapabilities(Bytes value) {
  constexpr std::size_t kOneSet = 22, kTwoSets = 26, kThreeSets = 30, kAmbiguous = 29, kZeroed = 25;
  m_HECapsSeen = true;
  const std::size_t length = value.size();
  if (length < kAmbiguous && length != kOneSet && length != kTwoSets) {
    LOG_DEBUG(DBG(27),
              u"CIEBlob::ParseExtendedIEData_internal:[%s] Got bad HE Caps! [len %u does not match "
              u"%u, %u, or "
              u"%u]\n",
              m_SSID, length, kThreeSets, kTwoSets, kOneSet);
    return;
  }
  std::fill(m_HECapsRaw.end() - kZeroed, m_HECapsRaw.end(), std::uint8_t{0});
  std::copy_n(value.begin() + 1, std::min(length - 1, m_HECapsRaw.size()), m_HECapsRaw.begin());
  m_HERxMcs80 = FieldU16(value, 18);
  m_HETxMcs80 = FieldU16(value, 20);
  if (length >= kTwoSets) {
    m_HERxMcs160 = FieldU16(value, 22);
    m_HETxMcs160 = FieldU16(value, 24);
  }
  if (length >= kThreeSets) {
    m_HERxMcs8080 = FieldU16(value, 26);
    m_HETxMcs8080 = FieldU16(value, 28);
  }
  m_HECapsGood = true;
  if (length == kAmbiguous) {
    LOG_DEBUG(DBG(27),
              u"CIEBlob::ParseExtendedIEData_internal:[%s] Got ambiguous HE Caps! [len %u does not "
              u"match %u, "
              u"%u, or %u]\n",
              m_SSID, length, kThreeSets, kTwoSets, kOneSet);
  } else {
    LOG_DEBUG(DBG(26), u"CIEBlob::ParseExtendedIEData_internal:[%s] Got good HE Caps! [len=%u]\n",
              m_SSID, length);
  }
}

namespace {

// The rate of a Tx map at the operating width, in Mbps; nothing for a width that has no rates.
struct OperatingPoint {
  std::uint32_t width;
  bool shortGI;
  double factor;
};

// Reads a map and tells of it. The log line goes through the platform, so that it may fault where
// the reading can't.
McsMapReading ReadHEMcsMap(std::uint16_t map, std::uint32_t width, bool shortGI) {
  McsMapReading reading;
  GuardElement(u"CIEBlob::ProcessHEMCSMap: EXCEPTION: 0x%08x", [&] {
    reading = ReadMcsMap(McsGeneration::kHe, map, width, shortGI);
    LOG_DEBUG(DBG(26), u"CIEBlob::ProcessHEMCSMap_internal:[streams %i] mcsListString=%s\n",
              reading.streams, reading.text);
  });
  return reading;
}

bool OperatingPointOf(const CIEBlob& blob, OperatingPoint* point) {
  if (blob.m_VHT80Plus80) {
    *point = {80, blob.m_VHTShortGI160, 2.0};
    return true;
  }
  switch (blob.m_ChannelWidth) {
    case 20:
      *point = {20, blob.m_HTShortGI20, 1.0};
      return true;
    case 40:
      *point = {40, blob.m_HTShortGI40, 1.0};
      return true;
    case 80:
      *point = {80, blob.m_VHTShortGI80, 1.0};
      return true;
    case 160:
      *point = {160, blob.m_VHTShortGI160, 1.0};
      return true;
    default:
      return false;
  }
}

}  // namespace

void CIEBlob::ComputeVHTRate() {
  McsMapReading rx = ReadMcsMap(McsGeneration::kVht, m_VHTRxMcsMap, 0, false);
  m_VHTRxStreams = rx.streams;
  m_VHTRxMcsString = std::move(rx.text);
  m_VHTRxMaxMcs = rx.maxMcs;
  OperatingPoint point{};
  if (!OperatingPointOf(*this, &point)) return;
  McsMapReading tx = ReadMcsMap(McsGeneration::kVht, m_VHTTxMcsMap, point.width, point.shortGI);
  m_VHTTxStreams = tx.streams;
  m_VHTTxMcsString = std::move(tx.text);
  m_VHTTxMaxMcs = tx.maxMcs;
  m_MaxVHTRateKbps = ToKbps(tx.rateMbps * point.factor);
}

void CIEBlob::ComputeHERate() {
  m_HEMcsDecoded = true;
  McsMapReading rx = ReadHEMcsMap(m_HERxMcs80, 0, false);
  m_HERxStreams = rx.streams;
  m_HERxMcsString = std::move(rx.text);
  m_HERxMaxMcs = rx.maxMcs;
  OperatingPoint point{};
  if (!OperatingPointOf(*this, &point)) return;
  const std::uint16_t map = m_VHT80Plus80        ? m_HERxMcs8080
                            : point.width == 160 ? m_HETxMcs160
                                                 : m_HETxMcs80;
  McsMapReading tx = ReadHEMcsMap(map, point.width, point.shortGI);
  m_HETxStreams = tx.streams;
  m_HETxMcsString = std::move(tx.text);
  m_HETxMaxMcs = tx.maxMcs;
  m_MaxHERateKbps = ToKbps(tx.rateMbps * point.factor);
}

}  // namespace corvane
