#pragma once
// The rows of access points that the service publishes. Pure.

#include <string>
#include <string_view>
#include <vector>

namespace corvane::client {

// An access point as the service sees it; texts as the row has them.
struct CandidateRow {
  std::string ssid, bssid, band, score, quality, category, autoConnect, scanState, load, channel,
      standards, auth, muMimo, widths, occupancy;
};

// The rows of a value, in its order: best first. A row with too few fields is passed over.
std::vector<CandidateRow> ParseCandidates(std::string_view csv);

// The name of an authentication algorithm, or its number.
std::string AuthName(const std::string& number);

// Lines of an aligned table with a heading; the access point of that address is marked.
std::vector<std::string> CandidateLines(const std::vector<CandidateRow>& rows,
                                        const std::string& connectedBssid);
std::string CandidatesJson(const std::vector<CandidateRow>& rows,
                           const std::string& connectedBssid);

// Hyphens for colons and lower case, as the service writes addresses.
std::string NormalBssid(std::string bssid);

}  // namespace corvane::client
