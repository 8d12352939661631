#include "core/MFormat.h"

#include <algorithm>

#include "core/MException.h"
#include "core/MNumberText.h"

namespace {

constexpr int32_t kMaximumArguments = 32;

struct Argument {
  int32_t position = -1;  // where the argument goes in the text, -1 nowhere
  uint8_t flags = 0;
  uint8_t width = 0;
  uint8_t fill = ' ';
  uint8_t precision = 4;
  uint8_t order = 0;  // among arguments at the same position
};

constexpr uint8_t kHexadecimal = 1;
constexpr uint8_t kShowPlus = 2;

}  // namespace

struct MFormat::State {
  M_LIBRARY_MEMORY

  int32_t references = 1;
  Argument arguments[kMaximumArguments];
  MString text;
  int32_t argumentCount = 0;
  int32_t nextArgument = 0;

  void Scan(const MString& format);
  int32_t ScanArgument(const MString& format, int32_t i);
  Argument* Next() noexcept;
  template <typename InsertText>
  void Place(const Argument& argument, InsertText&& insert);
  void PlaceNumber(const Argument& argument, bool plus, const char* digits, int32_t length);
};

void MFormat::State::Scan(const MString& format) {
  text.Reserve(format.GetLength() + 32);
  for (int32_t i = 0;; ++i) {
    const MChar c = format.At(i);
    if (c == u'{' && format.At(i + 1) != u'{') {
      i = ScanArgument(format, i + 1);
      continue;
    }
    if (c == 0) return;
    const bool pair = c == u'{' || c == u'}';
    if (pair) ++i;
    text.Append(pair ? format.At(i) : c);
    if (pair && format.At(i) == 0) return;  // the text ended in "}"
  }
}

// Reads one style from behind its "{"; returns the index of its "}".
int32_t MFormat::State::ScanArgument(const MString& format, int32_t i) {
  const auto number = [&](int32_t start) {
    int32_t consumed;
    const int64_t value = format.ToInteger(10, &consumed, start);
    i = start + consumed;
    return value;
  };
  const int64_t index = number(i);
  Argument unnamed;
  Argument* entry = &unnamed;
  if (index >= 0 && index < kMaximumArguments) {
    entry = &arguments[index];
    argumentCount = std::max(argumentCount, static_cast<int32_t>(index) + 1);
    entry->position = text.GetLength();
    entry->order = 0;
    for (int32_t k = 0; k < argumentCount; ++k)
      if (k != index && arguments[k].position == entry->position) ++entry->order;
  }
  for (;;) {
    switch (format.At(i++)) {
      case 0:
        throw MException("Formatting string ends in an argument specification.");
      case u'}':
        return i - 1;
      case u' ':
        entry->fill = ' ';
        entry->width = static_cast<uint8_t>(number(i));
        break;
      case u'0':
        entry->fill = '0';
        entry->width = static_cast<uint8_t>(number(i));
        break;
      case u'+':
        entry->flags |= kShowPlus;
        break;
      case u'.':
        entry->precision = static_cast<uint8_t>(number(i));
        break;
      case u'x':
        entry->flags |= kHexadecimal;
        break;
      default:
        break;
    }
  }
}

// The entry of the next argument, or null when the text has no place for it.
Argument* MFormat::State::Next() noexcept {
  const int32_t index = nextArgument;
  if (index >= kMaximumArguments) return nullptr;
  ++nextArgument;
  return arguments[index].position < 0 ? nullptr : &arguments[index];
}

template <typename InsertText>
void MFormat::State::Place(const Argument& argument, InsertText&& insert) {
  const int32_t before = text.GetLength();
  insert(std::min(argument.position, before));
  const int32_t inserted = text.GetLength() - before;
  for (int32_t k = nextArgument; k < argumentCount; ++k) {
    Argument& later = arguments[k];
    if (later.position > argument.position ||
        (later.position == argument.position && later.order > argument.order))
      later.position += inserted;
  }
}

void MFormat::State::PlaceNumber(const Argument& argument, bool plus, const char* digits, int32_t length) {
  Place(argument, [&](int32_t position) {
    text.InsertNarrow(position, digits, length);
    if (plus) text.Insert(position, u'+');
  });
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
  if (const Argument* const argument = state_->Next())
    state_->Place(*argument, [&](int32_t position) { state_->text.Insert(position, text); });
  return *this;
}

MFormat& MFormat::Arg(const char* text) {
  return Arg(MString::Literal(text));
}

MFormat& MFormat::Arg(int64_t value) {
  if (const Argument* const argument = state_->Next()) {
    char digits[kIntegerTextSize];
    const int32_t base = argument->flags & kHexadecimal ? 16 : 10;
    const int32_t length =
        MWriteInteger(digits, value, base, argument->width, static_cast<char>(argument->fill));
    state_->PlaceNumber(*argument, (argument->flags & kShowPlus) && value >= 0, digits, length);
  }
  return *this;
}

MFormat& MFormat::Arg(uint64_t value) {
  if (const Argument* const argument = state_->Next()) {
    char digits[kIntegerTextSize];
    const int32_t base = argument->flags & kHexadecimal ? 16 : 10;
    const int32_t length =
        MWriteUnsigned(digits, value, base, argument->width, static_cast<char>(argument->fill));
    state_->PlaceNumber(*argument, argument->flags & kShowPlus, digits, length);
  }
  return *this;
}

MFormat& MFormat::Arg(double value) {
  if (const Argument* const argument = state_->Next()) {
    char digits[kDoubleTextSize];
    const int32_t length = MWriteDouble(digits, value, argument->precision);
    state_->PlaceNumber(*argument, (argument->flags & kShowPlus) && value >= 0, digits, length);
  }
  return *this;
}

const MString& MFormat::Text() const noexcept {
  return state_->text;
}
