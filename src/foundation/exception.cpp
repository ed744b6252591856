#include "foundation/exception.h"

namespace corvane {

void Exception::SetMessage(std::string_view text) {
  // The last character of the field stays NUL.
  text.copy(m_Message, sizeof(m_Message) - 1);
}

}  // namespace corvane
