#pragma once
#include "foundation/text.h"

namespace corvane {

// Removes a band word ("-5GHz", "2.4g", ...) from a network's name, in place: every occurrence of
// the first word of the list that is found, anywhere, and then the white space at the end.
void StripBandWord(WString* text);

}  // namespace corvane
