#include "monitors/utils.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_session.h"
#include "support/pc_fixture.h"

namespace corvane::test {

class InteractiveDesktop : public KernelTest {
 protected:
  bool IsService(std::vector<std::u16string> windows) {
    kernel.Session().SetWindows(std::move(windows));
    CUtils::GetInstance().DetectRunningAsService();
    return CUtils::GetInstance().IsRunningAsService();
  }
};

TEST_F(InteractiveDesktop, IsKnownByTheTitlesOfItsWindows) {
  EXPECT_TRUE(IsService({}));
  EXPECT_TRUE(IsService({u"", u"Default", u"The Default IME", u"Mail"}));
  EXPECT_FALSE(IsService({u"", u"Mail", u"default ime"}));
  EXPECT_FALSE(IsService({u"DDE SERVER WINDOW 2"}));
  EXPECT_FALSE(IsService({u"AutoCompleteProxy"}));
  EXPECT_FALSE(IsService({u"CiceroUIWndFrame"}));
  EXPECT_TRUE(IsService({u"Mail"})) << "an earlier answer stayed";
  kernel.Faults().FailAlways("EnumWindows", platform::sim::FaultPlan::kFault);
  EXPECT_TRUE(IsService({u"Default IME"})) << "a process that sees no windows counts as a service";
}

}  // namespace corvane::test
