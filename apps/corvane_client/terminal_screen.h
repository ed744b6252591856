#pragma once

namespace corvane::client {

// A terminal that shows a picture in place of lines as long as this lives; then it shows again what
// stood there before.
class ITerminalScreen {
 public:
  enum class Wish { kNone, kRedraw, kEnd };

  virtual ~ITerminalScreen() = default;
  // What the person at it has done since the last look: another size or a return from Ctrl-Z ask
  // for the whole picture, q for the end.
  virtual Wish Look() = 0;
};

}  // namespace corvane::client
