#include "corvane_client/lb_state.h"

#include "corvane_client/client_options.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/text_table.h"
#include "foundation/text.h"
#include "store/value_names.h"

namespace corvane::client {

namespace {

struct LbState {
  bool enabled = false;
  bool paused = false;
  std::uint32_t weightMode = 2;
};

std::uint32_t Number(const Values& values, WStringView name, std::uint32_t absent) {
  const auto found = values.find(Narrow(name));
  return found == values.end() ? absent : ParseNumber(found->second).value_or(absent);
}

// A value that is not there counts as the service counts it.
LbState ReadLb(const Values& service) {
  return {.enabled = Number(service, value::kLBEnabled, 0) != 0,
          .paused = Number(service, value::kLBPaused, 0) != 0,
          .weightMode = Number(service, value::kLBWeightMode, 2)};
}

}  // namespace

std::vector<std::string> LbLines(const Values& service) {
  const LbState state = ReadLb(service);
  return TableLines({{"Load-balance engine", state.enabled ? "on" : "off"},
                     {"  Paused", state.paused ? "yes" : "no"},
                     {"  Weight mode", std::to_string(state.weightMode)}});
}

std::string LbJson(const Values& service) {
  const LbState state = ReadLb(service);
  return CJsonWriter()
      .Begin()
      .Name("enabled")
      .Bool(state.enabled)
      .Name("paused")
      .Bool(state.paused)
      .Name("weight_mode")
      .Uint(state.weightMode)
      .End()
      .Text();
}

}  // namespace corvane::client
