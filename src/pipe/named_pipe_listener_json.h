#pragma once
#include <functional>
#include <string>

#include "pipe/client_request.h"
#include "pipe/named_pipe_listener.h"

namespace corvane {

// The request pipe: one JSON object a message, and one reply to each.
class CNamedPipeListenerJson : public SmartObjEx<CNamedPipeListenerJson, CNamedPipeListener> {
 public:
  WString RespondToPipeMessage(WStringView request, PipeInstanceCtx& record) override;

 protected:
  // Parses the request, in UTF-8, and has it answered; code 1 for what is no JSON.
  using Answerer = std::function<WString(const CClientRequest& request, const std::string& text)>;
  static WString AnswerJson(WStringView request, const Answerer& answer);
  // What answer() gives; the code of what it throws, and a line in the log under this name.
  static WString AnswerGuarded(const char* name, WStringView request,
                               const std::function<WString()>& answer);

 private:
  WString HandleJsonCommand(const CClientRequest& request, PipeInstanceCtx& record);
};

}  // namespace corvane
