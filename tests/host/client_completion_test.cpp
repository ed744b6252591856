// The completion file, in the shell that it is for, beside what the client takes.

#include <gmock/gmock.h>

#include <cstdio>
#include <set>
#include <sstream>

#include "corvane_client/client_commands.h"
#include "support/source_dir.h"

namespace corvane::test {

namespace {

using Words = std::set<std::string>;

Words WordsOf(const std::string& text) {
  std::istringstream stream(text);
  Words words;
  for (std::string word; stream >> word;) words.insert(word);
  return words;
}

// What bash offers behind these words of a call; the last one has been begun.
Words Completed(const std::string& words) {
  const std::string script = "source '" + SourceDir() + "/completions/corvane-client.bash'; " +
                             "COMP_WORDS=(corvane-client " + words +
                             "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _corvane_client; " +
                             "printf \"%s\\n\" \"${COMPREPLY[@]}\"";
  std::string command = "bash -c '";
  for (const char c : script) command += c == '\'' ? std::string("'\\''") : std::string(1, c);
  std::FILE* const pipe = popen((command + "'").c_str(), "r");
  std::string text;
  for (int c; (c = std::fgetc(pipe)) != EOF;) text += static_cast<char>(c);
  EXPECT_EQ(pclose(pipe), 0);
  return WordsOf(text);
}

}  // namespace

TEST(ClientCompletion, KnowsTheCommandsAndTheirOptions) {
  Words names{"help"};
  for (const client::Command& command : client::Commands()) {
    names.insert(command.name);
    Words options = WordsOf(command.options);
    options.insert({"--help", "--home", "--json"});
    EXPECT_EQ(Completed(std::string(command.name) + " --"), options) << command.name;
  }
  EXPECT_EQ(Completed("''"), names);
  EXPECT_EQ(Completed("--json --home /tmp ''"), names);
}

TEST(ClientCompletion, OffersAWordOnlyWhereOneMayFollow) {
  EXPECT_EQ(Completed("lb ''"), WordsOf("on off pause resume status weight"));
  EXPECT_EQ(Completed("lb weight ''"), WordsOf("1 2"));
  EXPECT_EQ(Completed("lb pause ''"), Words());
  EXPECT_EQ(Completed("list --adapter 1 deny s"), WordsOf("set show"));
  EXPECT_EQ(Completed("list deny set " + SourceDir() + "/README"),
            Words{SourceDir() + "/README.md"});
  EXPECT_EQ(Completed("mode popup ''"), Words());
}

}  // namespace corvane::test
