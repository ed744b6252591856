#pragma once
// Self-describing events (TraceLogging): what an event's metadata says about its data. Metadata is
// a 16-bit size that counts itself, tag bytes, the event's name, and for each field its name and
// type; names are UTF-8 and end with NUL. All numbers are little-endian.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/event_trace_api.h"

namespace corvane::platform {

// Field types, the TlgIn values of the format; those that this program uses.
enum class TlgIn : std::uint8_t { kUnicodeString = 1, kInt32 = 7, kUInt32 = 8 };

struct TraceField {
  std::string name;
  std::variant<std::int64_t, std::u16string> value;
};

struct TraceEvent {
  EVENT_DESCRIPTOR descriptor;
  std::string provider;
  std::string name;
  std::vector<TraceField> fields;

  // The field's value; nothing when there is no such field or it is of the other kind.
  std::optional<std::int64_t> Number(std::string_view field) const;
  std::optional<std::u16string> Text(std::string_view field) const;
};

// Reads what EventWriteTransfer is given; nothing when metadata and data do not fit each other.
std::optional<TraceEvent> ReadTraceEvent(const EVENT_DESCRIPTOR& descriptor,
                                         std::span<const EVENT_DATA_DESCRIPTOR> data);

// One line of JSON without a line feed: {"time":T,"event":name,field:value,...}. `time` stands as
// it is.
std::string TraceEventJson(const TraceEvent& event, std::string_view time);

}  // namespace corvane::platform
