// The files of the live page, as they are built into programs.
#pragma once

#include <span>
#include <string_view>

namespace kova_page {

struct PageFile {
  std::string_view name;     // such as "page.css"; what the page calls it by
  std::string_view type;     // its media type, such as "text/css; charset=utf-8"
  std::string_view content;  // UTF-8
};

// "page.html" first, then what it refers to: styles before scripts, scripts in the order in which
// they have to run.
std::span<const PageFile> page_files();

// Null if the page has no such file.
const PageFile* find_page_file(std::string_view name);

}  // namespace kova_page
