#pragma once
#include <cstddef>
#include <string>

namespace corvane::platform {

// Pieces of work that share nothing, for programs that stand outside the simulated PC, of which a
// process has one at a time. Each piece gives a line of text, of any length and without a line end.
class PartWork {
 public:
  virtual ~PartWork() = default;
  // In a process of its own where there are several: what it changes is lost but for the line.
  // An exception ends the whole work with its text.
  virtual std::string Do(std::size_t piece) = 0;
  // In the calling process, by rising piece.
  virtual void Take(std::size_t piece, const std::string& line) = 0;
};

// Does the pieces 0 to `pieces` - 1 in `processes` processes (at least 1; on a system that cannot
// fork, one after another in this one). The caller has no other thread. Throws std::runtime_error
// with the reason when a process fails.
void DoInParts(std::size_t pieces, std::size_t processes, PartWork& work);

// How many processes this machine can run at once, at least 1.
std::size_t ProcessorCount();

}  // namespace corvane::platform
