#include <stdexcept>

#include "log/log.h"
#include "log/memory_log_policy.h"
#include "support/platform_test.h"

namespace corvane {
namespace {

class LoggerTest : public test::PlatformTest {
 protected:
  void TearDown() override {
    StopLogger();
    PlatformTest::TearDown();
  }
  std::string File(const char16_t* name) const {
    const auto at = os.files.files.find(name);
    return at == os.files.files.end() ? "(none)" : at->second;
  }
  bool Exists(const char16_t* name) const { return os.files.files.contains(name); }
  // The record of this number at the clock's time.
  static std::string Record(const char* number, const char* tag, const std::string& text) {
    return std::string(number) + "<11/18/2026/T04:20:00.123Z>~" + tag + text;
  }
};

TEST_F(LoggerTest, RecordsAreNumberedStampedAndTagged) {
  StartLogger("C:\\logs\\aps");
  LogInfo(u"one");
  LogError(u"two");
  LogWarning(u"three");
  LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "wide ", WString(u"\u0141\u00e4x"), " ", 42,
            "%d");
  const std::string all = Record("0000000", "<I>", "one\n") + Record("0000001", "<E>", "two\n") +
                          Record("0000002", "<W>", "three\n") +
                          Record("0000003", "<I>", "wide \x41\xe4x 42%d\n");
  EXPECT_EQ(File(u"C:\\logs\\aps.log"), all);
  EXPECT_EQ(os.console.Output(), all);
  EXPECT_EQ(GetMemoryLog(), Record("0000003", "<I>", "wide \x41\xe4x 42%d"));
}

TEST_F(LoggerTest, ARecordGoesToItsOutputsAndTakesANumberInAnyCase) {
  StartLogger("aps");
  LogRecord(kLogMemory, "<I>", "memory");
  LogRecord(kLogFile, "<I>", "file");
  LogRecord(kLogConsole, "<I>", "console");
  LogRecord(0, "<I>", "nowhere");
  LogRecord(kLogMemory | kLogFile, "<I>", "both");
  EXPECT_EQ(File(u"aps.log"),
            Record("0000001", "<I>", "file\n") + Record("0000004", "<I>", "both\n"));
  EXPECT_EQ(os.console.Output(), Record("0000002", "<I>", "console\n"));
  EXPECT_EQ(GetMemoryLog(), Record("0000000", "<I>", "memory") + Record("0000004", "<I>", "both"));
}

TEST_F(LoggerTest, LinesAreCutAndLoseOneLineFeed) {
  StartLogger("aps");
  os.console.Output();
  const struct {
    WString text, written;
  } cases[] = {
      {u"plain", u"plain"},
      {u"end\n", u"end"},
      {u"end\n\n", u"end\n"},
      {u"\n", u""},
      {u"", u""},
      {u"in\nside", u"in\nside"},
      {WString(2047, u'x') + u"\n", WString(2047, u'x')},
      {WString(2046, u'x') + u"\n" + u"y", WString(2046, u'x')},  // cut first
      {WString(3000, u'x'), WString(2047, u'x')},
  };
  for (const auto& one : cases) {
    LOG_INFO(u"%s", one.text);
    EXPECT_TRUE(os.console.Output().ends_with("Z>~<I>" + Narrow(one.written) + "\n"));
  }
}

TEST_F(LoggerTest, GatesOpenByAnyNamedBitAndByTheAdapter) {
  StartLogger("aps");
  os.console.Output();
  int evaluated = 0;
  const auto value = [&evaluated] { return ++evaluated; };
  const auto told = [this] { return !os.console.Output().empty(); };

  g_DebugMask = DBG(16) | DBG(48);
  LOG_DEBUG(DBG(17), u"%i", value());
  EXPECT_FALSE(told());
  EXPECT_EQ(evaluated, 0);  // no value of a closed line is worked out
  LOG_DEBUG(DBG(16) | DBG(17), u"%i", value());
  EXPECT_TRUE(told());
  LOG_DEBUG(DBG(48), u"%i", value());
  EXPECT_TRUE(told());

  g_DebugIFMask = 2;
  for (const auto& [adapter, open] :
       {std::pair{0, false}, {1, true}, {2, false}, {33, true}, {32, false}}) {
    LOG_ADAPTER(adapter, DBG(16), u"[%i]", adapter);
    EXPECT_EQ(told(), open) << adapter;
    LOG_ADAPTER(adapter, DBG(17), u"[%i]", adapter);
    EXPECT_FALSE(told()) << adapter;
  }
  g_DebugMask = 0;
  LOG_ERROR(u"always");
  EXPECT_TRUE(told());
}

TEST_F(LoggerTest, StartMovesTheFilesOfTheLastRunsOnOnePlace) {
  auto& files = os.files.files;
  files = {{u"d/aps.log", "live"},
           {u"d/aps1.log", "one"},
           {u"d/aps2.log", "two"},
           {u"d/aps3.log", "three"}};
  StartLogger("d/aps");
  EXPECT_EQ(File(u"d/aps.log"), "");
  EXPECT_EQ(File(u"d/aps1.log"), "live");
  EXPECT_EQ(File(u"d/aps2.log"), "one");
  EXPECT_EQ(File(u"d/aps3.log"), "two");
  StopLogger();

  // The overflow file stands beside the live one; it goes in front of it.
  files = {{u"d/aps.log", std::string(200'000, 'L')},
           {u"d/~aps.log", std::string(100'000, 'O')},
           {u"d/aps1.log", "one"}};
  StartLogger("d/aps");
  EXPECT_EQ(File(u"d/aps1.log"), std::string(100'000, 'O') + std::string(200'000, 'L'));
  EXPECT_EQ(File(u"d/aps2.log"), "one");
  EXPECT_FALSE(Exists(u"d/~aps.log") || Exists(u"d/aps3.log"));
  StopLogger();

  files = {{u"d/~aps.log", "over"}};  // the live file is gone
  StartLogger("d/aps");
  EXPECT_EQ(File(u"d/aps1.log"), "over");
  StopLogger();

  files.clear();
  StartLogger("d/aps");
  EXPECT_EQ(files.size(), 1u);
}

TEST_F(LoggerTest, WithFileLoggingOffNothingRotatesAndNoFileIsMade) {
  g_EnableFileLogging = 0;
  os.files.files = {{u"aps.log", "live"}, {u"aps1.log", "one"}};
  StartLogger("aps");
  LogRecord(kLogFile | kLogConsole | kLogMemory, "<I>", "x");
  EXPECT_EQ(File(u"aps.log"), "live");
  EXPECT_EQ(File(u"aps1.log"), "one");
  EXPECT_EQ(os.files.files.size(), 2u);
  EXPECT_EQ(os.console.Output(), Record("0000000", "<I>", "x\n"));
  EXPECT_EQ(GetMemoryLog(), Record("0000000", "<I>", "x"));

  g_EnableFileLogging =
      1;  // turned on during the run: from now on it is written, behind what is there
  LogInfo(u"y");
  EXPECT_EQ(File(u"aps.log"), "live" + Record("0000001", "<I>", "y\n"));
  g_EnableFileLogging = 0;  // and off again: at once
  LogInfo(u"z");
  EXPECT_EQ(File(u"aps.log"), "live" + Record("0000001", "<I>", "y\n"));
  StopLogger();  // a run that ends with file logging off leaves no live file
  EXPECT_FALSE(Exists(u"aps.log"));
  EXPECT_TRUE(Exists(u"aps1.log"));
}

TEST_F(LoggerTest, TwoMillionBytesMoveToTheOverflowFile) {
  StartLogger("d/aps");
  os.console.keep = false;
  const std::size_t head = Record("0000000", "<I>", "").size();
  const WString line(2000 - head, u'x');  // a record of 2,000 bytes, its line feed aside
  for (int i = 0; i < 1000; ++i) LogInfo(line);
  EXPECT_FALSE(Exists(u"d/~aps.log"));  // 2,000,000 is not over the limit
  EXPECT_EQ(File(u"d/aps.log").size(), 1000u * 2001);
  LogInfo(u"");
  EXPECT_EQ(File(u"d/~aps.log").size(), 1000u * 2001 + head + 1);
  EXPECT_EQ(File(u"d/aps.log"), "");
  LogInfo(u"next");
  EXPECT_EQ(File(u"d/aps.log"), Record("0001001", "<I>", "next\n"));

  // The overflow file keeps the latest full portion alone.
  for (int i = 0; i < 1001; ++i) LogInfo(line);
  EXPECT_TRUE(File(u"d/~aps.log").starts_with(Record("0001001", "<I>", "next\n")));
  StopLogger();
  StartLogger("d/aps");
  EXPECT_TRUE(File(u"d/aps1.log").starts_with(Record("0001001", "<I>", "next\n")));
  EXPECT_FALSE(Exists(u"d/~aps.log"));
}

TEST_F(LoggerTest, AFileThatCannotBeOpenedAtStartIsAnError) {
  os.failures.Fail("CreateFileW", platform::ERROR_ACCESS_DENIED);
  try {
    StartLogger("d/aps");
    FAIL() << "it started";
  } catch (const std::runtime_error& e) {
    EXPECT_STREQ(e.what(), "LOGGER: Unable to open an output stream");
  }
  LogInfo(u"on the console still");
  EXPECT_EQ(os.console.Output(), "on the console still\n");
}

TEST_F(LoggerTest, FailuresOfTheFileAreIgnoredUntilItMustBeOpenedAnew) {
  StartLogger("d/aps");
  os.failures.Fail("WriteFile");
  LogInfo(u"lost");
  os.failures.Pass("WriteFile");
  LogInfo(u"kept");
  EXPECT_EQ(File(u"d/aps.log"), Record("0000001", "<I>", "kept\n"));
  EXPECT_EQ(os.console.Output(),
            Record("0000000", "<I>", "lost\n") + Record("0000001", "<I>", "kept\n"));

  os.console.keep = false;
  os.failures.Fail("CreateFileW", platform::ERROR_ACCESS_DENIED);
  os.failures.Fail("CopyFileW");  // a failed copy is no reason to stop
  const WString line(2000, u'x');
  EXPECT_THROW(
      {
        for (int i = 0; i < 1100; ++i) LogInfo(line);
      },
      std::runtime_error);
  LogInfo(u"the next record meets no exception");
  os.failures.Pass("CreateFileW");
  for (int i = 0; i < 1100; ++i) LogInfo(line);  // the file comes back at the next limit
  EXPECT_TRUE(File(u"d/aps.log").starts_with("000")) << File(u"d/aps.log").substr(0, 40);
  EXPECT_FALSE(File(u"d/aps.log").starts_with(Record("0000001", "<I>", "kept")));
  EXPECT_FALSE(Exists(u"d/~aps.log"));
}

TEST_F(LoggerTest, FaultsOfTheFileDoNotLeaveTheStop) {
  for (const std::uint32_t toFile : {1u, 0u}) {
    StartLogger("d/aps");
    g_EnableFileLogging = toFile;
    for (const char* operation : {"CloseFile", "DeleteFileW"})
      os.failures.Fail(operation, test::FailureSwitch::kFault);
    os.console.Output();
    StopLogger();
    const std::string told = os.console.Output();
    EXPECT_NE(told.find("close_ostream: __EXCEPTION__"), std::string::npos);
    EXPECT_EQ(told.find("DeleteFileW: __EXCEPTION__") != std::string::npos, toFile == 0);
    for (const char* operation : {"CloseFile", "DeleteFileW"}) os.failures.Pass(operation);
    g_EnableFileLogging = 1;
  }
}

TEST_F(LoggerTest, WithoutALoggerTheConsoleIsWhatThereIs) {
  EXPECT_EQ(GetMemoryLog(), "");
  LogInfo(u"100 %s");
  LogError(u"bad\n");
  LogRecord(kLogFile | kLogConsole, "<I>", "piece ", 7);
  LogRecord(kLogFile | kLogMemory, "<I>", "nowhere");
  EXPECT_EQ(os.console.Output(), "100 %s\nbad\n\npiece 7\n");
  StartLogger("aps");
  StopLogger();
  StopLogger();
  LogInfo(u"after");
  EXPECT_EQ(os.console.Output(), "after\n");
  EXPECT_EQ(GetMemoryLog(), "");
}

TEST(MemoryLog, KeepsTheLatest2000Records) {
  memory_log_policy log;
  for (int i = 1; i <= 2001; ++i) log.write("<" + std::to_string(i) + ">\n");
  const std::string_view all = log.retrieve();
  EXPECT_TRUE(all.starts_with("<2><3>"));
  EXPECT_TRUE(all.ends_with("<2000><2001>"));
  log.write(std::string(5000, 'x') + "\n");
  log.write("<short>\n");  // takes over the room of an old record, not its text
  EXPECT_TRUE(log.retrieve().starts_with("<4><5>"));
  EXPECT_TRUE(log.retrieve().ends_with("x<short>"));
}

TEST(MemoryLog, TellsWhenNotAllFits) {
  const std::string mark = "<RETRIEVAL TRUNCATED -- BUFFER IS TOO BIG>\n";
  for (const auto& [last, fits] : {std::pair<std::size_t, bool>{3000, true}, {3001, false}}) {
    memory_log_policy log;
    for (int i = 0; i < 4; ++i) log.write(std::string(124'225, 'a') + "\n");
    log.write(std::string(last, 'b') + "\n");  // 3,000 bytes are left
    log.write("c\n");
    const std::string_view text = log.retrieve();
    EXPECT_EQ(text.size(), fits ? 499'900 + mark.size() : 496'900 + mark.size());
    EXPECT_TRUE(text.ends_with((fits ? "b" : "a") + mark));  // the newest get lost
  }
}

}  // namespace
}  // namespace corvane
