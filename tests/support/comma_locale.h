// A scope in which C++ streams and, where the machine has such a locale, C functions write decimal
// commas and group digits.
#pragma once

#include <clocale>
#include <locale>
#include <string>

class CommaLocale {
 public:
  CommaLocale() {
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "nl_NL.UTF-8"}) {
      reaches_c_ = reaches_c_ || std::setlocale(LC_ALL, name) != nullptr;
    }
  }
  ~CommaLocale() {
    std::locale::global(before_);
    std::setlocale(LC_ALL, "C");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  /// False when no such C locale is installed: only the C++ half is in force.
  [[nodiscard]] bool reaches_c() const { return reaches_c_; }

 private:
  struct Punctuation : std::numpunct<char> {
    [[nodiscard]] char do_decimal_point() const override { return ','; }
    [[nodiscard]] char do_thousands_sep() const override { return '.'; }
    [[nodiscard]] std::string do_grouping() const override { return "\3"; }
  };

  std::locale before_ = std::locale::global(std::locale(std::locale::classic(), new Punctuation));
  bool reaches_c_ = false;
};
