#include "history/telemetry_memo.h"

#include "platform/sim/kernel/fault_plan.h"
#include "store/registry.h"
#include "support/pc_fixture.h"

namespace corvane::test {
namespace {

class TelemetryMemoTest : public KernelTest {
 protected:
  TelemetryMemoTest() { EXPECT_TRUE(CRegistry::CreateHomeKey(kHomeKeyPath)); }
  static CTelemetryMemo& Memo() { return CTelemetryMemo::GetInstance(); }
  static void Store(WStringView text) {
    EXPECT_TRUE(CRegistry(kHomeKeyPath).SetRegistryStringValue(u"TelemetryMemo", text));
  }
  static WString Stored() {
    WString text;
    CRegistry(kHomeKeyPath).GetRegistryStringValue(u"TelemetryMemo", &text);
    return text;
  }
  bool HasLog(std::string_view text) {
    return kernel.Console().Text().find(text) != std::string::npos;
  }
};

class FixedClock : public platform::ClockApi {
 public:
  platform::ULONGLONG GetTickCount64() override { return 1; }
  void GetSystemTimeAsFileTime(platform::FILETIME* now) override {
    platform::SystemTimeToFileTime({2026, 11, 2, 3, 8, 4, 20, 7}, now);
  }
};

TEST_F(TelemetryMemoTest, CountsSurviveTheProcess) {
  Install<FixedClock>();
  Memo().IncrementAp();
  EXPECT_TRUE(Memo().SaveToRegistry());
  EXPECT_EQ(Stored(), u"2026-11-03T08:04:20.7Z\t1\t0");
  Memo().IncrementNet();
  Memo().IncrementNet();
  EXPECT_TRUE(Memo().SaveToRegistry()) << "every later change of the run is saved too";
  EXPECT_EQ(Stored(), u"2026-11-03T08:04:20.7Z\t1\t2");
  singletons::DropAll();
  EXPECT_EQ(Memo().GetAp(), 1u);
  EXPECT_EQ(Memo().GetNet(), 2u);
  EXPECT_TRUE(HasLog(
      "CTelemetryMemo::LoadFromRegistry:Read ValueName TelemetryMemo --> 2026-11-03T08:04:20.7Z"));
}

TEST_F(TelemetryMemoTest, AMalformedValueStartsEmptyAndHeals) {
  Store(u"2026-11-03T08:04:20.7Z\t5");
  EXPECT_EQ(Memo().GetAp(), 0u);
  EXPECT_TRUE(
      HasLog("CTelemetryMemo::LoadFromRegistry: ERROR GOT ONLY 2 items from CSV string: 2026"));
  Memo().IncrementAp();
  EXPECT_TRUE(Memo().SaveToRegistry());
  singletons::DropAll();
  EXPECT_EQ(Memo().GetAp(), 1u);

  singletons::DropAll();
  Store(u"t\t12x\t99999999999");
  EXPECT_EQ(Memo().GetAp(), 12u);
  EXPECT_EQ(Memo().GetNet(), 0xFFFFFFFFu);
}

TEST_F(TelemetryMemoTest, AFailedSaveIsToldAndLosesNothing) {
  Memo().IncrementNet();
  kernel.Faults().FailAlways("RegSetValueExW", 5);
  EXPECT_FALSE(Memo().SaveToRegistry());
  EXPECT_TRUE(HasLog("[ap 0, net 1] ___FAILED___"));
  kernel.Faults().Clear();
  EXPECT_TRUE(Memo().SaveToRegistry());
  EXPECT_TRUE(Stored().ends_with(u"\t0\t1"));
}

}  // namespace
}  // namespace corvane::test
