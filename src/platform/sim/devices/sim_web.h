#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/http_response_head.h"
#include "platform/http_url.h"
#include "platform/sim/devices/sim_machine.h"
#include "platform/sim/kernel/seam_gate.h"

namespace corvane::platform::sim {

// A request as its server has seen it.
struct WebRequest {
  std::string verb;
  std::string url;
  std::string proxy;  // through which it came; empty for none
  std::string headers;
  std::string body;
};

// The web as the world has it: hosts, delays, redirects, certificates and proxies. Delays and
// time-outs pass on the clock of the devices. What no host answers has no address. A close or a
// free that fails by injection has been done all the same.
class SimWeb final : public HttpApi {
 public:
  SimWeb(SimMachine& machine, SeamGate& gate, ThreadApi& threads)
      : m_Machine(machine), m_Gate(gate), m_Threads(threads) {}

  HINTERNET WinHttpOpen(LPCWSTR userAgent, DWORD accessType, LPCWSTR proxyName, LPCWSTR proxyBypass,
                        DWORD flags) override;
  BOOL WinHttpSetTimeouts(HINTERNET session, int resolve, int connect, int send,
                          int receive) override;
  BOOL WinHttpCrackUrl(LPCWSTR url, DWORD length, DWORD flags, URL_COMPONENTS* parts) override;
  HINTERNET WinHttpConnect(HINTERNET session, LPCWSTR host, WORD port, DWORD reserved) override;
  HINTERNET WinHttpOpenRequest(HINTERNET connection, LPCWSTR verb, LPCWSTR path, LPCWSTR version,
                               LPCWSTR referrer, const LPCWSTR* acceptTypes, DWORD flags) override;
  BOOL WinHttpSetOption(HINTERNET handle, DWORD option, const void* value, DWORD size) override;
  BOOL WinHttpAddRequestHeaders(HINTERNET request, LPCWSTR headers, DWORD length,
                                DWORD modifiers) override;
  BOOL WinHttpSendRequest(HINTERNET request, LPCWSTR headers, DWORD headersLength,
                          const void* optional, DWORD optionalLength, DWORD totalLength,
                          std::uintptr_t context) override;
  BOOL WinHttpWriteData(HINTERNET request, const void* data, DWORD size, DWORD* written) override;
  BOOL WinHttpReceiveResponse(HINTERNET request, void* reserved) override;
  BOOL WinHttpQueryHeaders(HINTERNET request, DWORD infoLevel, LPCWSTR name, void* buffer,
                           DWORD* size, DWORD* index) override;
  BOOL WinHttpQueryDataAvailable(HINTERNET request, DWORD* available) override;
  BOOL WinHttpReadData(HINTERNET request, void* buffer, DWORD size, DWORD* read) override;
  BOOL WinHttpCloseHandle(HINTERNET handle) override;
  BOOL WinHttpGetIEProxyConfigForCurrentUser(WINHTTP_CURRENT_USER_IE_PROXY_CONFIG* config) override;
  BOOL WinHttpGetProxyForUrl(HINTERNET session, LPCWSTR url,
                             const WINHTTP_AUTOPROXY_OPTIONS* options,
                             WINHTTP_PROXY_INFO* info) override;
  BOOL WinHttpDetectAutoProxyConfigUrl(DWORD detectFlags, char16_t** url) override;
  void GlobalFree(void* memory) override;
  int MultiByteToWideChar(unsigned codePage, DWORD flags, const char* bytes, int size,
                          char16_t* wide, int wideSize) override;

  // Under the devices' lock: the timeline changes what a host answers.
  void SetAnswer(const WebAnswer& answer);

  std::vector<WebRequest> TakeRequests();
  std::size_t Outstanding() const;  // handles and texts that the program has not given back

 private:
  enum class Kind { kSession, kConnection, kRequest };
  struct Handle {
    Kind kind = Kind::kSession;
    int receiveMs = 30'000;  // of the session, and what is opened from it; 0: no limit
    UrlParts url;
    std::u16string verb;
    std::string headers;
    std::string body;
    std::string proxy, bypass;
    DWORD securityFlags = 0;
    bool redirects = true;
    bool sent = false;
    HttpResponseHead head;
    std::string answer;  // the response's body
    std::size_t read = 0;
  };
  using HandlePtr = std::shared_ptr<Handle>;

  bool Passes(const char* operation, DWORD ordinary = ERROR_GEN_FAILURE);
  BOOL Fail(DWORD code);
  HINTERNET Open(Handle handle);
  HandlePtr Find(HINTERNET handle, Kind kind);  // null with the last error set
  DWORD Reach(const Handle& request, WebAnswer* answer);
  DWORD Answer(Handle* request);
  char16_t* Allocate(std::u16string_view text);

  SimMachine& m_Machine;
  SeamGate& m_Gate;
  ThreadApi& m_Threads;
  mutable std::mutex m_Mutex;  // guards what follows
  std::map<std::uintptr_t, HandlePtr> m_Handles;
  std::map<void*, std::unique_ptr<char16_t[]>> m_Texts;
  std::uintptr_t m_LastHandle = 0x3B0000;
  std::vector<WebRequest> m_Requests;
};

}  // namespace corvane::platform::sim
