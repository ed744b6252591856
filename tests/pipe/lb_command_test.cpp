// LBCommand: what each name asks of the engine's worker, which no thread runs here.

#include "lb/lb_config.h"
#include "pipe/command_fixture.h"

namespace corvane::test {
namespace {

class LBCommandTest : public CommandTest {
 protected:
  void SetUp() override {
    CommandTest::SetUp();
    bool created = false;
    CLBConfig::GetInstance().Initialize(&created, true, false);
    ForgetLog();
  }
  static std::string Order(const std::string& name, const std::string& value) {
    return R"("cmd":"LBCommand","name":")" + name + R"(","value":)" + value;
  }
  // The command that was queued since the last call; 0 for none.
  int Queued() {
    int queued = 0;
    for (int cmd = 1; cmd <= 5; ++cmd) {
      if (HasLog("EnqueueWorkItem: cmd=" + std::to_string(cmd))) queued = queued * 10 + cmd;
    }
    ForgetLog();
    return queued;
  }
};

TEST_F(LBCommandTest, EachNameHasItsValues) {
  struct Row {
    const char* name;
    const char* value;
    std::uint32_t code;
    int queued;
    const char16_t* stored;
    std::uint32_t number;
  };
  const Row rows[] = {{"EnableLBEngine", "1", 0, 1, u"LBWeightMode", 1},
                      {"EnableLBEngine", "0", 0, 1, u"LBWeightMode", 1},
                      {"EnableLBEngine", "3", 0, 1, u"LBEnabled", 1},
                      {"EnableLBEngine", "2", 0, 1, u"LBWeightMode", 2},
                      {"SetLBPaused", "0", 0, 0, u"LBPaused", 0},
                      {"SetLBPaused", "7", 0, 4, u"LBPaused", 1},
                      {"SetLBPaused", "1", 0, 0, u"LBPaused", 1},
                      {"SetLBPaused", "0", 0, 5, u"LBPaused", 0},
                      {"SetLBWeightMode", "1", 0, 3, u"LBWeightMode", 1},
                      {"SetLBWeightMode", "0", 10, 0, u"LBWeightMode", 1},
                      {"SetLBWeightMode", "3", 10, 0, u"LBWeightMode", 1},
                      {"DisableLBEngine", "0", 0, 2, u"LBEnabled", 0},
                      {"Nonsense", "1", 8, 0, u"LBEnabled", 0}};
  for (const Row& row : rows) {
    const std::string what = std::string(row.name) + " " + row.value;
    const std::string reply = Ask(Order(row.name, row.value));
    if (row.code == 0) {
      EXPECT_TRUE(IsEcho(reply)) << what;
    } else {
      EXPECT_EQ(CodeOf(reply), row.code) << what;
    }
    EXPECT_EQ(Queued(), row.queued) << what;
    EXPECT_EQ(Home(row.stored), row.number) << what;
  }
  EXPECT_EQ(WindowMs(0) + WindowMs(1), 0u) << "the adapters have no part in it";
}

TEST_F(LBCommandTest, NameAndNumberMustBeThere) {
  for (const char* members :
       {R"("cmd":"LBCommand")", R"("cmd":"LBCommand","name":"DisableLBEngine")",
        R"("cmd":"LBCommand","name":"DisableLBEngine","value":"1")",
        R"("cmd":"LBCommand","name":"DisableLBEngine","value":-1)",
        R"("cmd":"LBCommand","name":1,"value":1)"}) {
    EXPECT_EQ(Code(members), 7u) << members;
  }
  EXPECT_EQ(Queued(), 0);
}

TEST_F(LBCommandTest, WhatCannotBeWrittenFails) {
  FailWrites(true);
  for (const char* name : {"EnableLBEngine", "SetLBWeightMode", "SetLBPaused"})
    EXPECT_EQ(Code(Order(name, "1")), 9u) << name;
  FailWrites(false);
  ASSERT_EQ(Code(Order("EnableLBEngine", "1")), 0u);
  FailWrites(true);
  EXPECT_EQ(Code(Order("DisableLBEngine", "1")), 9u);
  EXPECT_EQ(Home(u"LBEnabled"), 1u);
}

}  // namespace
}  // namespace corvane::test
