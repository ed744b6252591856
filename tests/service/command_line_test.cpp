#include "service/command_line.h"

#include <gtest/gtest.h>

namespace corvane::test {
namespace {

CommandLine Parse(std::vector<WString> words) {
  words.insert(words.begin(), u"/opt/bin/corvane");
  return ParseCommandLine(words);
}

TEST(CommandLine, EveryErrorOfTheParser) {
  const struct {
    std::vector<WString> words;
    const char16_t* error;
  } kCases[] = {
      {{u"--nonsense"}, u"no such option: --nonsense"},
      {{u"--nonsense=5"}, u"no such option: --nonsense"},
      {{u"--Verbose"}, u"no such option: --Verbose"},
      {{u"-q"}, u"no such option: -q"},
      {{u"-tq"}, u"no such option: -q"},
      {{u"--no"}, u"ambiguous option: --no (notifymsg, notifyint?)"},
      {{u"--ve"}, u"ambiguous option: --ve (version, verbose?)"},
      {{u"--test"}, u"ambiguous option: --test (testconnect, testhttp?)"},
      {{u"--ifindex"}, u"--ifindex option requires an argument"},
      {{u"--ifi"}, u"--ifindex option requires an argument"},
      {{u"--connect="}, u"--connect option requires an argument"},
      {{u"-x"}, u"-x option requires an argument"},
      {{u"-tx"}, u"-x option requires an argument"},
      {{u"--ifindex=ten"}, u"option --ifindex: invalid integer value: 'ten'"},
      {{u"-x1.5"}, u"option -x: invalid integer value: '1.5'"},
      {{u"-n", u""}, u"option -n: invalid integer value: ''"},
      {{u"-n", u"-"}, u"option -n: invalid integer value: '-'"},
      {{u"-n", u"2147483648"}, u"option -n: invalid integer value: '2147483648'"},
      {{u"-n", u"99999999999999999999"},
       u"option -n: invalid integer value: '99999999999999999999'"},
      {{u"-t", u"-q", u"--help"}, u"no such option: -q"},
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(WideToUtf8(one.error));
    const CommandLine line = Parse(one.words);
    EXPECT_EQ(line.ends, 2);
    EXPECT_EQ(line.output, u"usage: corvane [OPTION]\n");
    EXPECT_EQ(line.error, u"corvane: error: " + WString(one.error) + u"\n");
  }
}

TEST(CommandLine, ValuesStandBesideOrBehindTheirOption) {
  const std::vector<std::vector<WString>> kSame = {
      {u"--connect", u"Home Net", u"--ifindex", u"-7"},
      {u"--connect=Home Net", u"--ifindex=-7"},
      {u"-c", u"Home Net", u"-x", u"-7"},
      {u"-cHome Net", u"-x-7"},
      {u"word", u"--co", u"Home Net", u"-", u"-x", u"-7", u"--", u"--nonsense"},
      {u"-c", u"earlier", u"-tcHome Net", u"-x", u"-7"},
  };
  for (const auto& words : kSame) {
    SCOPED_TRACE(WideToUtf8(words.front()));
    const CommandLine line = Parse(words);
    EXPECT_FALSE(line.ends);
    ASSERT_TRUE(line.Has(Option::kConnect) && line.Has(Option::kIfIndex));
    EXPECT_EQ(line.Text(Option::kConnect), u"Home Net");
    EXPECT_EQ(line.Number(Option::kIfIndex), -7);
    EXPECT_FALSE(line.Has(Option::kBssid));
  }
  EXPECT_EQ(Parse({u"-c", u"--bssid"}).Text(Option::kConnect), u"--bssid") << "the next word";
  EXPECT_EQ(Parse({u"--connect=a=b"}).Text(Option::kConnect), u"a=b");
  EXPECT_EQ(Parse({u"-n", u"+2147483647"}).Number(Option::kNlmDebug), 2147483647);
  EXPECT_EQ(Parse({u"-n", u"-2147483648"}).Number(Option::kNlmDebug), -2147483647 - 1);
}

TEST(CommandLine, EveryOptionByItsNames) {
  const struct {
    Option option;
    const char16_t* name;
    const char16_t* letter;
    bool value;
  } kCases[] = {
      {Option::kVerbose, u"--verbose", u"-v", false},
      {Option::kNlmDebug, u"--nlmdebug", u"-n", true},
      {Option::kTestConnect, u"--testconnect", u"-t", false},
      {Option::kConnect, u"--connect", u"-c", true},
      {Option::kBssid, u"--bssid", u"-b", true},
      {Option::kIfIndex, u"--ifindex", u"-x", true},
      {Option::kForceLQEtw, u"--forcelqetw", u"-w", false},
      {Option::kNotifyMsg, u"--notifymsg", u"", true},
      {Option::kNotifyInt, u"--notifyint", u"-i", true},
      {Option::kPostFile, u"--postfile", u"-p", true},
      {Option::kTestHttp, u"--testhttp", u"-y", false},
      {Option::kUserEnv, u"--userenv", u"-u", false},
      {Option::kDebugVPN, u"--debugvpn", u"-z", false},
  };
  for (const auto& one : kCases) {
    for (const WString name : {one.name, one.letter}) {
      if (name.empty()) continue;
      SCOPED_TRACE(WideToUtf8(name));
      const CommandLine line = Parse({name, u"1"});
      EXPECT_FALSE(line.ends);
      for (const auto& other : kCases)
        EXPECT_EQ(line.Has(other.option), other.option == one.option) << WideToUtf8(other.name);
      EXPECT_EQ(Parse({name}).ends.has_value(), one.value) << "needs a value or none";
    }
  }
  EXPECT_FALSE(Parse({}).Has(Option::kNotifyMsg)) << "a default starts nothing";
}

TEST(CommandLine, HelpAndVersionEndTheProcess) {
  const CommandLine version = Parse({u"--vers"});
  EXPECT_EQ(version.ends, 0);
  EXPECT_EQ(version.output, u"corvane 1.0\nAP Selector program\n");
  const CommandLine help = Parse({u"--help", u"--nonsense"});
  EXPECT_EQ(help.ends, 0);
  EXPECT_EQ(help.error, u"");
  EXPECT_TRUE(help.output.starts_with(u"usage: corvane [OPTION]\n\nThis application allows"));
  EXPECT_TRUE(help.output.ends_with(u"\nepilog\n"));
  for (const char16_t* part :
       {u"\n  -v, --verbose         be verbose! (default: 50)\n",
        u"\n  -b aa:bb:cc:dd:ee, --bssid=aa:bb:cc:dd:ee\n                        Connect this",
        u"\n  -y, --testhttp        Test winhttp client and exit\n",
        u"\n  --notifymsg=MSGID     POST WM_COMMAND MSGID"}) {
    EXPECT_NE(help.output.find(part), WString::npos) << WideToUtf8(part);
  }
  for (std::size_t at = 0; at < help.output.size();) {
    const std::size_t end = help.output.find(u'\n', at);
    EXPECT_LE(end - at, 79u);
    at = end + 1;
  }
}

}  // namespace
}  // namespace corvane::test
