// What a blob keeps of its elements, and what the log hears of them.

#include "model/ie_blob.h"

#include "elements/element_bytes.h"
#include "support/beacon.h"
#include "support/platform_test.h"

namespace corvane {
namespace {

using test::Beacon;
using test::ByteList;
using test::Ie;
using test::Join;
using test::Printed;

using IeBlob = test::PlatformTest;

TEST_F(IeBlob, FewerThanTwoBytesLeaveAClearedObjectWithTheCallersChannelAndWidth) {
  platform::WLAN_BSS_ENTRY bss;
  bss.ulChCenterFrequency = 5180000;
  const auto blob = CIEBlob::CreateObject();
  const ByteList full =
      Beacon(u8"Office").Channel(36).He160(4).Rsn({test::AKM_SAE}).QbssLoad(5, 51).Bytes();
  blob->Load(full.data(), static_cast<std::uint32_t>(full.size()), 36, 20, bss);
  ASSERT_TRUE(blob->m_HECapsGood && blob->m_RawIEs && blob->SecurityMask == 0x08 &&
              blob->m_MaxHERateKbps > 0);
  ASSERT_EQ(blob->m_RawIEs->GetSize(), full.size());
  ASSERT_EQ(blob->GetChannelWidthString(false, u",", false), u"20,40,80");
  blob->m_PhyModeString = u"ax";

  for (const std::uint32_t size : {0u, 1u}) {
    os.clock.ticks += 500;
    blob->Load(full.data(), size, 149, 0, bss);
    ElementFields start;
    start.m_ParsedAtTick = os.clock.ticks;
    start.m_CenterChannel = 149;
    start.m_CenterFreqGHz = 5.18;
    start.m_PhyModeString = u"ax";  // the texts made on demand stay
    start.m_WidthString = u"20,40,80";
    start.m_WidthSeparator = u",";
    EXPECT_EQ(Printed(*blob), Printed(start));
    EXPECT_EQ(blob->GetMaxRateMbps(true, false), 0);
  }
  blob->Load(nullptr, 40, 149, 0, bss);
  EXPECT_FALSE(blob->m_RawIEs);
  blob->Load(full.data(), 2, 149, 0, bss);  // bytes that hold no element are still parsed
  EXPECT_EQ(blob->m_ChannelWidth, 20u);
  EXPECT_EQ(blob->m_LoadCenterChannel, 149);
}

// The text is kept for its separator, whatever else is asked.
TEST_F(IeBlob, WidthTextIsKeptForItsSeparator) {
  const auto blob = CIEBlob::CreateObject();
  const ByteList bytes = Join({test::HtOperation(36, 1), test::VhtOperation(1, 42)});
  blob->Load(bytes.data(), static_cast<std::uint32_t>(bytes.size()), 36, 20, {});
  EXPECT_EQ(blob->GetChannelWidthString(false, u",", false), u"20,40,80");
  EXPECT_EQ(blob->GetChannelWidthString(true, u",", true), u"20,40,80");
  EXPECT_EQ(blob->GetChannelWidthString(true, u"/", false), u"80/40/20");
  EXPECT_EQ(blob->GetChannelWidthString(false, u",", true), u"80");
}

// A fault of the platform that a log line meets ends that one line.
TEST_F(IeBlob, AFaultEndsItsLineAndNoReading) {
  class FaultySink : public ILogSink {
   public:
    void Write(std::uint32_t, const char* tag, WStringView text) override {
      if (lines.empty()) {
        lines.push_back("fault");
        throw platform::PlatformFault{0xC0000005};
      }
      lines.push_back(tag + Narrow(text));
    }
    void Write(std::uint32_t, const char*, std::string_view) override {}
    std::string GetMemoryLog() override { return {}; }
    std::vector<std::string> lines;
  } sink;
  SetLogSink(&sink);
  g_DebugMask = DBG(26);
  const auto blob = CIEBlob::CreateObject();
  const ByteList bytes = Join({Ie(255, {36, 1, 2, 3, 4, 5, 6}), Ie(255, {99}), Ie(3, {11})});
  blob->Load(bytes.data(), static_cast<std::uint32_t>(bytes.size()), 0, 20, {});
  SetLogSink(nullptr);
  EXPECT_TRUE(blob->m_HEOperGood);
  EXPECT_EQ(blob->m_DSChannel, 11);
  EXPECT_EQ(sink.lines,
            (std::vector<std::string>{"fault", "<E>filterException 0xc0000005",
                                      "<E>CIEBlob::ParseExtendedIEData: EXCEPTION: 0xc0000005",
                                      "<I>CIEBlob::ParseExtendedIEData_internal:[] Got "
                                      "unsupported EXT-EID 99 [len 1]"}));
}

}  // namespace
}  // namespace corvane
