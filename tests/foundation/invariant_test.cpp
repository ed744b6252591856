#include "foundation/invariant.h"

#include <gmock/gmock.h>

#include "foundation/smart_obj.h"
#include "foundation/thread.h"
#include "platform/platform.h"
#include "platform/sim/kernel/sim_console.h"
#include "support/pc_fixture.h"

namespace corvane {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using namespace std::chrono_literals;

class InvariantTest : public test::KernelTest {};

class Held : public SmartObjEx<Held, SmartObj<>> {
 public:
  const char* GetClassName() const override { return "Held"; }
};

class Waiting : public SmartObjEx<Waiting, SmartObj<>>, public CThread<Waiting> {
 public:
  Waiting() : CThread<Waiting>("waiting") {}
  ~Waiting() override { StopThread(1000); }
  const char* GetClassName() const override { return "Waiting"; }
  void RunThreadLoop() {
    while (m_bRun) Os().threads.Sleep(10);
  }
};

// The simulated machine's run fails; the program itself writes a line and goes on.
TEST_F(InvariantTest, WhatBreaksOneEndsTheRunAndGoesOn) {
  const CSmartPointer<Held> held(new Held);
  held->AddRef();
  held->Release();
  EXPECT_EQ(TakeReports(), "");
  {
    Held loose;
    EXPECT_EQ(loose.Release(), 0u);
  }
  EXPECT_THAT(TakeReports(), StartsWith("Broken invariant: an object is let go of no more often"));

  const CSmartPointer<Waiting> waiting(new Waiting);
  EXPECT_EQ(waiting->BeginThread(), platform::S_OK);
  RunFor(15ms);
  EXPECT_EQ(TakeReports(), "");
  EXPECT_EQ(waiting->BeginThread(), platform::S_OK);
  EXPECT_THAT(TakeReports(), StartsWith("Broken invariant: a thread is begun after its earlier"));
  EXPECT_TRUE(waiting->IsRunning());
  EXPECT_THAT(kernel.Console().Text(),
              HasSubstr("Invariant: broken: a thread is begun after its earlier one has ended\n"));
}

}  // namespace
}  // namespace corvane
