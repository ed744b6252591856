#pragma once
#include "elements/element_cursor.h"
#include "elements/element_fields.h"
#include "platform/wlan_types.h"

namespace corvane {

// What the elements of one beacon or probe response say. Load fills it once; from then on it is
// read only, but for the texts that are built on demand on the adapter's worker. Takes no lock. No
// bytes make it read outside its copy or throw; only lack of memory does.
class CIEBlob : public SmartObjEx<CIEBlob, SmartObj<>>, public ElementFields {
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

  bool m_bLoaded = false;
};

}  // namespace corvane
