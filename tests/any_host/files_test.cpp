// Files of the host.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "any_host/host_kernel.h"
#include "any_host/temp_directory.h"
#include "platform/utf.h"

namespace corvane::test {

using namespace platform;

class HostFiles : public testing::Test, protected HostFileSystem {
 protected:
  std::u16string At(const std::string& name) const { return ToUtf16(directory / name); }
  void Put(const std::string& name, const std::string& text) {
    std::ofstream(directory / name, std::ios::binary) << text;
  }
  std::string Text(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(directory / name, std::ios::binary).rdbuf();
    return text.str();
  }
  bool Exists(const std::string& name) const {
    return std::filesystem::exists(std::filesystem::path(At(name)));
  }
  HANDLE Open(const std::string& name, DWORD access, DWORD disposition) {
    return files.CreateFileW(At(name).c_str(), access, disposition);
  }
  void Write(HANDLE file, const std::string& text) {
    DWORD written = 0;
    EXPECT_TRUE(files.WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written));
    EXPECT_EQ(written, text.size());
  }

  TempDirectory directory;
};

TEST_F(HostFiles, OpensByDispositionAndTellsWhetherTheFileWasThere) {
  HANDLE file = Open("a", GENERIC_WRITE, CREATE_ALWAYS);
  ASSERT_TRUE(file);
  EXPECT_EQ(threads.GetLastError(), ERROR_SUCCESS);
  Write(file, "first");
  EXPECT_TRUE(files.FlushFileBuffers(file));
  EXPECT_TRUE(files.CloseFile(file));
  file = Open("a", FILE_APPEND_DATA, OPEN_ALWAYS);
  EXPECT_EQ(threads.GetLastError(), ERROR_ALREADY_EXISTS);
  Write(file, "+");
  ULONGLONG size = 0;
  EXPECT_TRUE(files.GetFileSizeEx(file, &size));
  EXPECT_EQ(size, 6u);
  files.CloseFile(file);
  EXPECT_EQ(Text("a"), "first+");
  file = Open("a", GENERIC_READ, OPEN_EXISTING);
  char buffer[4] = {};
  DWORD read = 0;
  EXPECT_TRUE(files.ReadFile(file, buffer, 4, &read));
  EXPECT_TRUE(files.ReadFile(file, buffer, 4, &read));
  EXPECT_EQ(std::string(buffer, read), "t+");
  EXPECT_TRUE(files.ReadFile(file, buffer, 4, &read));  // the end is no failure
  EXPECT_EQ(read, 0u);
  DWORD written = 1;
  EXPECT_FALSE(files.WriteFile(file, "x", 1, &written));
  EXPECT_EQ(written, 0u);
  files.CloseFile(file);
  files.CloseFile(Open("a", GENERIC_WRITE, CREATE_ALWAYS));
  EXPECT_EQ(Text("a"), "");
}

TEST_F(HostFiles, NamesTheReasonOfAFailure) {
  EXPECT_FALSE(Open("none", GENERIC_READ, OPEN_EXISTING));
  EXPECT_EQ(threads.GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_FALSE(Open("none/a", GENERIC_WRITE, CREATE_ALWAYS));
  EXPECT_EQ(threads.GetLastError(), ERROR_PATH_NOT_FOUND);
  Put("file", "text");
  EXPECT_FALSE(Open("file/a", GENERIC_WRITE, CREATE_ALWAYS));
  EXPECT_EQ(threads.GetLastError(), ERROR_PATH_NOT_FOUND);
  EXPECT_TRUE(files.CreateDirectoryW(At("folder").c_str()));
  EXPECT_FALSE(files.CreateDirectoryW(At("folder").c_str()));
  EXPECT_EQ(threads.GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_FALSE(Open("folder", GENERIC_READ, OPEN_EXISTING));
  EXPECT_EQ(threads.GetLastError(), ERROR_ACCESS_DENIED);
  EXPECT_EQ(files.GetFileAttributesW(At("folder").c_str()), FILE_ATTRIBUTE_DIRECTORY);
  EXPECT_EQ(files.GetFileAttributesW(At("file").c_str()) & FILE_ATTRIBUTE_DIRECTORY, 0u);
  EXPECT_EQ(files.GetFileAttributesW(At("none").c_str()), INVALID_FILE_ATTRIBUTES);
  EXPECT_FALSE(files.CloseFile(reinterpret_cast<HANDLE>(std::uintptr_t{9999})));
  EXPECT_EQ(threads.GetLastError(), ERROR_INVALID_HANDLE);
}

TEST_F(HostFiles, CopiesMovesAndDeletes) {
  const std::string big(200'000, 'b');
  Put("big", big);
  Put("small", "s");
  EXPECT_FALSE(files.CopyFileW(At("big").c_str(), At("small").c_str(), TRUE));
  EXPECT_EQ(threads.GetLastError(), ERROR_FILE_EXISTS);
  EXPECT_EQ(Text("small"), "s");
  EXPECT_TRUE(files.CopyFileW(At("big").c_str(), At("small").c_str(), FALSE));
  EXPECT_EQ(Text("small"), big);
  // A copy onto itself must not empty the file.
  EXPECT_FALSE(files.CopyFileW(At("big").c_str(), At("big").c_str(), FALSE));
  EXPECT_EQ(Text("big"), big);

  Put("new", "n");
  EXPECT_FALSE(files.MoveFileExW(At("new").c_str(), At("big").c_str(), 0));
  EXPECT_EQ(threads.GetLastError(), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(Text("big"), big);
  EXPECT_TRUE(files.MoveFileExW(At("new").c_str(), At("big").c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(Text("big"), "n");
  EXPECT_FALSE(Exists("new"));
  EXPECT_FALSE(files.MoveFileExW(At("new").c_str(), At("big").c_str(), MOVEFILE_REPLACE_EXISTING));
  EXPECT_EQ(threads.GetLastError(), ERROR_FILE_NOT_FOUND);
  EXPECT_TRUE(files.DeleteFileW(At("big").c_str()));
  EXPECT_FALSE(files.DeleteFileW(At("big").c_str()));
  EXPECT_EQ(threads.GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(HostFiles, ReadsUtf8StrictlyAndWritesNamesInIt) {
  struct Case {
    std::string bytes;
    std::u16string text;
  };
  const Case cases[] = {
      {"a\xC3\xA9\xE6\x97\xA5\xF0\x9F\x93\xB6", u"a\u00E9\u65E5\U0001F4F6"},
      {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // longer than it needs to be
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // half a surrogate pair
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
      {"x\xE6\x97", u"x\uFFFD\uFFFD"},                    // cut off
  };
  for (const Case& one : cases) EXPECT_EQ(ToUtf16(one.bytes), one.text);
  files.CloseFile(Open("caf\xC3\xA9", GENERIC_WRITE, CREATE_ALWAYS));
  EXPECT_TRUE(Exists("caf\xC3\xA9"));
}

TEST_F(HostFiles, GivesTheFolderOfTheData) {
  std::u16string folder;
  EXPECT_EQ(files.SHGetFolderPathW(CSIDL_COMMON_APPDATA, &folder), S_OK);
  EXPECT_EQ(folder, kDataFolder);
}

TEST_F(HostFiles, KnowsTheExecutableOfTheProcess) {
  std::string path;
  const DWORD length = files.GetModuleFileNameA(&path);
  EXPECT_EQ(length, path.size());
  EXPECT_TRUE(std::filesystem::exists(path)) << path;
  EXPECT_EQ(std::filesystem::path(path).stem(), "corvane_host_tests");
}

}  // namespace corvane::test
