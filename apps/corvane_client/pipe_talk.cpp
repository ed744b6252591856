#include "corvane_client/pipe_talk.h"

#include <rapidjson/error/en.h>

#include "store/json_text.h"

namespace corvane::client {

std::string WithToken(const std::string& request, const std::string& token) {
  rapidjson::Document document;
  ParseJson(request, &document);
  if (document.HasParseError()) {
    throw ClientError(kBadCall, std::string("the request is no JSON: ") +
                                    rapidjson::GetParseError_En(document.GetParseError()));
  }
  if (!document.IsObject()) throw ClientError(kBadCall, "the request is no JSON object");
  if (document.HasMember("art")) return request;
  const std::size_t brace = request.find('{');
  const char* comma = document.ObjectEmpty() ? "" : ",";
  return "{\"art\":\"" + token + "\"" + comma + request.substr(brace + 1);
}

std::string TokenText(const std::string& session, std::uint32_t processId, std::uint64_t nonce) {
  return session + "," + std::to_string(processId) + "," + std::to_string(nonce) +
         ",corvane-client";
}

std::string NoService(const std::string& where, const std::string& reason, const std::string& how) {
  return "no service runs on " + where + " (" + reason + ")\n" + how;
}

}  // namespace corvane::client
