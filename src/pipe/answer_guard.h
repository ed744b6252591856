#pragma once
// The layers that turn what a request throws into its reply.

#include <rapidjson/document.h>

#include <exception>
#include <string>
#include <utility>

#include "foundation/exception.h"
#include "foundation/guarded.h"
#include "foundation/log_lines.h"
#include "pipe/client_request.h"
#include "pipe/reply_text.h"
#include "store/json_text.h"

namespace corvane {

// What answer() gives; or the code of what it throws, with a line in the log under `name`.
template <class Fn>
WString AnswerGuarded(const char* name, WStringView request, Fn&& answer) {
  const auto reply = [&] {
    // No reply is empty; a fault is.
    WString text = Guarded("CNamedPipeListenerJson", name, WString(), std::forward<Fn>(answer));
    return text.empty() ? FailureReply(kReplyNoIndex, request) : text;
  };
  return Contained(reply, [&](const Failure& failure) {
    ReportFailure(name, failure);
    return FailureReply(failure.own ? kReplyUnknownAdapter : kReplyNoIndex, request);
  });
}

// Writes a head and the pretty printed text to standard output.
void PrintRequest(const char* head, const std::string& text);

// What answer(request, text in UTF-8) gives; code 1 for what is no JSON.
template <class Fn>
WString AnswerJson(WStringView request, Fn&& answer) {
  const std::string text = WideToUtf8(request);
  rapidjson::Document json;
  ParseJson(text, &json);
  if (json.HasParseError()) {
    PrintRequest("\nGot json with parse error, in pipe:\n", text);
    return FailureReply(kReplyBadRequest, request);
  }
  return answer(CClientRequest(json, request), text);
}

}  // namespace corvane
