#include "platform/heap_api.h"

#include "platform/not_implemented.h"

namespace corvane::platform {

HANDLE HeapApi::HeapCreate(DWORD, std::size_t, std::size_t) {
  SetNotImplemented();
  return nullptr;
}

void* HeapApi::HeapAlloc(HANDLE, DWORD, std::size_t) {
  SetNotImplemented();
  return nullptr;
}

BOOL HeapApi::HeapFree(HANDLE, DWORD, void*) {
  SetNotImplemented();
  return FALSE;
}

BOOL HeapApi::HeapDestroy(HANDLE) {
  SetNotImplemented();
  return FALSE;
}

}  // namespace corvane::platform
