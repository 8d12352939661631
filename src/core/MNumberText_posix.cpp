#include "core/MNumberText.h"

#include <cstdio>
#include <cstdlib>

#include <locale.h>

namespace {

locale_t CLocale() noexcept {
  static const locale_t locale =
      newlocale(LC_ALL_MASK, "C", nullptr);  // glibc's built-in object, never freed
  return locale;
}

}  // namespace

double MReadDouble(const char* text) noexcept {
  return strtod_l(text, nullptr, CLocale());
}

int32_t MPrintText(char* text, std::size_t size, const char* format, std::va_list arguments) noexcept {
  const locale_t before = uselocale(CLocale());
  const int32_t length = std::vsnprintf(text, size, format, arguments);
  uselocale(before);
  return length;
}
