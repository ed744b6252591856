#pragma once
#include <cstdint>
#include <list>
#include <map>
#include <vector>

#include "foundation/crit_sec.h"
#include "foundation/generic_malloc.h"
#include "foundation/singleton.h"
#include "foundation/text.h"
#include "platform/crypto_api.h"

namespace corvane {

// A client's session, as its tokens have told of it.
struct ApiSessionRecord {
  WString guid;
  std::uint32_t pid = 0;    // of the first token
  WString exe;              // file name of that process
  std::uint64_t nonce = 0;  // the highest one
  WString x;                // of the last token that was taken over
  std::uint32_t number = 0;
  std::uint64_t firstSeen = 0;  // ticks
  std::uint64_t lastSeen = 0;   // ticks, of the last token that was taken over
};

// The key by which clients prove themselves, and the table of their sessions. Safe for use from
// every thread.
class CAPISessionSecuritySingleton {
 public:
  static CAPISessionSecuritySingleton& Instance() {
    return Singleton<CAPISessionSecuritySingleton>::GetInstance();
  }

  // The plain text, of at least one byte; null on failure.
  CSmartPointer<CGenericMalloc> DecryptArt(const CGenericMalloc& cipher);

  // 0 a new session or a higher nonce, -1 the nonce of before, -2 a lower one, -3 another process,
  // -4 another executable. Only 0 changes the session.
  int CheckSession(const WString& guid, std::uint32_t pid, std::uint64_t nonce, const WString& x,
                   const WString& exe);
  // For the log; false for an unknown session.
  bool GetSessionOwner(const WString& guid, std::uint32_t* pid, WString* exe);
  bool GetSessionNonce(const WString& guid, std::uint64_t* nonce);
  std::size_t GetSessionCount();

 private:
  friend class Singleton<CAPISessionSecuritySingleton>;
  CAPISessionSecuritySingleton();
  ~CAPISessionSecuritySingleton();

  void PrepDec();
  bool ImportKey(const std::vector<platform::BYTE>& blob);
  void AddSession(ApiSessionRecord record);
  void Evict();
  void RemoveOldest();

  CCritSec m_Lock{"client sessions"};  // guards everything below
  std::map<WString, ApiSessionRecord> m_Sessions;
  std::list<WString> m_SessionOrder;  // by first appearance
  platform::BCRYPT_ALG_HANDLE m_hAlgorithm = nullptr;
  platform::BCRYPT_KEY_HANDLE m_hKey = nullptr;  // null: no token can be read
  std::uint32_t m_NextSessionNumber = 1;
  std::uint32_t m_EvictedSessions = 1;
};

}  // namespace corvane
