// The path of a response: its head, its charset, and its body in pieces. The input is the head's
// lines up to an empty one, then pieces: a byte that says how long, a byte that says how much more
// is claimed, and the bytes.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "foundation/log_lines.h"
#include "platform/clock_api.h"
#include "platform/code_page.h"
#include "platform/console_api.h"
#include "platform/crypto_api.h"
#include "platform/event_trace_api.h"
#include "platform/file_api.h"
#include "platform/http_response_head.h"
#include "platform/ip_helper_api.h"
#include "platform/network_list_api.h"
#include "platform/perf_counter_api.h"
#include "platform/platform.h"
#include "platform/power_api.h"
#include "platform/registry_api.h"
#include "platform/session_api.h"
#include "platform/thread_api.h"
#include "platform/wlan_api.h"
#include "web/win_http_helper.h"

namespace {

using namespace corvane::platform;

class LastError final : public ThreadApi {
 public:
  DWORD GetLastError() override { return m_Code; }
  void SetLastError(DWORD code) override { m_Code = code; }

 private:
  DWORD m_Code = 0;
};

class SilentConsole final : public ConsoleApi {
 public:
  void WriteOutput(std::string_view) override {}
};

// A server that answers with the input, to each request anew.
class InputWeb final : public HttpApi {
 public:
  InputWeb(std::string_view input, ThreadApi& threads) : m_Input(input), m_Threads(threads) {}

  HINTERNET WinHttpOpen(LPCWSTR, DWORD, LPCWSTR, LPCWSTR, DWORD) override { return this; }
  BOOL WinHttpSetTimeouts(HINTERNET, int, int, int, int) override { return TRUE; }
  BOOL WinHttpCrackUrl(LPCWSTR, DWORD, DWORD, URL_COMPONENTS*) override { return TRUE; }
  HINTERNET WinHttpConnect(HINTERNET, LPCWSTR, WORD, DWORD) override { return this; }
  HINTERNET WinHttpOpenRequest(HINTERNET, LPCWSTR, LPCWSTR, LPCWSTR, LPCWSTR, const LPCWSTR*,
                               DWORD) override {
    return this;
  }
  BOOL WinHttpSendRequest(HINTERNET, LPCWSTR, DWORD, const void*, DWORD, DWORD,
                          std::uintptr_t) override {
    m_Left = m_Input;
    m_Head = {};
    m_Piece = {};
    return TRUE;
  }
  BOOL WinHttpReceiveResponse(HINTERNET, void*) override {
    while (!m_Head.IsComplete() && !m_Left.empty()) {
      const std::size_t end = std::min(m_Left.find('\n'), m_Left.size() - 1) + 1;
      if (!m_Head.AddLine(m_Left.substr(0, end))) return Fail(ERROR_WINHTTP_HEADER_SIZE_OVERFLOW);
      m_Left.remove_prefix(end);
    }
    return m_Head.IsComplete() ? TRUE : Fail(ERROR_WINHTTP_INVALID_SERVER_RESPONSE);
  }
  BOOL WinHttpQueryHeaders(HINTERNET, DWORD infoLevel, LPCWSTR, void* buffer, DWORD* size,
                           DWORD* index) override {
    const DWORD code = m_Head.Query(infoLevel, buffer, size, index);
    return code == ERROR_SUCCESS ? TRUE : Fail(code);
  }
  BOOL WinHttpQueryDataAvailable(HINTERNET, DWORD* available) override {
    *available = 0;
    if (m_Left.size() < 3) return TRUE;
    const auto length = static_cast<std::uint8_t>(m_Left[0]);
    const auto claimed = static_cast<std::uint8_t>(m_Left[1]);
    m_Left.remove_prefix(2);
    m_Piece = m_Left.substr(0, length);
    m_Left.remove_prefix(m_Piece.size());
    if (claimed == 0xFF) return Fail(ERROR_WINHTTP_CONNECTION_ERROR);
    *available = static_cast<DWORD>(m_Piece.size()) + (DWORD{claimed} << (claimed % 24));
    return TRUE;
  }
  BOOL WinHttpReadData(HINTERNET, void* buffer, DWORD size, DWORD* read) override {
    *read = std::min(size, static_cast<DWORD>(m_Piece.size()));
    std::memcpy(buffer, m_Piece.data(), *read);
    return TRUE;
  }
  BOOL WinHttpCloseHandle(HINTERNET) override { return TRUE; }
  int MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                          char16_t* wide, int wideSize) override {
    DWORD code = 0;
    return CodePageToWide(codePage, flags, bytes, size, wide, wideSize, &code);
  }

 private:
  BOOL Fail(DWORD code) {
    m_Threads.SetLastError(code);
    return FALSE;
  }

  const std::string_view m_Input;
  ThreadApi& m_Threads;
  std::string_view m_Left, m_Piece;
  HttpResponseHead m_Head;
};

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace corvane;
  LastError threads;
  SilentConsole console;
  InputWeb web({reinterpret_cast<const char*>(data), size}, threads);
  ClockApi clock;
  CryptoApi crypto;
  EventTraceApi eventTrace;
  FileApi files;
  IpHelperApi ipHelper;
  NetworkListApi networkList;
  PerfCounterApi perfCounters;
  PowerApi power;
  RegistryApi registry;
  SessionApi session;
  WlanApi wlan;
  const Platform platform{.threads = threads,
                          .clock = clock,
                          .console = console,
                          .crypto = crypto,
                          .eventTrace = eventTrace,
                          .files = files,
                          .ipHelper = ipHelper,
                          .networkList = networkList,
                          .perfCounters = perfCounters,
                          .power = power,
                          .registry = registry,
                          .session = session,
                          .wlan = wlan,
                          .http = web};
  SetPlatform(&platform);
  g_DebugMask = ~std::uint64_t{0};
  {
    CWinHTTPHelper helper(u"http://a.example/");
    const DWORD code = helper.SyncSendHttpRequest(u"GET", false, false, nullptr, 0);
    Require(code != 0 || helper.GetStatusCode() < 400);
    Require(helper.GetBytesReceived() <= size);
    Require(helper.GetResponseText().size() <= size);
    Require(helper.GetResponseHeaders().size() <= HttpResponseHead::kMaxSize);
  }
  SetPlatform(nullptr);
  return 0;
}
