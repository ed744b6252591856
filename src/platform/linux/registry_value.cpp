#include "platform/linux/registry_value.h"

#include <sqlite3.h>

#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>

#include "platform/linux/sqlite_database.h"

namespace corvane::platform::linux_host {

namespace {

struct TypeName {
  DWORD type;
  std::string_view name;
};
constexpr TypeName kTypeNames[] = {
    {REG_SZ, "REG_SZ"}, {REG_DWORD, "REG_DWORD"}, {REG_QWORD, "REG_QWORD"}};

DWORD TypeOf(std::string_view name) {
  for (const TypeName& known : kTypeNames) {
    if (known.name == name) return known.type;
  }
  DWORD type = 0;  // REG_NONE
  std::from_chars(name.data(), name.data() + name.size(), type);
  return type;
}

// Text whose characters SQLite gives back as they were: it would end at a NUL, and take a byte
// order mark at the head for one.
bool IsPlainText(std::u16string_view text) {
  const bool marked = !text.empty() && (text[0] == 0xFEFF || text[0] == 0xFFFE);
  return !marked && text.find(u'\0') == text.npos;
}

template <typename T>
T NumberIn(const BYTE* data) {
  T number;
  std::memcpy(&number, data, sizeof(number));
  return number;
}

template <typename T>
std::vector<BYTE> BytesOf(const T& number) {
  std::vector<BYTE> bytes(sizeof(number));
  std::memcpy(bytes.data(), &number, sizeof(number));
  return bytes;
}

std::vector<BYTE> BytesOf(const void* data, int size) {
  const BYTE* bytes = static_cast<const BYTE*>(data);
  return bytes ? std::vector<BYTE>(bytes, bytes + size) : std::vector<BYTE>();
}

}  // namespace

std::string RegistryTypeName(DWORD type) {
  for (const TypeName& known : kTypeNames) {
    if (known.type == type) return std::string(known.name);
  }
  return std::to_string(type);
}

void BindRegistryValue(SqliteStatement& statement, int parameter, DWORD type, const BYTE* data,
                       DWORD size) {
  if (type == REG_DWORD && size == sizeof(DWORD)) {
    return statement.BindNumber(parameter, NumberIn<DWORD>(data));
  }
  if (type == REG_QWORD && size == sizeof(ULONGLONG)) {
    return statement.BindNumber(parameter, NumberIn<std::int64_t>(data));
  }
  if (type == REG_SZ && size % sizeof(char16_t) == 0) {
    const std::u16string_view text(reinterpret_cast<const char16_t*>(data),
                                   size / sizeof(char16_t));
    if (IsPlainText(text)) return statement.BindText(parameter, text);
  }
  statement.BindBlob(parameter, data, size);
}

RegistryValue ReadRegistryValue(const SqliteStatement& statement) {
  sqlite3_stmt* row = statement.Get();
  const auto* name = reinterpret_cast<const char*>(sqlite3_column_text(row, 0));
  RegistryValue value;
  value.type = TypeOf(name ? name : "");
  const int form = sqlite3_column_type(row, 1);
  if (form == SQLITE_BLOB) {
    const void* bytes = sqlite3_column_blob(row, 1);
    value.data = BytesOf(bytes, sqlite3_column_bytes(row, 1));
  } else if (form == SQLITE_INTEGER && value.type != REG_SZ) {
    const std::int64_t number = sqlite3_column_int64(row, 1);
    const bool fits = number >= 0 && number <= std::numeric_limits<DWORD>::max();
    value.data =
        value.type == REG_DWORD && fits ? BytesOf(static_cast<DWORD>(number)) : BytesOf(number);
  } else {
    const void* text = sqlite3_column_text16(row, 1);
    value.data = BytesOf(text, sqlite3_column_bytes16(row, 1));
  }
  return value;
}

}  // namespace corvane::platform::linux_host
