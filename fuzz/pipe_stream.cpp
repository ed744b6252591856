// The bytes that a client sends, in steps of any size: they come out in order, and cut at every
// NUL.

#include "platform/linux/pipe_stream.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

bool IsNulAt(std::string_view bytes, std::size_t at) {
  return bytes[at] == '\0' && bytes[at + 1] == '\0';
}

void CheckPiece(std::string_view piece, bool whole) {
  if (whole != (piece.size() >= 2 && IsNulAt(piece, piece.size() - 2))) std::abort();
  for (std::size_t at = 0; at + 2 < piece.size(); at += 2) {
    if (IsNulAt(piece, at)) std::abort();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using corvane::platform::linux_host::PipeStream;
  if (size < 2) return 0;
  const std::size_t step = data[0] % 37u + 1;
  const std::size_t room = (data[1] % 32u + 1) * 2;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  PipeStream stream;
  std::vector<char> target(room);
  std::size_t taken = 0;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    stream.Add(bytes.substr(at, step));
    while (stream.IsReady(room)) {
      const auto piece = stream.Take(target.data(), room);
      if (piece.size == 0 || piece.size > room) std::abort();
      const std::string_view text(target.data(), piece.size);
      if (bytes.substr(taken, piece.size) != text) std::abort();
      CheckPiece(text, piece.whole);
      taken += piece.size;
    }
  }
  if (bytes.size() - taken >= room) std::abort();
  return 0;
}
