#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdio>
#include <string>
#include <type_traits>

#include "corvane_lab/arguments.h"
#include "corvane_lab/commands.h"
#include "elements/bss_reading.h"
#include "elements/frequency_table.h"
#include "foundation/text.h"
#include "model/ie_blob.h"
#include "platform/sim/simulated_pc.h"
#include "platform/sim/world/captured_beacons.h"
#include "platform/sim/world/world_loader.h"
#include "platform/text_file.h"

namespace corvane::lab {

namespace {

std::string Hex(const std::uint8_t* bytes, std::size_t count) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 15];
  }
  return text;
}
std::string Hex(const std::string& bytes) {
  return Hex(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

// One JSON object on one line.
class JsonLine {
 public:
  JsonLine() { m_Writer.StartObject(); }

  template <typename T>
  void Add(std::string_view name, const T& value) {
    m_Writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
    Put(value);
  }
  std::string Take() {
    m_Writer.EndObject();
    return m_Buffer.GetString();
  }

 private:
  void Put(const std::string& text) {
    m_Writer.String(text.c_str(), static_cast<rapidjson::SizeType>(text.size()));
  }
  void Put(std::string_view text) { Put(std::string(text)); }
  void Put(const WString& text) { Put(WideToUtf8(text)); }
  void Put(double number) { m_Writer.Double(number); }
  template <std::size_t N>
  void Put(const std::array<std::uint8_t, N>& bytes) {
    Put(Hex(bytes.data(), bytes.size()));
  }
  void Put(const CSmartPointer<CGenericMalloc>& bytes) {
    Put(bytes ? Hex(bytes->GetData(), bytes->GetSize()) : std::string());
  }
  void Put(const LegacyRates& rates) {
    m_Writer.StartArray();
    for (const auto& rate : rates) m_Writer.Int(rate.first);
    m_Writer.EndArray();
  }
  template <typename T>
  requires std::is_integral_v<T>
  void Put(T number) {  // flags as 0 or 1
    if constexpr (std::is_signed_v<T>) {
      m_Writer.Int64(number);
    } else {
      m_Writer.Uint64(number);
    }
  }

  rapidjson::StringBuffer m_Buffer;
  rapidjson::Writer<rapidjson::StringBuffer> m_Writer{m_Buffer};
};

// Every field of the decoder under its name, in the order of its declaration.
void AddFields(JsonLine& json, const ElementFields& fields) {
  ForEachField(fields, [&json, &fields](std::string_view name, const auto& value) {
    if (name.starts_with("m_")) name.remove_prefix(2);
    if (static_cast<const void*>(&value) == &fields.m_SSID) {
      json.Add(name, Hex(fields.m_SSID));  // any bytes, not only UTF-8
    } else {
      json.Add(name, value);
    }
  });
}

}  // namespace

std::string ElementsLine(const platform::sim::CapturedBeacon& beacon) {
  platform::WLAN_BSS_ENTRY record;
  record.ulChCenterFrequency = *beacon.freqMhz * 1000;
  const ChannelAndWidth at = ChannelOfFrequency(record.ulChCenterFrequency);
  const auto blob = CIEBlob::CreateObject();
  blob->Load(beacon.elements.data(), static_cast<std::uint32_t>(beacon.elements.size()), at.channel,
             at.width, record);
  const WString width = blob->GetChannelWidthString(false, u",", false);

  JsonLine json;
  json.Add("id", beacon.id);
  AddFields(json, *blob);
  json.Add("MaxRateMbps", blob->GetMaxRateMbps(false, false));
  json.Add("MaxRateMbpsHE", blob->GetMaxRateMbps(true, false));
  json.Add("MaxRateMbpsHalved", blob->GetMaxRateMbps(false, true));
  json.Add("PhyMode", PhyModeOf(blob.get()));
  json.Add("PhyModes", PhyModesOf(*blob));
  json.Add("WidthText", width);
  json.Add("MuMimo", IsMuMimo(*blob));
  json.Add("BandText", BandTextOf(record.ulChCenterFrequency));
  return json.Take();
}

int ElementsCommand(const std::vector<std::string>& words) {
  const Arguments arguments(words, {}, {});
  if (arguments.Rest().size() != 1) throw UsageError("one file of captured beacons");
  const std::string& file = arguments.Rest()[0];
  const platform::sim::SimulatedPc pc(platform::sim::World{});
  bool anyBad = false;
  platform::sim::ForEachCapturedLine(platform::ReadTextFile(file), file,
                                     [&](const std::string& line, const std::string& place) {
                                       try {
                                         const platform::sim::CapturedBeacon beacon =
                                             platform::sim::ReadCapturedBeacon(line, place);
                                         if (beacon.freqMhz)
                                           std::printf("%s\n", ElementsLine(beacon).c_str());
                                       } catch (const platform::sim::WorldError& e) {
                                         anyBad = true;
                                         std::fprintf(stderr, "%s\n", e.what());
                                       }
                                     });
  return anyBad ? 1 : 0;
}

}  // namespace corvane::lab
