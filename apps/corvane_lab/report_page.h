#pragma once
#include <string>
#include <string_view>

namespace corvane::lab {

// A file of the page, as it is packed into this program.
struct PageFile {
  std::string_view name, text;
};
// Null for a name that is none of them.
const PageFile* FindPageFile(std::string_view name);

// The page that draws a day, in one piece: it asks for nothing from anywhere. `json` is
// DayRecord's.
std::string ReportPage(std::string_view title, std::string_view json);

}  // namespace corvane::lab
