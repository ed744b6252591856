#pragma once
#include "elements/element_fields.h"
#include "platform/wlan_types.h"

namespace corvane {

// What the elements of one beacon or probe response say. Load fills it once and logs what the
// decoder noticed; from then on it is read only, but for the texts that are built on demand on the
// adapter's worker. Has no lock.
class CIEBlob : public SmartObjEx<CIEBlob, SmartObj<CNoLock>>, public ElementFields {
 public:
  CIEBlob();
  const char* GetClassName() const override { return "CIEBlob"; }

  // `ies` may be null. `channel` and `width` (MHz) come from the frequency table; of the record
  // only the centre frequency is read.
  void Load(const std::uint8_t* ies, std::uint32_t cbIEs, std::uint32_t channel,
            std::uint32_t width, const platform::WLAN_BSS_ENTRY& bss);

  // In the place of a Load into a new object: true when that would say and log what this one has.
  bool Renew(const std::uint8_t* ies, std::uint32_t cbIEs, std::uint32_t channel,
             std::uint32_t width, const platform::WLAN_BSS_ENTRY& bss);

  // The highest rate in Mbps for an adapter that does HE or not; halved where the rules allow it.
  std::int32_t GetMaxRateMbps(bool bAdapterHE, bool bHalved) const;
  // The operating widths, such as "20,40,80"; cached for a separator.
  const WString& GetChannelWidthString(bool bDescending, WStringView separator, bool bMaxOnly);

 private:
  void Clear();

  // What a reading depends on, beside the bytes.
  struct Terms {
    std::uint32_t channel = 0;
    std::uint32_t width = 0;  // MHz
    std::uint32_t centerKhz = 0;
    std::uint32_t topics = 0;  // that the log watched
    bool operator==(const Terms&) const = default;
  };
  static Terms TermsOf(std::uint32_t channel, std::uint32_t width,
                       const platform::WLAN_BSS_ENTRY& bss);

  Terms m_Terms;
  bool m_bLoaded = false;
  bool m_bNoted = false;  // the reading gave lines, which are to come with each beacon
};

}  // namespace corvane
