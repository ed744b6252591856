#include "corvane_lab/report_page.h"

#include <stdexcept>

namespace corvane::lab {

namespace {

std::string_view FileText(std::string_view name) {
  const PageFile* const file = FindPageFile(name);
  if (!file) throw std::runtime_error("this program carries no " + std::string(name));
  return file->text;
}

// Inside a script element nothing may look like its end, or like a comment.
std::string InScript(std::string_view json) {
  std::string safe;
  safe.reserve(json.size());
  for (const char c : json) {
    if (c == '<') {
      safe += "\\u003c";
    } else {
      safe += c;
    }
  }
  return safe;
}

std::string InText(std::string_view text) {
  std::string safe;
  for (const char c : text) {
    switch (c) {
      case '<':
        safe += "&lt;";
        break;
      case '&':
        safe += "&amp;";
        break;
      default:
        safe += c;
    }
  }
  return safe;
}

}  // namespace

std::string ReportPage(std::string_view title, std::string_view json) {
  const struct {
    std::string_view mark;
    std::string text;
  } parts[] = {{"@TITLE@", InText(title)},
               {"@LICENSE@", InText(FileText("uplot/LICENSE"))},
               {"@STYLE@", std::string(FileText("uplot/uPlot.min.css")) + "\n" +
                               std::string(FileText("page.css"))},
               {"@DATA@", InScript(json)},
               {"@SCRIPT@", std::string(FileText("uplot/uPlot.iife.min.js")) + "\n" +
                                std::string(FileText("page.js"))}};
  const std::string_view frame = FileText("page.html");
  std::string page;
  std::size_t done = 0;
  for (const auto& part : parts) {  // in the order of the frame
    const std::size_t at = frame.find(part.mark, done);
    if (at == frame.npos)
      throw std::logic_error("the frame of the page has no " + std::string(part.mark));
    page.append(frame, done, at - done).append(part.text);
    done = at + part.mark.size();
  }
  return page.append(frame, done);
}

}  // namespace corvane::lab
