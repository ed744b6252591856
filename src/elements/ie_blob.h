#pragma once
#include <array>
#include <cstdint>
#include <string>

#include "elements/element_cursor.h"
#include "elements/legacy_rates.h"
#include "foundation/generic_malloc.h"
#include "foundation/text.h"
#include "platform/wlan_types.h"

namespace corvane {

// What the elements of one beacon or probe response say. Load fills it once; from then on it is
// read only, but for the texts that are built on demand on the adapter's worker. Takes no lock. No
// bytes make it read outside its copy or throw; only lack of memory does.
class CIEBlob : public SmartObjEx<CIEBlob, SmartObj<>> {
 public:
  CIEBlob();
  const char* GetClassName() const override { return "CIEBlob"; }

  // `ies` may be null. `channel` and `width` (MHz) come from the frequency table; of the record
  // only the centre frequency is read.
  void Load(const std::uint8_t* ies, std::uint32_t cbIEs, std::uint32_t channel,
            std::uint32_t width, const platform::WLAN_BSS_ENTRY& bss);

  // The highest rate in Mbps for an adapter that does HE or not; halved where the rules allow it.
  std::int32_t GetMaxRateMbps(bool bAdapterHE, bool bHalved) const;
  // The operating widths, such as "20,40,80"; cached for a separator.
  const WString& GetChannelWidthString(bool bDescending, WStringView separator, bool bMaxOnly);

  std::uint64_t m_ParsedAtTick = 0;
  CSmartPointer<CGenericMalloc> m_RawIEs;
  std::string m_SSID;
  std::int32_t m_MaxLegacyRateKbps = 0;
  LegacyRates m_LegacyRates;
  bool m_Has1Or2Mbps = false;
  bool m_Has54Mbps = false;
  bool m_Has11Mbps = false;
  double m_QBSSLoadPct = -1.0;
  std::uint16_t m_StationCount = 65535;
  bool m_HasPhyParamSet = false;
  bool m_HasDsssRate = false;
  bool m_HasOfdmRate = false;
  bool m_HEMcsDecoded = false;
  bool m_HasErp = false;
  std::uint8_t m_DSChannel = 0;
  bool m_HTPresent = false;
  bool m_HT40Capable = false;
  bool m_HTShortGI20 = false;
  bool m_HTShortGI40 = false;
  bool m_HTImplicitTxBF = false;
  WString m_PhyModeString;
  bool m_HTMcsValid = false;
  std::array<std::uint8_t, 10> m_HTMcsBitmap{};
  std::string m_HTStreamsString;
  std::string m_HTMcsString;
  std::int32_t m_MaxHTRateKbps = 0;
  std::int32_t m_MaxVHTRateKbps = 0;
  std::int32_t m_MaxHERateKbps = 0;
  std::uint32_t m_HTPrimaryChannel = 0;
  std::uint8_t m_HTOpInfo1 = 0;
  std::uint32_t m_HTChannelWidth = 0;
  std::uint32_t m_VHTChannelWidth = 0;
  bool m_VHT80Plus80 = false;
  std::uint32_t m_VHTSeg0Channel = 0;
  std::uint32_t m_VHTSeg1Channel = 0;
  bool m_VHTPresent = false;
  std::uint32_t m_CenterChannel = 0;
  std::uint32_t m_SecondaryChannel = 0;
  std::uint32_t m_ChannelWidth = 0;
  std::uint32_t m_VHTMaxMpduLength = 0;
  std::uint8_t m_VHTSupportedWidthSet = 0;
  bool m_VHTShortGI80 = false;
  bool m_VHTShortGI160 = false;
  bool m_VHTSUBeamformer = false;
  bool m_VHTSUBeamformee = false;
  std::uint32_t m_VHTBeamformeeSts = 0;
  std::uint32_t m_VHTSoundingDimensions = 0;
  bool m_VHTMUBeamformer = false;
  bool m_VHTMUBeamformee = false;
  bool m_VHTRxLDPC = false;
  std::uint8_t m_VHTRxSTBC = 0;
  std::uint16_t m_VHTRxMcsMap = 0;
  std::uint16_t m_VHTTxMcsMap = 0;
  std::uint32_t m_VHTRxStreams = 0;
  std::uint32_t m_VHTTxStreams = 0;
  std::string m_VHTRxMcsString;
  std::string m_VHTTxMcsString;
  std::uint32_t m_VHTRxMaxMcs = 0;
  std::uint32_t m_VHTTxMaxMcs = 0;
  std::int32_t m_LoadSeg0Channel = 0;
  std::int32_t m_LoadSeg1Channel = 0;
  std::int32_t m_LoadCenterChannel = 0;
  bool m_ExtElementSeen = false;
  bool m_HECapsSeen = false;
  bool m_HECapsGood = false;
  bool m_HEOperSeen = false;
  bool m_HEOperGood = false;
  bool m_HEEdcaSeen = false;
  bool m_HEEdcaGood = false;
  std::array<std::uint8_t, 42> m_HECapsRaw{};
  std::array<std::uint8_t, 12> m_HEOperRaw{};
  std::array<std::uint8_t, 13> m_HEEdcaRaw{};
  // A map that the element does not carry holds 0xFFFF: no streams.
  std::uint16_t m_HERxMcs80 = 0xFFFF;
  std::uint16_t m_HETxMcs80 = 0xFFFF;
  std::uint16_t m_HERxMcs160 = 0xFFFF;
  std::uint16_t m_HETxMcs160 = 0xFFFF;
  std::uint16_t m_HERxMcs8080 = 0xFFFF;
  std::uint16_t m_HETxMcs8080 = 0xFFFF;
  std::uint32_t m_HERxStreams = 0;
  std::uint32_t m_HETxStreams = 0;
  std::string m_HERxMcsString;
  std::string m_HETxMcsString;
  std::uint32_t m_HERxMaxMcs = 0;
  std::uint32_t m_HETxMaxMcs = 0;
  WString m_WidthString;
  WString m_WidthSeparator;
  double m_CenterFreqGHz = 0.0;
  std::uint32_t SecurityMask = 0;
  bool m_FastTransition = false;

  // The streams and MCS runs that an HT Rx MCS bitmask (MCS 0 to 76) covers, and its highest rate.
  static void Process_HT_MCS_Support_String(const std::array<std::uint8_t, 10>& bitmap, bool b40,
                                            bool bSGI20, bool bSGI40, std::string* streamsText,
                                            double* rateMbps, std::string* mcsText);

 private:
  void Clear();
  void Parse();
  void Parse_internal();
  void Dispatch(const Element& element);
  void ParseRates(Bytes value);
  void ParseHTCapabilities(Bytes value);
  void ParseHTOperation(Bytes value);
  void ParseHTOperationData(Bytes value);
  void ParseVHTCapabilitiesData(Bytes value);
  void ParseVHTOperation(Bytes value);
  void ParseVHTOperationData(Bytes value);
  void ParseExtendedIEData(Bytes value);
  void ParseExtendedIEData_internal(Bytes value);
  void ParseHECapabilities(Bytes value);
  void ParseRSN(Bytes value);
  void ParseVendorSpecificData(Bytes value);
  bool ApplySuiteToSecurityMask(std::uint32_t suite, bool bPersonal, bool f2, bool f3,
                                std::uint16_t rsnCaps);
  bool ApplyWpaSuite(std::uint32_t suite, bool bEnterprise);
  void LogSecurity(const char16_t* operation, WStringView flags, bool applied, Bytes value) const;
  void ComputeVHTRate();
  void ComputeHERate();
};

}  // namespace corvane
