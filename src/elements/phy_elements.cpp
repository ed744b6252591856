// HT, VHT and HE elements.

#include <algorithm>

#include "elements/element_parsers.h"
#include "elements/rate_tables.h"

namespace corvane {

namespace {

constexpr char16_t kExtendedFault[] = u"CIEBlob::ParseExtendedIEData: EXCEPTION: 0x%08x";

std::int32_t ToKbps(double mbps) { return static_cast<std::int32_t>(mbps * 1000.0); }

void AppendNumber(std::string* text, unsigned number) {
  *text += '{';
  if (number >= 10) *text += static_cast<char>('0' + number / 10);
  *text += static_cast<char>('0' + number % 10);
  *text += '}';
}

void ParseHTOperationData(Bytes value, ElementFields& out) {
  if (value.size() < 22) return;
  out.m_HTPrimaryChannel = value[0];
  out.m_HTOpInfo1 = value[1];
}

void ParseVHTOperationData(Bytes value, ElementFields& out) {
  if (value.size() < 5) return;
  switch (value[0]) {
    case 0:
      out.m_VHTChannelWidth = 20;
      break;
    case 1:
      out.m_VHTChannelWidth = 80;
      break;
    case 2:
      out.m_VHTChannelWidth = 160;
      break;
    case 3:
      out.m_VHTChannelWidth = 80;
      out.m_VHT80Plus80 = true;
      break;
    default:
      break;
  }
  out.m_VHTSeg0Channel = value[1];
  out.m_VHTSeg1Channel = value[2];
}

// Extension id, 6 bytes of MAC and 11 of PHY capabilities, then 4, 8 or 12 bytes of MCS and NSS
// sets (IEEE Std 802.11ax-2021 9.4.2.248).
void ParseHECapabilities(Bytes value, ElementFields& out, ElementNotes& notes) {
  constexpr std::size_t kOneSet = 22, kTwoSets = 26, kThreeSets = 30, kAmbiguous = 29, kZeroed = 25;
  out.m_HECapsSeen = true;
  const std::size_t length = value.size();
  if (length < kAmbiguous && length != kOneSet && length != kTwoSets) {
    notes.Add(kNoteMalformed, kExtendedFault,
              u"CIEBlob::ParseExtendedIEData_internal:[%s] Got bad HE Caps! [len %u does not match "
              u"%u, %u, or "
              u"%u]\n",
              out.m_SSID, length, kThreeSets, kTwoSets, kOneSet);
    return;
  }
  std::fill(out.m_HECapsRaw.end() - kZeroed, out.m_HECapsRaw.end(), std::uint8_t{0});
  std::copy_n(value.begin() + 1, std::min(length - 1, out.m_HECapsRaw.size()),
              out.m_HECapsRaw.begin());
  out.m_HERxMcs80 = FieldU16(value, 18);
  out.m_HETxMcs80 = FieldU16(value, 20);
  if (length >= kTwoSets) {
    out.m_HERxMcs160 = FieldU16(value, 22);
    out.m_HETxMcs160 = FieldU16(value, 24);
  }
  if (length >= kThreeSets) {
    out.m_HERxMcs8080 = FieldU16(value, 26);
    out.m_HETxMcs8080 = FieldU16(value, 28);
  }
  out.m_HECapsGood = true;
  if (length == kAmbiguous) {
    notes.Add(kNoteMalformed, kExtendedFault,
              u"CIEBlob::ParseExtendedIEData_internal:[%s] Got ambiguous HE Caps! [len %u does not "
              u"match %u, "
              u"%u, or %u]\n",
              out.m_SSID, length, kThreeSets, kTwoSets, kOneSet);
  } else {
    notes.Add(kNoteDetail, kExtendedFault,
              u"CIEBlob::ParseExtendedIEData_internal:[%s] Got good HE Caps! [len=%u]\n",
              out.m_SSID, length);
  }
}

}  // namespace

// IEEE Std 802.11-2020 9.4.2.55.
void ParseHTCapabilities(Bytes value, ElementFields& out) {
  out.m_HTPresent = true;
  if (value.size() < 26) return;
  out.m_HT40Capable = Bit(value[0], 1);
  out.m_HTShortGI20 = Bit(value[0], 5);
  out.m_HTShortGI40 = Bit(value[0], 6);
  std::copy_n(value.begin() + 3, out.m_HTMcsBitmap.size(), out.m_HTMcsBitmap.begin());
  out.m_HTMcsValid = true;
  out.m_HTImplicitTxBF = Bit(value[21], 0);
  double rate = 0.0;
  Process_HT_MCS_Support_String(out.m_HTMcsBitmap, out.m_HT40Capable, out.m_HTShortGI20,
                                out.m_HTShortGI40, &out.m_HTStreamsString, &rate,
                                &out.m_HTMcsString);
  out.m_MaxHTRateKbps = ToKbps(rate);
}

namespace {

// How many streams have MCS 0 to 7, where that is all that the bitmap says; else 0. Nearly all do.
unsigned WholeStreams(const ByteArray<10>& bitmap) {
  constexpr std::uint8_t kLastByteMask = 0x1F;  // MCS 72 to 76
  unsigned streams = 0;
  while (streams < 4 && bitmap[streams] == 0xFF) ++streams;
  unsigned rest = bitmap[9] & kLastByteMask;
  for (unsigned byte = streams; byte < 9; ++byte) rest |= bitmap[byte];
  return rest == 0 ? streams : 0;
}

}  // namespace

void Process_HT_MCS_Support_String(const ByteArray<10>& bitmap, bool b40, bool bSGI20, bool bSGI40,
                                   std::string* streamsText, double* rateMbps,
                                   std::string* mcsText) {
  constexpr unsigned kLastMcs = 76;
  if (const unsigned streams = WholeStreams(bitmap)) {
    static constexpr std::string_view kMcs[] = {"{0}-{7}", "{0}-{15}", "{0}-{23}", "{0}-{31}"};
    static constexpr std::string_view kStreams[] = {"{1}", "{1}, {2}", "{1}, {2}, {3}",
                                                    "{1}, {2}, {3}, {4}"};
    *mcsText = kMcs[streams - 1];
    *streamsText = kStreams[streams - 1];
    *rateMbps = HtRateMbps(8 * streams - 1, b40, bSGI20, bSGI40);  // the quickest of them
    return;
  }
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
void ParseHTOperation(Bytes value, ElementFields& out) {
  out.m_HTPresent = true;
  out.m_HTChannelWidth = 20;
  ParseHTOperationData(value, out);

  constexpr unsigned kAbove = 1, kBelow = 3;
  const unsigned offset = out.m_HTOpInfo1 & 3;
  const bool forty = offset == kAbove || offset == kBelow;
  if (out.m_VHTChannelWidth > 40) {
    if (forty) out.m_HTChannelWidth = 40;
  } else if (out.m_HTPrimaryChannel >= 1) {
    out.m_CenterChannel = out.m_HTPrimaryChannel;
    if (!forty) return;
    out.m_CenterChannel =
        offset == kAbove ? out.m_HTPrimaryChannel + 2 : out.m_HTPrimaryChannel - 2;
    out.m_SecondaryChannel =
        offset == kAbove ? out.m_HTPrimaryChannel + 4 : out.m_HTPrimaryChannel - 4;
    out.m_HTChannelWidth = out.m_ChannelWidth = 40;
  }
}

// IEEE Std 802.11-2020 9.4.2.157.
void ParseVHTCapabilitiesData(Bytes value, ElementFields& out) {
  if (value.size() < 12) return;
  static constexpr std::uint32_t kMpduLength[] = {3895, 7991, 11454};
  const unsigned length = value[0] & 3;
  if (length < std::size(kMpduLength)) out.m_VHTMaxMpduLength = kMpduLength[length];
  out.m_VHTSupportedWidthSet = value[0] >> 2 & 3;
  out.m_VHTShortGI80 = Bit(value[0], 5);
  out.m_VHTShortGI160 = Bit(value[0], 6);
  out.m_VHTRxLDPC = Bit(value[0], 7);
  out.m_VHTRxSTBC = value[1] & 7;
  out.m_VHTSUBeamformer = Bit(value[1], 3);
  out.m_VHTSUBeamformee = Bit(value[1], 4);
  out.m_VHTBeamformeeSts = (value[1] >> 5 & 3) + 1u;
  out.m_VHTSoundingDimensions = (value[2] & 3) + 1u;
  out.m_VHTMUBeamformer = Bit(value[2], 3);
  out.m_VHTMUBeamformee = Bit(value[2], 4);
  out.m_VHTRxMcsMap = FieldU16(value, 4);
  out.m_VHTTxMcsMap = FieldU16(value, 8);
}

// IEEE Std 802.11-2020 9.4.2.158.
void ParseVHTOperation(Bytes value, ElementFields& out) {
  out.m_VHTPresent = true;
  ParseVHTOperationData(value, out);
  if (out.m_VHT80Plus80) {
    out.m_ChannelWidth = out.m_VHTChannelWidth;
  } else if (out.m_VHTChannelWidth > 40) {
    out.m_ChannelWidth = out.m_VHTChannelWidth;
    out.m_CenterChannel = out.m_VHTSeg0Channel;
  }
}

// IEEE Std 802.11ax-2021 9.4.2.248 to 9.4.2.250.
void ParseExtendedIEData(Bytes value, ElementFields& out, ElementNotes& notes) {
  enum : std::uint8_t { kHeCapabilities = 35, kHeOperation = 36, kHeMuEdca = 38 };
  if (value.empty()) return;
  switch (value[0]) {
    case kHeCapabilities:
      ParseHECapabilities(value, out, notes);
      break;
    case kHeOperation:
      out.m_HEOperSeen = true;
      if (value.size() >= 7) {
        out.m_HEOperRaw.fill(0);
        std::copy_n(value.begin() + 1, std::min(value.size() - 1, out.m_HEOperRaw.size()),
                    out.m_HEOperRaw.begin());
        out.m_HEOperGood = true;
        notes.Add(kNoteDetail, kExtendedFault,
                  u"CIEBlob::ParseExtendedIEData_internal:[%s] Got good HE Oper!\n", out.m_SSID);
      } else {
        notes.Add(kNoteMalformed, kExtendedFault,
                  u"CIEBlob::ParseExtendedIEData_internal:[%s] Got bad HE Oper! [%u <= 6]\n",
                  out.m_SSID, value.size());
      }
      break;
    case kHeMuEdca:
      out.m_HEEdcaSeen = true;
      if (value.size() >= 14) {
        std::copy_n(value.begin() + 1, out.m_HEEdcaRaw.size(), out.m_HEEdcaRaw.begin());
        out.m_HEEdcaGood = true;
        notes.Add(
            kNoteDetail, kExtendedFault,
            u"CIEBlob::ParseExtendedIEData_internal:[%s] Got good HE Edca Param Set [len=%u]\n",
            out.m_SSID, value.size());
      } else {
        notes.Add(
            kNoteMalformed, kExtendedFault,
            u"CIEBlob::ParseExtendedIEData_internal:[%s] Got bad HE Edca Param Set [%u <= %u]\n",
            out.m_SSID, value.size(), 13);
      }
      break;
    default:
      notes.Add(kNoteDetail, kExtendedFault,
                u"CIEBlob::ParseExtendedIEData_internal:[%s] Got unsupported EXT-EID %u [len %u]\n",
                out.m_SSID, value[0], value.size());
      break;
  }
}

namespace {

// Where a Tx map is read: width in MHz, guard interval, and how often that width is used.
struct OperatingPoint {
  std::uint32_t width;
  bool shortGI;
  double factor;
};

McsMapReading ReadHEMcsMap(std::uint16_t map, std::uint32_t width, bool shortGI,
                           ElementNotes& notes) {
  McsMapReading reading = ReadMcsMap(McsGeneration::kHe, map, width, shortGI);
  notes.Add(kNoteDetail, u"CIEBlob::ProcessHEMCSMap: EXCEPTION: 0x%08x",
            u"CIEBlob::ProcessHEMCSMap_internal:[streams %i] mcsListString=%s\n", reading.streams,
            reading.text);
  return reading;
}

// False for a width that has no rates.
bool OperatingPointOf(const ElementFields& fields, OperatingPoint* point) {
  if (fields.m_VHT80Plus80) {
    *point = {80, fields.m_VHTShortGI160, 2.0};
    return true;
  }
  switch (fields.m_ChannelWidth) {
    case 20:
      *point = {20, fields.m_HTShortGI20, 1.0};
      return true;
    case 40:
      *point = {40, fields.m_HTShortGI40, 1.0};
      return true;
    case 80:
      *point = {80, fields.m_VHTShortGI80, 1.0};
      return true;
    case 160:
      *point = {160, fields.m_VHTShortGI160, 1.0};
      return true;
    default:
      return false;
  }
}

}  // namespace

void ComputeVHTRate(ElementFields& out) {
  McsMapReading rx = ReadMcsMap(McsGeneration::kVht, out.m_VHTRxMcsMap, 0, false);
  out.m_VHTRxStreams = rx.streams;
  out.m_VHTRxMcsString = std::move(rx.text);
  out.m_VHTRxMaxMcs = rx.maxMcs;
  OperatingPoint point{};
  if (!OperatingPointOf(out, &point)) return;
  McsMapReading tx = ReadMcsMap(McsGeneration::kVht, out.m_VHTTxMcsMap, point.width, point.shortGI);
  out.m_VHTTxStreams = tx.streams;
  out.m_VHTTxMcsString = std::move(tx.text);
  out.m_VHTTxMaxMcs = tx.maxMcs;
  out.m_MaxVHTRateKbps = ToKbps(tx.rateMbps * point.factor);
}

void ComputeHERate(ElementFields& out, ElementNotes& notes) {
  out.m_HEMcsDecoded = true;
  McsMapReading rx = ReadHEMcsMap(out.m_HERxMcs80, 0, false, notes);
  out.m_HERxStreams = rx.streams;
  out.m_HERxMcsString = std::move(rx.text);
  out.m_HERxMaxMcs = rx.maxMcs;
  OperatingPoint point{};
  if (!OperatingPointOf(out, &point)) return;
  const std::uint16_t map = out.m_VHT80Plus80    ? out.m_HERxMcs8080
                            : point.width == 160 ? out.m_HETxMcs160
                                                 : out.m_HETxMcs80;
  McsMapReading tx = ReadHEMcsMap(map, point.width, point.shortGI, notes);
  out.m_HETxStreams = tx.streams;
  out.m_HETxMcsString = std::move(tx.text);
  out.m_HETxMaxMcs = tx.maxMcs;
  out.m_MaxHERateKbps = ToKbps(tx.rateMbps * point.factor);
}

}  // namespace corvane
