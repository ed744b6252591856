#include "corvane_client/windows_service_access.h"

#include <algorithm>
#include <utility>

#include "corvane_client/client_error.h"
#include "corvane_client/pipe_talk.h"
#include "corvane_client/service_reply.h"
#include "foundation/text.h"
#include "platform/base64.h"
#include "platform/windows/windows_client_host.h"
#include "platform/windows/windows_error.h"
#include "platform/windows/windows_home.h"
#include "platform/windows/windows_pipe_client.h"
#include "platform/windows/windows_public_key.h"
#include "platform/windows/windows_registry_reader.h"

namespace corvane::client {

using namespace platform::windows;

const char* const kHomeHelp =
    "the folder in the place of %ProgramData% below which the service\n"
    "               keeps its files (default: CORVANE_HOME, else %ProgramData%)";

namespace {

std::unique_ptr<WindowsPipeClient> Connect(const std::u16string& pipes, const char16_t* name) {
  std::string reason;
  auto client = WindowsPipeClient::Connect(pipes + name, &reason);
  if (client) return client;
  throw ClientError(kNoService,
                    NoService("this PC", reason,
                              "Start one with corvane.exe, or have Windows start it: corvane "
                              "--install as an administrator."));
}

// Until Ctrl-C.
std::optional<std::string> ReceiveWithin(WindowsPipeClient& pipe, int limitMs) {
  return ReceiveReply(pipe, limitMs, &platform::windows::IsInterrupted);
}

class CSubscription : public IEventSource {
 public:
  explicit CSubscription(const std::u16string& pipes) : m_pPipe(Connect(pipes, u"TRLSPipe_N")) {
    const bool sent = m_pPipe->Send(u"{\"cmd\":\"Subscribe\"}");
    const auto reply = sent ? ReceiveWithin(*m_pPipe, kReplyLimitMs) : std::nullopt;
    if (!reply) throw ClientError(kNoService, "the service does not answer a subscription");
    CheckReply(*reply);
  }
  std::optional<std::string> Next(int ms) override { return ReceiveWithin(*m_pPipe, ms); }

 private:
  std::unique_ptr<WindowsPipeClient> m_pPipe;
};

}  // namespace

CWindowsServiceAccess::CWindowsServiceAccess(Places places)
    : m_Places(std::move(places)), m_Session(RandomGuid()) {}
CWindowsServiceAccess::~CWindowsServiceAccess() = default;

// A nonce from the clock is above those of earlier calls; equal times count up.
std::string CWindowsServiceAccess::Token() {
  m_LastNonce = std::max(MicrosecondsSince1970(), m_LastNonce + 1);
  const std::string plain = TokenText(m_Session, OwnProcessId(), m_LastNonce);
  const std::u16string home = WindowsHome::Locate(m_Places.root);
  try {
    return platform::ToBase64(EncryptWithPublicKey(home + u"\\client_key.pub.pem", plain));
  } catch (const WindowsError& error) {
    throw ClientError(kNoService, error.what());
  }
}

std::string CWindowsServiceAccess::Ask(const std::string& request) {
  CheckIsServed();
  if (!m_pPipe->Send(Utf8ToWide(WithToken(request, Token())))) {
    if (IsInterrupted()) throw ClientError(kRefused, "interrupted");
    throw ClientError(kNoService, "the service has closed the connection");
  }
  const auto reply = ReceiveWithin(*m_pPipe, kReplyLimitMs);
  if (!reply && IsInterrupted()) throw ClientError(kRefused, "interrupted");
  if (!reply) throw ClientError(kNoService, "the service does not answer");
  return *reply;
}

std::unique_ptr<IEventSource> CWindowsServiceAccess::Subscribe() {
  return std::make_unique<CSubscription>(m_Places.pipes);
}

Values CWindowsServiceAccess::Settings(const std::string& adapterGuid) {
  try {
    return ReadRegistryValues(adapterGuid.empty() ? m_Places.key
                                                  : m_Places.key + "\\" + adapterGuid);
  } catch (const WindowsError& error) {
    throw ClientError(kNoService, error.what());
  }
}

void CWindowsServiceAccess::CheckIsServed() {
  if (!m_pPipe) m_pPipe = Connect(m_Places.pipes, u"TRLSPipe");
}

std::string CWindowsServiceAccess::ProgramFolder() {
  CheckIsServed();
  const auto folder = m_pPipe->ServerFolder();
  if (!folder)
    throw ClientError(kRefused, "this account may not see where the service's program is");
  return *folder;
}

std::string CWindowsServiceAccess::DataFolder() {
  return WideToUtf8(WindowsHome::Locate(m_Places.root));
}

void CWindowsServiceAccess::Sleep(int ms) { SleepMs(ms); }
bool CWindowsServiceAccess::IsInterrupted() { return platform::windows::IsInterrupted(); }

}  // namespace corvane::client
