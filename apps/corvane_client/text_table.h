#pragma once
// Text for terminals. Pure.

#include <string>
#include <string_view>
#include <vector>

namespace corvane::client {

// How many columns of a terminal a UTF-8 text takes.
std::size_t DisplayWidth(std::string_view utf8);

// A text that somebody else chose, such as an SSID, safe to print: control characters, among them
// those that command a terminal, and bytes that are no UTF-8 become U+FFFD.
std::string Printable(std::string_view utf8);

// No wider than so many columns; a longer text ends with an ellipsis.
std::string Clip(std::string_view utf8, std::size_t columns);

using Row = std::vector<std::string>;

// The rows as lines with aligned columns, two blanks apart, no blanks at the ends. Columns named in
// `right` are aligned at the right.
std::vector<std::string> TableLines(const std::vector<Row>& rows,
                                    const std::vector<std::size_t>& right = {});

}  // namespace corvane::client
