#include "corvane_client/service_reply.h"

#include <charconv>

#include "corvane_client/client_error.h"
#include "store/json_text.h"

namespace corvane::client {

namespace {

struct Meaning {
  std::uint32_t code;
  const char* words;
};
constexpr Meaning kMeanings[] = {
    {1, "the request is no valid JSON, or lacks a member"},
    {2, "no such adapter, or the request could not be handled"},
    {3, "no index of an adapter, or the request could not be handled"},
    {5, "the request has no command"},
    {6, "this service does not know the command"},
    {7, "a name or value is missing or of the wrong type"},
    {8, "this service does not know a setting of that name"},
    {9, "the operation failed"},
    {10, "no such adapter, no access point named, or a mode out of range"},
    {11, "the value is out of range"},
    {12, "the value could not be stored, or the diagnosis could not be done"},
    {13, "the profile is empty"},
    {14, "the connect was refused"},
    {15, "the event is not complete"},
    {16, "the value could not be stored"},
    {1000, "the client's token is missing"},
    {1001, "the client's token is empty"},
    {1002, "the client's token cannot be read; the service has another key, or none"},
    {1003, "the client's token has the wrong fields"},
    {1004, "the service is out of memory"},
    {1005, "the client's process is not the one of its token"},
    {1006, "programs of this file name may not command the service"},
    {1007, "the client's session belongs to another process"},
    {1009, "the client's token is older than one before"},
    {1010, "the client's token cannot be understood"}};

// The digits behind "code": in a text that may be cut anywhere.
bool FindCode(const std::string& text, std::uint32_t* code) {
  constexpr std::string_view kName = "\"code\":";
  const std::size_t at = text.find(kName);
  if (at == text.npos) return false;
  const char* first = text.data() + at + kName.size();
  return std::from_chars(first, text.data() + text.size(), *code).ec == std::errc();
}

}  // namespace

std::string CodeMeaning(std::uint32_t code) {
  for (const Meaning& one : kMeanings) {
    if (one.code == code) return one.words;
  }
  return "a code that this program does not know";
}

ServiceReply ReadReply(const std::string& text) {
  ServiceReply reply;
  reply.understood = text.starts_with("{ \"status\":") && FindCode(text, &reply.code);
  reply.ok = reply.understood && text.starts_with("{ \"status\":\"ok\"") && reply.code == 0;
  rapidjson::Document document;
  ParseJson(text, &document);
  if (!document.HasParseError() && document.IsObject()) {
    const rapidjson::Value& members = document;
    const auto reason = members.FindMember("reason");
    if (reason != members.MemberEnd() && reason->value.IsString()) {
      reply.reason = JsonText(reason->value);
    }
  }
  return reply;
}

void CheckReply(const std::string& text) {
  const ServiceReply reply = ReadReply(text);
  if (reply.ok) return;
  if (!reply.understood) throw ClientError(kRefused, "the service's reply is not understood");
  throw ClientError(kRefused, "refused, code " + std::to_string(reply.code) + ": " +
                                  CodeMeaning(reply.code) +
                                  (reply.reason.empty() ? "" : " (" + reply.reason + ")"));
}

}  // namespace corvane::client
