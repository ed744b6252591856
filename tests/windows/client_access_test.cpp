// The command line client's way to a service, with a server in the test's own process.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "any_host/pipe_server.h"
#include "any_host/rsa_vectors.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/pipe_talk.h"
#include "corvane_client/windows_service_access.h"
#include "foundation/text.h"
#include "platform/base64.h"
#include "platform/rsa_blobs.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_client_host.h"
#include "platform/windows/windows_crypto.h"
#include "platform/windows/windows_pipe_client.h"

namespace corvane::test {

using namespace platform;
using namespace platform::windows;
using namespace client;

namespace {

// The macro gives the seam's type.
::HKEY Machine() { return static_cast<::HKEY>(HKEY_LOCAL_MACHINE); }

constexpr char kOk[] = "{ \"status\":\"ok\", \"code\":0 }";

std::string Utf16(const std::string& text) {
  const std::u16string wide = ToUtf16(text);
  return std::string(reinterpret_cast<const char*>(wide.c_str()), wide.size() * 2 + 2);
}

std::string Utf8(const std::string& message) {
  std::string text;
  for (std::size_t i = 0; i + 2 < message.size(); i += 2) text += message[i];
  return text;
}

// What a token says, by the private half; empty when it is none.
std::string PlainOf(WindowsCrypto& crypto, const std::string& request) {
  const std::size_t at = request.find("\"art\":\"") + 7;
  const std::string block =
      FromBase64WithHeaders("-----BEGIN X-----" + request.substr(at, request.find('"', at) - at) +
                            "-----END X-----")
          .value_or("");
  BCRYPT_ALG_HANDLE algorithm = nullptr;
  BCRYPT_KEY_HANDLE key = nullptr;
  const std::string blob = ToCapiPrivateBlob(*DecodePrivateKey(*FromBase64WithHeaders(kVectorKey)));
  std::string plain(256, '\0');
  DWORD size = 0;
  crypto.BCryptOpenAlgorithmProvider(&algorithm, u"RSA");
  crypto.BCryptImportKeyPair(algorithm, CAPIPRIVATEBLOB, &key,
                             reinterpret_cast<const BYTE*>(blob.data()),
                             static_cast<DWORD>(blob.size()));
  if (crypto.BCryptDecrypt(key, reinterpret_cast<const BYTE*>(block.data()),
                           static_cast<DWORD>(block.size()), reinterpret_cast<BYTE*>(plain.data()),
                           256, &size, 2) < 0) {
    size = 0;
  }
  crypto.BCryptDestroyKey(key);
  crypto.BCryptCloseAlgorithmProvider(algorithm);
  return plain.substr(0, size);
}

}  // namespace

class ClientAccessTest : public testing::Test, protected PipeKernel {
 protected:
  ClientAccessTest() {
    std::filesystem::create_directories(folder);
    std::ofstream(folder + "/client_key.pub.pem", std::ios::binary) << kVectorPublicKey;
  }
  ~ClientAccessTest() override {
    EXPECT_EQ(pipes.OpenHandles(), 0u);
    ::RegDeleteTreeW(Machine(), L"SOFTWARE\\CorvaneTest");
  }

  CWindowsServiceAccess::Places Places() const {
    return {.root = root.Path(), .pipes = name, .key = "SOFTWARE\\CorvaneTest"};
  }
  static int StatusOf(const std::function<void()>& act) {
    try {
      act();
    } catch (const ClientError& error) {
      text = error.what();
      return error.status;
    }
    return kDone;
  }

  TempDirectory root;
  const std::string folder = root / "OstrelNetworks/Corvane";
  const std::u16string requests = name + u"TRLSPipe";
  const std::u16string events = name + u"TRLSPipe_N";
  WindowsCrypto crypto;
  static inline std::string text;  // of the last error
};

TEST_F(ClientAccessTest, ProvesWhoItIsWithEachRequest) {
  std::vector<std::string> plains;
  PipeServer server(
      *this,
      [&](std::string message) {
        plains.push_back(PlainOf(crypto, Utf8(message)));
        return Utf16(kOk);
      },
      requests.c_str());
  CWindowsServiceAccess service(Places());
  service.CheckIsServed();
  EXPECT_EQ(service.Ask("{\"cmd\":\"One\"}"), kOk);
  EXPECT_EQ(service.Ask("{\"cmd\":\"Two\"}"), kOk);
  ASSERT_EQ(plains.size(), 2u);
  const std::string pid = std::to_string(::GetCurrentProcessId());
  for (const std::string& plain : plains) {
    EXPECT_THAT(plain, testing::MatchesRegex("\\{........-....-....-....-............\\}," + pid +
                                             ",\\d+,corvane-client"));
  }
  EXPECT_LT(plains[0], plains[1]);  // the same session, and a later nonce
  // The server is this program.
  const std::u16string own = ToUtf16(service.ProgramFolder());
  EXPECT_EQ(::GetFileAttributesW(Wide((own + u"\\corvane_host_tests.exe").c_str())) &
                FILE_ATTRIBUTE_DIRECTORY,
            0u);
}

TEST_F(ClientAccessTest, SubscribesAndWaitsForEvents) {
  PipeServer server(
      *this,
      [&](std::string message) {
        return Utf8(message) == "{\"cmd\":\"Subscribe\"}" ? Utf16(kOk) : Utf16("{}");
      },
      events.c_str());
  CWindowsServiceAccess service(Places());
  const auto source = service.Subscribe();
  const ULONGLONG before = ::GetTickCount64();
  EXPECT_EQ(source->Next(100), std::nullopt);
  EXPECT_GE(::GetTickCount64() - before, 80u);
  EXPECT_EQ(source->Next(0), std::nullopt);
}

// A read that was not answered in time goes on, and what comes later is not lost.
TEST_F(ClientAccessTest, LosesNoMessageToATimeOut) {
  const HANDLE pipe = pipes.CreateNamedPipeW(pipePath, 3, 4, 255, 1'000'000, 1'000'000, 0, nullptr);
  std::string reason;
  auto client = WindowsPipeClient::Connect(name, &reason);
  ASSERT_NE(client, nullptr) << reason;
  std::u16string message;
  using Result = WindowsPipeClient::Result;
  EXPECT_EQ(client->Receive(10, &message), Result::kNothing);
  const auto send = [&](const std::u16string& text) {
    ::OVERLAPPED overlapped{};
    ::DWORD bytes = 0;
    ::WriteFile(pipe, text.c_str(), static_cast<::DWORD>(text.size() * 2 + 2), nullptr,
                &overlapped);
    ::GetOverlappedResult(pipe, &overlapped, &bytes, TRUE);
  };
  send(u"late");
  send(u"and later");
  EXPECT_EQ(client->Receive(1000, &message), Result::kMessage);
  EXPECT_EQ(message, u"late");
  EXPECT_EQ(client->Receive(1000, &message), Result::kMessage);
  EXPECT_EQ(message, u"and later");
  send(u"");
  EXPECT_EQ(client->Receive(1000, &message), Result::kMessage);
  EXPECT_EQ(message, u"");
  // One that goes while a read is pending takes it along; a second one finds all instances busy.
  EXPECT_EQ(client->Receive(0, &message), Result::kNothing);
  EXPECT_EQ(WindowsPipeClient::Connect(name + u".none", &reason), nullptr);
  EXPECT_THAT(reason, testing::HasSubstr("(error 2)"));
  EXPECT_TRUE(pipes.DisconnectNamedPipe(pipe));
  EXPECT_EQ(client->Receive(1000, &message), Result::kEnd);
  EXPECT_FALSE(client->Send(u"to nobody"));
  client.reset();
  EXPECT_TRUE(pipes.CloseHandle(pipe));
}

TEST_F(ClientAccessTest, SaysWhatIsMissing) {
  CWindowsServiceAccess service(Places());
  EXPECT_EQ(StatusOf([&] { service.CheckIsServed(); }), kNoService);
  EXPECT_THAT(text, testing::AllOf(testing::HasSubstr("no service runs on this PC"),
                                   testing::HasSubstr("corvane --install")));
  EXPECT_EQ(StatusOf([&] { service.Subscribe(); }), kNoService);
  PipeServer server(
      *this, [](auto) { return Utf16(kOk); }, requests.c_str());
  EXPECT_EQ(StatusOf([&] { service.Ask("no JSON"); }), kBadCall);
  std::filesystem::remove(folder + "/client_key.pub.pem");
  EXPECT_EQ(StatusOf([&] { service.Ask("{}"); }), kNoService);
  EXPECT_THAT(text, testing::HasSubstr("client_key.pub.pem"));
  // What has a proof of its own needs no key.
  EXPECT_EQ(WithToken("{\"art\":\"own\"}", "another"), "{\"art\":\"own\"}");
  EXPECT_EQ(WithToken(" { \"cmd\":1}", "proof"), "{\"art\":\"proof\", \"cmd\":1}");
}

TEST_F(ClientAccessTest, ReadsTheServicesValues) {
  CWindowsServiceAccess service(Places());
  EXPECT_TRUE(service.Settings({}).empty());
  const auto set = [](const wchar_t* key, const wchar_t* value, ::DWORD type, const void* data,
                      ::DWORD size) {
    ::HKEY opened = nullptr;
    ::RegCreateKeyExW(Machine(), key, 0, nullptr, 0, KEY_SET_VALUE | KEY_WOW64_64KEY, nullptr,
                      &opened, nullptr);
    ::RegSetValueExW(opened, value, 0, type, static_cast<const ::BYTE*>(data), size);
    ::RegCloseKey(opened);
  };
  const ::DWORD number = 4'000'000'000;
  const ULONGLONG large = 5'000'000'000;
  const std::u16string longText(100'000, u'\u00e4');
  set(L"SOFTWARE\\CorvaneTest", L"Number", REG_DWORD, &number, 4);
  set(L"SOFTWARE\\CorvaneTest", L"Large", REG_QWORD, &large, 8);
  set(L"SOFTWARE\\CorvaneTest", L"Bytes", REG_BINARY, &large, 8);
  set(L"SOFTWARE\\CorvaneTest", L"Short", REG_DWORD, &number, 3);
  set(L"SOFTWARE\\CorvaneTest", L"Unended", REG_SZ, u"ab", 4);
  set(L"SOFTWARE\\CorvaneTest", L"Long", REG_SZ, longText.c_str(), 200'002);
  set(L"SOFTWARE\\CorvaneTest\\{guid}", L"Name", REG_SZ, u"W-LAN \u00e4", 16);
  const Values values = service.Settings({});
  EXPECT_EQ(values.at("Number"), "4000000000");
  EXPECT_EQ(values.at("Large"), "5000000000");
  EXPECT_EQ(values.at("Unended"), "ab");
  EXPECT_EQ(values.at("Long").size(), 200'000u);
  EXPECT_EQ(values.size(), 4u);
  EXPECT_EQ(service.Settings("{guid}"), (Values{{"Name", "W-LAN \xc3\xa4"}}));
}

TEST_F(ClientAccessTest, EndsItsWaitsOnCtrlC) {
  PipeServer server(
      *this, [](auto) { return Utf16(kOk); }, events.c_str());
  CWindowsServiceAccess service(Places());
  CatchInterrupts();
  EXPECT_FALSE(service.IsInterrupted());
  const auto source = service.Subscribe();
  const HANDLE thread = threads.CreateThread(
      [](void*) -> DWORD {
        ::Sleep(100);
        Interrupt();
        return 0;
      },
      nullptr, "ctrl-c", nullptr);
  const ULONGLONG before = ::GetTickCount64();
  EXPECT_EQ(source->Next(10'000), std::nullopt);
  service.Sleep(10'000);
  EXPECT_LT(::GetTickCount64() - before, 5'000u);
  EXPECT_TRUE(service.IsInterrupted());
  threads.WaitForSingleObject(thread, kLongMs);
  threads.CloseHandle(thread);
  ::ResetEvent(InterruptEvent());
}

TEST_F(ClientAccessTest, RunsTheProgramsCommands) {
  PipeServer server(
      *this, [](auto) { return Utf16(kOk); }, requests.c_str());
  std::string out, errors;
  const auto writer = [](std::string& to) {
    return [&to](std::string_view piece) { to += piece; };
  };
  const auto run = [&](std::vector<std::string> words) {
    return RunClient(words, {.write = writer(out)}, {.write = writer(errors)},
                     [&](const std::string& home) {
                       auto places = Places();
                       if (!home.empty()) places.root = home;
                       return std::make_unique<CWindowsServiceAccess>(places);
                     });
  };
  EXPECT_EQ(run({"raw", "{\"cmd\":\"Any\"}"}), kDone);
  EXPECT_EQ(out, std::string(kOk) + "\n");
  EXPECT_EQ(run({"--home", root / "elsewhere", "raw", "{}"}), kNoService);
  EXPECT_THAT(errors, testing::HasSubstr("elsewhere\\OstrelNetworks\\Corvane"));
  EXPECT_EQ(run({"--help"}), kDone);
  EXPECT_THAT(out, testing::HasSubstr("%ProgramData%"));
}

}  // namespace corvane::test
