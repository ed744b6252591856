#pragma once
// The parsers of single elements, for the decoder alone. Each takes the value of its element; one
// that is too short leaves what was read so far.

#include "elements/element_cursor.h"
#include "elements/element_fields.h"
#include "elements/element_notes.h"

namespace corvane {

inline constexpr char16_t kParseFault[] = u"CIEBlob::Parse: EXCEPTION: 0x%08x";

void ParseHTCapabilities(Bytes value, ElementFields& out);
void ParseHTOperation(Bytes value, ElementFields& out);
void ParseVHTCapabilitiesData(Bytes value, ElementFields& out);
void ParseVHTOperation(Bytes value, ElementFields& out);
void ParseExtendedIEData(Bytes value, ElementFields& out, ElementNotes& notes);
void ParseRSN(Bytes value, ElementFields& out, ElementNotes& notes);
void ParseVendorSpecificData(Bytes value, ElementFields& out, ElementNotes& notes);

// The rates of the operating width, once all elements are read.
void ComputeVHTRate(ElementFields& out);
void ComputeHERate(ElementFields& out, ElementNotes& notes);

// The streams and MCS runs that an HT Rx MCS bitmask (MCS 0 to 76) covers, and its highest rate.
void Process_HT_MCS_Support_String(const ByteArray<10>& bitmap, bool b40, bool bSGI20, bool bSGI40,
                                   std::string* streamsText, double* rateMbps,
                                   std::string* mcsText);

}  // namespace corvane
