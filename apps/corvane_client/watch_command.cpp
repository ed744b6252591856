// Commands that go on until Ctrl-C.

#include <algorithm>
#include <deque>

#include "corvane_client/adapter_state.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/event_text.h"
#include "corvane_client/json_writer.h"
#include "corvane_client/text_table.h"

namespace corvane::client {

namespace {

constexpr int kRefreshMs = 500;
constexpr int kEventsAtOnce = 100;
constexpr std::size_t kEventsKept = 100;
constexpr std::size_t kEventsShown = 8;

// The state of the adapters and the last events, drawn over what was drawn before.
class CLiveView {
 public:
  explicit CLiveView(const Output& output) : m_Output(output) {}

  void AddEvent(const std::string& line) {
    m_Events.push_back(line);
    if (m_Events.size() > kEventsKept) m_Events.pop_front();
  }

  // What does not fit the terminal is left out: the worst candidates first.
  void Draw(const std::vector<std::string>& state) {
    const std::size_t rows = std::max<std::size_t>(m_Output.rows(), 4) - 1;
    const std::size_t events = std::min({m_Events.size(), kEventsShown, rows / 3});
    const std::size_t eventRows = events > 0 ? events + 2 : 0;
    std::vector<std::string> lines = state;
    if (lines.size() + eventRows > rows) lines.resize(rows - eventRows);
    if (events > 0) {
      lines.push_back("");
      lines.push_back("Events");
    }
    lines.insert(lines.end(), m_Events.end() - static_cast<std::ptrdiff_t>(events), m_Events.end());
    std::string text = m_Drawn > 0 ? "\x1b[" + std::to_string(m_Drawn) + "A\r" : "";
    const std::size_t columns = m_Output.columns();
    for (const std::string& line : lines) text += Clip(line, columns) + "\x1b[K\n";
    text += "\x1b[J";
    m_Drawn = lines.size();
    m_Output.write(text);
  }

 private:
  const Output& m_Output;
  std::deque<std::string> m_Events;
  std::size_t m_Drawn = 0;  // lines above the cursor
};

std::vector<std::string> StateLines(const Call& call) {
  const Values service = call.service.Settings();
  std::vector<std::string> lines;
  for (const AdapterState& one : ChooseAdapters(ReadAdapters(call.service), call.options)) {
    if (!lines.empty()) lines.push_back("");
    const auto status = StatusLines(service, one);
    lines.insert(lines.end(), status.begin(), status.end());
    lines.push_back("");
    const auto candidates = CandidateLines(one.Candidates(), one.Text("ConnectedBssid"));
    lines.insert(lines.end(), candidates.begin(), candidates.end());
  }
  return lines;
}

// One line of an adapter's state, for those who keep lines: told when it changes.
std::string PlainState(const Values& service, const AdapterState& adapter) {
  std::string text = "adapter " + std::to_string(adapter.index) + ": ";
  text += adapter.IsConnected()
              ? Printable(adapter.Text("ConnectedNetwork")) + " " + adapter.Text("ConnectedBssid")
              : "not connected";
  text += ", mode " + ModeName(adapter.Text("PassiveSuggestMode"));
  const auto candidates = adapter.Candidates();
  if (!candidates.empty()) {
    text += ", best " + Printable(candidates[0].ssid) + " " + candidates[0].bssid;
  }
  for (const std::string& reason : HoldingStill(service, adapter)) text += "; " + reason;
  return text;
}

void TellChanges(const Call& call, std::map<std::string, std::string>* told) {
  const Values service = call.service.Settings();
  for (const AdapterState& one : ChooseAdapters(ReadAdapters(call.service), call.options)) {
    const std::string state =
        call.options.json ? StatusJson(service, one) : PlainState(service, one);
    if ((*told)[one.guid] == state) continue;
    (*told)[one.guid] = state;
    call.output.Line(state);
  }
}

}  // namespace

int WatchCommand(const Call& call) {
  NeedWords(call, 0, 0);
  const auto events = call.service.Subscribe();
  ChooseAdapters(ReadAdapters(call.service), call.options);  // a wrong --adapter ends it here
  const bool live = call.output.isTerminal && !call.options.json;
  CLiveView view(call.output);
  std::map<std::string, std::string> told;
  while (!call.service.IsInterrupted()) {
    if (live) {
      view.Draw(StateLines(call));
    } else {
      TellChanges(call, &told);
    }
    // What has come, then the state once; a flood of events does not keep the state old.
    auto event = events->Next(kRefreshMs);
    for (int taken = 1; event; ++taken) {
      if (live) {
        view.AddEvent(EventLine(*event));
      } else {
        call.output.Line(call.options.json ? *event : EventLine(*event));
      }
      event = taken < kEventsAtOnce ? events->Next(1) : std::nullopt;
    }
  }
  return kDone;
}

int EventsCommand(const Call& call) {
  NeedWords(call, 0, 0);
  const auto events = call.service.Subscribe();
  while (!call.service.IsInterrupted()) {
    const auto event = events->Next(kRefreshMs);
    if (event) call.output.Line(call.options.json ? *event : EventLine(*event));
  }
  return kDone;
}

}  // namespace corvane::client
