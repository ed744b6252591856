#include "platform/linux/registry_reader.h"

#include <sqlite3.h>

#include "platform/linux/host_error.h"

namespace corvane::platform::linux_host {

namespace {

constexpr int kBusyMs = 2000;  // while the service recovers the log of a run that was killed

struct StatementCloser {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

std::string Column(sqlite3_stmt* row, int column) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(row, column));
  return text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(row, column)))
              : std::string();
}

}  // namespace

void RegistryReader::Closer::operator()(sqlite3* database) const { sqlite3_close_v2(database); }

RegistryReader::RegistryReader(const std::string& path) {
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
  m_pDatabase.reset(database);
  if (code != SQLITE_OK) {
    throw HostError("the registry " + path + " cannot be read: " + sqlite3_errmsg(database));
  }
  sqlite3_busy_timeout(database, kBusyMs);
}

std::map<std::string, std::string> RegistryReader::Values(std::string_view key) const {
  sqlite3_stmt* made = nullptr;
  const int prepared = sqlite3_prepare_v2(
      m_pDatabase.get(), "SELECT name, value FROM registry WHERE key = ?1", -1, &made, nullptr);
  const std::unique_ptr<sqlite3_stmt, StatementCloser> statement(made);
  std::map<std::string, std::string> values;
  int code = prepared;
  if (prepared == SQLITE_OK) {
    sqlite3_bind_text(made, 1, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
    while ((code = sqlite3_step(made)) == SQLITE_ROW) values[Column(made, 0)] = Column(made, 1);
  }
  if (code != SQLITE_DONE) {
    throw HostError(std::string("the registry cannot be read: ") +
                    sqlite3_errmsg(m_pDatabase.get()));
  }
  return values;
}

}  // namespace corvane::platform::linux_host
