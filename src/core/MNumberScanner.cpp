#include "core/MNumberScanner.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int32_t kArgumentLimit = 32;  // of MFormat

bool IsBlank(MChar c) {
  return c == u' ' || (c >= u'\t' && c <= u'\r') || c == 0xA0;  // a space that does not break
}

bool IsDigit(MChar c) {
  return c >= u'0' && c <= u'9';
}

int32_t SkipBlanks(const MString& text, int32_t i) {
  while (i < text.GetLength() && IsBlank(text.At(i))) ++i;
  return i;
}

int32_t SkipDigits(const MString& text, int32_t i) {
  while (IsDigit(text.At(i))) ++i;
  return i;
}

int32_t SkipSign(const MString& text, int32_t i) {
  return text.At(i) == u'-' || text.At(i) == u'+' ? i + 1 : i;
}

// The index behind the number at `start`, or `start`.
int32_t FindNumberEnd(const MString& text, int32_t start) {
  const int32_t first = SkipSign(text, start);
  int32_t end = SkipDigits(text, first);
  int32_t digits = end - first;
  if (text.At(end) == u'.') {
    const int32_t fraction = SkipDigits(text, end + 1);
    digits += fraction - (end + 1);
    end = fraction;
  }
  if (digits == 0) return start;
  if (text.At(end) != u'e' && text.At(end) != u'E') return end;
  const int32_t exponent = SkipSign(text, end + 1);
  const int32_t exponentEnd = SkipDigits(text, exponent);
  return exponentEnd > exponent ? exponentEnd : end;
}

std::optional<MScannedNumber> ScanHexadecimal(const MString& text, int32_t position) {
  MScannedNumber number = {};
  number.start = SkipBlanks(text, position);
  number.value = static_cast<double>(text.ToInteger(16, &number.length, number.start));
  const bool isSignAlone = number.length == 1 && text.At(number.start) == u'-';
  return number.length > 0 && !isSignAlone ? std::optional(number) : std::nullopt;
}

// One element of a format: a character of its own text, the place of an argument, or its end.
struct Token {
  enum class Kind { kCharacter, kArgument, kEnd, kBroken };
  Kind kind;
  int32_t start;  // index of the character, or behind the opening brace
  int32_t next;
  int64_t index = 0;
  bool isHexadecimal = false;
};

Token ReadArgument(const MString& format, int32_t start) {
  Token token = {Token::Kind::kArgument, start, start};
  int32_t consumed;
  token.index = format.ToInteger(10, &consumed, start);
  int32_t i = start + consumed;
  for (;;) {
    const MChar c = format.At(i++);
    if (c == 0) return {Token::Kind::kBroken, start, i};
    if (c == u'}') break;
    if (c == u'x') token.isHexadecimal = true;
    if (c == u' ' || c == u'0' || c == u'.') {
      format.ToInteger(10, &consumed, i);
      i += consumed;
    }
  }
  token.next = i;
  return token;
}

Token ReadToken(const MString& format, int32_t i) {
  const MChar c = format.At(i);
  if (c == 0) return {Token::Kind::kEnd, i, i};
  if (c == u'{' && format.At(i + 1) != u'{') return ReadArgument(format, i + 1);
  if (c != u'{' && c != u'}') return {Token::Kind::kCharacter, i, i + 1};
  if (format.At(i + 1) == 0) return {Token::Kind::kEnd, i + 1, i + 1};
  return {Token::Kind::kCharacter, i + 1, i + 2};
}

class Scan {
 public:
  Scan(const MString& format, const MString& text) : format_(format), text_(text) {}

  MScannedNumbers Run() {
    if (!FindLastPlaces()) return {};
    for (int32_t i = 0;;) {
      const Token token = ReadToken(format_, i);
      if (token.kind == Token::Kind::kEnd) break;
      if (token.kind == Token::Kind::kCharacter) {
        i = MatchOwnText(i);
        continue;
      }
      i = token.next;
      const bool isPlace =
          token.index >= 0 && token.index < kArgumentLimit && lastPlaces_[token.index] == token.start;
      if (isPlace && !TakeNumber(token.isHexadecimal)) break;
    }
    return SkipBlanks(text_, position_) >= text_.GetLength() ? found_ : MScannedNumbers();
  }

 private:
  // An index that is named again counts at its last place.
  bool FindLastPlaces() {
    std::fill(std::begin(lastPlaces_), std::end(lastPlaces_), -1);
    for (int32_t i = 0;;) {
      const Token token = ReadToken(format_, i);
      if (token.kind == Token::Kind::kBroken) return false;
      if (token.kind == Token::Kind::kEnd) return true;
      if (token.kind == Token::Kind::kArgument && token.index >= 0 && token.index < kArgumentLimit)
        lastPlaces_[token.index] = token.start;
      i = token.next;
    }
  }

  // Moves over a stretch of the format's own text if the text has all of it; returns the index behind the
  // stretch.
  int32_t MatchOwnText(int32_t i) {
    int32_t position = position_;
    bool fits = true;
    for (;;) {
      const Token token = ReadToken(format_, i);
      if (token.kind != Token::Kind::kCharacter) break;
      i = token.next;
      if (!fits || IsBlank(format_.At(token.start))) continue;
      position = SkipBlanks(text_, position);
      fits = position < text_.GetLength() && MString::Compare(format_, token.start, text_, position, 1) == 0;
      ++position;
    }
    if (fits) position_ = position;
    return i;
  }

  bool TakeNumber(bool isHexadecimal) {
    const std::optional<MScannedNumber> number =
        isHexadecimal ? ScanHexadecimal(text_, position_) : MScanNumber(text_, position_);
    if (!number) return false;
    position_ = number->start + number->length;
    if (found_.count < MScannedNumbers::kMaximum) found_.numbers[found_.count] = *number;
    ++found_.count;
    return true;
  }

  const MString& format_;
  const MString& text_;
  int32_t position_ = 0;
  int32_t lastPlaces_[kArgumentLimit];
  MScannedNumbers found_;
};

}  // namespace

std::optional<MScannedNumber> MScanNumber(const MString& text, int32_t position) {
  MScannedNumber number = {};
  number.start = SkipBlanks(text, position);
  number.length = FindNumberEnd(text, number.start) - number.start;
  if (number.length == 0) return std::nullopt;
  number.value = text.Substring(number.start, number.length).ToDouble();
  return std::isfinite(number.value) ? std::optional(number) : std::nullopt;
}

std::optional<MQuantity> MReadQuantity(const MString& text) {
  const std::optional<MScannedNumber> number = MScanNumber(text, 0);
  if (!number) return std::nullopt;
  return MQuantity{number->value, MTrimmed(text.Substring(number->start + number->length))};
}

MString MTrimmed(const MString& text) {
  const int32_t start = SkipBlanks(text, 0);
  int32_t end = text.GetLength();
  while (end > start && IsBlank(text.At(end - 1))) --end;
  return text.Substring(start, end - start);
}

MScannedNumbers MScanFormat(const MString& format, const MString& text) {
  return Scan(format, text).Run();
}
