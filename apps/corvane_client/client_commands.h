#pragma once
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "corvane_client/client_options.h"
#include "corvane_client/service_access.h"
#include "corvane_client/terminal_screen.h"

namespace corvane::client {

// Where a command writes.
struct Output {
  std::function<void(std::string_view)> write;
  bool isTerminal = false;
  std::function<std::size_t()> columns = [] { return std::size_t{80}; };
  std::function<std::size_t()> rows = [] { return std::size_t{24}; };
  // Empty where nothing can be drawn in place.
  std::function<std::unique_ptr<ITerminalScreen>()> openScreen = {};

  void Line(std::string_view text) const { write(std::string(text) + "\n"); }
};

struct Call {
  IServiceAccess& service;
  const ClientOptions& options;
  const Output& output;
};

// Each runs one command and gives the exit status; they throw ClientError.
int StatusCommand(const Call& call);
int CandidatesCommand(const Call& call);
int WatchCommand(const Call& call);
int EventsCommand(const Call& call);
int ConnectCommand(const Call& call);
int AcceptCommand(const Call& call);
int ModeCommand(const Call& call);
int ProfileCommand(const Call& call);
int RecordCommand(const Call& call);
int EnableCommand(const Call& call);
int DisableCommand(const Call& call);
int ListCommand(const Call& call);
int SetCommand(const Call& call);
int WeightsCommand(const Call& call);
int LbCommand(const Call& call);
int DiagCommand(const Call& call);
int LogCommand(const Call& call);
int RawCommand(const Call& call);

// Throws ClientError (kBadCall) unless there are so many words behind the command.
void NeedWords(const Call& call, std::size_t least, std::size_t most);
// Sends a request; throws ClientError (kRefused) unless it succeeds. A success is told with --json
// by the reply itself.
void AskAndCheck(const Call& call, const std::string& request);

struct Command {
  const char* name;
  int (*run)(const Call& call);
  const char* options;  // besides those that every command takes
  const char* help;
};
const std::vector<Command>& Commands();
std::string HelpText();  // of the whole program

// The program: `words` are those of the call. Errors go to `error`.
int RunClient(const std::vector<std::string>& words, const Output& output, const Output& error,
              const std::function<std::unique_ptr<IServiceAccess>(const std::string& home)>& open);

}  // namespace corvane::client
