#pragma once
#include <string>
#include <vector>

#include "corvane_client/candidate_rows.h"
#include "corvane_client/client_options.h"
#include "corvane_client/service_access.h"
#include "foundation/text.h"
#include "store/value_names.h"

namespace corvane::client {

// The text of a value, or `absent` when it is not there.
std::string ValueOr(const Values& values, WStringView name, const std::string& absent);

// An adapter as the registry tells of it at one moment.
struct AdapterState {
  std::uint32_t index = 0;
  std::string guid;
  Values values;

  std::string Text(WStringView name) const;  // empty when the value is not there
  std::string Name() const;                  // for people
  bool IsConnected() const { return !Text(value::kConnectedBssid).empty(); }
  std::vector<CandidateRow> Candidates(bool others = false) const;
};

// All adapters of the service, by index.
std::vector<AdapterState> ReadAdapters(IServiceAccess& service);

// Those that --adapter means, all without it. Throws ClientError (kBadCall) when there is none.
std::vector<AdapterState> ChooseAdapters(std::vector<AdapterState> adapters,
                                         const ClientOptions& options);
// The one that a change is for: without --adapter there must be no other.
AdapterState ChooseAdapter(IServiceAccess& service, const ClientOptions& options);

// "autoswitch", "event" or "popup"; "unknown" otherwise.
std::string ModeName(const std::string& passiveSuggestMode);

// What keeps the service from acting on this adapter, in words; empty when nothing does.
std::vector<std::string> HoldingStill(const Values& service, const AdapterState& adapter);

// Of the connected access point; empty when it has none.
std::string ConnectedScore(const AdapterState& adapter);

std::vector<std::string> StatusLines(const Values& service, const AdapterState& adapter);
// With the candidates as CandidatesJson has them, if wished.
std::string StatusJson(const Values& service, const AdapterState& adapter, bool candidates = false);

}  // namespace corvane::client
