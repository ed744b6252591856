#include "corvane_client/json_check.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <vector>

#include "corvane_client/connect_progress.h"
#include "foundation/text.h"

namespace corvane::client {

namespace {

constexpr std::size_t kLongestSsid = 32;  // bytes
constexpr const char* kWeights[] = {"Internet",    "SQMax",       "PNMax",   "MUMIMOMax",
                                    "MBPSBumpMax", "QBSSBumpMax", "NOISEMax"};

// "line:column" of a byte; columns count characters.
std::string Place(std::string_view text, std::size_t offset) {
  std::size_t line = 1, column = 1;
  for (const char c : text.substr(0, std::min(offset, text.size()))) {
    if (c == '\n') {
      ++line;
      column = 1;
    } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
      ++column;
    }
  }
  return std::to_string(line) + ":" + std::to_string(column);
}

// Reads a text event by event, so that each value has its place. A value starts behind the blanks
// and separators that follow the end of the one before.
class CPlacedReader {
 public:
  using Ch = char;

  explicit CPlacedReader(std::string_view text)
      : m_Text(text), m_Stream(text.data(), text.size()) {}
  virtual ~CPlacedReader() = default;

  std::string Check() {
    rapidjson::Reader reader;
    const auto result =
        reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(
            m_Stream, *this);
    if (!m_Wrong.empty()) return m_Wrong;
    if (!result) {
      return Place(m_Text, result.Offset()) + ": " + rapidjson::GetParseError_En(result.Code());
    }
    return {};
  }

  // What the reader calls; false ends it.
  bool Null() { return Other(); }
  bool Bool(bool) { return Other(); }
  bool Int(int) { return Other(); }
  bool Uint(unsigned number) { return Enter(), OnNumber(number) && Leave(); }
  bool Int64(std::int64_t) { return Other(); }
  bool Uint64(std::uint64_t) { return Other(); }
  bool Double(double) { return Other(); }
  bool RawNumber(const char*, rapidjson::SizeType, bool) { return Other(); }
  bool String(const char* text, rapidjson::SizeType size, bool) {
    return Enter(), OnString(std::string(text, size)) && Leave();
  }
  bool Key(const char* text, rapidjson::SizeType size, bool) {
    return Enter(), OnKey(std::string(text, size)) && Leave();
  }
  bool StartObject() { return Enter(), OnObject() && LeaveBracket(); }
  bool EndObject(rapidjson::SizeType) { return LeaveBracket(); }
  bool StartArray() { return Enter(), ++m_Depth, OnArray() && LeaveBracket(); }
  bool EndArray(rapidjson::SizeType) { return OnArrayEnd() && (--m_Depth, LeaveBracket()); }

 protected:
  virtual bool OnNumber(unsigned) { return OnOther(); }
  virtual bool OnString(const std::string&) { return OnOther(); }
  virtual bool OnKey(const std::string&) { return true; }
  virtual bool OnObject() { return OnOther(); }
  virtual bool OnArray() { return OnOther(); }
  virtual bool OnArrayEnd() { return true; }
  virtual bool OnOther() = 0;  // a value of another kind

  bool WrongAt(std::size_t offset, const std::string& what) {
    m_Wrong = Place(m_Text, offset) + ": " + what;
    return false;
  }
  bool Wrong(const std::string& what) { return WrongAt(m_Start, what); }
  std::size_t Start() const { return m_Start; }
  int Depth() const { return m_Depth; }  // of arrays

 private:
  bool Other() { return Enter(), OnOther() && Leave(); }
  void Enter() { m_Start = std::min(m_Text.find_first_not_of(" \t\r\n,:", m_End), m_Text.size()); }
  bool Leave() { return m_End = m_Stream.Tell(), true; }
  // The reader tells of a bracket while it stands before it.
  bool LeaveBracket() { return m_End = m_Stream.Tell() + 1, true; }

  const std::string_view m_Text;
  rapidjson::MemoryStream m_Stream;
  std::size_t m_Start = 0, m_End = 0;
  int m_Depth = 0;
  std::string m_Wrong;
};

bool IsAny(const std::string& text) { return ToLower(std::string_view(text)) == "any"; }
bool IsAddress(const std::string& text) {
  return IsAny(text) || IsBssid(ToLower(std::string_view(text)));
}

class CListReader : public CPlacedReader {
 public:
  CListReader(std::string_view text, ListKind kind) : CPlacedReader(text), m_Kind(kind) {}

 private:
  bool OnArray() override {
    if (Depth() > 2) return OnOther();
    m_Items.clear();
    m_RowStart = Start();
    return true;
  }
  bool OnString(const std::string& text) override {
    if (Depth() != 2) return OnOther();
    if (m_Kind == ListKind::kPreferred && m_Items.size() >= 2) {
      return Wrong("the least link quality is a number from 0 to 100");
    }
    return Add(text);
  }
  bool OnNumber(unsigned number) override {
    if (Depth() != 2) return OnOther();
    if (m_Kind != ListKind::kPreferred || m_Items.size() != 2) return Wrong("a text is expected");
    return number <= 100 ? Add({}) : Wrong("the least link quality is a number from 0 to 100");
  }
  bool OnOther() override {
    if (Depth() == 0) return Wrong("a list is an array of rows");
    return Wrong(Depth() == 1 ? "a row is an array" : "a text is expected");
  }
  bool Add(const std::string& text) {
    m_Items.push_back(text);
    m_Places.resize(m_Items.size());
    m_Places.back() = Start();
    return true;
  }

  bool OnArrayEnd() override {
    if (Depth() != 2) return true;
    const std::size_t count = m_Items.size();
    if (m_Kind == ListKind::kAllow) {
      if (count < 1 || count > 2) return WrongAt(m_RowStart, "a row takes an SSID and a BSSID");
      if (count == 1) return Ssid(0);
      if (IsAddress(m_Items[1])) return Ssid(0);
      if (IsAddress(m_Items[0])) return Ssid(1);
      return WrongAt(m_Places[1], kBadAddress);
    }
    if (m_Kind == ListKind::kDeny && count != 2) {
      return WrongAt(m_RowStart, "a row takes an SSID and a BSSID");
    }
    if (m_Kind == ListKind::kPreferred && count != 3) {
      return WrongAt(m_RowStart, "a row takes an SSID, a BSSID and a least link quality");
    }
    return IsAddress(m_Items[1]) ? Ssid(0) : WrongAt(m_Places[1], kBadAddress);
  }
  bool Ssid(std::size_t item) {
    return m_Items[item].size() <= kLongestSsid ||
           WrongAt(m_Places[item], "an SSID has at most 32 bytes");
  }

  static constexpr char kBadAddress[] = "a BSSID is \"any\" or like 02-50-00-00-01-05";
  const ListKind m_Kind;
  std::vector<std::string> m_Items;
  std::vector<std::size_t> m_Places;
  std::size_t m_RowStart = 0;
};

class CWeightsReader : public CPlacedReader {
 public:
  using CPlacedReader::CPlacedReader;

 private:
  bool OnObject() override {
    return m_bInside ? Wrong("a weight is a whole number") : (m_bInside = true);
  }
  bool OnKey(const std::string& name) override {
    const bool known =
        std::ranges::any_of(kWeights, [&](const char* weight) { return name == weight; });
    return known || Wrong("there is no weight of that name");
  }
  bool OnNumber(unsigned) override { return m_bInside || OnOther(); }
  bool OnOther() override {
    return Wrong(m_bInside ? "a weight is a whole number up to 4294967295"
                           : "weights are an object like {\"SQMax\":40}");
  }

  bool m_bInside = false;
};

}  // namespace

std::string CheckApList(std::string_view json, ListKind kind) {
  return CListReader(json, kind).Check();
}

std::string CheckWeights(std::string_view json) { return CWeightsReader(json).Check(); }

}  // namespace corvane::client
