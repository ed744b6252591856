// The memory log, and the directories of the clients.

#include "foundation/ignored.h"
#include "foundation/log_lines.h"
#include "pipe/commands.h"
#include "pipe/reply_text.h"
#include "settings/global_config_container.h"
#include "store/base64_text.h"

namespace corvane::commands {

WString AppLog(const CClientRequest&) { return LogReply(Widen(Base64Encode(GetMemoryLog()))); }

WString ClientDir(const CClientRequest& request) {
  std::string_view base64;
  if (!request.GetBytes("path", &base64)) return FailureReply(kReplyBadRequest, request.GetText());
  const WString path = WideFromBytes(Base64Decode(base64));
  LOG_DEBUG(kClientLog,
            u"CNamedPipeListenerJson::HandleJsonCommand:[ClientDir] base64[%hs] path[%s]\n", base64,
            path);
  Ignored(CGlobalConfigContainer::GetInstance().SetClientDir(path));
  return EchoReply(request.GetText());
}

}  // namespace corvane::commands
