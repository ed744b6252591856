// The service program's pipes, from outside: what an author of companion programs finds.

#include <gtest/gtest.h>
#include <openssl/rsa.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "any_host/pipe_peer.h"
#include "any_host/temp_directory.h"
#include "host/client_token_maker.h"
#include "host/program.h"
#include "platform/base64.h"

namespace corvane::test {

namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 60s;

// A companion program of the right file name: asks with a token of its own, and prints the reply.
constexpr char kCompanion[] = R"(
import base64, os, socket, subprocess, sys
home = sys.argv[1]
plain = '{guid},%d,1,x' % os.getpid()
token = subprocess.run(['openssl', 'pkeyutl', '-encrypt', '-pubin', '-inkey',
                        home + '/client_key.pub.pem'],
                       input=plain.encode(), stdout=subprocess.PIPE, check=True).stdout
pipe = socket.socket(socket.AF_UNIX)
pipe.connect(home + '/pipe/TRLSPipe')
request = '{"art":"%s"}' % base64.b64encode(token).decode()
pipe.sendall((request + '\0').encode('utf-16-le'))
reply = b''
while not reply.endswith(b'\0\0\0'):
    block = pipe.recv(65536)
    if not block: break
    reply += block
print(reply.decode('utf-16-le'))
)";

std::u16string WithToken(const std::string& block) {
  const std::string text = R"({"art":")" + platform::ToBase64(block) + R"("})";
  return {text.begin(), text.end()};
}

bool Contains(const std::optional<std::u16string>& text, std::u16string_view part) {
  return text && text->find(part) != text->npos;
}

}  // namespace

class ProgramPipesTest : public testing::Test {
 protected:
  ProgramPipesTest()
      : service(directory / "output", {{"CORVANE_HOME", home}, {"CORVANE_SPEED", "20"}}) {
    const auto end = std::chrono::steady_clock::now() + kLimit;
    while (!PipePeer(events).IsConnected() || !PipePeer(requests).IsConnected() ||
           !std::filesystem::exists(home + "/client_key.pub.pem")) {
      if (std::chrono::steady_clock::now() > end) break;
      std::this_thread::sleep_for(20ms);
    }
  }

  TempDirectory directory;
  const std::string home = directory / "home";
  const std::string requests = home + "/pipe/TRLSPipe";
  const std::string events = home + "/pipe/TRLSPipe_N";
  Program service;
};

TEST_F(ProgramPipesTest, ChecksTokensAndTellsSubscribersOfEvents) {
  PipePeer subscriber(events);
  EXPECT_TRUE(subscriber.Send(uR"({"cmd":"Subscribe"})"));
  EXPECT_TRUE(Contains(subscriber.Receive(), u"\"status\":\"ok\""));

  const ClientTokenMaker maker(home + "/client_key.pub.pem");
  const auto plain = [](int pid) { return "{guid}," + std::to_string(pid) + ",1,x"; };
  PipePeer client(requests);
  const auto code = [&](std::u16string_view request) {
    EXPECT_TRUE(client.Send(request));
    const auto reply = client.Receive().value_or(u"");
    const std::size_t at = reply.find(u"\"code\":");
    return at == reply.npos ? reply : reply.substr(at + 7, reply.find_first_of(u", ", at) - at - 7);
  };
  EXPECT_EQ(code(u"{}"), u"1000");
  EXPECT_EQ(code(WithToken(std::string(256, 'x'))), u"1002");
  EXPECT_EQ(code(WithToken(maker.Encrypt("a,b", RSA_PKCS1_PADDING))), u"1003");
  EXPECT_EQ(code(WithToken(maker.Encrypt(plain(1 << 30), RSA_PKCS1_PADDING))), u"1005");
  // It runs, but it is not at the other end.
  EXPECT_EQ(code(WithToken(maker.Encrypt(plain(getppid()), RSA_PKCS1_PADDING))), u"1005");
  EXPECT_EQ(code(WithToken(maker.Encrypt(plain(getpid()), RSA_PKCS1_PADDING))), u"1006");

  const std::string companion = directory / "corvane-client";
  std::filesystem::copy_file(std::filesystem::canonical("/usr/bin/python3"), companion);
  std::ofstream(directory / "companion.py") << kCompanion;
  const std::string command =
      companion + " " + (directory / "companion.py") + " " + home + " >" + (directory / "said");
  EXPECT_EQ(std::system(command.c_str()), 0);
  std::string said;
  std::getline(std::ifstream(directory / "said"), said);
  EXPECT_NE(said.find("\"code\":5,"), std::string::npos) << said;  // there is no `cmd`

  EXPECT_TRUE(subscriber.Receive().has_value());
  EXPECT_TRUE(service.IsRunning());
  service.Signal(SIGTERM);
  EXPECT_EQ(service.Wait(kLimit), 0) << service.Output();
  EXPECT_TRUE(client.IsAtEnd());
  EXPECT_FALSE(std::filesystem::exists(requests));
  EXPECT_FALSE(std::filesystem::exists(events));
}

// What is left of a run that was killed is in nobody's way.
TEST_F(ProgramPipesTest, StartsOverAfterAKill) {
  service.Signal(SIGKILL);
  service.Wait(kLimit);
  EXPECT_TRUE(std::filesystem::exists(requests));
  EXPECT_FALSE(PipePeer(requests).IsConnected());
  Program next(directory / "next", {{"CORVANE_HOME", home}});
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (!PipePeer(requests).IsConnected() && std::chrono::steady_clock::now() < end)
    std::this_thread::sleep_for(20ms);
  PipePeer client(requests);
  EXPECT_TRUE(client.Send(u"{}"));
  EXPECT_TRUE(Contains(client.Receive(), u"1000"));
}

}  // namespace corvane::test
