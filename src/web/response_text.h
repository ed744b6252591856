#pragma once
// The body of a response as text. Decisions are pure; the conversion asks the platform.

#include <string>

#include "foundation/text.h"

namespace corvane {

// The charset that a content type names, in lower case: the text behind "charset=", "utf-8" without
// one.
WString CharsetOf(WStringView contentType);

// The bytes as text by the charset: UTF-8 where its name holds "utf-8", else by the system's
// default code page. Empty for no bytes, or when the platform converts neither way.
WString TextOfBody(const std::string& body, WStringView charset);

// A page that has begun and does not end.
bool IsIncompletePage(WStringView text);

}  // namespace corvane
