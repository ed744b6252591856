#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <vector>

#include "corvane_lab/engine_run.h"
#include "engine/driver_records.h"
#include "engine/engine_bits.h"
#include "foundation/format.h"
#include "foundation/text.h"
#include "platform/sim/kernel/sim_text.h"

namespace corvane::lab {

namespace {

using Heard = platform::sim::SimDriver::Heard;

std::string Description(const LBAdapterSlot& slot) {
  const WStringView whole(slot.description, std::size(slot.description));
  return platform::sim::ToUtf8(whole.substr(0, whole.find(u'\0')));
}

std::string Ip4(std::uint32_t word) {
  return FormatA("%u.%u.%u.%u", word & 255, word >> 8 & 255, word >> 16 & 255, word >> 24);
}

std::string Place(std::uint8_t index) {
  return index == kNoIndex ? std::string("-") : FormatA("%u", std::uint32_t{index});
}

std::string HeardText(const Heard& heard) {
  const std::string what =
      heard.device != kAllDevices ? Narrow(ChangeBitWords(heard.value))
      : heard.kind == notify_kind::kTunnel
          ? std::string(heard.value == kTunnelUp ? "a tunnel is up" : "no tunnel is up")
          : std::string(heard.kind == notify_kind::kNoInternet ? "no Internet" : "look at all");
  const std::string who =
      heard.device == kAllDevices ? std::string("all") : FormatA("slot %u", heard.device);
  return FormatA("%llu.%03llu s  %s kind %u: %s", heard.atMs / 1000, heard.atMs % 1000, who,
                 heard.kind, what);
}

std::string SlotText(std::size_t i, const LBAdapterSlot& slot) {
  return FormatA(
      "slot %u  %s\n    state %s  class %s\n    %s  gateway %s  %u/%u Mbps  network %s  status "
      "%u\n",
      static_cast<unsigned>(i), Description(slot), Narrow(SlotStateWords(slot.state)),
      Narrow(ClassFlagWords(slot.classFlags)), Ip4(slot.ip4), Place(slot.gateway),
      slot.transmitMbps, slot.receiveMbps, Narrow(NetworkFlagWords(slot.networkFlags)),
      slot.status);
}

// Slots of the adapters behind a gateway.
std::vector<std::uint8_t> Sharers(const LBEngineTable& table, std::size_t gateway) {
  std::vector<std::uint8_t> slots;
  for (const LBAdapterSlot& slot : table.slots) {
    if (slot.index != kNoIndex && slot.gateway == gateway) slots.push_back(slot.index);
  }
  return slots;
}

std::string GatewayText(const LBEngineTable& table, std::size_t gateway) {
  const LBGatewaySlot& slot = table.gateways[gateway];
  std::string text = FormatA("gateway %u  %s  %u behind it:", static_cast<unsigned>(gateway),
                             Ip4(slot.ip4[0]), std::uint32_t{slot.adapters});
  for (const std::uint8_t one : Sharers(table, gateway)) text += FormatA(" %u", std::uint32_t{one});
  return text + "\n";
}

class Json {
 public:
  Json() : m_Writer(m_Buffer) {}
  void Name(const char* name) { m_Writer.Key(name); }
  void Text(const char* name, const std::string& value) {
    Name(name);
    m_Writer.String(value.c_str(), static_cast<rapidjson::SizeType>(value.size()));
  }
  void Number(const char* name, std::uint64_t value) {
    Name(name);
    m_Writer.Uint64(value);
  }
  void Flag(const char* name, bool value) {
    Name(name);
    m_Writer.Bool(value);
  }
  rapidjson::Writer<rapidjson::StringBuffer>& Writer() { return m_Writer; }
  std::string Line() const { return m_Buffer.GetString(); }

 private:
  rapidjson::StringBuffer m_Buffer;
  rapidjson::Writer<rapidjson::StringBuffer> m_Writer;
};

void PutTable(const LBEngineTable& table, Json* json) {
  json->Number("steerable", table.Header().steerable);
  json->Number("ownAdapters", table.Header().ownAdapters);
  json->Number("steerableNow", table.Header().steerableNow);
  json->Name("slots");
  json->Writer().StartArray();
  for (const LBAdapterSlot& slot : table.slots) {
    if (slot.index == kNoIndex) continue;
    json->Writer().StartObject();
    json->Number("slot", slot.index);
    json->Text("description", Description(slot));
    json->Text("state", Narrow(SlotStateWords(slot.state)));
    json->Text("class", Narrow(ClassFlagWords(slot.classFlags)));
    json->Text("ip4", Ip4(slot.ip4));
    json->Name("gateway");
    if (slot.gateway == kNoIndex) {
      json->Writer().Null();
    } else {
      json->Writer().Uint(slot.gateway);
    }
    json->Text("network", Narrow(NetworkFlagWords(slot.networkFlags)));
    json->Number("status", slot.status);
    json->Writer().EndObject();
  }
  json->Writer().EndArray();
  json->Name("gateways");
  json->Writer().StartArray();
  for (std::size_t i = 0; i < kGatewaySlots; ++i) {
    if (table.gateways[i].state != kGatewayInUse) continue;
    json->Writer().StartObject();
    json->Number("gateway", i);
    json->Number("adapters", table.gateways[i].adapters);
    json->Name("slots");
    json->Writer().StartArray();
    for (const std::uint8_t slot : Sharers(table, i)) json->Writer().Uint(slot);
    json->Writer().EndArray();
    json->Writer().EndObject();
  }
  json->Writer().EndArray();
}

}  // namespace

std::string EngineText(const EngineView& view) {
  std::string text;
  if (!view.runs) {
    text += FormatA("the engine does not run; its start gave %u\n", view.startCode);
  } else {
    const LBEngineTable& table = *view.engine.table;
    text += FormatA("engine: %s%s%s\n", Narrow(EngineStateWords(view.engine.stateWord)),
                    view.engine.owedWord != 0 ? "; the start is owed" : "",
                    view.engine.tunnelWord != 0 ? "; a tunnel is up" : "");
    text +=
        FormatA("adapters: %u steerable, %u of the maker's, %u steerable now\n",
                table.Header().steerable, table.Header().ownAdapters, table.Header().steerableNow);
    for (std::size_t i = 0; i < kAdapterSlots; ++i) {
      if (table.slots[i].index != kNoIndex) text += SlotText(i, table.slots[i]);
    }
    for (std::size_t i = 0; i < kGatewaySlots; ++i) {
      if (table.gateways[i].state == kGatewayInUse) text += GatewayText(table, i);
    }
  }
  text +=
      FormatA("driver: %s%s, %llu handshakes, %llu looks at the tables\n",
              !view.driver.installed ? "not installed"
              : !view.driver.present ? "absent"
                                     : "present",
              view.driver.started ? ", started" : "", view.driver.handshakes, view.driver.walks);
  for (const Heard& heard : view.driver.heard) text += "  " + HeardText(heard) + "\n";
  return text;
}

std::string EngineJson(const EngineView& view) {
  Json json;
  json.Writer().StartObject();
  json.Flag("runs", view.runs);
  json.Number("startCode", view.startCode);
  if (view.runs) {
    json.Text("state", Narrow(EngineStateWords(view.engine.stateWord)));
    json.Flag("startOwed", view.engine.owedWord != 0);
    json.Flag("tunnel", view.engine.tunnelWord != 0);
    PutTable(*view.engine.table, &json);
  }
  json.Flag("driverPresent", view.driver.present);
  json.Flag("driverStarted", view.driver.started);
  json.Name("steered");
  json.Writer().StartArray();
  for (const int slot : view.driver.steered) json.Writer().Int(slot);
  json.Writer().EndArray();
  json.Name("heard");
  json.Writer().StartArray();
  for (const Heard& heard : view.driver.heard) {
    json.Writer().StartObject();
    json.Number("ms", heard.atMs);
    json.Number("device", heard.device);
    json.Number("kind", heard.kind);
    json.Number("value", heard.value);
    json.Text("text", HeardText(heard));
    json.Writer().EndObject();
  }
  json.Writer().EndArray();
  json.Writer().EndObject();
  return json.Line();
}

}  // namespace corvane::lab
