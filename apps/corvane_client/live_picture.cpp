#include "corvane_client/live_picture.h"

#include <algorithm>

#include "corvane_client/text_table.h"

namespace corvane::client {

namespace {

using Lines = std::vector<std::string>;

constexpr std::size_t kEventsShown = 8;
constexpr std::size_t kEventsHeading = 2;  // lines
constexpr std::size_t kEventsShare = 4;    // they may have a quarter of a terminal that is too low

void Append(Lines* lines, const Lines& more) {
  lines->insert(lines->end(), more.begin(), more.end());
}

// The adapters, each with so many candidates at most.
Lines StateLines(const std::vector<LiveAdapter>& adapters, std::size_t most) {
  Lines lines;
  for (const LiveAdapter& one : adapters) {
    if (!lines.empty()) lines.push_back("");
    Append(&lines, one.status);
    if (one.candidates.empty() || most == 0) continue;
    const std::size_t count = one.candidates.size() - 1;  // without the heading
    lines.push_back("");
    const auto first = one.candidates.begin();
    const std::size_t shown = std::min(count, most);
    lines.insert(lines.end(), first, first + static_cast<std::ptrdiff_t>(shown + 1));
    if (shown < count) lines.back() += "  (and " + std::to_string(count - shown) + " more)";
  }
  return lines;
}

std::size_t MostCandidates(const std::vector<LiveAdapter>& adapters) {
  std::size_t most = 0;
  for (const LiveAdapter& one : adapters) most = std::max(most, one.candidates.size());
  return most;
}

}  // namespace

std::vector<std::string> LivePicture(const std::vector<LiveAdapter>& adapters,
                                     const std::deque<std::string>& events, std::size_t rows,
                                     std::size_t columns) {
  const std::size_t wanted =
      events.empty() ? 0 : std::min(events.size(), kEventsShown) + kEventsHeading;
  const std::size_t least = std::min(wanted, rows / kEventsShare);
  std::size_t most = MostCandidates(adapters);
  Lines lines = StateLines(adapters, most);
  while (lines.size() + least > rows && most > 0) lines = StateLines(adapters, --most);
  if (lines.size() + least > rows) lines.resize(rows - least);

  const std::size_t room = std::min(wanted, rows - lines.size());
  if (room > kEventsHeading) {
    lines.push_back("");
    lines.push_back("Events");
    const auto shown = static_cast<std::ptrdiff_t>(room - kEventsHeading);
    lines.insert(lines.end(), events.end() - shown, events.end());
  }
  lines.resize(rows);
  for (std::string& line : lines) line = Clip(line, columns);
  return lines;
}

std::string RedrawText(const std::vector<std::string>& shown, const std::vector<std::string>& next,
                       std::size_t columns) {
  std::string text;
  for (std::size_t i = 0; i < next.size(); ++i) {
    if (shown.size() == next.size() && shown[i] == next[i]) continue;
    text += "\x1b[" + std::to_string(i + 1) + ";1H" + next[i];
    // Behind a line that reaches the edge the cursor stands on its last character.
    if (DisplayWidth(next[i]) < columns) text += "\x1b[K";
  }
  return text;
}

}  // namespace corvane::client
