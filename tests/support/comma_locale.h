// A scope in which C functions and C++ streams write decimal commas and group digits.
#pragma once

#include <clocale>
#include <cstdlib>
#include <locale>
#include <stdexcept>

class CommaLocale {
 public:
  CommaLocale() {
    setenv("LOCPATH", KOVA_TEST_LOCALES, 1);
    std::locale::global(std::locale("de_DE.UTF-8"));  // sets the C locale too
    if (std::localeconv()->decimal_point[0] != ',') {
      throw std::runtime_error("the decimal-comma locale is not in force");
    }
  }
  ~CommaLocale() {
    std::locale::global(before_);
    unsetenv("LOCPATH");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

 private:
  std::locale before_;
};
