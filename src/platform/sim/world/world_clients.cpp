// The clients of a world: programs that speak with the service over its pipes.

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>

#include "platform/sim/world/world_sections.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

struct ActWord {
  const char* name;
  ClientAct value;
};
constexpr ActWord kActs[] = {{"connect", ClientAct::kConnect},     {"send", ClientAct::kSend},
                             {"subscribe", ClientAct::kSubscribe}, {"stall", ClientAct::kStall},
                             {"read", ClientAct::kRead},           {"vanish", ClientAct::kVanish}};

constexpr std::size_t kLongestName = 64;

bool IsClient(const World& world, const std::string& name) {
  return std::ranges::find(world.clients, name, &Client::name) != world.clients.end();
}

std::string CompactText(const rapidjson::Value& value) {
  rapidjson::StringBuffer text;
  rapidjson::Writer<rapidjson::StringBuffer> writer(text);
  value.Accept(writer);
  return text.GetString();
}

// "request": an object, or "text": whatever a rude client writes.
void TakeMessage(JsonFields& fields, ClientAction* out) {
  if (fields.Has("request") == fields.Has("text")) {
    fields.Node().Fail("wants either \"request\" or \"text\"");
  }
  if (const auto text = fields.Find("text")) {
    out->message = text->Text();
    out->withToken = false;
    return;
  }
  const JsonNode request = fields.Need("request");
  if (!request.Value().IsObject()) request.Fail("wants an object");
  out->message = CompactText(request.Value());
  out->withToken = !request.Value().HasMember("art");
}

}  // namespace

Client ReadClient(const JsonNode& node, const World& world) {
  JsonFields fields(node);
  Client out;
  const JsonNode name = fields.Need("name");
  out.name = name.Text();
  // It is part of the token, which commas divide and whose length is bounded.
  if (out.name.empty() || out.name.size() > kLongestName || out.name.find(',') != out.name.npos)
    name.Fail("wants 1 to 64 bytes without a comma");
  if (IsClient(world, out.name)) name.Fail("another client has it");
  fields.Text("program", &out.program);
  if (out.program.empty()) fields.Need("program").Fail("names no program");
  fields.Finish();
  return out;
}

void TakeClientAction(JsonFields& fields, const World& world, ClientAction* out) {
  constexpr std::uint64_t kShortestMs = 100;
  const JsonNode name = fields.Need("client");
  out->client = name.Text();
  if (!IsClient(world, out->client)) name.Fail("no client has this name");
  out->act = fields.Need("act").Choice(kActs);
  if (out->act == ClientAct::kSend) TakeMessage(fields, out);
  if (const auto every = fields.Find("every")) {
    out->everyMs = every->Duration();
    if (out->everyMs < kShortestMs) every->Fail("is shorter than 100 ms");
  }
}

}  // namespace corvane::platform::sim
