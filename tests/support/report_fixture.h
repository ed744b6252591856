#pragma once
// What the tests of the reporters share: a configuration that keeps what is written, and the log
// gates of the reporters open.

#include <map>

#include "foundation/log_lines.h"
#include "report/report_config.h"
#include "support/pc_fixture.h"

namespace corvane::test {

class RecordedConfig : public IReportConfig {
 public:
  bool SetDWORD(WStringView name, std::uint32_t value) override {
    numbers[WString(name)] = value;
    return true;
  }
  bool SetString(WStringView name, WStringView text) override {
    texts[WString(name)] = text;
    return true;
  }
  bool GetString(WStringView name, WString* out) const override {
    const auto found = texts.find(WString(name));
    if (found == texts.end()) return false;
    *out = found->second;
    return true;
  }
  bool SetSuggestedNetworkReason(std::uint32_t id) override {
    reason = static_cast<std::int32_t>(id);
    return true;
  }
  bool SetSuggestedNetworkReasonPercent(std::int32_t percent) override {
    reason = -percent;
    return true;
  }
  bool IsEtwMode() const override { return etwMode; }
  bool IsOptimizerPresent() const override { return optimizer; }

  std::map<WString, std::uint32_t> numbers;
  std::map<WString, WString> texts = {{u"AdapterDescription", u"Radio 7 of the registry"}};
  std::int32_t reason = 0;  // a string id, or minus a percentage
  bool etwMode = true;
  bool optimizer = false;
};

class ReportTest : public KernelTest {
 protected:
  ReportTest() { g_DebugMask = ~std::uint64_t{0} & ~(DBG(12) | DBG(23)); }
  bool HasLog(std::string_view text) {
    return kernel.Console().Text().find(text) != std::string::npos;
  }

  RecordedConfig config;
};

inline ReportedAp Ap(const WString& ssid, const WString& bssid) {
  return {ssid, bssid, u"[5Ghz]", u"[Channel 36]"};
}

}  // namespace corvane::test
