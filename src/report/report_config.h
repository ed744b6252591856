#pragma once
#include <cstdint>

#include "foundation/text.h"

namespace corvane {

// What the reporters need of the configuration of their adapter. Values are those of the adapter's
// key; a write that fails gives false and counts for nothing.
class IReportConfig {
 public:
  virtual bool SetDWORD(WStringView name, std::uint32_t value) = 0;
  virtual bool SetString(WStringView name, WStringView text) = 0;
  virtual bool GetString(WStringView name, WString* out) const = 0;
  virtual bool SetSuggestedNetworkReason(std::uint32_t id) = 0;
  virtual bool SetSuggestedNetworkReasonPercent(std::int32_t percent) = 0;
  virtual bool IsEtwMode() const = 0;           // suggestions leave as events
  virtual bool IsOptimizerPresent() const = 0;  // the OEM suite takes suggestions from the pipe

 protected:
  ~IReportConfig() = default;
};

// An access point as the reporters tell of it.
struct ReportedAp {
  WString ssid;
  WString bssid;        // text
  WString bandText;     // "[5Ghz]"
  WString channelText;  // "[Channel 36]"
};

// The second adapter's counters and networks have names of their own: those of the first and "2".
WString ReportedValueName(WStringView name, int index);

// "SSID [BSSID] [Channel n] [band]", the form of the value SuggestedNetwork.
WString SuggestedNetworkText(const ReportedAp& ap);

}  // namespace corvane
