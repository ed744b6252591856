#include "platform/sim/world/world_driver.h"

namespace corvane::platform::sim {

namespace {

template <class Value>
struct Word {
  const char* name;
  Value value;
};
constexpr Word<DriverAnswer> kAnswers[] = {{"ready", DriverAnswer::kReady},
                                           {"notYet", DriverAnswer::kNotYet},
                                           {"otherRevision", DriverAnswer::kOtherRevision},
                                           {"badRecord", DriverAnswer::kBadRecord}};
constexpr Word<DWORD> kControls[] = {{"handshake", 0x120004}, {"stop", 0x120008},
                                     {"opened", 0x120260},    {"start", 0x120400},
                                     {"steer", 0x120420},     {"notify", 0x120448}};

}  // namespace

void TakeDriver(JsonFields& fields, DriverPart* out) {
  if (const auto present = fields.Find("present")) out->present = present->Flag();
  if (const auto starts = fields.Find("starts")) out->starts = starts->Flag();
  if (const auto answer = fields.Find("answer")) out->answer = answer->Choice(kAnswers);
  if (fields.Has("delay")) fields.Duration("delay", &out->delayMs.emplace());
  if (fields.Has("fails")) out->fails.emplace();
  fields.Each("fails",
              [out](const JsonNode& item) { out->fails->push_back(item.Choice(kControls)); });
}

DriverPart ReadDriver(const JsonNode& node) {
  JsonFields fields(node);
  DriverPart out;
  TakeDriver(fields, &out);
  fields.Finish();
  return out;
}

}  // namespace corvane::platform::sim
