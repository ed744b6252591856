#include "platform/linux/sqlite_registry.h"

#include <sqlite3.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "platform/linux/host_error.h"
#include "platform/linux/registry_value.h"
#include "platform/linux/sqlite_database.h"
#include "platform/sim/kernel/seam_gate.h"
#include "platform/sim/kernel/sim_text.h"

namespace corvane::platform::linux_host {

namespace {

constexpr REGSAM kQueryValue = 0x1;  // KEY_QUERY_VALUE, part of KEY_READ
constexpr REGSAM kSetValue = 0x2;    // KEY_SET_VALUE, part of KEY_WRITE
constexpr REGSAM kEnumerate = 0x8;   // KEY_ENUMERATE_SUB_KEYS, part of KEY_READ
constexpr std::uintptr_t kKeyHandleStep = 4;
constexpr DWORD kRegistryCorrupt = 1015;  // ERROR_REGISTRY_CORRUPT
constexpr char kLayoutVersion[] = "1";

// UTF-16, so that a text is kept as it was given.
constexpr char kOpening[] =
    "PRAGMA encoding='UTF-16le';"
    "PRAGMA journal_mode=WAL;"
    "PRAGMA synchronous=FULL;";
constexpr char kTables[] =
    "BEGIN IMMEDIATE;"
    "CREATE TABLE IF NOT EXISTS registry("
    "  key TEXT NOT NULL COLLATE NOCASE, name TEXT NOT NULL COLLATE NOCASE,"
    "  type TEXT NOT NULL, value NOT NULL,"
    "  PRIMARY KEY(key, name),"
    "  CHECK(type <> 'REG_DWORD' OR typeof(value) = 'blob'"
    "    OR (typeof(value) = 'integer' AND value BETWEEN 0 AND 4294967295)),"
    "  CHECK(type <> 'REG_QWORD' OR typeof(value) IN ('integer', 'blob')),"
    "  CHECK(type <> 'REG_SZ' OR typeof(value) IN ('text', 'blob'))"
    ") WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS registry_keys("
    "  key TEXT NOT NULL PRIMARY KEY COLLATE NOCASE) WITHOUT ROWID;"
    "PRAGMA user_version=1;"
    "COMMIT;";

LSTATUS CodeOf(const SqliteError& error) {
  switch (error.code) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return ERROR_SHARING_VIOLATION;
    case SQLITE_PERM:
    case SQLITE_READONLY:
      return ERROR_ACCESS_DENIED;
    case SQLITE_NOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
      return kRegistryCorrupt;
    default:
      return ERROR_GEN_FAILURE;
  }
}

// Whether the file itself is bad, so that another one helps; not the disk or another program.
bool IsFileBad(int code) {
  static constexpr int kOthers[] = {SQLITE_BUSY, SQLITE_LOCKED, SQLITE_FULL, SQLITE_IOERR,
                                    SQLITE_NOMEM};
  return std::ranges::find(kOthers, code) == std::end(kOthers);
}

// One separator between parts, none at the ends.
std::u16string CleanPath(std::u16string_view path) {
  std::u16string clean;
  for (const char16_t c : path) {
    if (c != u'\\' || (!clean.empty() && clean.back() != u'\\')) clean += c;
  }
  if (clean.ends_with(u'\\')) clean.pop_back();
  return clean;
}

// The database with the files that belong to it goes to a name with the time that is still free.
std::string SetAside(const std::string& path) {
  const time_t now = time(nullptr);
  tm utc{};
  gmtime_r(&now, &utc);
  char stamp[32];
  std::strftime(stamp, sizeof(stamp), "%Y%m%dT%H%M%SZ", &utc);
  const std::string base = path + ".unreadable-" + stamp;
  std::string aside = base;
  for (int n = 2; access(aside.c_str(), F_OK) == 0; ++n) aside = base + "-" + std::to_string(n);
  if (std::rename(path.c_str(), aside.c_str()) != 0) {
    throw HostError("the registry database " + path +
                    " is unreadable and cannot be set aside: " + std::strerror(errno));
  }
  for (const char* part : {"-wal", "-shm"}) {
    std::rename((path + part).c_str(), (aside + part).c_str());
  }
  return aside;
}

// Resets a statement at the end of the scope, so that no lock and no borrowed text stays.
class Use {
 public:
  explicit Use(SqliteStatement& statement) : m_Statement(statement) {}
  ~Use() { m_Statement.Reset(); }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;
  SqliteStatement* operator->() const { return &m_Statement; }
  SqliteStatement& operator*() const { return m_Statement; }

 private:
  SqliteStatement& m_Statement;
};

}  // namespace

struct SqliteRegistry::Connection {
  explicit Connection(const std::string& path)
      : database(path, kOpeningBusyMs), made(Prepare(database)) {
    database.SetBusyTime(kBusyMs);
  }

  bool HasKey(std::u16string_view path) {
    const Use use(hasKey);
    use->BindText(1, path);
    return use->Step();
  }
  // With its parents, in one transaction.
  void CreateKey(std::u16string_view path) {
    database.Execute("BEGIN IMMEDIATE");
    try {
      for (std::size_t end = path.find(u'\\');; end = path.find(u'\\', end + 1)) {
        const Use use(addKey);
        use->BindText(1, path.substr(0, end));
        use->Step();
        if (end == path.npos) break;
      }
      database.Execute("COMMIT");
    } catch (const SqliteError&) {
      sqlite3_exec(database.Get(), "ROLLBACK", nullptr, nullptr, nullptr);
      throw;
    }
  }

  // The names of the keys directly below, in order. A key that another program has written values
  // of may stand in the table of values alone.
  std::vector<std::u16string> KeysBelow(const std::u16string& path) {
    const std::u16string first = path.empty() ? path : path + u"\\";
    const std::u16string end = path.empty() ? u"\xFFFF" : path + u"]";  // follows the backslash
    const Use use(below);
    use->BindText(1, first);
    use->BindText(2, end);
    std::vector<std::u16string> names;
    while (use->Step()) {
      const auto* text = static_cast<const char16_t*>(sqlite3_column_text16(use->Get(), 0));
      const std::u16string_view rest = sim::ViewOf(text).substr(first.size());
      std::u16string name(rest.substr(0, rest.find(u'\\')));
      const bool known = std::ranges::any_of(names, [&](const std::u16string& other) {
        return sim::FoldCase(other) == sim::FoldCase(name);
      });
      if (!name.empty() && !known) names.push_back(std::move(name));
    }
    return names;
  }
  DWORD CountValues(std::u16string_view path) {
    const Use use(countValues);
    use->BindText(1, path);
    return use->Step() ? static_cast<DWORD>(sqlite3_column_int64(use->Get(), 0)) : 0;
  }

  static bool Prepare(SqliteDatabase& database) {
    database.Execute(kOpening);
    if (const std::string state = database.Text("PRAGMA quick_check(1)"); state != "ok") {
      throw SqliteError(SQLITE_CORRUPT, state);
    }
    const std::string version = database.Text("PRAGMA user_version");
    if (version == "0") {
      database.Execute(kTables);
    } else if (version != kLayoutVersion) {
      throw HostError("it was made by a newer version (layout " + version + ")");
    }
    return true;
  }

  SqliteDatabase database;
  const bool made;  // the tables are there before the statements are prepared
  SqliteStatement hasKey{database,
                         "SELECT 1 FROM registry_keys WHERE key = ?1 UNION ALL "
                         "SELECT 1 FROM registry WHERE key = ?1 LIMIT 1"};
  SqliteStatement addKey{database, "INSERT OR IGNORE INTO registry_keys(key) VALUES(?1)"};
  SqliteStatement query{database, "SELECT type, value FROM registry WHERE key = ?1 AND name = ?2"};
  // A value keeps the spelling that it was made with.
  SqliteStatement set{database,
                      "INSERT INTO registry(key, name, type, value) VALUES(?1, ?2, ?3, ?4) "
                      "ON CONFLICT(key, name) DO UPDATE SET type = excluded.type, "
                      "value = excluded.value"};
  SqliteStatement remove{database, "DELETE FROM registry WHERE key = ?1 AND name = ?2"};
  SqliteStatement below{database,
                        "SELECT key FROM registry_keys WHERE key >= ?1 AND key < ?2 UNION "
                        "SELECT key FROM registry WHERE key >= ?1 AND key < ?2 ORDER BY 1"};
  SqliteStatement countValues{database, "SELECT count(*) FROM registry WHERE key = ?1"};
};

SqliteRegistry::SqliteRegistry(sim::SeamGate& gate, const std::string& path, std::string* notice)
    : m_Gate(gate) {
  const auto open = [&] { m_pConnection = std::make_unique<Connection>(path); };
  notice->clear();
  try {
    try {
      open();
    } catch (const SqliteError& error) {
      if (!IsFileBad(error.code) || access(path.c_str(), F_OK) != 0) throw;
      const std::string aside = SetAside(path);
      *notice = "the registry database " + path + " was unreadable (" + error.what() +
                "); it was set aside as " + aside + ", and a fresh one is made";
      open();
    }
  } catch (const std::runtime_error& error) {
    throw HostError("the registry database " + path + " cannot be opened: " + error.what());
  }
}

SqliteRegistry::~SqliteRegistry() = default;

std::size_t SqliteRegistry::OpenHandles() const {
  const std::lock_guard lock(m_Mutex);
  return m_Handles.size();
}

std::optional<SqliteRegistry::Handle> SqliteRegistry::Find(HKEY key) const {
  if (key == HKEY_LOCAL_MACHINE) return Handle{u"", KEY_ALL_ACCESS};
  const auto found = m_Handles.find(reinterpret_cast<std::uintptr_t>(key));
  return found == m_Handles.end() ? std::nullopt : std::optional(found->second);
}

LSTATUS SqliteRegistry::RegOpenKeyExW(HKEY root, LPCWSTR path, DWORD, REGSAM access, HKEY* key) {
  m_Gate.Enter("RegOpenKeyExW");
  return Open(root, path, access, false, key);
}

LSTATUS SqliteRegistry::RegCreateKeyExW(HKEY root, LPCWSTR path, REGSAM access, HKEY* key) {
  m_Gate.Enter("RegCreateKeyExW");
  return Open(root, path, access, true, key);
}

LSTATUS SqliteRegistry::Open(HKEY root, LPCWSTR path, REGSAM access, bool create, HKEY* key) {
  const std::lock_guard lock(m_Mutex);
  const std::optional<Handle> base = Find(root);
  if (!base) return ERROR_INVALID_HANDLE;
  if (!key) return ERROR_INVALID_PARAMETER;
  const std::u16string_view below = sim::ViewOf(path);
  if (below.starts_with(u'\\')) return ERROR_BAD_PATHNAME;
  std::u16string whole = CleanPath(base->path + u"\\" + std::u16string(below));
  try {
    if (!whole.empty() && !m_pConnection->HasKey(whole)) {
      if (!create) return ERROR_FILE_NOT_FOUND;
      m_pConnection->CreateKey(whole);
    }
  } catch (const SqliteError& error) {
    return CodeOf(error);
  }
  m_LastHandle += kKeyHandleStep;
  m_Handles[m_LastHandle] = {std::move(whole), access};
  *key = reinterpret_cast<HKEY>(m_LastHandle);
  return ERROR_SUCCESS;
}

LSTATUS SqliteRegistry::RegCloseKey(HKEY key) {
  if (key == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
  const std::lock_guard lock(m_Mutex);
  return m_Handles.erase(reinterpret_cast<std::uintptr_t>(key)) == 1 ? ERROR_SUCCESS
                                                                     : ERROR_INVALID_HANDLE;
}

LSTATUS SqliteRegistry::RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* type, BYTE* data,
                                         DWORD* size) {
  m_Gate.Enter("RegQueryValueExW");
  const std::lock_guard lock(m_Mutex);
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kQueryValue)) return ERROR_ACCESS_DENIED;
  if (data && !size) return ERROR_INVALID_PARAMETER;
  RegistryValue value;
  try {
    const Use use(m_pConnection->query);
    use->BindText(1, handle->path);
    use->BindText(2, sim::ViewOf(name));
    if (!use->Step()) return ERROR_FILE_NOT_FOUND;
    value = ReadRegistryValue(*use);
  } catch (const SqliteError& error) {
    return CodeOf(error);
  }
  if (type) *type = value.type;
  if (!size) return ERROR_SUCCESS;
  const DWORD room = *size;
  *size = static_cast<DWORD>(value.data.size());
  if (!data) return ERROR_SUCCESS;
  if (room < *size) return ERROR_MORE_DATA;
  std::ranges::copy(value.data, data);
  return ERROR_SUCCESS;
}

LSTATUS SqliteRegistry::RegSetValueExW(HKEY key, LPCWSTR name, DWORD type, const BYTE* data,
                                       DWORD size) {
  m_Gate.Enter("RegSetValueExW");
  const std::lock_guard lock(m_Mutex);
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kSetValue)) return ERROR_ACCESS_DENIED;
  if (!data && size > 0) return ERROR_INVALID_PARAMETER;
  const std::string typeName = RegistryTypeName(type);
  try {
    const Use use(m_pConnection->set);
    use->BindText(1, handle->path);
    use->BindText(2, sim::ViewOf(name));
    use->BindText(3, typeName.c_str());
    BindRegistryValue(*use, 4, type, data, size);
    use->Step();
    return ERROR_SUCCESS;
  } catch (const SqliteError& error) {
    return CodeOf(error);
  }
}

LSTATUS SqliteRegistry::RegDeleteValueW(HKEY key, LPCWSTR name) {
  m_Gate.Enter("RegDeleteValueW");
  const std::lock_guard lock(m_Mutex);
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kSetValue)) return ERROR_ACCESS_DENIED;
  try {
    const Use use(m_pConnection->remove);
    use->BindText(1, handle->path);
    use->BindText(2, sim::ViewOf(name));
    use->Step();
    return sqlite3_changes(m_pConnection->database.Get()) == 1 ? ERROR_SUCCESS
                                                               : ERROR_FILE_NOT_FOUND;
  } catch (const SqliteError& error) {
    return CodeOf(error);
  }
}

LSTATUS SqliteRegistry::RegQueryInfoKeyW(HKEY key, DWORD* subKeys, DWORD* values) {
  m_Gate.Enter("RegQueryInfoKeyW");
  const std::lock_guard lock(m_Mutex);
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kQueryValue)) return ERROR_ACCESS_DENIED;
  try {
    if (subKeys) *subKeys = static_cast<DWORD>(m_pConnection->KeysBelow(handle->path).size());
    if (values) *values = m_pConnection->CountValues(handle->path);
    return ERROR_SUCCESS;
  } catch (const SqliteError& error) {
    return CodeOf(error);
  }
}

LSTATUS SqliteRegistry::RegEnumKeyExW(HKEY key, DWORD index, char16_t* name, DWORD* chars) {
  m_Gate.Enter("RegEnumKeyExW");
  const std::lock_guard lock(m_Mutex);
  const std::optional<Handle> handle = Find(key);
  if (!handle) return ERROR_INVALID_HANDLE;
  if (!(handle->access & kEnumerate)) return ERROR_ACCESS_DENIED;
  if (!name || !chars) return ERROR_INVALID_PARAMETER;
  try {
    const auto names = m_pConnection->KeysBelow(handle->path);
    if (index >= names.size()) return ERROR_NO_MORE_ITEMS;
    return sim::GiveText(names[index], name, chars) ? ERROR_SUCCESS : ERROR_MORE_DATA;
  } catch (const SqliteError& error) {
    return CodeOf(error);
  }
}

}  // namespace corvane::platform::linux_host
