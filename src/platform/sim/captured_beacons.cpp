#include "platform/sim/captured_beacons.h"

#include <rapidjson/document.h>
#include <rapidjson/error/en.h>

#include <stdexcept>

namespace corvane::platform::sim {

namespace {

constexpr std::uint32_t kHighestMhz = 4'000'000;  // in kHz it still fits 32 bits

[[noreturn]] void Refuse(const std::string& reason) { throw std::invalid_argument(reason); }

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::vector<std::uint8_t> BytesOfHex(std::string_view text) {
  if (text.size() % 2 != 0) Refuse("\"ie_hex\" has an odd number of digits");
  std::vector<std::uint8_t> bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    const int high = HexDigit(text[i]), low = HexDigit(text[i + 1]);
    if (high < 0 || low < 0) Refuse("\"ie_hex\" has something else than hexadecimal digits");
    bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
  }
  return bytes;
}

// "aa-bb-cc-dd-ee-ff", or with ":" between, in lower case with "-".
std::string BssidOf(std::string_view text) {
  constexpr std::size_t kLength = 17;
  bool good = text.size() == kLength;
  std::string bssid;
  for (std::size_t i = 0; good && i < kLength; ++i) {
    if (i % 3 == 2) {
      good = text[i] == '-' || text[i] == ':';
      bssid += '-';
    } else {
      const int digit = HexDigit(text[i]);
      good = digit >= 0;
      if (good) bssid += "0123456789abcdef"[digit];
    }
  }
  if (!good) Refuse("\"bssid\" is not six pairs of hexadecimal digits");
  return bssid;
}

// The member, or null when it is absent or null.
const rapidjson::Value* Member(const rapidjson::Value& object, const char* name) {
  const auto found = object.FindMember(name);
  return found == object.MemberEnd() || found->value.IsNull() ? nullptr : &found->value;
}

std::string_view Text(const rapidjson::Value& object, const char* name) {
  const rapidjson::Value* value = Member(object, name);
  if (!value) Refuse(std::string("\"") + name + "\" is missing");
  if (!value->IsString()) Refuse(std::string("\"") + name + "\" is not a text");
  return {value->GetString(), value->GetStringLength()};
}

}  // namespace

CapturedBeacon ParseCapturedBeacon(std::string_view line) {
  rapidjson::Document document;
  // By iteration: no depth of nesting can exhaust the stack.
  document.Parse<rapidjson::kParseIterativeFlag>(line.data(), line.size());
  if (document.HasParseError()) {
    Refuse(std::string("no JSON: ") + rapidjson::GetParseError_En(document.GetParseError()) + " (at " +
           std::to_string(document.GetErrorOffset()) + ")");
  }
  if (!document.IsObject()) Refuse("not a JSON object");

  CapturedBeacon beacon;
  beacon.id = Text(document, "id");
  beacon.bssid = BssidOf(Text(document, "bssid"));
  beacon.elements = BytesOfHex(Text(document, "ie_hex"));
  if (const rapidjson::Value* mhz = Member(document, "freq_mhz")) {
    if (!mhz->IsUint() || mhz->GetUint() == 0 || mhz->GetUint() > kHighestMhz) {
      Refuse("\"freq_mhz\" is no frequency");
    }
    beacon.freqMhz = mhz->GetUint();
  }
  if (const rapidjson::Value* dbm = Member(document, "rssi_dbm")) {
    if (!dbm->IsInt() || dbm->GetInt() < -200 || dbm->GetInt() > 100) Refuse("\"rssi_dbm\" is no signal in dBm");
    beacon.rssiDbm = dbm->GetInt();
  }
  return beacon;
}

}  // namespace corvane::platform::sim
