#pragma once
#include "elements/element_fields.h"
#include "platform/wlan_types.h"

namespace corvane {

// What the elements of one beacon or probe response say. Load fills it once and logs what the
// decoder noticed; from then on it is read only, but for the texts that are built on demand on the
// adapter's worker. Takes no lock.
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

 private:
  void Clear();

  bool m_bLoaded = false;
};

}  // namespace corvane
