#pragma once
// How a connect that was asked for goes on. Pure.

#include <string>

namespace corvane::client {

enum class ConnectEnd { kNotYet, kConnected, kFailed, kExternal };

// Reads "ConnectStatus" and "ConnectedBssid" as they change. A failed try is followed by another
// within two seconds, so that "error" counts when it stays.
class CConnectProgress {
 public:
  explicit CConnectProgress(std::string bssid) : m_Bssid(std::move(bssid)) {}

  // `ms` since the request.
  ConnectEnd Look(const std::string& status, const std::string& connectedBssid, int ms);

 private:
  const std::string m_Bssid;
  std::string m_Status;
  int m_SinceMs = 0;
};

// Six pairs of hexadecimal digits joined by "-", in lower case.
bool IsBssid(const std::string& text);

}  // namespace corvane::client
