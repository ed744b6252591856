#pragma once
#include "pipe/client_request.h"
#include "pipe/named_pipe_listener.h"

namespace corvane {

// The request pipe: one JSON object a message, and one reply to each.
class CNamedPipeListenerJson : public SmartObjEx<CNamedPipeListenerJson, CNamedPipeListener> {
 public:
  WString RespondToPipeMessage(WStringView request, PipeInstanceCtx& record) override;

 private:
  WString HandleJsonCommand(const CClientRequest& request, PipeInstanceCtx& record);
};

}  // namespace corvane
