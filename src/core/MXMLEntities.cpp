#include "core/MXMLEntities.h"

#include <algorithm>
#include <iterator>

namespace {

struct Entity {
  MChar character;
  std::u16string_view name;
};
constexpr Entity kEntities[] = {{u'&', u"amp"},  {u'<', u"lt"},   {u'>', u"gt"}, {u'\'', u"apos"},
                                {u'"', u"quot"}, {u'\n', u"#10"}, {u'\0', u"#0"}};
constexpr uint32_t kLastCodePoint = 0x10FFFF;

constexpr bool IsNameUnit(MChar unit) {
  return unit == u'#' || (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') ||
         (unit >= u'a' && unit <= u'z');
}

// The number behind "#", or more than the last code point if it is none.
uint32_t CodePointOf(std::u16string_view digits) {
  int32_t base = 10;
  if (!digits.empty() && (digits[0] == u'x' || digits[0] == u'X')) {
    base = 16;
    digits.remove_prefix(1);
  }
  if (digits.empty()) return kLastCodePoint + 1;
  uint32_t value = 0;
  for (const MChar unit : digits) {
    const int32_t digit = MDigitValue(unit);
    if (digit < 0 || digit >= base) return kLastCodePoint + 1;
    value = std::min(value * static_cast<uint32_t>(base) + static_cast<uint32_t>(digit), kLastCodePoint + 1);
  }
  return value;
}

void AppendCodePoint(MString& text, uint32_t codePoint) {
  if (codePoint > 0xFFFF) {
    text.Append(static_cast<MChar>(0xD7C0 + (codePoint >> 10)));
    text.Append(static_cast<MChar>(0xDC00 | (codePoint & 0x3FF)));
  } else {
    text.Append(static_cast<MChar>(codePoint));
  }
}

// Appends the character of that name; false, and nothing, if there is none.
bool AppendCharacter(MString& text, std::u16string_view name) {
  if (name[0] == u'#') {
    const uint32_t codePoint = CodePointOf(name.substr(1));
    if (codePoint > kLastCodePoint) return false;
    AppendCodePoint(text, codePoint);
    return true;
  }
  const auto* const found = std::find_if(std::begin(kEntities), std::end(kEntities),
                                         [&](const Entity& e) { return e.name == name; });
  if (found == std::end(kEntities)) return false;
  text.Append(found->character);
  return true;
}

}  // namespace

MString MXMLResolveEntities(std::u16string_view text, bool& emptyName) {
  MString resolved;
  for (;;) {
    const std::size_t place = text.find(u'&');
    if (place == text.npos) break;
    resolved.AppendUnits(text.data(), static_cast<int32_t>(place));
    text.remove_prefix(place + 1);
    const std::size_t length =
        static_cast<std::size_t>(std::find_if_not(text.begin(), text.end(), IsNameUnit) - text.begin());
    const bool isNamed = length < text.size() && text[length] == u';';
    emptyName |= isNamed && length == 0;
    if (isNamed && length > 0 && AppendCharacter(resolved, text.substr(0, length)))
      text.remove_prefix(length + 1);
    else
      resolved.Append(u'&');
  }
  resolved.AppendUnits(text.data(), static_cast<int32_t>(text.size()));
  return resolved;
}

bool MXMLAppendEntity(MString& text, MChar unit) {
  const auto* const found = std::find_if(std::begin(kEntities), std::end(kEntities),
                                         [unit](const Entity& e) { return e.character == unit; });
  if (found == std::end(kEntities)) return false;
  text.Append(u'&');
  text.AppendUnits(found->name.data(), static_cast<int32_t>(found->name.size()));
  text.Append(u';');
  return true;
}

void MXMLAppendNumber(MString& text, uint32_t codePoint) {
  text.Append("&#");
  text.Append(MString::FromUnsigned(codePoint));
  text.Append(u';');
}
