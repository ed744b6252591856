#pragma once
#include "platform/types.h"

namespace corvane::platform {

// MultiByteToWideChar for the code pages that every machine has: UTF-8 (65001, no flags) and the
// default one (0 or 1252), which is that of Western Windows here. The length in units; 0 with the
// reason in *code for a page, a flag or a length that it does not take, and for a buffer that is
// too small. A null `wide` or a `wideSize` of 0 asks for the length; `size` -1 reads up to the NUL,
// which counts.
int CodePageToWide(unsigned codePage, DWORD flags, const char* bytes, int size, char16_t* wide,
                   int wideSize, DWORD* code);

}  // namespace corvane::platform
