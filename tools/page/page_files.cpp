// The files of the live page, as they are built into programs.
#include "tools/page/page_files.h"

#include <algorithm>
#include <array>

namespace kova_page {

extern const std::string_view page_html;
extern const std::string_view dygraph_css;
extern const std::string_view page_css;
extern const std::string_view dygraph_js;
extern const std::string_view source_js;
extern const std::string_view items_js;
extern const std::string_view timeline_js;
extern const std::string_view chart_js;
extern const std::string_view controls_js;
extern const std::string_view page_js;

namespace {

constexpr std::string_view kStyle = "text/css; charset=utf-8";
constexpr std::string_view kScript = "text/javascript; charset=utf-8";

}  // namespace

std::span<const PageFile> page_files() {
  static const std::array<PageFile, 10> files = {{
      {"page.html", "text/html; charset=utf-8", page_html},
      {"dygraph.css", kStyle, dygraph_css},
      {"page.css", kStyle, page_css},
      {"dygraph.js", kScript, dygraph_js},
      {"source.js", kScript, source_js},
      {"items.js", kScript, items_js},
      {"timeline.js", kScript, timeline_js},
      {"chart.js", kScript, chart_js},
      {"controls.js", kScript, controls_js},
      {"page.js", kScript, page_js},
  }};
  return files;
}

const PageFile* find_page_file(std::string_view name) {
  const auto files = page_files();
  const auto match = std::find_if(files.begin(), files.end(),
                                  [name](const PageFile& file) { return file.name == name; });
  return match == files.end() ? nullptr : &*match;
}

}  // namespace kova_page
