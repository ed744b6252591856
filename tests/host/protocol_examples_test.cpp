// The examples of docs/protocol.md, run on the service program by the shell that they are for.

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include "any_host/pipe_peer.h"
#include "any_host/temp_directory.h"
#include "host/program.h"
#include "support/source_dir.h"

namespace corvane::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 60s;
constexpr std::size_t kLeastExamples = 40;  // the page has more: none is missed
constexpr char kMark = '\x1e';              // between the outputs of two examples

struct Example {
  std::string command;
  std::string expected;
};

std::string TextOf(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// The page as one script: its blocks of shell as they are, and a mark before each example.
std::string ScriptOf(const std::string& page, std::vector<Example>* examples) {
  std::istringstream lines(page);
  std::string script, block;
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("```")) {
      block = block.empty() ? line.substr(3) : "";
    } else if (block == "sh") {
      script += line + "\n";
    } else if (block == "console" && line.starts_with("$ ")) {
      examples->push_back({line.substr(2), ""});
      script += "printf '\\036'\n" + line.substr(2) + "\n";
    } else if (block == "console") {
      examples->back().expected += line + "\n";
    }
  }
  return script;
}

// Whether the text is the pattern, in which "..." stands for any text.
bool Matches(std::string_view text, std::string_view pattern) {
  constexpr std::string_view kAny = "...";
  std::size_t gap = pattern.find(kAny);
  if (gap == pattern.npos) return text == pattern;
  if (!text.starts_with(pattern.substr(0, gap))) return false;
  text.remove_prefix(gap);
  for (;;) {
    pattern.remove_prefix(gap + kAny.size());
    gap = pattern.find(kAny);
    if (gap == pattern.npos) return text.ends_with(pattern);
    const std::size_t at = text.find(pattern.substr(0, gap));
    if (at == text.npos) return false;
    text.remove_prefix(at + gap);
  }
}

}  // namespace

TEST(ProtocolExamples, GiveWhatThePageSays) {
  std::vector<Example> examples;
  const std::string script = ScriptOf(TextOf(SourceDir() + "/docs/protocol.md"), &examples);
  EXPECT_GE(examples.size(), kLeastExamples);

  const TempDirectory directory;
  const std::string home = directory / "home";
  Program service(directory / "output", {{"CORVANE_HOME", home}, {"CORVANE_SPEED", "20"}});
  const auto end = std::chrono::steady_clock::now() + kLimit;
  const auto isConnected = [&] {  // and the first round is over
    return TextOf(directory / "output").find("MAIN SLEEP") != std::string::npos &&
           PipePeer(home + "/pipe/TRLSPipe_N").IsConnected();
  };
  while (!isConnected() && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(20ms);

  std::filesystem::create_directory(directory / "place");
  std::ofstream(directory / "script") << script << "printf '\\036'\nkill 0\n";
  const std::string command = "cd " + (directory / "place") + " && CORVANE_HOME=" + home +
                              " timeout -k 1 100 bash " + (directory / "script") + " >" +
                              (directory / "said") + " 2>" + (directory / "complained");
  std::system(command.c_str());
  std::istringstream said(TextOf(directory / "said"));
  std::string output;
  std::getline(said, output, kMark);  // of the shell blocks
  EXPECT_EQ(output, "");
  for (const Example& example : examples) {
    output.clear();
    std::getline(said, output, kMark);
    // The last line of an expectation may leave its end out.
    EXPECT_TRUE(Matches(output, example.expected) ||
                (example.expected.ends_with("...\n") &&
                 Matches(output, example.expected.substr(0, example.expected.size() - 1))))
        << example.command << "\ngives " << output << "\nand not " << example.expected;
  }
  EXPECT_TRUE(service.IsRunning());
  if (HasFailure()) ADD_FAILURE() << TextOf(directory / "complained");
  service.Signal(SIGTERM);
  EXPECT_EQ(service.Wait(kLimit), 0);
}

}  // namespace corvane::test
