#include "corvane_client/linux_service_access.h"

#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

#include "corvane_client/client_error.h"
#include "corvane_client/service_reply.h"
#include "foundation/text.h"
#include "platform/base64.h"
#include "platform/linux/client_host.h"
#include "platform/linux/host_error.h"
#include "platform/linux/pipe_client.h"
#include "platform/linux/public_key.h"
#include "platform/linux/registry_reader.h"
#include "store/json_text.h"

namespace corvane::client {

using namespace platform::linux_host;

namespace {

constexpr char kHomeKey[] = "SOFTWARE\\OstrelNetworks\\Corvane";
// A diagnosis takes seconds, and other clients are served before it.
constexpr int kReplyLimitMs = 60'000;
constexpr int kReplySliceMs = 500;

std::unique_ptr<PipeClient> Connect(const std::string& home, const char* pipe) {
  std::string reason;
  auto client = PipeClient::Connect(home + "/pipe/" + pipe, &reason);
  if (!client) throw ClientError(kNoService, HowToStart(home, reason));
  return client;
}

// A message within `limitMs`; nothing on Ctrl-C or when the time is over.
std::optional<std::string> ReceiveWithin(PipeClient& pipe, int limitMs) {
  std::u16string message;
  for (int waited = 0;; waited += kReplySliceMs) {
    const int slice = std::min(kReplySliceMs, limitMs - waited);
    if (slice <= 0 || platform::linux_host::IsInterrupted()) return std::nullopt;
    switch (pipe.Receive(slice, &message)) {
      case PipeClient::Result::kMessage:
        return WideToUtf8(message);
      case PipeClient::Result::kEnd:
        throw ClientError(kNoService, "the service has closed the connection");
      case PipeClient::Result::kNothing:
        break;
    }
  }
}

class CSubscription : public IEventSource {
 public:
  explicit CSubscription(const std::string& home) : m_pPipe(Connect(home, "TRLSPipe_N")) {
    const bool sent = m_pPipe->Send(u"{\"cmd\":\"Subscribe\"}");
    const auto reply = sent ? ReceiveWithin(*m_pPipe, kReplyLimitMs) : std::nullopt;
    if (!reply) throw ClientError(kNoService, "the service does not answer a subscription");
    CheckReply(*reply);
  }
  std::optional<std::string> Next(int ms) override { return ReceiveWithin(*m_pPipe, ms); }

 private:
  std::unique_ptr<PipeClient> m_pPipe;
};

}  // namespace

std::string WithToken(const std::string& request, const std::string& token) {
  rapidjson::Document document;
  ParseJson(request, &document);
  if (document.HasParseError()) {
    throw ClientError(kBadCall, std::string("the request is no JSON: ") +
                                    rapidjson::GetParseError_En(document.GetParseError()));
  }
  if (!document.IsObject()) throw ClientError(kBadCall, "the request is no JSON object");
  if (document.HasMember("art")) return request;
  const std::size_t brace = request.find('{');
  const char* comma = document.ObjectEmpty() ? "" : ",";
  return "{\"art\":\"" + token + "\"" + comma + request.substr(brace + 1);
}

std::string HowToStart(const std::string& home, const std::string& reason) {
  return "no service runs on " + home + " (" + reason +
         ")\nStart one with ./run or corvane, or name its home directory with --home or "
         "CORVANE_HOME.";
}

CLinuxServiceAccess::CLinuxServiceAccess(std::string home)
    : m_Home(std::move(home)), m_Session(RandomGuid()) {}
CLinuxServiceAccess::~CLinuxServiceAccess() = default;

// A nonce from the clock is above those of earlier calls; equal times count up.
std::string CLinuxServiceAccess::Token() {
  m_LastNonce = std::max(MicrosecondsSince1970(), m_LastNonce + 1);
  const std::string plain = m_Session + "," + std::to_string(OwnProcessId()) + "," +
                            std::to_string(m_LastNonce) + ",corvane-client";
  try {
    return platform::ToBase64(EncryptWithPublicKey(m_Home + "/client_key.pub.pem", plain));
  } catch (const HostError& error) {
    throw ClientError(kNoService, error.what());
  }
}

std::string CLinuxServiceAccess::Ask(const std::string& request) {
  if (!m_pPipe) m_pPipe = Connect(m_Home, "TRLSPipe");
  if (!m_pPipe->Send(Utf8ToWide(WithToken(request, Token())))) {
    throw ClientError(kNoService, "the service has closed the connection");
  }
  const auto reply = ReceiveWithin(*m_pPipe, kReplyLimitMs);
  if (!reply && IsInterrupted()) throw ClientError(kRefused, "interrupted");
  if (!reply) throw ClientError(kNoService, "the service does not answer");
  return *reply;
}

std::unique_ptr<IEventSource> CLinuxServiceAccess::Subscribe() {
  return std::make_unique<CSubscription>(m_Home);
}

Values CLinuxServiceAccess::Settings(const std::string& adapterGuid) {
  try {
    const RegistryReader registry(m_Home + "/registry.db");
    return registry.Values(adapterGuid.empty() ? kHomeKey : kHomeKey + ("\\" + adapterGuid));
  } catch (const HostError& error) {
    throw ClientError(kNoService, error.what());
  }
}

void CLinuxServiceAccess::CheckIsServed() {
  if (!m_pPipe) m_pPipe = Connect(m_Home, "TRLSPipe");
}

std::string CLinuxServiceAccess::ProgramFolder() {
  CheckIsServed();
  const auto folder = ProgramFolderOf(m_pPipe->ServerProcess());
  if (!folder)
    throw ClientError(kRefused, "this account may not see where the service's program is");
  return *folder;
}

void CLinuxServiceAccess::Sleep(int ms) { SleepMs(ms); }
bool CLinuxServiceAccess::IsInterrupted() { return platform::linux_host::IsInterrupted(); }

}  // namespace corvane::client
