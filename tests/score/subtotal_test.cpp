#include "score/subtotal.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

// Connected to the internet, so that a case shows the one term that it is about.
SubtotalInputs Plain(std::uint32_t quality = 50) {
  SubtotalInputs in;
  in.quality = quality;
  in.network.connectivityKnown = true;
  in.network.connectivity = 0x40;
  return in;
}

std::string LogOf(const SubtotalInputs& in) {
  std::string log = "old";
  ComputeSubtotal(in, &log);
  return log;
}

// The points of one term, as the log tells them.
std::string Term(const SubtotalInputs& in, const std::string& name) {
  const std::string log = "," + LogOf(in);
  const std::size_t at = log.find("," + name + "(");
  return at == std::string::npos
             ? ""
             : log.substr(at + name.size() + 2, log.find(')', at) - at - name.size() - 2);
}

TEST(Subtotal, WorkedExamples) {
  RadioFacts vht;
  vht.htPresent = vht.vhtPresent = true;
  vht.securityMask = 0x04;
  vht.maxRateMbps = 866;
  vht.loadPct = 25.0;
  vht.loadMapValid = vht.quietChannel = true;
  SubtotalInputs in = Plain(80);
  in.network.isPrivate = true;
  in.radio = &vht;
  std::string log = "old";
  SubtotalResult result = ComputeSubtotal(in, &log);
  EXPECT_EQ(log,
            "SIGQ(18/30),PRIV(1),N(5),AC(5),SEC(6),MUMIMO(0),MBPS(9/866),QBSS(7/"
            "25),NOISE(10),NEG_SIGQ(0),"
            "ALLOW(0),INTERNET(0),SUBTOTAL(61)");
  EXPECT_EQ(result.points, 61);
  EXPECT_EQ(result.loadPoints, 7);

  RadioFacts ht;
  ht.htPresent = true;
  ht.maxRateMbps = 72;
  ht.loadMapValid = true;
  in = Plain(40);
  in.network.connectivity = 0x20;
  in.radio = &ht;
  result = ComputeSubtotal(in, &log);
  EXPECT_EQ(
      log,
      "SIGQ(0/30),PRIV(0),N(5),SEC(0),MUMIMO(0),MBPS(1/72),QBSS(0),NOISE(0),NEG_SIGQ(-3),ALLOW(0),"
      "INTERNET(-20),SUBTOTAL(0)");
  EXPECT_EQ(result.points, 0);
  EXPECT_EQ(result.loadPoints, -1);

  // Without elements the radio terms are fixed.
  in = Plain(100);
  EXPECT_EQ(
      LogOf(in),
      "SIGQ(30/"
      "30),PRIV(0),SEC(0),MUMIMO(0),MBPS(0),QBSS(0),NOISE(0),NEG_SIGQ(0),ALLOW(0),INTERNET(0),"
      "SUBTOTAL(30)");
}

TEST(Subtotal, SignalTerms) {
  const struct {
    std::uint32_t quality;
    const char *good, *weak;
  } cases[] = {{100, "30/30", "0"}, {99, "29/30", "0"}, {80, "18/30", "0"}, {52, "1/30", "0"},
               {51, "0/30", "0"},   {50, "0/30", "0"},  {49, "0/30", "-1"}, {46, "0/30", "-1"},
               {45, "0/30", "-2"},  {40, "0/30", "-3"}, {10, "0/30", "-9"}, {5, "0/30", "-10"},
               {0, "0/30", "-10"}};
  for (const auto& one : cases) {
    SubtotalInputs in = Plain(one.quality);
    in.network.isPrivate = true;  // something to take from
    in.weights.PNMax = 20;
    EXPECT_EQ(Term(in, "SIGQ"), one.good) << one.quality;
    EXPECT_EQ(Term(in, "NEG_SIGQ"), one.weak) << one.quality;
  }
  SubtotalInputs in = Plain(0);
  EXPECT_EQ(Term(in, "NEG_SIGQ"), "0");  // nothing to take from
  in.network.isPrivate = true;
  in.weights.PNMax = 4;
  EXPECT_EQ(Term(in, "NEG_SIGQ"), "-4");
  EXPECT_EQ(Term(in, "SUBTOTAL"), "0");
  in = Plain(100);
  in.weights.SQMax = 0;
  EXPECT_EQ(Term(in, "SIGQ"), "0/0");
}

TEST(Subtotal, PegRaisesTheQualityOnly) {
  std::string log;
  for (const auto& [peg, pegged, signal] :
       {std::tuple{90u, 90u, "24/30"}, {80u, 0u, "18/30"}, {0u, 0u, "18/30"}}) {
    SubtotalInputs in = Plain(80);
    in.pegQuality = peg;
    EXPECT_EQ(ComputeSubtotal(in, &log).peggedQuality, pegged);
    EXPECT_EQ(Term(in, "SIGQ"), signal);
  }
}

TEST(Subtotal, SecurityIsTheFirstBitOfItsLadder) {
  const struct {
    std::uint32_t mask;
    const char* text;
    std::int32_t points;
  } cases[] = {
      {0x00, "0", 0},   {0x01, "1", 0}, {0x02, "3", 3}, {0x04, "6", 6},
      {0x08, "9", 9},   {0x10, "2", 0}, {0x20, "5", 5}, {0x40, "8", 8},
      {0x80, "11", 11}, {0x28, "5", 5}, {0x48, "8", 8}, {0xFF, "11", 11},
      {0x0F, "9", 9},   {0x13, "3", 3}, {0x11, "2", 0}, {0x100, "0", 0},
  };
  for (const auto& one : cases) {
    RadioFacts radio;
    radio.securityMask = one.mask;
    SubtotalInputs in = Plain();
    in.radio = &radio;
    std::string log;
    EXPECT_EQ(ComputeSubtotal(in, &log).points, one.points) << one.mask;
    EXPECT_EQ(Term(in, "SEC"), one.text) << one.mask;
  }
}

TEST(Subtotal, RateTerm) {
  const struct {
    std::int32_t rate;
    std::uint32_t bump;
    const char* text;
  } cases[] = {
      {0, 5, "0/0"},         {49, 5, "0/49"},      {50, 5, "1/50"},
      {866, 5, "9/866"},     {949, 5, "9/949"},    {950, 5, "10/950"},
      {999, 5, "10/999"},    {1000, 5, "10/1000"}, {1099, 5, "10/1099"},
      {1100, 5, "11/1100"},  {2000, 5, "15/2000"}, {4899, 5, "29/4899"},
      {4900, 5, "30/4900"},  {5000, 5, "30/5000"}, {9608, 5, "30/9608"},
      {2000, 40, "30/2000"}, {866, 0, "0/866"},    {100, 4294967295u, "30/100"},
  };
  for (const auto& one : cases) {
    RadioFacts radio;
    radio.maxRateMbps = one.rate;
    SubtotalInputs in = Plain();
    in.weights.MBPSBumpMax = one.bump;
    in.radio = &radio;
    EXPECT_EQ(Term(in, "MBPS"), one.text);
  }
}

TEST(Subtotal, LoadTerm) {
  const struct {
    double load;
    const char* text;
    std::int32_t loadPoints;
  } cases[] = {{-1.0, "0", -1},   {0.0, "10/0", 10},   {0.39, "9/0", 9},   {25.0, "7/25", 7},
               {99.6, "0/99", 0}, {100.0, "0/100", 0}, {130.0, "0/100", 0}};
  for (const auto& one : cases) {
    RadioFacts radio;
    radio.loadPct = one.load;
    SubtotalInputs in = Plain();
    in.radio = &radio;
    std::string log;
    EXPECT_EQ(ComputeSubtotal(in, &log).loadPoints, one.loadPoints) << one.load;
    EXPECT_EQ(Term(in, "QBSS"), one.text) << one.load;
  }
}

TEST(Subtotal, GenerationsMuMimoNoiseAndAllowAddTheirPoints) {
  RadioFacts radio;
  SubtotalInputs in = Plain();
  in.radio = &radio;
  in.weights.NOISEMax = 7;
  in.weights.MUMIMOMax = 3;
  std::string log;
  const auto points = [&] { return ComputeSubtotal(in, &log).points; };
  EXPECT_EQ(points(), 0);
  radio.quietChannel = true;  // of a map that was never worked out
  EXPECT_EQ(points(), 0);
  EXPECT_EQ(Term(in, "NOISE"), "0");
  radio.loadMapValid = true;
  EXPECT_EQ(points(), 7);
  EXPECT_EQ(Term(in, "NOISE"), "10");  // the word stands whatever the weight
  radio.muMimo = true;
  EXPECT_EQ(points(), 10);
  EXPECT_EQ(Term(in, "MUMIMO"), "3");
  radio.heCapsGood = true;
  EXPECT_EQ(points(), 15);
  EXPECT_EQ(log.find(",AX(5),SEC(0)"), std::string("SIGQ(0/30),PRIV(0)").size());
  in.allowed = true;
  EXPECT_EQ(points(), 35);
  EXPECT_EQ(Term(in, "ALLOW"), "20");
  in.allowBonus = 50;
  EXPECT_EQ(points(), 65);
}

TEST(Subtotal, AllowBonusIsThereForTheInternetPenaltyButNotForTheWeakSignal) {
  SubtotalInputs in = Plain(0);
  in.allowed = true;
  in.network.connectivity = 0x1;
  in.weights.Internet = 15;
  std::string log;
  EXPECT_EQ(ComputeSubtotal(in, &log).points, 5);
  EXPECT_NE(log.find(",NEG_SIGQ(0),ALLOW(20),INTERNET(-15),SUBTOTAL(5)"), std::string::npos) << log;
}

// What an entry remembers, as four digits: internet, latch, known, VPN muted.
InternetState State(const char* digits) {
  return {digits[0] == '1', digits[1] == '1', digits[2] == '1', digits[3] == '1'};
}

TEST(Subtotal, InternetTerm) {
  const struct {
    bool known;
    std::uint32_t flags;
    bool vpn;
    const char* before;
    const char* text;
    std::int32_t points;  // of 30
    const char* after;
  } cases[] = {
      {false, 0, false, "0000", "0/NO_NLM", 30, "1100"},
      {false, 0x333, true, "0011", "0/NO_NLM", 30, "1111"},
      {true, 0x40, false, "0000", "0", 30, "1110"},
      {true, 0x400, false, "0000", "0", 30, "1110"},
      {true, 0x773, true, "0001", "0", 30, "1111"},
      {true, 0x001, false, "1100", "-20", 10, "0010"},
      {true, 0x200, false, "1100", "-20", 10, "0010"},
      {true, 0x333, true, "1100", "0/VPN_MUTED", 30, "0011"},
      {true, 0x333, false, "1111", "-20", 10, "0011"},
      {true, 0x088, false, "0100", "0/CONNECTIVITY 136", 30, "0100"},
      {true, 0, false, "1100", "0/DISCON", 30, "0100"},
      {true, 0, false, "1010", "-20/DISCON", 10, "0010"},
      {true, 0, true, "1010", "-20/DISCON", 10, "0010"},
      {true, 0, false, "1011", "0/DISCON-VPN_MUTED", 30, "0011"},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const auto& one = cases[i];
    SubtotalInputs in = Plain(100);
    in.network.connectivityKnown = one.known;
    in.network.connectivity = one.flags;
    in.vpnFound = one.vpn;
    in.internet = State(one.before);
    std::string log;
    const SubtotalResult result = ComputeSubtotal(in, &log);
    EXPECT_EQ(Term(in, "INTERNET"), one.text) << i;
    EXPECT_EQ(result.points, one.points) << i;
    EXPECT_EQ(result.internet, State(one.after)) << i;
  }
  // Never below 0, at the weight itself and beyond.
  for (const auto& [weight, left] : {std::pair{29u, 1}, {30u, 0}, {31u, 0}, {4294967295u, 0}}) {
    SubtotalInputs in = Plain(100);
    in.network.connectivity = 0x333;
    in.weights.Internet = weight;
    std::string log;
    EXPECT_EQ(ComputeSubtotal(in, &log).points, left);
    EXPECT_EQ(Term(in, "INTERNET"), "-" + std::to_string(weight));
  }
}

}  // namespace
}  // namespace corvane
