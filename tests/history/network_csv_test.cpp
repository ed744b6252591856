#include "history/network_csv.h"

#include "history/history_file.h"
#include "platform/sim/kernel/fault_plan.h"
#include "platform/sim/kernel/sim_files.h"
#include "support/pc_fixture.h"

namespace corvane::test {
namespace {

constexpr char16_t kDirectory[] = u"/data/Palisade/PalisadeOptimizer/network_telemetry";
constexpr char16_t kFile[] =
    u"/data/Palisade/PalisadeOptimizer/network_telemetry/NetworkConnections.csv";
constexpr std::string_view kHeader =
    "TIME,MAC,REASON,SSID,BSSID,SCORE,RSSI,BAND,CHANNEL,CHANNELWIDTH,CLASS,QLOAD,STATIONCOUNT,"
    "MUMIMO,LINKTX,"
    "LINKRX,MAXDATARATE\n";

class HistoryTest : public KernelTest {
 protected:
  HistoryTest() { kernel.Files().MakeDirectories(kDirectory); }
  std::string File() { return kernel.Files().Read(kFile).value_or("missing"); }
  static void Write(WStringView row, std::int32_t sizeMB = 2) {
    CNetworkCSV::GetInstance().WriteLineTelemetry(sizeMB, WString(row));
  }
  bool HasLog(std::string_view text) {
    return kernel.Console().Text().find(text) != std::string::npos;
  }
  // As a new process finds things.
  static void Restart() { singletons::DropAll(); }
  // Rows of 100 bytes, numbered, up to `size` bytes; the last one is as long as it takes.
  static std::string Rows(std::size_t size) {
    std::string rows;
    for (int n = 0; rows.size() < size; ++n) {
      std::string row = std::to_string(n);
      row.resize(std::min<std::size_t>(99, size - rows.size() - 1), 'x');
      rows += row + '\n';
    }
    return rows;
  }
};

TEST_F(HistoryTest, ANewFileBeginsWithTheHeader) {
  Write(u"one");
  Write(u"two");
  EXPECT_EQ(File(), std::string(kHeader) + "one\ntwo\n");
  Restart();
  Write(u"three");
  EXPECT_EQ(File(), std::string(kHeader) + "one\ntwo\nthree\n") << "no second header";
}

TEST_F(HistoryTest, WithoutTheSuitesDirectoryThereIsNoHistory) {
  const auto setThere = [&](bool there) {
    kernel.Faults().Clear();
    if (!there) kernel.Faults().FailAlways("GetFileAttributesW", platform::ERROR_PATH_NOT_FOUND);
  };
  setThere(false);
  Write(u"lost");
  EXPECT_EQ(File(), "missing");
  setThere(true);
  Write(u"kept");
  kernel.Files().Remove(kFile);
  setThere(false);
  Write(u"lost");
  EXPECT_EQ(File(), "missing");
  setThere(true);
  Write(u"back");
  EXPECT_EQ(File(), std::string(kHeader) + "back\n") << "a new file is whole";
  kernel.Faults().FailAlways("SHGetFolderPathW", platform::ERROR_GEN_FAILURE);
  Restart();
  Write(u"lost");
  EXPECT_EQ(File(), std::string(kHeader) + "back\n");
}

TEST_F(HistoryTest, SizeZeroErasesTheHistory) {
  for (const std::int32_t off : {0, -1}) {
    Write(u"one");
    Write(u"", off);
    EXPECT_EQ(File(), "missing");
    Write(u"", off);
  }
  Write(u"two");
  EXPECT_EQ(File(), std::string(kHeader) + "two\n");
}

TEST_F(HistoryTest, EachCharacterIsOneByteAndARowIsOneLine) {
  Write(u"caf\u00e9,\u65e5\u672c,a\nb\tc");
  EXPECT_EQ(File(), std::string(kHeader) + "caf\xE9,??,a?b?c\n");
}

TEST_F(HistoryTest, ARowThatAKillCutOffGetsItsEnd) {
  kernel.Files().Write(kFile, std::string(kHeader) + "one\ntw");
  Write(u"three");
  EXPECT_EQ(File(), std::string(kHeader) + "one\ntw\nthree\n");
}

TEST_F(HistoryTest, AFileThatCannotBeMeasuredGetsAHeaderOfItsOwn) {
  const std::string old = std::string(kHeader) + "one\n";
  for (const char* operation : {"CreateFileW", "GetFileSizeEx"}) {
    SCOPED_TRACE(operation);
    Restart();
    kernel.Files().Write(kFile, old);
    kernel.Faults().FailCall(operation, 1, 5);
    Write(u"two");
    Write(u"three");
    EXPECT_EQ(File(), old + std::string(kHeader) + "two\nthree\n");
    kernel.Faults().Clear();
  }
}

TEST_F(HistoryTest, AFailedWriteCostsOneRow) {
  Write(u"one");
  kernel.Faults().FailCall("WriteFile", 1, 112);
  Write(u"lost");
  kernel.Faults().FailCall("CreateFileW", 2, 5);  // the first one looks at the file
  Write(u"lost");
  EXPECT_TRUE(HasLog("CNetworkCSV::OpenTelemetryWriteStream: failed to open file"));
  kernel.Faults().FailCall("WriteFile", 1, platform::sim::FaultPlan::kFault);
  Write(u"lost");
  Write(u"two");
  EXPECT_EQ(File(), std::string(kHeader) + "one\ntwo\n");
  EXPECT_EQ(kernel.Files().OpenHandles(), 0u);
}

// ---- the cut

TEST(HistoryCut, KeepsWholeRowsFromTheEnd) {
  const std::string longest(kLongestRow - 1, 'l');
  const struct {
    const char* name;
    std::string file;
    std::size_t header, limit;
    std::string rows;
  } kCases[] = {
      {"the landing row goes", "header\naaaa\nbbbb\ncccc\n", 6, 15, "cccc\n"},
      {"also when the seek lands at a row's start", "header\naaaa\nbbbb\ncccc\n", 6, 16, "cccc\n"},
      {"but not from its line end on", "header\naaaa\nbbbb\ncccc\n", 6, 17, "bbbb\ncccc\n"},
      {"the last row needs no line end", "header\naaaa\nbbbb\ncc", 6, 13, "cc\n"},
      {"nothing fits", "header\naaaaaaaaaaaaaaaaaaaa\n", 6, 10, ""},
      {"a file without a line end", std::string(40, 'x'), 6, 20, ""},
      {"a limit below the header", "header\naaaa\n", 6, 3, ""},
      {"an over-long row ends the copy", "h\nzz\naaaa\n" + longest + "l\nbbbb\n", 1, 2061,
       "aaaa\n"},
      {"the longest row does not", "h\nzz\naaaa\n" + longest + "\nbbbb\n", 1, 2060,
       "aaaa\n" + longest + "\nbbbb\n"},
      {"empty", "", 6, 10, ""},
  };
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.name);
    EXPECT_EQ(CutHistory(one.file, one.header, one.limit), one.rows);
  }
}

TEST_F(HistoryTest, AFullFileIsCutToTheLimit) {
  const std::string old = std::string(kHeader) + Rows(2'000'100 - kHeader.size() - 4);
  kernel.Files().Write(kFile, old);
  Write(u"new");
  const std::string cut = File();
  EXPECT_LE(cut.size(), 2'000'000u);
  EXPECT_GT(cut.size(), 2'000'000u - 101);
  EXPECT_TRUE(cut.starts_with(kHeader));
  EXPECT_TRUE(cut.ends_with("\nnew\n"));
  const std::string rows = cut.substr(kHeader.size());
  EXPECT_EQ((old + "new\n").substr(old.size() + 4 - rows.size()), rows)
      << "the last rows as they were";
  EXPECT_EQ(rows[99], '\n') << "a whole row first";
  EXPECT_TRUE(HasLog("CNetworkCSV::TrimFile: bytes_written = " + std::to_string(rows.size())));
  EXPECT_EQ(kernel.Files().List(kDirectory), std::vector<std::u16string>{kFile})
      << "the copy took its place";
}

// At whatever call of a trim the platform fails, or the process dies, the old file or the new one
// is there, whole.
TEST_F(HistoryTest, NoFailureAtAnyInstantOfATrimLosesTheFile) {
  const std::string full = std::string(kHeader) + Rows(1'000'000);
  const std::string after = full + "new\n";
  kernel.Files().Write(kFile, full);
  Write(u"new", 1);
  const std::string cut = File();
  ASSERT_LT(cut.size(), after.size());
  for (const platform::DWORD code :
       {platform::ERROR_GEN_FAILURE, platform::sim::FaultPlan::kFault}) {
    for (const char* operation : {"CreateFileW", "ReadFile", "GetFileSizeEx", "WriteFile",
                                  "FlushFileBuffers", "MoveFileExW"}) {
      for (std::uint64_t n = 1; n <= 20; ++n) {
        SCOPED_TRACE(std::string(operation) + " " + std::to_string(n));
        kernel.Files().Write(kFile, after);
        kernel.Faults().FailCall(operation, n, code);
        CNetworkCSV::GetInstance().TrimFile(1);
        kernel.Faults().Clear();
        const std::string now = File();
        ASSERT_TRUE(now == after || now == cut);
        ASSERT_EQ(kernel.Files().OpenHandles(), 0u);
        if (now == cut) break;  // the trim made fewer calls
      }
    }
  }
}

// The same, seen from outside: what a reader finds at every call of the file service.
class WatchedFiles : public platform::FileApi {
 public:
  explicit WatchedFiles(platform::sim::SimFiles& files) : m_Files(files) {}
  platform::HANDLE CreateFileW(platform::LPCWSTR path, platform::DWORD access,
                               platform::DWORD disposition) override {
    return Look(), m_Files.CreateFileW(path, access, disposition);
  }
  platform::BOOL ReadFile(platform::HANDLE file, void* buffer, platform::DWORD size,
                          platform::DWORD* read) override {
    return Look(), m_Files.ReadFile(file, buffer, size, read);
  }
  platform::BOOL WriteFile(platform::HANDLE file, const void* data, platform::DWORD size,
                           platform::DWORD* written) override {
    return Look(), m_Files.WriteFile(file, data, size, written);
  }
  platform::BOOL FlushFileBuffers(platform::HANDLE file) override {
    return Look(), m_Files.FlushFileBuffers(file);
  }
  platform::BOOL CloseFile(platform::HANDLE file) override {
    return Look(), m_Files.CloseFile(file);
  }
  platform::BOOL GetFileSizeEx(platform::HANDLE file, platform::ULONGLONG* size) override {
    return Look(), m_Files.GetFileSizeEx(file, size);
  }
  platform::BOOL MoveFileExW(platform::LPCWSTR from, platform::LPCWSTR to,
                             platform::DWORD flags) override {
    return Look(), m_Files.MoveFileExW(from, to, flags);
  }
  platform::BOOL DeleteFileW(platform::LPCWSTR path) override {
    return Look(), m_Files.DeleteFileW(path);
  }
  platform::DWORD GetFileAttributesW(platform::LPCWSTR path) override {
    return Look(), m_Files.GetFileAttributesW(path);
  }
  platform::HRESULT SHGetFolderPathW(int csidl, std::u16string* path) override {
    return m_Files.SHGetFolderPathW(csidl, path);
  }

  std::vector<std::string> seen;  // each content once

 private:
  void Look() {
    const std::string now = m_Files.Read(kFile).value_or("missing");
    if (seen.empty() || seen.back() != now) seen.push_back(now);
  }
  platform::sim::SimFiles& m_Files;
};

TEST_F(HistoryTest, AReaderSeesWholeFilesOnly) {
  const std::string full = std::string(kHeader) + Rows(1'000'000);
  kernel.Files().Write(kFile, full);
  auto& files = Install<WatchedFiles>(kernel.Files());
  Write(u"new", 1);
  ASSERT_EQ(files.seen.size(), 2u) << "the trim itself shows no step in between";
  EXPECT_TRUE(files.seen[0] == full);
  EXPECT_TRUE(files.seen[1] == full + "new\n");
  EXPECT_LT(File().size(), full.size());
}

TEST_F(HistoryTest, FaultInClosingTheFileEndsThere) {
  struct FaultyClose : platform::FileApi {
    platform::HANDLE CreateFileW(platform::LPCWSTR, platform::DWORD, platform::DWORD) override {
      return this;
    }
    platform::BOOL CloseFile(platform::HANDLE) override {
      throw platform::PlatformFault{platform::sim::FaultPlan::kFault};
    }
  };
  Install<FaultyClose>();
  { EXPECT_TRUE(CHistoryFile().OpenToRead(kFile)); }
  EXPECT_TRUE(HasLog("CHistoryFile::CloseFile: __EXCEPTION__"));
}

}  // namespace
}  // namespace corvane::test
