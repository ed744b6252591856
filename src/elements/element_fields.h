#pragma once
#include <array>
#include <cstdint>
#include <string>

#include "elements/legacy_rates.h"
#include "foundation/generic_malloc.h"
#include "foundation/text.h"

namespace corvane {

template <std::size_t N>
using ByteArray = std::array<std::uint8_t, N>;

// The fields that a reading of elements fills: type, name, start value. This is their only list;
// the struct and the walk over it are made from it. Rates are in kbps, widths in MHz. An HE map
// that the element does not carry holds 0xFFFF: no streams.
#define CORVANE_ELEMENT_FIELDS(FIELD)                \
  FIELD(std::uint64_t, m_ParsedAtTick, 0)            \
  FIELD(CSmartPointer<CGenericMalloc>, m_RawIEs, {}) \
  FIELD(std::string, m_SSID, {})                     \
  FIELD(std::int32_t, m_MaxLegacyRateKbps, 0)        \
  FIELD(LegacyRates, m_LegacyRates, {})              \
  FIELD(bool, m_Has1Or2Mbps, false)                  \
  FIELD(bool, m_Has54Mbps, false)                    \
  FIELD(bool, m_Has11Mbps, false)                    \
  FIELD(double, m_QBSSLoadPct, -1.0)                 \
  FIELD(std::uint16_t, m_StationCount, 65535)        \
  FIELD(bool, m_HasPhyParamSet, false)               \
  FIELD(bool, m_HasDsssRate, false)                  \
  FIELD(bool, m_HasOfdmRate, false)                  \
  FIELD(bool, m_HEMcsDecoded, false)                 \
  FIELD(bool, m_HasErp, false)                       \
  FIELD(std::uint8_t, m_DSChannel, 0)                \
  FIELD(bool, m_HTPresent, false)                    \
  FIELD(bool, m_HT40Capable, false)                  \
  FIELD(bool, m_HTShortGI20, false)                  \
  FIELD(bool, m_HTShortGI40, false)                  \
  FIELD(bool, m_HTImplicitTxBF, false)               \
  FIELD(WString, m_PhyModeString, {})                \
  FIELD(bool, m_HTMcsValid, false)                   \
  FIELD(ByteArray<10>, m_HTMcsBitmap, {})            \
  FIELD(std::string, m_HTStreamsString, {})          \
  FIELD(std::string, m_HTMcsString, {})              \
  FIELD(std::int32_t, m_MaxHTRateKbps, 0)            \
  FIELD(std::int32_t, m_MaxVHTRateKbps, 0)           \
  FIELD(std::int32_t, m_MaxHERateKbps, 0)            \
  FIELD(std::uint32_t, m_HTPrimaryChannel, 0)        \
  FIELD(std::uint8_t, m_HTOpInfo1, 0)                \
  FIELD(std::uint32_t, m_HTChannelWidth, 0)          \
  FIELD(std::uint32_t, m_VHTChannelWidth, 0)         \
  FIELD(bool, m_VHT80Plus80, false)                  \
  FIELD(std::uint32_t, m_VHTSeg0Channel, 0)          \
  FIELD(std::uint32_t, m_VHTSeg1Channel, 0)          \
  FIELD(bool, m_VHTPresent, false)                   \
  FIELD(std::uint32_t, m_CenterChannel, 0)           \
  FIELD(std::uint32_t, m_SecondaryChannel, 0)        \
  FIELD(std::uint32_t, m_ChannelWidth, 0)            \
  FIELD(std::uint32_t, m_VHTMaxMpduLength, 0)        \
  FIELD(std::uint8_t, m_VHTSupportedWidthSet, 0)     \
  FIELD(bool, m_VHTShortGI80, false)                 \
  FIELD(bool, m_VHTShortGI160, false)                \
  FIELD(bool, m_VHTSUBeamformer, false)              \
  FIELD(bool, m_VHTSUBeamformee, false)              \
  FIELD(std::uint32_t, m_VHTBeamformeeSts, 0)        \
  FIELD(std::uint32_t, m_VHTSoundingDimensions, 0)   \
  FIELD(bool, m_VHTMUBeamformer, false)              \
  FIELD(bool, m_VHTMUBeamformee, false)              \
  FIELD(bool, m_VHTRxLDPC, false)                    \
  FIELD(std::uint8_t, m_VHTRxSTBC, 0)                \
  FIELD(std::uint16_t, m_VHTRxMcsMap, 0)             \
  FIELD(std::uint16_t, m_VHTTxMcsMap, 0)             \
  FIELD(std::uint32_t, m_VHTRxStreams, 0)            \
  FIELD(std::uint32_t, m_VHTTxStreams, 0)            \
  FIELD(std::string, m_VHTRxMcsString, {})           \
  FIELD(std::string, m_VHTTxMcsString, {})           \
  FIELD(std::uint32_t, m_VHTRxMaxMcs, 0)             \
  FIELD(std::uint32_t, m_VHTTxMaxMcs, 0)             \
  FIELD(std::int32_t, m_LoadSeg0Channel, 0)          \
  FIELD(std::int32_t, m_LoadSeg1Channel, 0)          \
  FIELD(std::int32_t, m_LoadCenterChannel, 0)        \
  FIELD(bool, m_ExtElementSeen, false)               \
  FIELD(bool, m_HECapsSeen, false)                   \
  FIELD(bool, m_HECapsGood, false)                   \
  FIELD(bool, m_HEOperSeen, false)                   \
  FIELD(bool, m_HEOperGood, false)                   \
  FIELD(bool, m_HEEdcaSeen, false)                   \
  FIELD(bool, m_HEEdcaGood, false)                   \
  FIELD(ByteArray<42>, m_HECapsRaw, {})              \
  FIELD(ByteArray<12>, m_HEOperRaw, {})              \
  FIELD(ByteArray<13>, m_HEEdcaRaw, {})              \
  FIELD(std::uint16_t, m_HERxMcs80, 0xFFFF)          \
  FIELD(std::uint16_t, m_HETxMcs80, 0xFFFF)          \
  FIELD(std::uint16_t, m_HERxMcs160, 0xFFFF)         \
  FIELD(std::uint16_t, m_HETxMcs160, 0xFFFF)         \
  FIELD(std::uint16_t, m_HERxMcs8080, 0xFFFF)        \
  FIELD(std::uint16_t, m_HETxMcs8080, 0xFFFF)        \
  FIELD(std::uint32_t, m_HERxStreams, 0)             \
  FIELD(std::uint32_t, m_HETxStreams, 0)             \
  FIELD(std::string, m_HERxMcsString, {})            \
  FIELD(std::string, m_HETxMcsString, {})            \
  FIELD(std::uint32_t, m_HERxMaxMcs, 0)              \
  FIELD(std::uint32_t, m_HETxMaxMcs, 0)              \
  FIELD(WString, m_WidthString, {})                  \
  FIELD(WString, m_WidthSeparator, {})               \
  FIELD(double, m_CenterFreqGHz, 0.0)                \
  FIELD(std::uint32_t, SecurityMask, 0)              \
  FIELD(bool, m_FastTransition, false)

struct ElementFields {
#define CORVANE_FIELD(type, name, start) type name = start;
  CORVANE_ELEMENT_FIELDS(CORVANE_FIELD)
#undef CORVANE_FIELD
};

// Calls visitor(name, field) for each field, in the order of their declaration.
template <typename Fields, typename Visitor>
void ForEachField(Fields& fields, Visitor&& visitor) {
#define CORVANE_FIELD(type, name, start) visitor(#name, fields.name);
  CORVANE_ELEMENT_FIELDS(CORVANE_FIELD)
#undef CORVANE_FIELD
}

}  // namespace corvane
