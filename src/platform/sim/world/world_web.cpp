// The web of a world: what its hosts answer, and what the PC knows of proxies.

#include "platform/http_url.h"
#include "platform/sim/world/world_sections.h"
#include "platform/sim/world/world_text.h"

namespace corvane::platform::sim {

namespace {

struct ReachWord {
  const char* name;
  WebReach value;
};
constexpr ReachWord kReachWords[] = {{"any", WebReach::kAnyWay},
                                     {"direct", WebReach::kDirect},
                                     {"proxy", WebReach::kProxy},
                                     {"none", WebReach::kNoWay}};

struct CertificateWord {
  const char* name;
  WebCertificate value;
};
constexpr CertificateWord kCertificateWords[] = {{"good", WebCertificate::kGood},
                                                 {"unknown", WebCertificate::kUnknown},
                                                 {"refused", WebCertificate::kRefused}};

bool IsOneLine(const std::string& text) { return text.find_first_of("\r\n") == text.npos; }

}  // namespace

void TakeWebAnswer(JsonFields& fields, WebAnswer* out) {
  const JsonNode host = fields.Need("host");
  out->host = host.Text();
  if (out->host.empty()) host.Fail("wants the name of a host");
  if (const auto path = fields.Find("path")) {
    out->path = path->Text();
    if (!out->path.starts_with('/')) path->Fail("wants a path that begins with /");
  }
  if (const auto reach = fields.Find("reach")) out->reach = reach->Choice(kReachWords);
  if (const auto certificate = fields.Find("certificate"))
    out->certificate = certificate->Choice(kCertificateWords);
  fields.Integer("status", 100, 999, &out->status);
  fields.Text("reason", &out->reason);
  fields.Each("headers", [&](const JsonNode& item) {
    const std::string line = item.Text();
    if (!IsOneLine(line) || line.find(':') == line.npos) item.Fail("wants \"Name: value\"");
    out->headers.push_back(line);
  });
  if (const auto redirect = fields.Find("redirect")) {
    out->redirect = redirect->Text();
    UrlParts parts;
    if (SplitUrl(FromUtf8(out->redirect), &parts) != ERROR_SUCCESS)
      redirect->Fail("wants the whole address of a page");
    if (!fields.Has("status")) out->status = 302, out->reason = "Found";
  }
  fields.Text("body", &out->body);
  fields.Duration("delay", &out->delayMs);
}

void TakeWebProxies(JsonFields& fields, WebProxies* out) {
  fields.Flag("known", &out->known);
  fields.Text("proxy", &out->proxy);
  fields.Text("bypass", &out->bypass);
  fields.Text("configUrl", &out->configUrl);
  fields.Text("detectedUrl", &out->detectedUrl);
  fields.Text("detectedProxy", &out->detectedProxy);
}

Web ReadWeb(const JsonNode& node) {
  JsonFields fields(node);
  Web out;
  fields.Each("hosts", [&](const JsonNode& item) {
    JsonFields host(item);
    WebAnswer answer;
    TakeWebAnswer(host, &answer);
    host.Finish();
    out.answers.push_back(std::move(answer));
  });
  if (const auto proxies = fields.Find("proxies")) {
    JsonFields members(*proxies);
    TakeWebProxies(members, &out.proxies);
    members.Finish();
  }
  fields.Finish();
  return out;
}

DomainController ReadDomainController(const JsonNode& node) {
  JsonFields fields(node);
  DomainController out;
  out.domain = FromUtf8(fields.Need("domain").Text());
  out.name = FromUtf8(fields.Need("name").Text());
  fields.Finish();
  return out;
}

}  // namespace corvane::platform::sim
