#include "platform/wipe.h"

namespace corvane::platform {

void Wipe(void* memory, std::size_t bytes) noexcept {
  volatile unsigned char* at = static_cast<volatile unsigned char*>(memory);
  for (std::size_t i = 0; i < bytes; ++i) at[i] = 0;
}

void Wipe(std::string* text) noexcept {
  Wipe(text->data(), text->size());
  text->clear();
}

}  // namespace corvane::platform
