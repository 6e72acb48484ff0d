// A scope in which C functions and C++ streams write decimal commas and group digits.
#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <stdexcept>
#include <string>

class CommaLocale {
 public:
  // A std::locale by name would leak the copy that glibc makes of LOCPATH: the streams get
  // their punctuation from here instead.
  CommaLocale() {
    setenv("LOCPATH", KOVA_TEST_LOCALES, 1);
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
      throw std::runtime_error("there is no decimal-comma locale in " KOVA_TEST_LOCALES);
    }
  }
  ~CommaLocale() {
    std::locale::global(before_);
    std::setlocale(LC_ALL, "C");
    unsetenv("LOCPATH");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

 private:
  struct Punctuation : std::numpunct<char> {
    [[nodiscard]] char do_decimal_point() const override { return ','; }
    [[nodiscard]] char do_thousands_sep() const override { return '.'; }
    [[nodiscard]] std::string do_grouping() const override { return "\3"; }
  };

  std::locale before_ = std::locale::global(std::locale(std::locale::classic(), new Punctuation));
};
