// The live page as one file that needs nothing else.
#include "tools/page/single_file.h"

#include <fmt/format.h>

#include <random>
#include <stdexcept>

#include "tools/page/page_files.h"

namespace kova_page {
namespace {

// The mark of our own scripts and styles; new in every file, so that no text in a report knows it.
std::string make_nonce() {
  std::random_device random;
  return fmt::format("{:08x}{:08x}{:08x}{:08x}", random(), random(), random(), random());
}

// So that no text closes the element it stands in. JSON has "<" only inside strings.
std::string script_safe(std::string_view json) {
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

void replace(std::string& page, std::string_view reference, std::string_view element) {
  const size_t place = page.find(reference);
  if (place == std::string::npos) {
    throw std::logic_error(fmt::format("page.html lacks {}", reference));
  }
  page.replace(place, reference.size(), element);
}

}  // namespace

std::string single_file(std::string_view report) {
  const std::string nonce = make_nonce();
  const auto files = page_files();
  std::string page(files.front().content);
  // The last file first: what is put in stands behind what is still to be found.
  for (auto file = files.rbegin(); file != files.rend() - 1; ++file) {
    if (file->name.ends_with(".css")) {
      replace(page, fmt::format(R"(<link rel="stylesheet" href="{}">)", file->name),
              fmt::format("<style nonce=\"{}\">\n{}</style>", nonce, file->content));
    } else {
      replace(page, fmt::format(R"(<script src="{}"></script>)", file->name),
              fmt::format("<script nonce=\"{}\">\n{}</script>", nonce, file->content));
    }
  }
  constexpr std::string_view kCharset = R"(<meta charset="utf-8">)";
  replace(
      page, kCharset,
      fmt::format("{}\n<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
                  "script-src 'nonce-{}'; style-src 'nonce-{}'; img-src data:; base-uri 'none'; "
                  "form-action 'none'\">",
                  kCharset, nonce, nonce));
  constexpr std::string_view kBody = "<body>";
  replace(page, kBody,
          fmt::format("{}\n<script type=\"application/json\" id=\"report\">{}</script>", kBody,
                      script_safe(report)));
  return page;
}

}  // namespace kova_page
