// items_document: prints docs/items.md (--markdown) or items.json (--json), made from the rows.
#include <cstdio>
#include <exception>
#include <string_view>

#include "module/items/items_json.h"
#include "module/items/items_markdown.h"

int main(int argc, char** argv) {
  const std::string_view form = argc == 2 ? argv[1] : "";
  if (form != "--json" && form != "--markdown") {
    std::fputs("usage: items_document --json | --markdown\n", stderr);
    return 2;
  }
  try {
    std::fputs((form == "--json" ? items_json() : items_markdown()).c_str(), stdout);
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "items_document: %s\n", error.what());
    return 1;
  }
}
