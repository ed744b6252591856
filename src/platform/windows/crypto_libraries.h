#pragma once
#include "platform/windows/system_library.h"

namespace corvane::platform::windows {

inline const SystemLibrary& BcryptLibrary() {
  static constinit const SystemLibrary library(L"bcrypt.dll");
  return library;
}
inline const SystemLibrary& Crypt32Library() {
  static constinit const SystemLibrary library(L"crypt32.dll");
  return library;
}

}  // namespace corvane::platform::windows
