#pragma once
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace corvane::platform::linux_host {

// A failure of SQLite with its primary result code.
struct SqliteError : std::runtime_error {
  SqliteError(int theCode, const std::string& text) : std::runtime_error(text), code(theCode) {}
  const int code;
};

// One connection. It and its statements serve one thread at a time. Operations throw SqliteError.
class SqliteDatabase {
 public:
  // Opens or makes the file. Another process's lock is waited for as long as `busyMs` in life.
  SqliteDatabase(const std::string& path, int busyMs);
  void SetBusyTime(int busyMs);  // the same for what follows

  void Execute(const char* sql);
  // The first column of the first row, as text; empty without a row.
  std::string Text(const char* sql);
  sqlite3* Get() const { return m_pDatabase.get(); }

 private:
  struct Closer {
    void operator()(sqlite3* database) const;
  };
  std::unique_ptr<sqlite3, Closer> m_pDatabase;
};

// A prepared statement, to be bound and run many times.
class SqliteStatement {
 public:
  SqliteStatement(SqliteDatabase& database, const char* sql);

  // Parameters are counted from 1. A text must stay in place until Reset.
  void BindText(int parameter, std::u16string_view text);
  void BindText(int parameter, const char* ascii);
  void BindNumber(int parameter, std::int64_t number);
  void BindBlob(int parameter, const void* data, std::size_t size);
  bool Step();   // whether there is a row
  void Reset();  // also lets go of the read lock; never throws
  sqlite3_stmt* Get() const { return m_pStatement.get(); }

 private:
  void Check(int code);

  struct Closer {
    void operator()(sqlite3_stmt* statement) const;
  };
  sqlite3* m_pDatabase;
  std::unique_ptr<sqlite3_stmt, Closer> m_pStatement;
};

}  // namespace corvane::platform::linux_host
