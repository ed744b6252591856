#include "corvane_client/connect_progress.h"

#include "corvane_client/candidate_rows.h"

namespace corvane::client {

namespace {

constexpr int kErrorStaysMs = 3000;
// The service leaves "pending" for an access point that it is on already.
constexpr int kPendingStaysMs = 3000;

}  // namespace

ConnectEnd CConnectProgress::Look(const std::string& status, const std::string& connectedBssid,
                                  int ms) {
  if (status != m_Status) m_SinceMs = ms;
  m_Status = status;
  const bool there = NormalBssid(connectedBssid) == m_Bssid;
  if (status == "connected" && there) return ConnectEnd::kConnected;
  if (status == "pending" && there && ms - m_SinceMs >= kPendingStaysMs) {
    return ConnectEnd::kConnected;
  }
  if (status == "external") return ConnectEnd::kExternal;
  // Somewhere else is no success either: the service chose for itself after it had failed.
  const bool failed = status == "error" || status == "disconnected" || status == "connected";
  return failed && ms - m_SinceMs >= kErrorStaysMs ? ConnectEnd::kFailed : ConnectEnd::kNotYet;
}

bool IsBssid(const std::string& text) {
  if (text.size() != 17) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool right =
        i % 3 == 2 ? text[i] == '-'
                   : std::string_view("0123456789abcdef").find(text[i]) != std::string_view::npos;
    if (!right) return false;
  }
  return true;
}

}  // namespace corvane::client
