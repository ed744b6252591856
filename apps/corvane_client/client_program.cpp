#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/service_reply.h"

namespace corvane::client {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {"status", &StatusCommand, "--adapter",
       "status\n    The adapters: connection, score, mode, and what holds the service still.\n"},
      {"candidates", &CandidatesCommand, "--adapter --all",
       "candidates [--all]\n    The access points that the service may choose, best first; * is "
       "the "
       "connected one.\n    --all  and those that it may not\n"},
      {"watch", &WatchCommand, "--adapter",
       "watch\n    Status, candidates and events as they change, until Ctrl-C: in place on a "
       "terminal,\n    where q ends it, too, one line a change otherwise.\n"},
      {"events", &EventsCommand, "", "events\n    Events as they come, until Ctrl-C.\n"},
      {"connect", &ConnectCommand, "--adapter --wait --timeout",
       "connect SSID BSSID [--wait] [--timeout SECS]\n    Asks for a connect to this access "
       "point.\n"
       "    --wait  ends when the connect has: status 0 when it succeeded, 1 otherwise\n"
       "    --timeout SECS  how long that waits (default 60)\n"},
      {"accept", &AcceptCommand, "--adapter", "accept\n    Accepts the service's suggestion.\n"},
      {"mode", &ModeCommand, "--adapter",
       "mode autoswitch|event|popup\n    How an adapter moves: by itself, or by suggesting to "
       "programs or to the user.\n"},
      {"profile", &ProfileCommand, "",
       "profile [classic|balanced]\n    By which rules the service decides; alone, tells it. "
       "balanced weighs access points by the\n    rate that they would give, looks around when "
       "there is something to gain, and mends a lost\n    link at once.\n"},
      {"record", &RecordCommand, "",
       "record on [MB] | off | status\n    The recording of what the adapters hear and what is "
       "decided upon it, for corvane-lab to\n    replay; it holds names and addresses. MB is how "
       "large it may grow, in million bytes\n    (default 100, at most 1000).\n"},
      {"enable", &EnableCommand, "--adapter",
       "enable\n    Lets the service work; with --adapter, on that adapter.\n"},
      {"disable", &DisableCommand, "--adapter",
       "disable\n    Stops the service from acting; with --adapter, on that adapter.\n"},
      {"list", &ListCommand, "--adapter",
       "list deny|allow|preferred [show | set FILE | clear]\n    The lists of access points, JSON "
       "arrays of rows: [ssid, bssid], or\n    [ssid, bssid, least quality] in the preferred list, "
       "which is a file beside the service's\n    program and counts from its next start on.\n"},
      {"set", &SetCommand, "--adapter",
       "set [NAME VALUE]\n    Changes a setting; alone, lists the settings with their values.\n"},
      {"weights", &WeightsCommand, "--adapter",
       "weights [show | set FILE]\n    The weights of the score of an adapter, a JSON object.\n"},
      {"lb", &LbCommand, "",
       "lb status | on [MODE] | off | pause | resume | weight MODE\n    The load-balance engine; "
       "MODE is 1 or 2. status tells what is asked of it;\n    whether it came up by it stands in "
       "the log.\n"},
      {"diag", &DiagCommand, "", "diag\n    Diagnoses the first adapter's link.\n"},
      {"log", &LogCommand, "", "log\n    The service's log as it holds it in memory.\n"},
      {"raw", &RawCommand, "",
       "raw JSON\n    Sends this request, with a token, and prints the reply.\n"}};
  return commands;
}

std::string HelpText() {
  std::string text =
      "corvane-client: talks to the Wi-Fi selection service\n\n"
      "Usage: corvane-client [--home DIR] [--adapter GUID|INDEX|NAME] [--json] COMMAND ...\n\n";
  for (const Command& command : Commands()) text += std::string(command.help) + "\n";
  return text +
         "Options:\n"
         "  --adapter A  the adapter, by GUID, index or name, where a command is for one\n"
         "               (default: the only one, or all)\n"
         "  --home DIR   " +
         kHomeHelp +
         "\n"
         "  --json       prints JSON\n"
         "  --help       tells of the program, or of a command\n"
         "  --           ends the options, before a name that begins with -\n\n"
         "Exit status: 0 done, 1 refused by the service or failed, 2 a bad call, 3 no service\n";
}

void NeedWords(const Call& call, std::size_t least, std::size_t most) {
  const std::size_t count = call.options.words.size();
  if (count < least) throw ClientError(kBadCall, "too few words");
  if (count > most)
    throw ClientError(kBadCall, "too many words: \"" + call.options.words[most] + "\"");
}

void AskAndCheck(const Call& call, const std::string& request) {
  const std::string reply = call.service.Ask(request);
  CheckReply(reply);
  if (call.options.json) call.output.Line(reply);
}

namespace {

const Command* FindCommand(const std::string& name) {
  for (const Command& command : Commands()) {
    if (name == command.name) return &command;
  }
  return nullptr;
}

// An option that would be passed over has been said for nothing.
void CheckOptions(const Command& command, const ClientOptions& options) {
  for (const std::string& option : options.special) {
    if ((std::string(command.options) + " ").find(option + " ") == std::string::npos) {
      throw ClientError(kBadCall, std::string(command.name) + " takes no " + option);
    }
  }
}

}  // namespace

int RunClient(const std::vector<std::string>& words, const Output& output, const Output& error,
              const std::function<std::unique_ptr<IServiceAccess>(const std::string& home)>& open) {
  const Command* command = nullptr;
  try {
    ClientOptions options = ParseOptions(words);
    if (options.command == "help") {
      options.help = true;
      options.command = options.words.empty() ? "" : options.words[0];
    }
    command = FindCommand(options.command);
    if (!options.command.empty() && !command) {
      throw ClientError(kBadCall, "no command \"" + options.command + "\"; --help lists them");
    }
    if (options.help) {
      output.write(command ? command->help : HelpText());
      return kDone;
    }
    if (!command) {
      error.write(HelpText());
      return kBadCall;
    }
    CheckOptions(*command, options);
    const auto service = open(options.home);
    return command->run({*service, options, output});
  } catch (const ClientError& e) {
    const std::string name = command ? std::string(" ") + command->name : "";
    error.Line("corvane-client" + name + ": " + e.what());
    if (command && e.status == kBadCall) {
      error.write("\nUsage: corvane-client " + std::string(command->help));
    }
    return e.status;
  }
}

}  // namespace corvane::client
