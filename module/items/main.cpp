// items_document: prints docs/items.md (--markdown), items.json (--json), made from the rows, or
// the lines of the host guide's table of statuses (--statuses), made from the C header.
#include <fmt/format.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "include/kova_iot.h"
#include "module/items/items_json.h"
#include "module/items/items_markdown.h"

namespace {

std::string statuses() {
  std::string text;
#define LINE(status, meaning)                                             \
  text += fmt::format("| `{}` | 0x{:08X} | {} | {} |\n", #status, status, \
                      static_cast<std::int32_t>(status), meaning);
  KOVA_IOT_STATUSES(LINE)
#undef LINE
  return text;
}

std::string made(std::string_view form) {
  return form == "--json" ? items_json() : form == "--markdown" ? items_markdown() : statuses();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view form = argc == 2 ? argv[1] : "";
  if (form != "--json" && form != "--markdown" && form != "--statuses") {
    std::fputs("usage: items_document --json | --markdown | --statuses\n", stderr);
    return 2;
  }
  try {
    std::fputs(made(form).c_str(), stdout);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "items_document: %s\n", error.what());
    return 1;
  }
}
