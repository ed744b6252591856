#include "settings/score_config.h"

#include "support/pc_fixture.h"

namespace corvane {
namespace {

using ScoreConfig = test::KernelTest;

TEST_F(ScoreConfig, TakesUnsignedNumbersOfKnownKeysOnly) {
  const struct {
    const char16_t* json;
    bool changed;
    std::uint32_t sqMax;
  } cases[] = {
      {u"{\"SQMax\":30}", false, 30},
      {u"{\"SQMax\":-1}", false, 30},
      {u"{\"SQMax\":40.0}", false, 30},
      {u"{\"SQMax\":\"40\"}", false, 30},
      {u"{\"SQMax\":4294967296}", false, 30},
      {u"{\"sqmax\":40}", false, 30},
      {u"[40]", false, 30},
      {u"{\"SQMax\":40,\"Other\":1}", true, 40},
      {u"{\"SQMax\":40}", false, 40},
      {u"{}", false, 40},
      {u"{\"SQMax\":4294967295}", true, 4294967295},
      {u"{\"SQMax\":0}", true, 0},
  };
  const auto weights = CScoreConfig::CreateObject();
  for (const auto& one : cases) {
    EXPECT_EQ(weights->Initialize(one.json), one.changed) << Narrow(one.json);
    EXPECT_EQ(weights->Get().SQMax, one.sqMax) << Narrow(one.json);
  }
  EXPECT_TRUE(
      weights->Initialize(u"{\"NOISEMax\":7,\"QBSSBumpMax\":6,\"MBPSBumpMax\":5,\"MUMIMOMax\":4,"
                          u"\"PNMax\":3,\"SQMax\":2,\"Internet\":1}"));
  EXPECT_EQ(weights->Get(), (ScoreWeights{1, 2, 3, 4, 5, 6, 7}));
}

TEST_F(ScoreConfig, ReportsATextThatDoesNotParseAndKeepsTheWeights) {
  const auto weights = CScoreConfig::CreateObject();
  const std::pair<WString, const char*> cases[] = {
      {u"", "\nCScoreConfig::Initialize: Error(offset 0): The document is empty.\n"},
      {u"{\"SQMax\":40} x",
       "\nCScoreConfig::Initialize: Error(offset 13): The document root must not be followed by "
       "other values.\n"},
      {u"{\"SQMax\":40", "offset 11"},
      {WString(100'000, u'['), "offset"},
  };
  for (const auto& [json, message] : cases) {
    const std::size_t before = kernel.Console().Text().size();
    EXPECT_FALSE(weights->Initialize(json));
    EXPECT_NE(kernel.Console().Text().find(message, before), std::string::npos) << message;
    EXPECT_EQ(weights->Get(), ScoreWeights{});
  }
}

}  // namespace
}  // namespace corvane
