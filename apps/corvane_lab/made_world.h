#pragma once
#include <cstdint>
#include <span>
#include <string>

namespace corvane::lab {

class MadeDraft;

// What a made world may have besides, whatever its kind.
struct MadeOptions {
  bool cold = false;           // not connected at the start: the system does it
  bool roamingDriver = false;  // the driver roams by itself
  bool background = false;     // something trickles all the time
  bool twoAdapters = false;
};

// A kind of place. `draw` puts it into a draft.
struct MadeKind {
  const char* name;
  const char* text;
  void (*draw)(MadeDraft& draft);
};
std::span<const MadeKind> MadeKinds();
void CheckKind(const std::string& kind);  // throws UsageError for one that there is not

// The file of a made world, a function of its arguments: access points, walks, traffic and what
// goes wrong. Even seeds are for tuning, odd ones for proof. Throws UsageError for a kind that
// there is not.
std::string MadeWorldText(const std::string& kind, std::uint64_t seed, const MadeOptions& options);

}  // namespace corvane::lab
