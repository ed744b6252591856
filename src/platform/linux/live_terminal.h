#pragma once
#include <memory>
#include <string>

namespace corvane::platform::linux_host {

// Takes the terminal of this process for a picture: its second screen, without a cursor, and with
// keys that come one by one and are not shown. The end of this object gives it back as it was, and
// so does a stop by Ctrl-Z as long as it lasts. One at a time, on one thread.
class LiveTerminal {
 public:
  // Whether standard output is a terminal that can be written to in place.
  static bool IsUsable();

  LiveTerminal();
  ~LiveTerminal();
  LiveTerminal(const LiveTerminal&) = delete;
  LiveTerminal& operator=(const LiveTerminal&) = delete;

  std::string Keys();  // those that were typed since the last call; never waits
  bool IsResized();    // since the last call
  // Lets Ctrl-Z have its way and gives true when the process goes on; false when nobody asked.
  bool StopIfAsked();

 private:
  void Enter();
  void Leave();

  struct Usual;
  std::unique_ptr<Usual> m_pUsual;  // how standard input was, if that is a terminal set for keys
};

}  // namespace corvane::platform::linux_host
