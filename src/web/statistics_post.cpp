#include "web/statistics_post.h"

#include "foundation/ignored.h"
#include "foundation/open_file.h"
#include "settings/global_config_container.h"
#include "store/value_names.h"
#include "web/web_log.h"
#include "web/win_http_helper.h"

namespace corvane {

using namespace platform;

namespace {

constexpr DWORD kStopPosting = 401;

// The signal counts, whether its value can be stored or not.
void StopPosting() {
  auto& config = CGlobalConfigContainer::GetInstance();
  config.m_bEnablePost = false;
  // A one-shot mode has not opened the configuration.
  const auto open = config.GetRegistry();
  const auto registry = open ? open : CRegistry::CreateObject(kHomeKeyPath);
  Ignored(registry->SetRegistryDWORDValue(value::kEnablePost, 0));
  LOG_INFO(u"PROXY RECEIVED ERROR: GOT STOP POST SIGNAL\n");
}

}  // namespace

bool IsGoodAnswer(WStringView responseHeaders) {
  return responseHeaders.find(u"200 OK") != responseHeaders.npos;
}

bool ProxySend(const std::string& body, bool bProxyFound) {
  LOG_DEBUG(kWebLog, u"PROXY SEND --> %s", kStatisticsUrl);
  CWinHTTPHelper helper(kStatisticsUrl);
  helper.SetExtraHeaders1(
      Format(u"Content-Type: multipart/form-data; "
             u"boundary=---------------------------251332668624907\r\n"
             u"Content-Length: %d\r\nProxy-Connection: Keep-Alive\r\nPragma: no-cache\r\n"
             u"Connection: close\r\n",
             static_cast<std::int64_t>(body.size())));
  const DWORD code = helper.SyncSendHttpRequest(u"POST", !bProxyFound, bProxyFound,
                                                reinterpret_cast<const BYTE*>(body.data()),
                                                static_cast<DWORD>(body.size()));
  if (code != ERROR_SUCCESS) {
    LOG_DEBUG(kWebLog, u"PROXY SEND ERROR {SyncSendHttpRequest() failed}[rc=%lu]\n", code);
  }
  if (IsGoodAnswer(helper.GetResponseHeaders())) {
    LOG_INFO(u"ProxySend: SUCCEEDED (GOT OK) [status code %lu][hdr %u, body %u bytes]\n",
             helper.GetStatusCode(), helper.GetResponseHeaders().size(), helper.GetBytesReceived());
    return true;
  }
  LOG_INFO(u"PROXY SEND ERROR [rc=%lu][status code %lu]\nhttpResponseHeader: %s\n", code,
           helper.GetStatusCode(), helper.GetResponseHeaders());
  LOG_INFO(u"httpResponseContent: %s\n", helper.GetResponseText());
  if (helper.GetStatusCode() == kStopPosting) StopPosting();
  return false;
}

bool ReadFileToString(const WString& path, std::string* text) {
  text->clear();
  const OpenFile file(path);
  return file && file.ReadAll(kMaxPostFile, text);
}

}  // namespace corvane
