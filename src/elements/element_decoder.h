#pragma once
#include "elements/element_cursor.h"
#include "elements/element_fields.h"
#include "elements/element_notes.h"

namespace corvane {

// Reads the elements of one beacon or probe response into `out`, whose channel and width (MHz, 0
// for unknown) are set and whose other fields are at their start values. Pure: no bytes make it
// read outside of them or throw; only lack of memory does.
void DecodeElements(Bytes elements, ElementFields& out, ElementNotes& notes);

}  // namespace corvane
