#include "core/MFormat.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

#include "core/MException.h"
#include "core/MNumberText.h"

namespace {

constexpr int32_t kMaximumArguments = 32;

struct Argument {
  int32_t position;  // where the argument goes in the text, -1 nowhere
  uint8_t flags;
  uint8_t width;
  uint8_t fill;
  uint8_t precision;
  uint8_t order;  // among arguments at the same position
};

constexpr Argument kUnnamed = {-1, 0, 0, ' ', 4, 0};
constexpr uint8_t kHexadecimal = 1;
constexpr uint8_t kShowPlus = 2;

constexpr bool IsPlain(MChar c) {
  return c != u'{' && c != u'}' && c != 0;
}

// How many characters at the start are plain, eight bytes at a time.
template <typename Unit>
int32_t CountPlain(const Unit* units, int32_t count) {
  static_assert(std::endian::native == std::endian::little);
  constexpr int32_t kStep = sizeof(uint64_t) / sizeof(Unit);
  constexpr uint64_t kOnes = ~uint64_t{0} / static_cast<std::make_unsigned_t<Unit>>(-1);
  constexpr uint64_t kHighBits = kOnes << (8 * sizeof(Unit) - 1);
  // The lowest bit is the high bit of the first part that is 0.
  const auto zeros = [](uint64_t word) { return (word - kOnes) & ~word & kHighBits; };
  int32_t i = 0;
  for (; i + kStep <= count; i += kStep) {
    uint64_t word;
    std::memcpy(&word, units + i, sizeof word);
    const uint64_t stops = zeros(word) | zeros(word ^ kOnes * u'{') | zeros(word ^ kOnes * u'}');
    if (stops != 0) return i + std::countr_zero(stops) / static_cast<int32_t>(8 * sizeof(Unit));
  }
  while (i < count && IsPlain(MString::Widen(units[i]))) ++i;
  return i;
}

}  // namespace

struct MFormat::State {
  M_LIBRARY_MEMORY

  int32_t references = 1;
  Argument arguments[kMaximumArguments];  // the first argumentCount have values
  MString text;
  int32_t argumentCount = 0;
  int32_t nextArgument = 0;
  bool isInOrder = true;  // the text names 0, 1, 2 and so on, each once
  int32_t inserted = 0;   // units, while in order

  void Scan(const MString& format);
  int32_t CopyPlain(const MString& format, int32_t start);
  int32_t ScanArgument(const MString& format, int32_t i);
  void SetPosition(int32_t index);
  template <typename InsertText>
  void PlaceNext(InsertText&& insert);
  void MoveLater(const Argument& argument, int32_t count);
  void InsertInteger(const Argument& argument, int32_t position, MChar sign, uint64_t magnitude);
};

void MFormat::State::Scan(const MString& format) {
  text.Reserve(format.GetLength() + 32);
  for (int32_t i = 0;;) {
    i = CopyPlain(format, i);
    const MChar c = format.At(i);
    if (c == 0) return;
    const MChar next = format.At(i + 1);
    if (c == u'{' && next != u'{') {
      i = ScanArgument(format, i + 1);
      continue;
    }
    text.Append(next);  // the brace of "{{", or what stands behind "}"
    if (next == 0) return;
    i += 2;
  }
}

// Copies up to the next brace or the end; returns the index of what it stopped at.
int32_t MFormat::State::CopyPlain(const MString& format, int32_t start) {
  return format.Visit([&](const auto* units, int32_t length) {
    const int32_t end = start + CountPlain(units + start, length - start);
    if constexpr (sizeof(*units) == 1)
      text.AppendNarrow(units + start, end - start);
    else
      text.AppendUnits(units + start, end - start);
    return end;
  });
}

// Puts an argument at the end of the text, behind those that stand there already.
void MFormat::State::SetPosition(int32_t index) {
  isInOrder = isInOrder && index == argumentCount;
  while (argumentCount <= index) arguments[argumentCount++] = kUnnamed;
  Argument& entry = arguments[index];
  entry.position = text.GetLength();
  entry.order = 0;
  if (isInOrder) {
    // All others at this place stand in front of it, one behind the other.
    if (index > 0 && arguments[index - 1].position == entry.position)
      entry.order = static_cast<uint8_t>(arguments[index - 1].order + 1);
    return;
  }
  for (int32_t k = 0; k < argumentCount; ++k)
    if (k != index && arguments[k].position == entry.position) ++entry.order;
}

// Reads one style from behind its "{"; returns the index behind its "}".
int32_t MFormat::State::ScanArgument(const MString& format, int32_t i) {
  const auto number = [&] {
    int32_t consumed;
    const int64_t value = format.ToInteger(10, &consumed, i);
    i += consumed;
    return value;
  };
  const int64_t index = number();
  Argument unnamed = kUnnamed;
  const bool named = index >= 0 && index < kMaximumArguments;
  if (named) SetPosition(static_cast<int32_t>(index));
  Argument& entry = named ? arguments[index] : unnamed;
  for (;;) {
    const MChar c = format.At(i++);
    switch (c) {
      case 0:
        throw MException("Formatting string ends in an argument specification.");
      case u'}':
        return i;
      case u' ':
      case u'0':
        entry.fill = static_cast<uint8_t>(c);
        entry.width = static_cast<uint8_t>(number());
        break;
      case u'+':
        entry.flags |= kShowPlus;
        break;
      case u'.':
        entry.precision = static_cast<uint8_t>(number());
        break;
      case u'x':
        entry.flags |= kHexadecimal;
        break;
      default:
        break;
    }
  }
}

// Calls insert(argument, position) for the next argument if the text names it, and moves those behind it on.
template <typename InsertText>
void MFormat::State::PlaceNext(InsertText&& insert) {
  if (nextArgument >= argumentCount) return;
  const Argument& argument = arguments[nextArgument];
  if (argument.position >= 0) {
    const int32_t before = text.GetLength();
    insert(argument, std::min(argument.position + inserted, before));
    const int32_t count = text.GetLength() - before;
    if (isInOrder)
      inserted += count;  // all others stand behind it
    else
      MoveLater(argument, count);
  }
  ++nextArgument;
}

void MFormat::State::MoveLater(const Argument& argument, int32_t count) {
  for (int32_t k = nextArgument + 1; k < argumentCount; ++k) {
    Argument& later = arguments[k];
    if (later.position > argument.position ||
        (later.position == argument.position && later.order > argument.order))
      later.position += count;
  }
}

void MFormat::State::InsertInteger(const Argument& argument, int32_t position, MChar sign,
                                   uint64_t magnitude) {
  MChar digits[kIntegerTextSize];
  const int32_t base = argument.flags & kHexadecimal ? 16 : 10;
  const int32_t length = MWriteInteger(digits, sign, magnitude, base, argument.width, argument.fill);
  text.InsertUnits(position, digits, length);
}

MFormat::MFormat(const MString& format) : state_(new State) {
  try {
    state_->Scan(format);
  } catch (...) {
    delete state_;
    throw;
  }
}

MFormat::MFormat(const MFormat& other) noexcept : state_(other.state_) {
  ++state_->references;
}

MFormat& MFormat::operator=(const MFormat& other) noexcept {
  ++other.state_->references;
  Drop(state_);
  state_ = other.state_;
  return *this;
}

MFormat::~MFormat() {
  Drop(state_);
}

void MFormat::Drop(State* state) noexcept {
  if (--state->references == 0) delete state;
}

MFormat& MFormat::Arg(const MString& text) {
  state_->PlaceNext([&](const Argument&, int32_t position) { state_->text.Insert(position, text); });
  return *this;
}

MFormat& MFormat::Arg(const char* text) {
  return Arg(MString::Literal(text));
}

MFormat& MFormat::Arg(int64_t value) {
  state_->PlaceNext([&](const Argument& argument, int32_t position) {
    const MChar plus = argument.flags & kShowPlus ? u'+' : MChar(0);
    state_->InsertInteger(argument, position, value < 0 ? u'-' : plus, MMagnitude(value));
  });
  return *this;
}

MFormat& MFormat::Arg(uint64_t value) {
  state_->PlaceNext([&](const Argument& argument, int32_t position) {
    state_->InsertInteger(argument, position, argument.flags & kShowPlus ? u'+' : MChar(0), value);
  });
  return *this;
}

MFormat& MFormat::Arg(double value) {
  state_->PlaceNext([&](const Argument& argument, int32_t position) {
    char digits[kDoubleTextSize];
    const bool plus = (argument.flags & kShowPlus) != 0;
    const int32_t length = MWriteDouble(digits, value, argument.precision, plus);
    state_->text.InsertNarrow(position, digits, length);
  });
  return *this;
}

MString MFormat::Text() const noexcept {
  return state_->text;
}
