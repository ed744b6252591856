#pragma once
#include <cstdint>
#include <vector>

#include "foundation/format.h"

namespace corvane {

// What a note of the decoder is about. Who reads the notes chooses the topics, as a mask.
enum ElementTopic : std::uint32_t { kNoteDetail = 1, kNoteMalformed = 2, kNoteSecurity = 4 };

// A line for the log, as it stands there; and the line for a fault that writing it meets, a format
// that takes the code.
struct ElementNote {
  WString text;
  const char16_t* faultLine;
};

// What the decoder noticed, in the order of the elements. A topic that nobody asked for costs a bit
// test.
class ElementNotes {
 public:
  explicit ElementNotes(std::uint32_t topics) : m_Topics(topics) {}

  bool Wants(ElementTopic topic) const { return (m_Topics & topic) != 0; }
  template <typename... Args>
  void Add(ElementTopic topic, const char16_t* faultLine, WStringView format, const Args&... args) {
    if (Wants(topic)) m_Notes.push_back({Format(format, args...), faultLine});
  }
  auto begin() const { return m_Notes.begin(); }
  auto end() const { return m_Notes.end(); }

 private:
  const std::uint32_t m_Topics;
  std::vector<ElementNote> m_Notes;
};

}  // namespace corvane
