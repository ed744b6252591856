#include "platform/parallel_parts.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace corvane::platform {

namespace {

// The first character of a line says how its piece ended.
constexpr char kGood = '+', kFailed = '!';

std::string DoPiece(PartWork& work, std::size_t piece) {
  try {
    return kGood + work.Do(piece);
  } catch (const std::exception& e) {
    return kFailed + std::string(e.what());
  }
}

void TakeLine(PartWork& work, std::size_t piece, const std::string& line) {
  if (line.empty()) throw std::runtime_error("a process ended before its work was done");
  if (line[0] == kFailed) throw std::runtime_error(line.substr(1));
  work.Take(piece, line.substr(1));
}

}  // namespace

#ifdef _WIN32

std::size_t ProcessorCount() { return 1; }

void DoInParts(std::size_t pieces, std::size_t, PartWork& work) {
  for (std::size_t piece = 0; piece < pieces; ++piece) TakeLine(work, piece, DoPiece(work, piece));
}

#else

namespace {

struct Closer {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using Stream = std::unique_ptr<std::FILE, Closer>;

// A process that does every `step`th piece from `first` on and writes their lines.
class Child {
 public:
  // `others`, which run already, are read by the parent alone.
  Child(PartWork& work, std::size_t first, std::size_t step, std::size_t pieces,
        const std::vector<std::unique_ptr<Child> >& others) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe to another process can be had");
    std::fflush(nullptr);  // what is buffered is written once
    m_Pid = fork();
    if (m_Pid == 0) {
      close(ends[0]);
      for (const auto& other : others) close(fileno(other->m_In.get()));
      const Stream out(fdopen(ends[1], "w"));
      for (std::size_t piece = first; out && piece < pieces; piece += step) {
        const std::string line = DoPiece(work, piece) + "\n";
        std::fwrite(line.data(), 1, line.size(), out.get());
        std::fflush(out.get());
      }
      _exit(0);  // nothing of the parent's is put away twice
    }
    close(ends[1]);
    m_In.reset(fdopen(ends[0], "r"));
    if (m_Pid < 0) throw std::runtime_error("no process can be started");
  }
  // One that still writes ends at its closed pipe.
  ~Child() {
    m_In.reset();
    if (m_Pid > 0) waitpid(m_Pid, nullptr, 0);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  std::string ReadLine() {
    std::string line;
    for (int c; m_In && (c = std::getc(m_In.get())) != EOF && c != '\n';)
      line.push_back(static_cast<char>(c));
    return line;
  }

 private:
  pid_t m_Pid = -1;
  Stream m_In;
};

}  // namespace

std::size_t ProcessorCount() {
  const long count = sysconf(_SC_NPROCESSORS_ONLN);
  return count > 0 ? static_cast<std::size_t>(count) : 1;
}

// The pieces are dealt out in turn, so that reading in turn gives them in order.
void DoInParts(std::size_t pieces, std::size_t processes, PartWork& work) {
  std::vector<std::unique_ptr<Child> > children;
  const std::size_t step = processes < pieces ? processes : pieces;
  if (step <= 1) {
    for (std::size_t piece = 0; piece < pieces; ++piece)
      TakeLine(work, piece, DoPiece(work, piece));
    return;
  }
  for (std::size_t first = 0; first < step; ++first)
    children.push_back(std::make_unique<Child>(work, first, step, pieces, children));
  for (std::size_t piece = 0; piece < pieces; ++piece)
    TakeLine(work, piece, children[piece % step]->ReadLine());
}

#endif

}  // namespace corvane::platform
