#include "corvane_client/linux_service_access.h"

#include <algorithm>

#include "corvane_client/client_error.h"
#include "corvane_client/pipe_talk.h"
#include "corvane_client/service_reply.h"
#include "foundation/text.h"
#include "platform/base64.h"
#include "platform/linux/client_host.h"
#include "platform/linux/host_error.h"
#include "platform/linux/pipe_client.h"
#include "platform/linux/public_key.h"
#include "platform/linux/registry_reader.h"

namespace corvane::client {

using namespace platform::linux_host;

namespace {

constexpr char kHomeKey[] = "SOFTWARE\\OstrelNetworks\\Corvane";

std::unique_ptr<PipeClient> Connect(const std::string& home, const char* pipe) {
  std::string reason;
  auto client = PipeClient::Connect(home + "/pipe/" + pipe, &reason);
  if (!client) throw ClientError(kNoService, HowToStart(home, reason));
  return client;
}

// Until Ctrl-C.
std::optional<std::string> ReceiveWithin(PipeClient& pipe, int limitMs) {
  return ReceiveReply(pipe, limitMs, &platform::linux_host::IsInterrupted);
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

std::string HowToStart(const std::string& home, const std::string& reason) {
  return NoService(home, reason,
                   "Start one with ./run or corvane, or name its home directory with --home or "
                   "CORVANE_HOME.");
}

const char* const kHomeHelp =
    "the service's home directory (default: CORVANE_HOME, else\n"
    "               $XDG_STATE_HOME/corvane, else ~/.local/state/corvane)";

CLinuxServiceAccess::CLinuxServiceAccess(std::string home)
    : m_Home(std::move(home)), m_Session(RandomGuid()) {}
CLinuxServiceAccess::~CLinuxServiceAccess() = default;

// A nonce from the clock is above those of earlier calls; equal times count up.
std::string CLinuxServiceAccess::Token() {
  m_LastNonce = std::max(MicrosecondsSince1970(), m_LastNonce + 1);
  const std::string plain = TokenText(m_Session, OwnProcessId(), m_LastNonce);
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
