// The load-balance engine.

#include "lb/lb_config.h"
#include "pipe/commands.h"
#include "pipe/reply_text.h"

namespace corvane::commands {

namespace {

std::uint32_t CodeOf(bool done) { return done ? kReplyOk : kReplyFailed; }

}  // namespace

WString LBCommand(const CClientRequest& request) {
  WString name;
  std::uint32_t number = 0;
  if (!request.GetString("name", &name) || !request.GetUint("value", &number))
    return FailureReply(kReplyNoNameOrValue, request.GetText());
  const bool isMode = number == 1 || number == 2;
  auto& engine = CLBConfig::GetInstance();
  std::uint32_t code = kReplyUnknownName;
  if (name == u"EnableLBEngine") {
    code = CodeOf(engine.EnableLBEngine(isMode ? number : kLBWeightModeNotSet, true));
  } else if (name == u"DisableLBEngine") {
    code = CodeOf(engine.DisableLBEngine(true, true));
  } else if (name == u"SetLBWeightMode") {
    code = isMode ? CodeOf(engine.SetLBWeightMode(number)) : kReplyNoTarget;
  } else if (name == u"SetLBPaused") {
    code = CodeOf(number != 0 ? engine.Pause() : engine.Resume());
  }
  return code == kReplyOk ? EchoReply(request.GetText()) : FailureReply(code, request.GetText());
}

}  // namespace corvane::commands
