#include "pipe/reply_text.h"

#include "foundation/format.h"

namespace corvane {

namespace {

WString Success(WStringView member, WStringView value) {
  WString reply = u"{ \"status\":\"ok\", \"code\":0, \"";
  reply.reserve(reply.size() + member.size() + value.size() + 8);
  reply += member;
  reply += u"\":";
  reply += value;
  return reply + u" }";
}

WString FailureHead(std::uint32_t code) {
  return Format(u"{ \"status\":\"error\", \"code\":%lu", code);
}

WString Quoted(WStringView text) {
  WString quoted = u"\"";
  quoted.reserve(text.size() + 2);
  for (const char16_t c : text) {
    if (c == u'"') quoted += u'\\';
    quoted += c;
  }
  return quoted + u'"';
}

}  // namespace

WString EchoReply(WStringView request) { return Success(u"request", request); }

WString ListReply(WStringView array) { return Success(u"response", array); }

WString LogReply(WStringView base64) { return Success(u"log", Quoted(base64)); }

WString DiagnosisReply(WStringView object) { return Success(u"diag", object); }

WString DiagnosisFailureReply(std::uint32_t code, WStringView object) {
  return FailureHead(code) + u", \"diag\":" + WString(object) + u" }";
}

WString FailureReply(std::uint32_t code, WStringView request) {
  return FailureHead(code) + u", \"request\":" + Quoted(request) + u" }";
}

WString RefusalReply(WStringView reason, WStringView request) {
  return FailureHead(kReplyRefused) + u", \"reason\":\"" + WString(reason) + u"\", \"request\":" +
         Quoted(request) + u" }";
}

WString TokenFailureReply(std::uint32_t code) { return FailureHead(code) + u" }"; }

WString DiagnosisObject(const Diagnosis& diagnosis) {
  return Format(
      u"{ \"blast\":\"%s\", \"apscore\":\"%i\", \"adapterclass\":\"%s\", \"apclass\":\"%s\", "
      u"\"status\":\"%s\" }",
      diagnosis.blast, diagnosis.apScore, diagnosis.adapterClass, diagnosis.apClass,
      diagnosis.status);
}

}  // namespace corvane
