#include "log/logger3.h"

#include <algorithm>
#include <new>
#include <stdexcept>

#include "foundation/guarded.h"
#include "platform/clock_api.h"

namespace corvane {
namespace {

// At least `width` digits, filled with zeros on the left.
void AppendDecimal(std::uint32_t value, int width, std::string* out) {
  char buffer[10];
  char* const end = buffer + sizeof(buffer);
  char* p = end;
  for (; value != 0 || end - p < width; value /= 10) *--p = static_cast<char>('0' + value % 10);
  out->append(p, end);
}

void AppendMessage(std::string_view text, std::string* out) { out->append(text); }

void AppendMessage(WStringView text, std::string* out) {
  const std::size_t at = out->size();
  out->resize(at + text.size());
  std::transform(text.begin(), text.end(), out->begin() + static_cast<std::ptrdiff_t>(at),
                 [](char16_t c) { return static_cast<char>(c); });
}

}  // namespace

logger3::logger3(const std::string& fileName) : m_pFilePolicy(std::make_unique<file_log_policy>()) {
  m_pFilePolicy->open_ostream(fileName);
  m_pPrintfPolicy = std::make_unique<printf_log_policy>();
  m_pPrintfPolicy->open_ostream(fileName);
  m_pMemoryPolicy.reset(new (std::nothrow) memory_log_policy);
  if (!m_pMemoryPolicy) throw std::runtime_error("LOGGER: Unable to create the logger3 instance");
  m_pMemoryPolicy->open_ostream(fileName);
}

logger3::~logger3() {
  GiveBack("logger3", "close_ostream", [this] { m_pFilePolicy->close_ostream(); });
  m_pFilePolicy.reset();
  m_pPrintfPolicy->close_ostream();
  m_pPrintfPolicy.reset();
  m_pMemoryPolicy->close_ostream();
  m_pMemoryPolicy.reset();
}

void logger3::Write(std::uint32_t outputs, const char* tag, WStringView text) {
  WriteRecord(outputs, tag, text);
}

void logger3::Write(std::uint32_t outputs, const char* tag, std::string_view text) {
  WriteRecord(outputs, tag, text);
}

template <typename View>
void logger3::WriteRecord(std::uint32_t outputs, const char* tag, View text) {
  const CCritSecLock lock(m_Mutex);
  m_Text.clear();
  AppendHead(tag);
  AppendMessage(text, &m_Text);
  m_Text += '\n';
  if (outputs & kLogFile) m_pFilePolicy->write(m_Text);
  if (outputs & kLogConsole) m_pPrintfPolicy->write(m_Text);
  if (outputs & kLogMemory) m_pMemoryPolicy->write(m_Text);
}

// "0000123<11/18/2026/T04:20:00.123Z>~<I>"
void logger3::AppendHead(const char* tag) {
  const platform::SYSTEMTIME now = platform::SystemTimeNow();
  AppendDecimal(m_LineNumber++, 7, &m_Text);
  m_Text += '<';
  AppendDecimal(now.wMonth, 2, &m_Text);
  m_Text += '/';
  AppendDecimal(now.wDay, 2, &m_Text);
  m_Text += '/';
  AppendDecimal(now.wYear, 4, &m_Text);
  m_Text += "/T";
  AppendDecimal(now.wHour, 2, &m_Text);
  m_Text += ':';
  AppendDecimal(now.wMinute, 2, &m_Text);
  m_Text += ':';
  AppendDecimal(now.wSecond, 2, &m_Text);
  m_Text += '.';
  AppendDecimal(now.wMilliseconds, 3, &m_Text);
  m_Text += "Z>~";
  m_Text += tag;
}

std::string logger3::GetMemoryLog() {
  const CCritSecLock lock(m_Mutex);
  return std::string(m_pMemoryPolicy->retrieve());
}

}  // namespace corvane
