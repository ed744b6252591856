#include "platform/trace_logging.h"

#include <cstring>

namespace corvane::platform {

namespace {

// Reads forward; every read after the end fails.
class ByteCursor {
 public:
  ByteCursor(const void* data, std::size_t size)
      : m_pAt(static_cast<const std::uint8_t*>(data)), m_Left(size) {}

  std::size_t Left() const { return m_Left; }
  template <typename T>
  bool Read(T* out) {
    if (m_Left < sizeof(T)) return false;
    std::memcpy(out, m_pAt, sizeof(T));
    Skip(sizeof(T));
    return true;
  }
  bool ReadName(std::string* out) {
    const void* end = m_Left == 0 ? nullptr : std::memchr(m_pAt, 0, m_Left);
    if (!end) return false;
    const auto length = static_cast<std::size_t>(static_cast<const std::uint8_t*>(end) - m_pAt);
    out->assign(reinterpret_cast<const char*>(m_pAt), length);
    Skip(length + 1);
    return true;
  }

 private:
  void Skip(std::size_t bytes) { m_pAt += bytes, m_Left -= bytes; }

  const std::uint8_t* m_pAt;
  std::size_t m_Left;
};

ByteCursor BytesOf(const EVENT_DATA_DESCRIPTOR& data) {
  return {reinterpret_cast<const void*>(static_cast<std::uintptr_t>(data.Ptr)), data.Size};
}

// The size word, which has to tell the length of the whole.
bool ReadSize(ByteCursor& cursor) {
  const std::size_t whole = cursor.Left();
  std::uint16_t size = 0;
  return cursor.Read(&size) && size == whole;
}

// Tags are bytes of which all but the last have the high bit.
bool SkipTags(ByteCursor& cursor) {
  std::uint8_t tag = 0;
  do {
    if (!cursor.Read(&tag)) return false;
  } while (tag & 0x80);
  return true;
}

bool ReadValue(TlgIn type, const EVENT_DATA_DESCRIPTOR& data, TraceField* field) {
  ByteCursor cursor = BytesOf(data);
  switch (type) {
    case TlgIn::kUnicodeString: {
      std::u16string text(data.Size / sizeof(char16_t), u'\0');
      if (data.Size % sizeof(char16_t) != 0 || text.empty()) return false;
      std::memcpy(text.data(), reinterpret_cast<const void*>(static_cast<std::uintptr_t>(data.Ptr)),
                  data.Size);
      if (text.find(u'\0') != text.size() - 1) return false;
      text.pop_back();
      field->value = std::move(text);
      return true;
    }
    case TlgIn::kInt32: {
      std::int32_t number = 0;
      const bool read = data.Size == sizeof number && cursor.Read(&number);
      field->value = std::int64_t{number};
      return read;
    }
    case TlgIn::kUInt32: {
      std::uint32_t number = 0;
      const bool read = data.Size == sizeof number && cursor.Read(&number);
      field->value = std::int64_t{number};
      return read;
    }
  }
  return false;
}

void AppendEscaped(std::string* out, char16_t unit) {
  static constexpr char kHex[] = "0123456789abcdef";
  if (unit >= 0x20 && unit < 0x7F) {
    if (unit == u'"' || unit == u'\\') *out += '\\';
    *out += static_cast<char>(unit);
    return;
  }
  *out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) *out += kHex[(unit >> shift) & 0xF];
}

}  // namespace

std::optional<std::int64_t> TraceEvent::Number(std::string_view field) const {
  for (const TraceField& one : fields) {
    if (one.name == field && std::holds_alternative<std::int64_t>(one.value)) {
      return std::get<std::int64_t>(one.value);
    }
  }
  return std::nullopt;
}

std::optional<std::u16string> TraceEvent::Text(std::string_view field) const {
  for (const TraceField& one : fields) {
    if (one.name == field && std::holds_alternative<std::u16string>(one.value)) {
      return std::get<std::u16string>(one.value);
    }
  }
  return std::nullopt;
}

std::optional<TraceEvent> ReadTraceEvent(const EVENT_DESCRIPTOR& descriptor,
                                         std::span<const EVENT_DATA_DESCRIPTOR> data) {
  if (data.size() < 2 || data[0].Type != EVENT_DATA_DESCRIPTOR_TYPE_PROVIDER_METADATA ||
      data[1].Type != EVENT_DATA_DESCRIPTOR_TYPE_EVENT_METADATA) {
    return std::nullopt;
  }
  TraceEvent event{descriptor, {}, {}, {}};
  ByteCursor provider = BytesOf(data[0]);
  if (!ReadSize(provider) || !provider.ReadName(&event.provider)) return std::nullopt;
  ByteCursor metadata = BytesOf(data[1]);
  if (!ReadSize(metadata) || !SkipTags(metadata) || !metadata.ReadName(&event.name))
    return std::nullopt;
  for (const EVENT_DATA_DESCRIPTOR& value : data.subspan(2)) {
    TraceField field;
    TlgIn type{};
    if (!metadata.ReadName(&field.name) || !metadata.Read(&type) ||
        !ReadValue(type, value, &field)) {
      return std::nullopt;
    }
    event.fields.push_back(std::move(field));
  }
  if (metadata.Left() != 0) return std::nullopt;
  return event;
}

std::string TraceEventJson(const TraceEvent& event, std::string_view time) {
  std::string json = "{\"time\":\"" + std::string(time) + "\",\"event\":\"" + event.name + "\"";
  for (const TraceField& field : event.fields) {
    json += ",\"" + field.name + "\":";
    if (const auto* number = std::get_if<std::int64_t>(&field.value)) {
      json += std::to_string(*number);
      continue;
    }
    json += '"';
    for (const char16_t unit : std::get<std::u16string>(field.value)) AppendEscaped(&json, unit);
    json += '"';
  }
  return json + "}";
}

}  // namespace corvane::platform
