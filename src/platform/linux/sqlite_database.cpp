#include "platform/linux/sqlite_database.h"

#include <sqlite3.h>

namespace corvane::platform::linux_host {

namespace {

[[noreturn]] void Throw(sqlite3* database, int code) {
  const char* text = database ? sqlite3_errmsg(database) : sqlite3_errstr(code);
  throw SqliteError(code & 0xFF, text);
}

}  // namespace

void SqliteDatabase::Closer::operator()(sqlite3* database) const { sqlite3_close_v2(database); }

SqliteDatabase::SqliteDatabase(const std::string& path, int busyMs) {
  sqlite3* database = nullptr;
  const int code =
      sqlite3_open_v2(path.c_str(), &database,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
  m_pDatabase.reset(database);
  if (code != SQLITE_OK) Throw(database, code);
  SetBusyTime(busyMs);
}

void SqliteDatabase::SetBusyTime(int busyMs) { sqlite3_busy_timeout(Get(), busyMs); }

void SqliteDatabase::Execute(const char* sql) {
  const int code = sqlite3_exec(Get(), sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) Throw(Get(), code);
}

std::string SqliteDatabase::Text(const char* sql) {
  SqliteStatement statement(*this, sql);
  if (!statement.Step()) return {};
  const unsigned char* text = sqlite3_column_text(statement.Get(), 0);
  return text ? reinterpret_cast<const char*>(text) : "";
}

void SqliteStatement::Closer::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SqliteStatement::SqliteStatement(SqliteDatabase& database, const char* sql)
    : m_pDatabase(database.Get()) {
  sqlite3_stmt* statement = nullptr;
  const int code =
      sqlite3_prepare_v3(m_pDatabase, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
  m_pStatement.reset(statement);
  Check(code);
}

void SqliteStatement::Check(int code) {
  if (code != SQLITE_OK) Throw(m_pDatabase, code);
}

void SqliteStatement::BindText(int parameter, std::u16string_view text) {
  // A null pointer would bind NULL.
  Check(sqlite3_bind_text16(Get(), parameter, text.empty() ? u"" : text.data(),
                            static_cast<int>(text.size() * sizeof(char16_t)), SQLITE_STATIC));
}

void SqliteStatement::BindText(int parameter, const char* ascii) {
  Check(sqlite3_bind_text(Get(), parameter, ascii, -1, SQLITE_STATIC));
}

void SqliteStatement::BindNumber(int parameter, std::int64_t number) {
  Check(sqlite3_bind_int64(Get(), parameter, number));
}

void SqliteStatement::BindBlob(int parameter, const void* data, std::size_t size) {
  Check(sqlite3_bind_blob64(Get(), parameter, size == 0 ? "" : data, size, SQLITE_STATIC));
}

bool SqliteStatement::Step() {
  const int code = sqlite3_step(Get());
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) Throw(m_pDatabase, code);
  return false;
}

void SqliteStatement::Reset() {
  sqlite3_reset(Get());
  sqlite3_clear_bindings(Get());
}

}  // namespace corvane::platform::linux_host
