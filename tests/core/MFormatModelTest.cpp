// Random format strings beside a slow model that follows the grammar and builds the text from pieces.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "core/MFormat.h"
#include "tests/common/TestRandom.h"
#include "tests/core/Balanced.h"

namespace {

using MFormatModel = Balanced;
using Value = std::variant<std::string, long, unsigned long, double>;

struct Style {
  bool hexadecimal = false, plus = false;
  long width = 0, precision = 4;
  char fill = ' ';
};

std::string Shown(const Style& style, const Value& value) {
  if (const std::string* const text = std::get_if<std::string>(&value)) return *text;
  char digits[512];
  if (const double* const number = std::get_if<double>(&value)) {
    std::snprintf(digits, sizeof digits, "%.*f", static_cast<int>(std::min(style.precision & 255, 99l)),
                  *number);
    return (style.plus && *number >= 0 ? "+" : "") + std::string(digits);
  }
  const long* const integer = std::get_if<long>(&value);
  const bool negative = integer && *integer < 0;
  unsigned long magnitude = integer ? static_cast<unsigned long>(*integer) : std::get<unsigned long>(value);
  if (negative) magnitude = -magnitude;
  std::snprintf(digits, sizeof digits, style.hexadecimal ? "%lX" : "%lu", magnitude);
  std::string text = digits;
  const std::size_t width = static_cast<std::size_t>(std::min(style.width & 255, 62l));
  if (text.size() < width) text.insert(0, width - text.size(), style.fill);
  return (negative ? "-" : style.plus ? "+" : "") + text;
}

// The text as a sequence of pieces: plain characters, and places of arguments.
class Model {
 public:
  // False when the format ends inside of an argument.
  bool Read(const std::string& format) {
    at_ = format.c_str();
    while (true) {
      const char c = *at_++;
      if (c == 0) return true;
      if (c == '{' && *at_ != '{') {
        if (!ReadArgument()) return false;
      } else if (c == '{' || c == '}') {
        pieces_.push_back(std::string(1, *at_));
        if (*at_++ == 0) return true;
      } else {
        pieces_.push_back(std::string(1, c));
      }
    }
  }

  // An index came back at the place where it stood, with others there: their order is left open.
  bool IsOpen() const { return isOpen_; }

  std::string Text(const std::vector<Value>& values) const {
    std::string text;
    for (const Piece& piece : pieces_) {
      if (const int* const index = std::get_if<int>(&piece)) {
        if (static_cast<std::size_t>(*index) < values.size())
          text += Shown(styles_.at(*index), values[static_cast<std::size_t>(*index)]);
      } else {
        text += std::get<std::string>(piece);
      }
    }
    return text;
  }

 private:
  using Piece = std::variant<std::string, int>;

  long Number() {
    char* end;
    if (*at_ == '-' && !(at_[1] >= '0' && at_[1] <= '9')) return ++at_, 0;
    if (*at_ != '-' && !(*at_ >= '0' && *at_ <= '9')) return 0;
    const long value = std::strtol(at_, &end, 10);
    at_ = end;
    return value;
  }

  bool ReadArgument() {
    const long index = Number();
    const bool exists = index >= 0 && index < 32;
    Style unused;
    Style& style = exists ? styles_[static_cast<int>(index)] : unused;
    if (exists) PutPlace(static_cast<int>(index));
    while (true) {
      const char c = *at_++;
      if (c == 0) return false;
      if (c == '}') return true;
      if (c == ' ' || c == '0') style.fill = c, style.width = Number();
      if (c == '+') style.plus = true;
      if (c == 'x') style.hexadecimal = true;
      if (c == '.') style.precision = Number();
    }
  }

  // An earlier place of the same index vanishes.
  void PutPlace(int index) {
    const auto earlier = std::find(pieces_.begin(), pieces_.end(), Piece(index));
    if (earlier != pieces_.end()) {
      const auto isPlace = [](const Piece& piece) { return std::holds_alternative<int>(piece); };
      isOpen_ = isOpen_ || (pieces_.end() - earlier > 1 && std::all_of(earlier, pieces_.end(), isPlace));
      pieces_.erase(earlier);
    }
    pieces_.push_back(index);
  }

  const char* at_ = nullptr;
  bool isOpen_ = false;
  std::vector<Piece> pieces_;
  std::map<int, Style> styles_;
};

std::string RandomArgument(TestRandom& random, int index) {
  static const std::vector<std::string> styles = {"",      ";.2",  ";+.02", "x;02", ":04", "0.02",
                                                  " 12",   "+",    "x+",    ";5",   ".0",  ";.300",
                                                  ":0300", ";.-1", ": -3",  "!x?"};
  return "{" + std::to_string(index) + random.OneOf(styles) + "}";
}

Value RandomValue(TestRandom& random) {
  switch (random.Below(4)) {
    case 0:
      return std::string(static_cast<std::size_t>(random.Below(9)),
                         static_cast<char>('A' + random.Below(26)));
    case 1:
      return static_cast<long>(random.Bits()) >> random.Below(64);
    case 2:
      return random.Bits() >> random.Below(64);
    default:
      return random.OneIn(5) ? 0.0 : random.Real(-1, 1) * std::pow(10, random.Integer(-6, 12));
  }
}

std::string Formatted(const MString& format, const std::vector<Value>& values) {
  MFormat handle = Format(format);
  for (const Value& value : values)
    std::visit(
        [&](const auto& v) {
          if constexpr (std::is_same_v<std::decay_t<decltype(v)>, std::string>)
            handle.Arg(v.c_str());
          else
            handle.Arg(v);
        },
        value);
  return Utf8(handle.Text());
}

TEST_F(MFormatModel, RandomFormatsWithStylesComeOutAsTheGrammarSays) {
  TestRandom random(8);
  static const std::vector<std::string> plain = {"a", " bc ", "{{", "}}", "}x", "\"", "%d", ""};
  for (int round = 0; round < 20000; ++round) {
    std::vector<int> indices(static_cast<std::size_t>(random.Below(7)));
    for (std::size_t i = 0; i < indices.size(); ++i) indices[i] = static_cast<int>(i);
    for (std::size_t i = indices.size(); i > 1; --i)
      std::swap(indices[i - 1], indices[static_cast<std::size_t>(random.Below(static_cast<int32_t>(i)))]);
    std::string format = random.OneOf(plain);
    for (const int index : indices)
      format += RandomArgument(random, random.OneIn(20) ? random.Integer(-2, 35) : index) + "|" +
                random.OneOf(plain);
    std::vector<Value> values(static_cast<std::size_t>(random.Below(10)));
    for (Value& value : values) value = RandomValue(random);
    Model model;
    ASSERT_TRUE(model.Read(format)) << format;
    ASSERT_EQ(Formatted(Buffer(format.c_str()), values), model.Text(values)) << format;
    ASSERT_EQ(Formatted(MString::Literal(format.c_str()), values), model.Text(values)) << format;
  }
}

TEST_F(MFormatModel, AdjacentArgumentsInEveryOrderKeepThatOrder) {
  std::vector<int> indices = {0, 1, 2, 3, 4, 5};
  const std::vector<Value> values = {"A", "", "CC", "D", "", "FF"};
  do {
    std::string format;
    for (const int index : indices) format += "{" + std::to_string(index) + "}";
    Model model;
    ASSERT_TRUE(model.Read(format));
    ASSERT_EQ(Formatted(Buffer(format.c_str()), values), model.Text(values)) << format;
  } while (std::next_permutation(indices.begin(), indices.end()));
}

TEST_F(MFormatModel, RandomCharactersAreReadOrRefusedAsTheGrammarSays) {
  TestRandom random(9);
  const std::vector<Value> values = {"A", 1l, 2ul, 3.5};
  for (int round = 0; round < 50000; ++round) {
    std::string format;
    for (int i = random.Below(12); i > 0; --i) format += "{}{}01239.x+- ;ab"[random.Below(17)];
    Model model;
    if (!model.Read(format)) {
      EXPECT_RAISES(Format(Buffer(format.c_str())), "Formatting string ends in an argument specification.",
                    0);
    } else if (!model.IsOpen()) {
      ASSERT_EQ(Formatted(Buffer(format.c_str()), values), model.Text(values)) << format;
    }
  }
}

TEST_F(MFormatModel, ManyArgumentsInOrderAndNearlyInOrderComeOutAsTheGrammarSays) {
  TestRandom random(10);
  for (int round = 0; round < 5000; ++round) {
    const int count = random.Integer(1, 32);
    std::string format;
    for (int index = 0; index < count; ++index) {
      format += RandomArgument(random, random.OneIn(100) ? random.Below(32) : index);
      if (!random.OneIn(3)) format += std::string(static_cast<std::size_t>(random.Below(20)), 'p');
    }
    std::vector<Value> values(static_cast<std::size_t>(random.Below(34)));
    for (Value& value : values) value = RandomValue(random);
    Model model;
    ASSERT_TRUE(model.Read(format)) << format;
    if (model.IsOpen()) continue;
    ASSERT_EQ(Formatted(Buffer(format.c_str()), values), model.Text(values)) << format;
    ASSERT_EQ(Formatted(MString::Literal(format.c_str()), values), model.Text(values)) << format;
  }
}

TEST_F(MFormatModel, EveryCharacterButBracesStandsForItselfAtEveryPlace) {
  for (int32_t unit = 1; unit < 0x1FF; ++unit) {
    const MChar character = static_cast<MChar>(unit < 0x180 ? unit : unit << 8);
    if (character == u'{' || character == u'}') continue;
    for (std::size_t place = 0; place < 20; ++place) {
      std::u16string text(20, u'p');
      text[place] = character;
      ASSERT_EQ(Format(MString(std::u16string_view(text))).Text(), MString(std::u16string_view(text)));
      text.insert(place, u"{0}");
      ASSERT_EQ(Format(MString(std::u16string_view(text))).Arg("").Text().GetLength(), 20);
      if (unit > 127) continue;
      const std::string narrow(text.begin(), text.end());
      ASSERT_EQ(Format(MString::Literal(narrow.c_str())).Arg("").Text().GetLength(), 20);
    }
  }
}

}  // namespace
