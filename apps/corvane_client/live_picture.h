#pragma once
// What a terminal shows of the service, line for line. Pure.

#include <deque>
#include <string>
#include <vector>

namespace corvane::client {

// An adapter's part: its state, and a table of candidates with its heading, which may be empty.
struct LiveAdapter {
  std::vector<std::string> status;
  std::vector<std::string> candidates;
};

// Exactly so many lines, none wider than `columns`. What does not fit is left out: the worst
// candidates of each adapter and the oldest events first.
std::vector<std::string> LivePicture(const std::vector<LiveAdapter>& adapters,
                                     const std::deque<std::string>& events, std::size_t rows,
                                     std::size_t columns);

// Turns what a terminal of that width shows into the next picture, by the lines that differ: all of
// them where the pictures have not the same number of lines. The cursor ends anywhere.
std::string RedrawText(const std::vector<std::string>& shown, const std::vector<std::string>& next,
                       std::size_t columns);

}  // namespace corvane::client
