#include "pipe/api_session_security_singleton.h"

#include <string>
#include <utility>

#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/platform.h"
#include "platform/thread_api.h"
#include "platform/wipe.h"

namespace corvane {

using namespace platform;

namespace {

constexpr char kClass[] = "CAPISessionSecuritySingleton";
constexpr std::uint64_t kSessionLog = DBG(5);
constexpr std::size_t kSessionsKept = 100;     // after a nonce update
constexpr std::size_t kSessionsAtMost = 1000;  // whatever the clients do
constexpr std::uint32_t kTerminator = 2;       // bytes behind a plain text

// The key's DER bytes from base64 with header lines.
bool ToBinary(const std::string& text, std::vector<BYTE>* der) {
  DWORD size = 0;
  auto& crypto = Os().crypto;
  if (!crypto.CryptStringToBinaryA(text.c_str(), 0, CRYPT_STRING_BASE64HEADER, nullptr, &size))
    return false;
  der->resize(size);
  if (!crypto.CryptStringToBinaryA(text.c_str(), 0, CRYPT_STRING_BASE64HEADER, der->data(), &size))
    return false;
  der->resize(size);
  return true;
}

BOOL Decode(const std::vector<BYTE>& der, BYTE* blob, DWORD* size) {
  return Os().crypto.CryptDecodeObjectEx(X509_ASN_ENCODING | PKCS_7_ASN_ENCODING,
                                         PKCS_RSA_PRIVATE_KEY, der.data(),
                                         static_cast<DWORD>(der.size()), 0, blob, size);
}

CSmartPointer<CGenericMalloc> Decrypt(BCRYPT_KEY_HANDLE key, const CGenericMalloc& cipher) {
  auto& crypto = Os().crypto;
  DWORD size = 0;
  if (crypto.BCryptDecrypt(key, cipher.GetData(), cipher.GetSize(), nullptr, 0, &size,
                           BCRYPT_PAD_PKCS1) < 0) {
    return nullptr;
  }
  std::vector<BYTE> buffer(size + kTerminator);
  const WipeAtEnd wipe(buffer.data(), buffer.size());
  DWORD length = 0;
  if (crypto.BCryptDecrypt(key, cipher.GetData(), cipher.GetSize(), buffer.data(), size, &length,
                           BCRYPT_PAD_PKCS1) < 0 ||
      length == 0 || length > size) {
    return nullptr;
  }
  auto plain = CGenericMalloc::CreateObject();
  plain->Initialize(buffer.data(), length, 0);
  return plain;
}

}  // namespace

CAPISessionSecuritySingleton::CAPISessionSecuritySingleton() {
  Guarded(kClass, "PrepDec", false, [this] {
    PrepDec();
    return true;
  });
}

CAPISessionSecuritySingleton::~CAPISessionSecuritySingleton() {
  GiveBack(kClass, "BCryptDestroyKey", [this] {
    if (m_hKey) Os().crypto.BCryptDestroyKey(m_hKey);
  });
  GiveBack(kClass, "BCryptCloseAlgorithmProvider", [this] {
    if (m_hAlgorithm) Os().crypto.BCryptCloseAlgorithmProvider(m_hAlgorithm);
  });
}

void CAPISessionSecuritySingleton::PrepDec() {
  std::string text;
  if (const DWORD code = Os().crypto.ReadClientKey(&text); code != ERROR_SUCCESS) {
    LOG_ERROR(u"CAPISessionSecuritySingleton::PrepDec: Failed DCPK. Error0x%08lx\n", code);
    return;
  }
  std::vector<BYTE> der;
  if (!ToBinary(text, &der)) {
    LOG_ERROR(
        u"CAPISessionSecuritySingleton::PrepDec: Failed to convert BASE64 private key. Error "
        u"0x%08lx\n",
        Os().threads.GetLastError());
    return;
  }
  DWORD size = 0;
  if (!Decode(der, nullptr, &size)) {
    LOG_ERROR(
        u"CAPISessionSecuritySingleton::PrepDec: Failed to initial-parse ASN binary. Error "
        u"0x%08lx\n",
        Os().threads.GetLastError());
    return;
  }
  std::vector<BYTE> blob(size);
  if (!Decode(der, blob.data(), &size)) {
    LOG_ERROR(u"CAPISessionSecuritySingleton::PrepDec: Failed to parse ASN binary. Error 0x%08lx\n",
              Os().threads.GetLastError());
    return;
  }
  blob.resize(size);
  ImportKey(blob);
}

bool CAPISessionSecuritySingleton::ImportKey(const std::vector<BYTE>& blob) {
  auto& crypto = Os().crypto;
  NTSTATUS status = crypto.BCryptOpenAlgorithmProvider(&m_hAlgorithm, BCRYPT_RSA_ALGORITHM);
  if (status < 0) {
    m_hAlgorithm = nullptr;
    LOG_ERROR(
        u"CAPISessionSecuritySingleton::PrepDec: BCryptOpenAlgorithmProvider Failed. Error "
        u"0x%08lx\n",
        status);
    return false;
  }
  status = crypto.BCryptImportKeyPair(m_hAlgorithm, CAPIPRIVATEBLOB, &m_hKey, blob.data(),
                                      static_cast<DWORD>(blob.size()));
  if (status < 0) {
    m_hKey = nullptr;
    LOG_ERROR(u"CAPISessionSecuritySingleton::PrepDec: BCryptImportKeyPair Failed. Error 0x%08lx\n",
              status);
    return false;
  }
  return true;
}

CSmartPointer<CGenericMalloc> CAPISessionSecuritySingleton::DecryptArt(
    const CGenericMalloc& cipher) {
  const CCritSecLock lock(m_Lock);
  if (!m_hKey) return nullptr;
  try {
    return Guarded(kClass, "DecryptArt", CSmartPointer<CGenericMalloc>(),
                   [&] { return Decrypt(m_hKey, cipher); });
  } catch (const Exception& e) {
    LOG_ERROR(u"CAPISessionSecuritySingleton::DecryptArt: Initial-BCryptDecrypt Exception: %S",
              e.what());
  } catch (const std::exception& e) {
    LOG_ERROR(u"CAPISessionSecuritySingleton::DecryptArt Initial-BCryptDecrypt std:exception: %S",
              e.what());
  }
  return nullptr;
}

int CAPISessionSecuritySingleton::CheckSession(const WString& guid, std::uint32_t pid,
                                               std::uint64_t nonce, const WString& x,
                                               const WString& exe) {
  const CCritSecLock lock(m_Lock);
  const std::uint64_t now = Os().clock.GetTickCount64();
  const auto at = m_Sessions.find(guid);
  if (at == m_Sessions.end()) {
    AddSession({guid, pid, exe, nonce, x, m_NextSessionNumber++, now, now});
    return 0;
  }
  ApiSessionRecord& known = at->second;
  if (known.pid != pid) return -3;
  if (known.exe != exe) return -4;
  if (nonce < known.nonce) return -2;
  if (nonce == known.nonce) return -1;
  known.nonce = nonce;
  known.x = x;
  known.lastSeen = now;
  Evict();
  return 0;
}

void CAPISessionSecuritySingleton::AddSession(ApiSessionRecord record) {
  while (m_Sessions.size() >= kSessionsAtMost) RemoveOldest();
  LOG_DEBUG(kSessionLog,
            u"CAPISessionSecuritySingleton::CheckSession: session %lu: [%s] pid %lu [%s] x[%s]",
            record.number, record.guid, record.pid, record.exe, record.x);
  m_SessionOrder.push_back(record.guid);
  m_Sessions.emplace(record.guid, std::move(record));
}

void CAPISessionSecuritySingleton::Evict() {
  while (m_Sessions.size() > kSessionsKept) RemoveOldest();
}

void CAPISessionSecuritySingleton::RemoveOldest() {
  LOG_DEBUG(kSessionLog, u"CAPISessionSecuritySingleton: session [%s] goes, %lu before it",
            m_SessionOrder.front(), m_EvictedSessions - 1);
  m_Sessions.erase(m_SessionOrder.front());
  m_SessionOrder.pop_front();
  ++m_EvictedSessions;
}

bool CAPISessionSecuritySingleton::GetSessionOwner(const WString& guid, std::uint32_t* pid,
                                                   WString* exe) {
  const CCritSecLock lock(m_Lock);
  const auto at = m_Sessions.find(guid);
  if (at == m_Sessions.end()) return false;
  *pid = at->second.pid;
  *exe = at->second.exe;
  return true;
}

bool CAPISessionSecuritySingleton::GetSessionNonce(const WString& guid, std::uint64_t* nonce) {
  const CCritSecLock lock(m_Lock);
  const auto at = m_Sessions.find(guid);
  if (at == m_Sessions.end()) return false;
  *nonce = at->second.nonce;
  return true;
}

std::size_t CAPISessionSecuritySingleton::GetSessionCount() {
  const CCritSecLock lock(m_Lock);
  return m_Sessions.size();
}

}  // namespace corvane
