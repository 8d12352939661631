#pragma once
// A process whose numbers have a decimal comma, as hosts make it with setlocale. The locale is made on the
// spot with localedef, which is part of glibc's basic package; where that fails IsInForce is false.

#include <clocale>
#include <cstdio>
#include <cstdlib>

#include "tests/common/TemporaryFolder.h"

class CommaLocale {
 public:
  CommaLocale() {
    folder_.WriteFile("ascii", Charmap());
    folder_.WriteFile("comma",
                      "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\nEND LC_NUMERIC\n");
    const std::string path = folder_.GetPath().string();
    const std::string command =
        "cd '" + path + "' && localedef --no-archive -c -f ./ascii -i ./comma ./comma_CM 2>/dev/null";
    // It warns of the categories that are not defined, and reports that as a failure.
    [[maybe_unused]] const int status = std::system(command.c_str());
    setenv("LOCPATH", path.c_str(), 1);
    std::setlocale(LC_NUMERIC, "comma_CM");
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
  }

  static bool IsInForce() { return *std::localeconv()->decimal_point == ','; }

 private:
  // ASCII, each character by its code.
  static std::string Charmap() {
    std::string rows;
    for (unsigned c = 0; c < 128; ++c) {
      char row[32];
      std::snprintf(row, sizeof row, "<U%04X> /x%02x -\n", c, c);
      rows += row;
    }
    return "<code_set_name> ASCII\n<comment_char> %\n<escape_char> /\nCHARMAP\n" + rows + "END CHARMAP\n";
  }

  TemporaryFolder folder_;
};
