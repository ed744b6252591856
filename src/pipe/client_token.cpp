#include "pipe/client_token.h"

#include <algorithm>
#include <array>
#include <new>
#include <optional>
#include <string>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "launch/session_launch.h"
#include "pipe/api_session_security_singleton.h"
#include "pipe/token_fields.h"
#include "platform/platform.h"
#include "platform/wipe.h"
#include "store/base64_text.h"

namespace corvane {

using namespace platform;

namespace {

constexpr std::array<WStringView, 7> kClients = {
    u"PalisadeOptimizer.exe", u"PassphraseDesk.exe",         u"NudgeDialog.exe",
    u"Corvane_ConfigApp.exe", u"Trellis_ConfigApp_orig.exe", u"corvane-client",
    u"corvane-client.exe"};

template <typename... Args>
std::uint32_t Refuse(std::uint32_t code, WStringView words, const Args&... args) {
  WString format = u"CNamedPipeListenerJson::HandleJsonCommand:[___ART___] ";
  format += words;
  LOG_INFO(format, args...);
  return code;
}

// The executable of a running process. The first entry of the list is the idle process.
std::optional<WString> WalkProcesses(DWORD pid) {
  auto& session = Os().session;
  const CSessionHandle snapshot(session.CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, pid));
  PROCESSENTRY32W entry;
  if (!snapshot || !session.Process32FirstW(snapshot.Get(), &entry)) return std::nullopt;
  while (session.Process32NextW(snapshot.Get(), &entry)) {
    if (entry.th32ProcessID != pid) continue;
    const WStringView name(entry.szExeFile, std::size(entry.szExeFile));
    return WString(name.substr(0, name.find(u'\0')));
  }
  return std::nullopt;
}

std::optional<WString> FindExecutable(DWORD pid) {
  return Guarded("CNamedPipeListenerJson", "FindExecutable", std::optional<WString>(),
                 [pid] { return WalkProcesses(pid); });
}

// Where the platform knows who is at the other end, no client may go by another's id.
bool IsAtTheOtherEnd(HANDLE pipe, DWORD pid) {
  ULONG actual = 0;
  return !Os().pipes.GetNamedPipeClientProcessId(pipe, &actual) || actual == pid;
}

// The plain text of the token; empty when it can't be read. The private key is the dear part of a
// request, and clients may use a token again: so the last one is remembered.
const std::string& Decrypt(const std::string& cipher, PipeClientState& client) {
  if (client.cipher == cipher) return client.plain;
  client.cipher.clear();
  Wipe(&client.plain);
  auto block = CGenericMalloc::CreateObject();
  block->Initialize(cipher.data(), static_cast<std::uint32_t>(cipher.size()), 1);
  if (const auto plain = CAPISessionSecuritySingleton::Instance().DecryptArt(*block)) {
    const WipeAtEnd wipe(plain->GetData(), plain->GetSize());
    client.plain.assign(reinterpret_cast<const char*>(plain->GetData()), plain->GetSize());
    client.cipher = cipher;
  }
  return client.plain;
}

std::uint32_t CheckSession(const TokenFields& token, const WString& exe) {
  auto& security = CAPISessionSecuritySingleton::Instance();
  switch (security.CheckSession(token.guid, token.pid, token.nonce, token.x, exe)) {
    case -2: {
      std::uint64_t nonce = 0;
      security.GetSessionNonce(token.guid, &nonce);
      return Refuse(kTokenNonceBack, u"***** NONCE NEGATIVE! ***** PREVIOUS:[%llu]", nonce);
    }
    case -3:
    case -4: {
      std::uint32_t pid = 0;
      WString owner;
      security.GetSessionOwner(token.guid, &pid, &owner);
      return Refuse(kTokenOtherProcess, u"***** PID/EXE CHANGED! ***** PREVIOUS:[%lu][%s]", pid,
                    owner);
    }
    default:
      return kTokenGood;
  }
}

std::uint32_t CheckFields(const std::string& plain, HANDLE pipe) {
  std::optional<TokenFields> token;
  try {
    token = ParseToken(plain);
  } catch (const std::bad_alloc&) {
    return Refuse(kTokenNoMemory, u"***** CSV memory error *****");
  }
  if (!token) return Refuse(kTokenFieldCount, u"***** Field count not correct *****");
  const auto exe = FindExecutable(token->pid);
  if (!exe || !IsAtTheOtherEnd(pipe, token->pid))
    return Refuse(kTokenBadPid, u"***** BAD PID GIVEN *****");
  if (!IsClientExecutable(*exe))
    return Refuse(kTokenBadExecutable, u"***** UNSUPPORTED EXE NAME ***** [%s]", *exe);
  return CheckSession(*token, *exe);
}

std::uint32_t Check(const CClientRequest& request, PipeInstanceCtx& client) {
  std::string_view art;
  if (!request.GetBytes("art", &art)) return Refuse(kTokenMissing, u"***** MISSING *****");
  if (art.empty()) return Refuse(kTokenEmpty, u"***** B64 Length is 0 *****");
  const std::string cipher = Base64Decode(art);
  if (cipher.empty()) return Refuse(kTokenEmpty, u"***** Encrypted Length is 0 *****");
  const std::string& plain = Decrypt(cipher, *client.state);
  if (plain.empty()) return Refuse(kTokenUnreadable, u"***** Decrypted Length is 0 *****");
  return CheckFields(plain, client.hPipeInst);
}

}  // namespace

bool IsClientExecutable(WStringView name) {
  return std::find(kClients.begin(), kClients.end(), name) != kClients.end();
}

std::uint32_t CheckClientToken(const CClientRequest& request, PipeInstanceCtx& client) {
  return Contained([&] { return Check(request, client); },
                   [](const Failure& failure) {
                     return Refuse(kTokenException, u"%S: %S", failure.Kind(), failure.what);
                   });
}

}  // namespace corvane
