#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/http_url.h"
#include "platform/linux/host_proxies.h"
#include "platform/linux/host_time.h"

namespace corvane::platform {
class ThreadApi;
}

namespace corvane::platform::sim {
class SeamGate;
}

namespace corvane::platform::linux_host {

struct TransferOrder;

// HTTP over libcurl, HTTP/1.1 alone. The machine has no proxy of its own; the user's settings are
// the environment's http_proxy, https_proxy and no_proxy. There are no proxy configuration scripts
// here and none is looked for on the network: these questions are answered with
// ERROR_WINHTTP_AUTODETECTION_FAILED. Users and passwords of the environment's proxies stay here:
// they go to the proxy that they belong to, and to nobody else.
//
// To accept an unknown authority is to accept an expired certificate, too; the library does not
// part them.
class HostHttp final : public HttpApi {
 public:
  // `connectTo` as TransferOrder has it.
  HostHttp(sim::SeamGate& gate, ThreadApi& threads, const HostTime& time,
           const HostProxies& proxies, std::vector<std::string> connectTo);
  ~HostHttp() override;

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

  std::size_t Outstanding() const;  // handles and texts that the program has not given back

 private:
  struct Handle;
  using HandlePtr = std::shared_ptr<Handle>;
  enum class Kind { kSession, kConnection, kRequest };

  bool Passes(const char* operation);
  BOOL Result(DWORD code);  // TRUE for 0, else FALSE with the last error set
  HINTERNET Open(HandlePtr handle);
  HandlePtr Find(HINTERNET handle, Kind kind);  // null with the last error set
  TransferOrder OrderOf(const Handle& request) const;
  char16_t* Allocate(const std::string& text);

  sim::SeamGate& m_Gate;
  ThreadApi& m_Threads;
  const HostTime& m_Time;
  const HostProxies m_Proxies;
  const std::vector<std::string> m_ConnectTo;
  mutable std::mutex m_Mutex;  // guards what follows
  std::map<std::uintptr_t, HandlePtr> m_Handles;
  std::uintptr_t m_LastHandle = 0;
  std::map<void*, std::unique_ptr<char16_t[]>> m_Texts;
};

}  // namespace corvane::platform::linux_host
