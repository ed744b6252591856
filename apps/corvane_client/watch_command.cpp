// Commands that go on until Ctrl-C.

#include <deque>

#include "corvane_client/adapter_state.h"
#include "corvane_client/client_commands.h"
#include "corvane_client/client_error.h"
#include "corvane_client/event_text.h"
#include "corvane_client/live_picture.h"
#include "corvane_client/text_table.h"
#include "store/value_names.h"

namespace corvane::client {

namespace {

constexpr int kRefreshMs = 500;
constexpr int kLookMs = 100;  // from one look at the keys to the next
constexpr int kEventsAtOnce = 100;
constexpr std::size_t kEventsKept = 100;

// Those that are meant and there now: the service makes them anew when one comes or goes.
std::vector<AdapterState> AdaptersNow(const Call& call) {
  try {
    return ChooseAdapters(ReadAdapters(call.service), call.options);
  } catch (const ClientError& error) {
    if (error.status != kBadCall) throw;
    return {};
  }
}

// Takes what has come, waiting up to `ms` for the first; a flood does not keep the state old.
// Whether there was any.
bool TakeEvents(IEventSource& events, int ms, const std::function<void(const std::string&)>& take) {
  auto event = events.Next(ms);
  const bool any = event.has_value();
  for (int taken = 1; event; ++taken) {
    take(*event);
    event = taken < kEventsAtOnce ? events.Next(1) : std::nullopt;
  }
  return any;
}

// ---- lines ----------------------------------------------------------------------------------

// One line of an adapter's state, for those who keep lines: told when it changes.
std::string PlainState(const Values& service, const AdapterState& adapter) {
  std::string text = "adapter " + std::to_string(adapter.index) + ": ";
  text += adapter.IsConnected() ? Printable(adapter.Text(value::kConnectedNetwork)) + " " +
                                      adapter.Text(value::kConnectedBssid)
                                : "not connected";
  text += ", mode " + ModeName(adapter.Text(value::kPassiveSuggestMode));
  const auto candidates = adapter.Candidates();
  if (!candidates.empty()) {
    text += ", best " + Printable(candidates[0].ssid) + " " + candidates[0].bssid;
  }
  const std::string suggestion = Printable(adapter.Text(value::kSuggestedNetwork));
  if (!suggestion.empty()) text += ", suggests " + suggestion;
  for (const std::string& reason : HoldingStill(service, adapter)) text += "; " + reason;
  return text;
}

void TellChanges(const Call& call, std::map<std::string, std::string>* told) {
  const Values service = call.service.Settings();
  for (const AdapterState& one : AdaptersNow(call)) {
    const std::string state =
        call.options.json ? StatusJson(service, one, true) : PlainState(service, one);
    if ((*told)[one.guid] == state) continue;
    (*told)[one.guid] = state;
    call.output.Line(state);
  }
}

void WatchInLines(const Call& call, IEventSource& events) {
  std::map<std::string, std::string> told;
  while (!call.service.IsInterrupted()) {
    TellChanges(call, &told);
    TakeEvents(events, kRefreshMs, [&](const std::string& event) {
      call.output.Line(call.options.json ? event : EventLine(event));
    });
  }
}

// ---- in place -------------------------------------------------------------------------------

// The state of the adapters and the last events, drawn where they differ from what is there.
class CLiveView {
 public:
  explicit CLiveView(const Call& call) : m_Call(call) {}

  void AddEvent(const std::string& event) {
    m_Events.push_back(EventLine(event));
    if (m_Events.size() > kEventsKept) m_Events.pop_front();
  }
  void Forget() { m_Shown.clear(); }  // the terminal shows something else

  void Draw() {
    const std::size_t columns = m_Call.output.columns();
    auto next = LivePicture(Adapters(), m_Events, m_Call.output.rows(), columns);
    const std::string text = RedrawText(m_Shown, next, columns);
    if (!text.empty()) m_Call.output.write(text);
    m_Shown = std::move(next);
  }

 private:
  std::vector<LiveAdapter> Adapters() const {
    const Values service = m_Call.service.Settings();
    std::vector<LiveAdapter> parts;
    for (const AdapterState& one : AdaptersNow(m_Call)) {
      LiveAdapter& part = parts.emplace_back();
      part.status = StatusLines(service, one);
      const auto candidates = one.Candidates();
      part.candidates = candidates.empty()
                            ? std::vector<std::string>()
                            : CandidateLines(candidates, one.Text(value::kConnectedBssid));
    }
    if (parts.empty()) parts.push_back({{"There is no adapter."}, {}});
    return parts;
  }

  const Call& m_Call;
  std::deque<std::string> m_Events;
  std::vector<std::string> m_Shown;
};

void WatchInPlace(const Call& call, IEventSource& events) {
  CLiveView view(call);
  const auto screen = call.output.openScreen();
  while (!call.service.IsInterrupted()) {
    view.Draw();
    for (int ms = 0; ms < kRefreshMs && !call.service.IsInterrupted(); ms += kLookMs) {
      const bool any =
          TakeEvents(events, kLookMs, [&](const auto& event) { view.AddEvent(event); });
      const auto wish = screen->Look();
      if (wish == ITerminalScreen::Wish::kEnd) return;
      if (wish == ITerminalScreen::Wish::kRedraw) view.Forget();
      if (any || wish == ITerminalScreen::Wish::kRedraw) break;
    }
  }
}

}  // namespace

int WatchCommand(const Call& call) {
  NeedWords(call, 0, 0);
  const auto events = call.service.Subscribe();
  ChooseAdapters(ReadAdapters(call.service), call.options);  // a wrong --adapter ends it here
  if (call.output.openScreen && !call.options.json) {
    WatchInPlace(call, *events);
  } else {
    WatchInLines(call, *events);
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
