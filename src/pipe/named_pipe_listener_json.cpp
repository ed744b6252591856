#include "pipe/named_pipe_listener_json.h"

#include <algorithm>
#include <array>

#include "foundation/log_lines.h"
#include "pipe/answer_guard.h"
#include "pipe/client_token.h"
#include "pipe/commands.h"
#include "pipe/reply_text.h"
#include "record/air_recorder.h"
#include "settings/global_config_container.h"

namespace corvane {

namespace {

constexpr std::uint64_t kRequestLog = DBG(5);
// A user interface asks for rounds without delay all the time: its request shows from any bit of
// this height on.
constexpr std::uint64_t kNoDelayLogFrom = 128;

struct Command {
  WStringView word;
  WString (*handle)(const CClientRequest& request);
};

constexpr std::array<Command, 10> kCommands = {{
    {u"AppLog", &commands::AppLog},
    {u"EventRouter", &commands::EventRouter},
    {u"ClientDir", &commands::ClientDir},
    {u"WriteRegDW", &commands::WriteRegDW},
    {u"WriteRegString", &commands::WriteRegString},
    {u"UICommand", &commands::UICommand},
    {u"MiscCommand", &commands::MiscCommand},
    {u"LBCommand", &commands::LBCommand},
    {u"DeleteProfile", &commands::DeleteProfile},
    {u"ConnectAP", &commands::ConnectAP},
}};

void TraceRequest(const std::string& text) {
  if (text.find("NoDelay") != std::string::npos) {
    if (g_DebugMask >= kNoDelayLogFrom) PrintRequest("\nGot NoDelay json in pipe:\n", text);
  } else if (log::IsOpen(kRequestLog)) {
    PrintRequest("\nGot json in pipe:\n", text);
  }
}

}  // namespace

WString CNamedPipeListenerJson::RespondToPipeMessage(WStringView request, PipeInstanceCtx& record) {
  const auto handle = [&](const CClientRequest& parsed, const std::string& text) {
    TraceRequest(text);
    return AnswerGuarded("CNamedPipeListenerJson::HandleJsonCommand", request, [&] {
      const CCritSecLock lock(CGlobalConfigContainer::GetInstance().GetLock());
      return HandleJsonCommand(parsed, record);
    });
  };
  return AnswerGuarded("CNamedPipeListenerJson::RespondToPipeMessage", request,
                       [&] { return AnswerJson(request, handle); });
}

WString CNamedPipeListenerJson::HandleJsonCommand(const CClientRequest& request,
                                                  PipeInstanceCtx& record) {
  if (CGlobalConfigContainer::GetInstance().ExpireRTAudio()) {
    LOG_INFO(
        u"CNamedPipeListenerJson::HandleJsonCommand: MORE THAN 1HR ELAPSE FOR RTAUDIO, FORCE "
        u"SetRTAudioDetected(false)");
  }
  if (const std::uint32_t code = CheckClientToken(request, record); code != kTokenGood)
    return TokenFailureReply(code);
  if (CAirRecorder* const recorder = CAirRecorder::Find(); recorder && recorder->IsOn())
    recorder->NoteOrder(WideToUtf8(request.GetText()));
  WString word;
  if (!request.GetString("cmd", &word)) return FailureReply(kReplyNoCommand, request.GetText());
  const auto command = std::find_if(kCommands.begin(), kCommands.end(),
                                    [&](const Command& row) { return row.word == word; });
  if (command == kCommands.end()) return FailureReply(kReplyUnknownCommand, request.GetText());
  return command->handle(request);
}

}  // namespace corvane
