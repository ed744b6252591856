#pragma once
// The request pipe's answers, asked without a pipe: two adapters by hand, a client whose process
// runs, and tokens of its own.

#include <map>
#include <string>

#include "foundation/log_lines.h"
#include "pipe/named_pipe_listener_json.h"
#include "pipe/plain_crypto.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_console.h"
#include "platform/sim/kernel/sim_files.h"
#include "platform/sim/kernel/sim_session.h"
#include "policy/policy_fixture.h"
#include "store/base64_text.h"

namespace corvane::test {

class CommandTest : public PolicyTest {
 protected:
  explicit CommandTest(int adapters = 2) : PolicyTest(adapters) {}

  void SetUp() override {
    PolicyTest::SetUp();
    crypto = &Install<PlainCrypto>();
    pid = kernel.Session().StartProcess(u"Corvane_ConfigApp.exe");
    pipe.CreateObject();
    guid = WideToUtf8(config->GetGuidText());
    config->CloseNoDelay();
    if (adapters.size() > 1) adapters[1]->Config()->CloseNoDelay();
  }
  void TearDown() override {
    client.reset();
    pipe.reset();
    PolicyTest::TearDown();
  }

  std::string Token(const std::string& plain) const { return Base64Encode(plain); }
  std::string Token() const { return Token("session," + std::to_string(pid) + ",1,x"); }

  // The reply to a text as it comes.
  std::string Send(const std::string& text) {
    sent = text;
    return WideToUtf8(pipe->RespondToPipeMessage(Utf8ToWide(text), *client));
  }
  // The reply to a request of these members, with a good token.
  std::string Ask(const std::string& members) {
    return Send("{\"art\":\"" + Token() + "\"," + members + "}");
  }
  std::string AskAdapter(const std::string& members) {
    return Ask("\"guid\":\"" + guid + "\"," + members);
  }
  // Of a reply, which quotes what it was sent and so need not be JSON itself.
  static std::uint32_t CodeOf(const std::string& reply) {
    const std::size_t at = reply.find("\"code\":");
    return at == std::string::npos ? 99999
                                   : static_cast<std::uint32_t>(std::stoul(reply.substr(at + 7)));
  }
  std::uint32_t Code(const std::string& members) { return CodeOf(Ask(members)); }
  std::uint32_t AdapterCode(const std::string& members) { return CodeOf(AskAdapter(members)); }
  // Whether a reply is the echo of what was sent last.
  testing::AssertionResult IsEcho(const std::string& reply) const {
    if (reply == "{ \"status\":\"ok\", \"code\":0, \"request\":" + sent + " }")
      return testing::AssertionSuccess();
    return testing::AssertionFailure() << reply;
  }

  // Milliseconds that an adapter's rounds run without delay; 0 for none.
  std::uint64_t WindowMs(std::size_t index = 0) {
    const auto of = adapters[index]->Config();
    return of->m_no_delay ? static_cast<std::uint64_t>(of->GetNoDelayRemainingSecs() * 1000.0) : 0;
  }
  // Whether an adapter's worker has been woken since the last call.
  bool WasWoken(std::size_t index = 0) {
    return adapters[index]->Config()->WaitMainLoopSemaphore(1);
  }
  void CloseWindows() {
    for (const auto& one : adapters) one->Config()->CloseNoDelay();
  }
  std::uint32_t Home(const char16_t* name) {
    std::uint32_t number = 0xFFFFFFFF;
    Global().GetRegistry()->GetRegistryDWORDValue(name, &number);
    return number;
  }
  void FailWrites(bool on) {
    kernel.Faults().Clear();
    if (on) kernel.Faults().FailAlways("RegSetValueExW", platform::ERROR_ACCESS_DENIED);
  }
  // In the log since ForgetLog.
  bool HasLog(std::string_view text) {
    std::string log = kernel.Console().Text();
    if (log.starts_with(m_Forgotten)) log.erase(0, m_Forgotten.size());
    return log.find(text) != std::string::npos;
  }
  void ForgetLog() { m_Forgotten = kernel.Console().Text(); }

  PlainCrypto* crypto = nullptr;
  platform::DWORD pid = 0;
  std::string guid;  // of the first adapter
  std::string sent;
  std::unique_ptr<PipeInstanceCtx> client = std::make_unique<PipeInstanceCtx>();
  CSmartPointer<CNamedPipeListenerJson> pipe;

 private:
  std::string m_Forgotten;
};

}  // namespace corvane::test
