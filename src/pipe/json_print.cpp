#include "pipe/json_print.h"

#include <rapidjson/memorystream.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>

#include "store/json_text.h"

namespace corvane {

namespace {

constexpr unsigned kIndent = 4;

// Hands the events of a reader to a writer until the text is long enough.
class BoundedPrinter {
 public:
  using Ch = char;

  BoundedPrinter(rapidjson::StringBuffer& out, std::size_t limit)
      : m_Out(out), m_Limit(limit), m_Writer(out) {
    m_Writer.SetIndent(' ', kIndent);
  }

  bool Null() { return m_Writer.Null() && GoesOn(); }
  bool Bool(bool value) { return m_Writer.Bool(value) && GoesOn(); }
  bool Int(int value) { return m_Writer.Int(value) && GoesOn(); }
  bool Uint(unsigned value) { return m_Writer.Uint(value) && GoesOn(); }
  bool Int64(std::int64_t value) { return m_Writer.Int64(value) && GoesOn(); }
  bool Uint64(std::uint64_t value) { return m_Writer.Uint64(value) && GoesOn(); }
  bool Double(double value) { return m_Writer.Double(value) && GoesOn(); }
  bool RawNumber(const Ch* text, rapidjson::SizeType length, bool copy) {
    return m_Writer.RawNumber(text, length, copy) && GoesOn();
  }
  bool String(const Ch* text, rapidjson::SizeType length, bool copy) {
    return m_Writer.String(text, length, copy) && GoesOn();
  }
  bool Key(const Ch* text, rapidjson::SizeType length, bool copy) {
    return m_Writer.Key(text, length, copy) && GoesOn();
  }
  bool StartObject() { return m_Writer.StartObject() && GoesOn(); }
  bool EndObject(rapidjson::SizeType count) { return m_Writer.EndObject(count) && GoesOn(); }
  bool StartArray() { return m_Writer.StartArray() && GoesOn(); }
  bool EndArray(rapidjson::SizeType count) { return m_Writer.EndArray(count) && GoesOn(); }

 private:
  bool GoesOn() const { return m_Out.GetSize() < m_Limit; }

  rapidjson::StringBuffer& m_Out;
  std::size_t m_Limit;
  rapidjson::PrettyWriter<rapidjson::StringBuffer> m_Writer;
};

}  // namespace

std::string PrettyJson(std::string_view text, std::size_t limit) {
  rapidjson::StringBuffer out;
  BoundedPrinter printer(out, limit);
  rapidjson::MemoryStream in(text.data(), text.size());
  rapidjson::Reader reader;
  const auto result = reader.Parse<rapidjson::kParseIterativeFlag>(in, printer);
  const bool isJson = !result.IsError() || result.Code() == rapidjson::kParseErrorTermination;
  return isJson ? std::string(out.GetString(), out.GetSize()) : "null";
}

}  // namespace corvane
