#pragma once
#include <curl/curl.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/http_response_head.h"
#include "platform/linux/host_time.h"

namespace corvane::platform::linux_host {

// What a transfer is to do.
struct TransferOrder {
  std::string url;
  bool secure = false;
  bool post = false;
  std::string userAgent;
  std::string headers;  // lines with CRLF
  std::string proxy;    // "host:port"; empty for the direct way
  std::string bypass;   // hosts of the direct way, with semicolons between them
  std::string proxyCredentials;
  std::vector<std::string> connectTo;  // "host:port:other:port": where the connection goes instead
  DWORD securityFlags = 0;
  bool redirects = true;
  DWORD resolveMs = 0, connectMs = 60'000, sendMs = 30'000, receiveMs = 30'000;  // 0: no limit
};

// One request and its response over libcurl, in the steps of WinHTTP. Each gives 0 or the error,
// and keeps its time-out on the host's time: resolving and connecting (TLS and the proxy's tunnel
// included) each have one, a write and a read have one between two pieces, a response has one from
// its request or its last redirect to the end of its head. Holds the head up to its limit and not
// much more than kMaxBuffered bytes of the body. For one thread; a thread that was given up unwinds
// out of each wait.
class HostTransfer {
 public:
  static constexpr std::size_t kMaxBuffered = 64 * 1024;
  static constexpr long kMaxRedirects = 10;

  explicit HostTransfer(const HostTime& time) : m_Time(time) {}
  ~HostTransfer() { Close(); }
  HostTransfer(const HostTransfer&) = delete;
  HostTransfer& operator=(const HostTransfer&) = delete;

  // Connects; an earlier exchange of this object is dropped. `length` is the body's when no header
  // says it.
  DWORD Send(const TransferOrder& order, std::uint64_t length);
  DWORD Write(const void* data, DWORD size);  // a part of the body
  DWORD Receive();                            // up to the end of the head
  DWORD AwaitData(DWORD* available);          // 0 at the end of the body
  DWORD Read(void* buffer, DWORD size, DWORD* read);
  const HttpResponseHead& Head() const { return m_Head; }
  bool IsOpen() const { return m_pMulti != nullptr; }

 private:
  using RealTime = HostTime::RealClock::time_point;
  template <auto Free>
  struct Freer {
    template <class Object>
    void operator()(Object* object) const {
      Free(object);
    }
  };
  using Easy = std::unique_ptr<CURL, Freer<curl_easy_cleanup>>;
  using Multi = std::unique_ptr<CURLM, Freer<curl_multi_cleanup>>;
  using List = std::unique_ptr<curl_slist, Freer<curl_slist_free_all>>;

  void Close();
  void SetUp(const TransferOrder& order, std::uint64_t length);
  void SetUpProxy(const TransferOrder& order);
  void SetUpHeaders(const TransferOrder& order, std::uint64_t* length);
  // Lets the transfer run until `done` holds or it has ended; ERROR_WINHTTP_TIMEOUT when nothing
  // moves for as long as `limitMs` says.
  DWORD Drive(const std::function<bool()>& done, const std::function<DWORD()>& limitMs);
  void Perform();
  DWORD CodeOfEnd() const;
  void Moved() { m_LastMove = HostTime::RealClock::now(); }

  static std::size_t OnHeader(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t OnBody(char* data, std::size_t size, std::size_t count, void* self);
  static std::size_t OnUpload(char* data, std::size_t size, std::size_t count, void* self);
  static int OnSeek(void* self, curl_off_t offset, int origin);
  static int OnConnected(void* self, char* remoteIp, char* localIp, int remotePort, int localPort);
  static curl_socket_t OnSocket(void* self, curlsocktype purpose, curl_sockaddr* address);

  const HostTime& m_Time;
  List m_Headers, m_ConnectTo;  // outlive the handle that uses them
  Multi m_pMulti;
  Easy m_pEasy;
  DWORD m_ResolveMs = 0, m_ConnectMs = 0, m_SendMs = 0, m_ReceiveMs = 0;
  bool m_bRedirects = true;
  bool m_bConnecting = false;  // the name is resolved
  bool m_bConnected = false;
  bool m_bHeadFinal = false;
  bool m_bEnded = false;
  CURLcode m_End = CURLE_OK;
  RealTime m_LastMove;
  std::string m_Upload;
  std::size_t m_Uploaded = 0;
  std::uint64_t m_UploadLength = 0;
  HttpResponseHead m_Head;
  bool m_bHeadTooLarge = false;
  bool m_bMoves = false;  // the present head names another place
  std::string m_Body;     // received and not yet read
  std::size_t m_Read = 0;
};

}  // namespace corvane::platform::linux_host
