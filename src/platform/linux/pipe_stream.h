#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace corvane::platform::linux_host {

// Cuts a stream of bytes into messages of UTF-16: each ends with its NUL, two zero bytes at an even
// place. Holds what has come and is not yet taken, which its owner bounds by adding no more than
// until IsReady.
class PipeStream {
 public:
  struct Piece {
    std::size_t size = 0;
    bool whole = true;  // else the message is longer than the room, and the rest of it follows
  };

  void Add(std::string_view bytes) { m_Bytes += bytes; }
  // Whether Take has something for so much room.
  bool IsReady(std::size_t room);
  // Moves a message, or as much of a longer one as there is room for. Only when it is ready.
  Piece Take(void* target, std::size_t room);
  void Clear();

 private:
  std::string m_Bytes;
  std::size_t m_Scanned = 0;  // even; no NUL before it
  std::size_t m_End = 0;      // behind the first NUL; 0: none found yet
};

}  // namespace corvane::platform::linux_host
