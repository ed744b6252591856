#include "platform/linux/sqlite_registry.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <thread>

#include "any_host/temp_directory.h"
#include "platform/linux/host_error.h"
#include "platform/linux/host_gate.h"
#include "platform/linux/sqlite_database.h"

namespace corvane::test {

using namespace platform;
using namespace platform::linux_host;

namespace {

constexpr LPCWSTR kKey = u"SOFTWARE\\OstrelNetworks\\Corvane";
constexpr char kQuietShell[] = "sqlite3 -bail ";

// The registry of one database file, as this process sees it.
class Store {
 public:
  explicit Store(const std::string& path) : m_Registry(m_Gate, path, &m_Notice) {}

  SqliteRegistry& operator*() { return m_Registry; }
  const std::string& Notice() const { return m_Notice; }

  LSTATUS Set(LPCWSTR name, DWORD type, const void* data, DWORD size, LPCWSTR path = kKey) {
    HKEY key = nullptr;
    LSTATUS result = m_Registry.RegCreateKeyExW(HKEY_LOCAL_MACHINE, path, KEY_ALL_ACCESS, &key);
    if (result != 0) return result;
    result = m_Registry.RegSetValueExW(key, name, type, static_cast<const BYTE*>(data), size);
    m_Registry.RegCloseKey(key);
    return result;
  }
  LSTATUS SetDword(LPCWSTR name, DWORD value) { return Set(name, REG_DWORD, &value, 4); }
  LSTATUS SetText(LPCWSTR name, std::u16string_view text) {
    return Set(name, REG_SZ, text.data(), static_cast<DWORD>(text.size() * 2));
  }
  // The value's bytes; nothing when it is missing.
  std::optional<std::string> Get(LPCWSTR name, DWORD* type = nullptr, LPCWSTR path = kKey) {
    HKEY key = nullptr;
    if (m_Registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key) != 0) return {};
    std::string data(1 << 16, '\0');
    DWORD size = static_cast<DWORD>(data.size());
    const LSTATUS result =
        m_Registry.RegQueryValueExW(key, name, type, reinterpret_cast<BYTE*>(data.data()), &size);
    m_Registry.RegCloseKey(key);
    data.resize(size);
    return result == 0 ? std::optional(data) : std::nullopt;
  }
  std::optional<DWORD> GetDword(LPCWSTR name) {
    const auto data = Get(name);
    if (!data || data->size() != 4) return {};
    return *reinterpret_cast<const DWORD*>(data->data());
  }

 private:
  HostGate m_Gate;
  std::string m_Notice;
  SqliteRegistry m_Registry;
};

// What the sqlite3 shell, another process, prints for a statement.
std::string Shell(const std::string& database, const std::string& sql) {
  const std::string command = kQuietShell + database + " \"" + sql + "\" 2>&1";
  std::FILE* pipe = popen(command.c_str(), "r");
  std::string output;
  char block[512];
  while (std::fgets(block, sizeof(block), pipe)) output += block;
  pclose(pipe);
  return output;
}

std::string Bytes(std::u16string_view text) {
  return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

std::vector<std::string> FilesIn(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    names.push_back(entry.path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

}  // namespace

class SqliteRegistryTest : public testing::Test {
 protected:
  TempDirectory directory;
  const std::string path = directory / "registry.db";
};

// Data comes back byte for byte from a database that was opened again.
TEST_F(SqliteRegistryTest, KeepsTypesAndBytesOverAReopen) {
  const struct {
    LPCWSTR name;
    DWORD type;
    std::string data;
  } kCases[] = {{u"dword", REG_DWORD, "\xFF\xFF\xFF\xFF"},
                {u"text", REG_SZ, Bytes(u"Caf\u00E9 \U0001F4F6 \u65E5")},
                {u"empty text", REG_SZ, ""},
                {u"odd text", REG_SZ, "abc"},
                {u"binary", REG_BINARY, std::string("\0\1\2", 3)}};
  {
    Store store(path);
    EXPECT_EQ(store.Notice(), "");
    for (const auto& one : kCases) {
      const auto size = static_cast<DWORD>(one.data.size());
      EXPECT_EQ(store.Set(one.name, one.type, one.data.data(), size), 0);
    }
  }
  Store store(path);
  for (const auto& one : kCases) {
    DWORD type = 0;
    EXPECT_EQ(store.Get(one.name, &type), one.data);
    EXPECT_EQ(type, one.type);
  }
  EXPECT_EQ((*store).OpenHandles(), 0u);
}

TEST_F(SqliteRegistryTest, ShowsKeysToClientsAndTakesTheirs) {
  Store store(path);
  auto& registry = *store;
  const DWORD value = 2;
  ASSERT_EQ(store.Set(u"ScanInterval", REG_DWORD, &value, 4, u"A\\Class\\{GUID}\\"), 0);
  EXPECT_EQ(Shell(path, "SELECT key, name, type, value FROM registry"),
            "A\\Class\\{GUID}|ScanInterval|REG_DWORD|2\n");
  Shell(path, R"(INSERT INTO registry VALUES('a\class\Client', 'x', 'REG_DWORD', 1))");
  HKEY key = nullptr;
  ASSERT_EQ(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"A\\Class", 0, KEY_READ, &key), 0);
  char16_t name[8] = {};
  DWORD chars = 8, keys = 0;
  EXPECT_EQ(registry.RegEnumKeyExW(key, 0, name, &chars), 0);
  EXPECT_EQ(std::u16string_view(name), u"Client");
  registry.RegCloseKey(key);
  EXPECT_EQ(registry.RegQueryInfoKeyW(HKEY_LOCAL_MACHINE, &keys, nullptr), 0);
  EXPECT_EQ(keys, 1u);
  ASSERT_EQ(registry.RegOpenKeyExW(HKEY_LOCAL_MACHINE, u"A\\Class", 0, KEY_WRITE, &key), 0);
  EXPECT_EQ(registry.RegQueryInfoKeyW(key, &keys, nullptr),
            static_cast<LSTATUS>(ERROR_ACCESS_DENIED));
  registry.RegCloseKey(key);
}

// Clients read and write with the shell while the service has the database open.
TEST_F(SqliteRegistryTest, SharesItsValuesWithOtherProcesses) {
  Store store(path);
  Store other(path);  // a second connection
  store.SetText(u"ConnectStatus", u"connected");
  store.SetDword(u"ScanInterval", 60);
  const std::string select = "SELECT value FROM registry WHERE name = 'connectstatus'";
  EXPECT_EQ(Shell(path, select), "connected\n");
  EXPECT_EQ(other.Get(u"ConnectStatus"), Bytes(u"connected"));
  EXPECT_EQ(Shell(path, "UPDATE registry SET value = 30 WHERE name = 'ScanInterval'"), "");
  EXPECT_EQ(store.GetDword(u"ScanInterval"), 30u);
  EXPECT_EQ(other.GetDword(u"ScanInterval"), 30u);
  // What does not fit its type is refused to the person who types it.
  EXPECT_NE(Shell(path, "UPDATE registry SET value = -1 WHERE name = 'ScanInterval'"), "");
  EXPECT_NE(Shell(path, "UPDATE registry SET value = 'fast' WHERE name = 'ScanInterval'"), "");
  EXPECT_EQ(store.GetDword(u"ScanInterval"), 30u);
}

// A writer may be waited for under a lock that all threads of the service need.
TEST_F(SqliteRegistryTest, WaitsOnlyBrieflyForAWriterThatHoldsTheDatabase) {
  Store store(path);
  store.SetDword(u"ScanInterval", 60);
  SqliteDatabase holder(path, 0);
  holder.Execute("BEGIN IMMEDIATE");
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(store.SetDword(u"ScanInterval", 30), static_cast<LSTATUS>(ERROR_SHARING_VIOLATION));
  // Far below the time that an opening waits.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  EXPECT_EQ(store.GetDword(u"ScanInterval"), 60u);
  holder.Execute("COMMIT");
  EXPECT_EQ(store.SetDword(u"ScanInterval", 30), 0);
  EXPECT_EQ(store.GetDword(u"ScanInterval"), 30u);
}

TEST_F(SqliteRegistryTest, ServesReadersOfAnotherConnection) {
  Store store(path);
  Store reader(path);
  constexpr DWORD kLast = 60;
  store.SetDword(u"a", 0);
  std::thread writer([&] {
    for (DWORD i = 1; i <= kLast; ++i) EXPECT_EQ(store.SetDword(u"a", i), 0);
  });
  DWORD seen = 0;
  while (seen < kLast) {
    const auto now = reader.GetDword(u"a");
    ASSERT_TRUE(now.has_value());
    ASSERT_GE(*now, seen);
    seen = *now;
  }
  writer.join();
}

TEST_F(SqliteRegistryTest, SetsAnUnreadableDatabaseAsideAndMakesAFreshOne) {
  struct Case {
    const char* what;
    void (*spoil)(const std::string& path);
  };
  const Case cases[] = {
      {"not a database",
       [](const std::string& file) { std::ofstream(file) << std::string(5000, 'x'); }},
      {"cut in the middle",
       [](const std::string& file) { std::filesystem::resize_file(file, 5000); }},
      {"a torn page",
       [](const std::string& file) {
         std::fstream page(file, std::ios::in | std::ios::out | std::ios::binary);
         page.seekp(4096);
         page << std::string(3000, '\xA5');
       }},
      {"a directory",
       [](const std::string& file) {
         std::filesystem::remove(file);
         std::filesystem::create_directory(file);
       }},
      {"tables of somebody else",
       [](const std::string& file) {
         Shell(file, "DROP TABLE registry; CREATE TABLE registry(x)");
       }},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.what);
    const TempDirectory home;
    const std::string file = home / "registry.db";
    {
      Store store(file);
      for (char16_t c = u'a'; c <= u'z'; ++c) {
        store.SetText(std::u16string(1, c).c_str(), std::u16string(400, c));
      }
    }
    one.spoil(file);
    Store store(file);
    EXPECT_NE(store.Notice().find(file + ".unreadable-20"), std::string::npos) << store.Notice();
    EXPECT_EQ(store.Get(u"a"), std::nullopt);
    EXPECT_EQ(store.SetDword(u"x", 1), 0);
    const auto files = FilesIn(home.Path());
    EXPECT_TRUE(std::ranges::any_of(files, [](const std::string& name) {
      return name.starts_with("registry.db.unreadable-");
    }));
  }
}

TEST_F(SqliteRegistryTest, ANewerLayoutAndAFullPathAreErrorsAndNothingIsLost) {
  { Store store(path); }
  Shell(path, "PRAGMA user_version = 2");
  try {
    Store store(path);
    FAIL() << "a newer layout was opened";
  } catch (const HostError& error) {
    EXPECT_NE(std::string(error.what()).find("newer version"), std::string::npos) << error.what();
  }
  EXPECT_EQ(FilesIn(directory.Path()), std::vector<std::string>{"registry.db"});
  EXPECT_THROW(Store store("/nowhere/registry.db"), HostError);
}

// A process that is killed at any instant loses no write whose call had returned.
TEST_F(SqliteRegistryTest, SurvivesAKillAtAnyInstant) {
  constexpr int kKills = 12;
  std::uint32_t last = 0;
  for (int round = 0; round < kKills; ++round) {
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      close(pipes[0]);
      Store store(path);
      for (std::uint32_t value = last + 1;; ++value) {
        if (store.SetDword(u"Counter", value) != 0) _exit(1);
        if (write(pipes[1], &value, sizeof(value)) != sizeof(value)) _exit(1);
      }
    }
    close(pipes[1]);
    // The first acknowledgement starts the time in which the kill comes.
    ASSERT_EQ(read(pipes[0], &last, sizeof(last)), static_cast<ssize_t>(sizeof(last)));
    std::this_thread::sleep_for(std::chrono::microseconds(700 * round));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    while (read(pipes[0], &last, sizeof(last)) == sizeof(last)) {
    }
    close(pipes[0]);

    Store store(path);
    EXPECT_EQ(store.Notice(), "");
    const auto kept = store.GetDword(u"Counter");
    ASSERT_TRUE(kept.has_value());
    EXPECT_GE(*kept, last);
    EXPECT_LE(*kept, last + 1);  // the write that was under way
    last = *kept;
  }
}

}  // namespace corvane::test
