#include "plugin/MValueNumber.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include "core/MException.h"
#include "core/MFormat.h"
#include "core/MNumberScanner.h"

namespace {

constexpr double kSmallStep = 0.001;     // of the range
constexpr int32_t kLargeStep = 10;       // small steps
constexpr int32_t kDecimals = 4;         // of what is saved
constexpr int32_t kLongestInteger = 20;  // characters of 64 bits with a sign

// The nearest number of the type; the end of its range for what lies beyond.
template <typename T>
T Saturate(double value) {
  using Limits = std::numeric_limits<T>;
  const double rounded = std::is_integral_v<T> ? std::nearbyint(value) : value;
  // As a double the largest 64-bit integer is one too high.
  if (rounded >= static_cast<double>(Limits::max())) return Limits::max();
  if (!(rounded > static_cast<double>(Limits::lowest()))) return Limits::lowest();
  return static_cast<T>(rounded);
}

template <typename T>
T Clamp(int64_t value) {
  using Limits = std::numeric_limits<T>;
  return static_cast<T>(std::clamp<int64_t>(value, Limits::lowest(), Limits::max()));
}

// value + width * count
template <typename T, typename S>
T Advance(T value, S width, int32_t count) {
  if constexpr (std::is_integral_v<T>) {
    int64_t distance, sum;
    if (__builtin_mul_overflow(int64_t{width}, int64_t{count}, &distance) ||
        __builtin_add_overflow(int64_t{value}, distance, &sum))
      return (width < 0) == (count < 0) ? std::numeric_limits<T>::max() : std::numeric_limits<T>::lowest();
    return Clamp<T>(sum);
  } else {
    return Saturate<T>(value + width * count);
  }
}

template <typename T>
MString NumberText(T value) {
  if constexpr (std::is_integral_v<T>)
    return MString::FromInteger(value);
  else
    return MString::FromDouble(value, kDecimals);
}

// An integer that is written without a fraction keeps all its digits.
template <typename T>
T ToNumber(const MString& text, const MScannedNumber& number) {
  if constexpr (std::is_integral_v<T>) {
    char digits[kLongestInteger];
    if (number.length <= kLongestInteger) {
      for (int32_t i = 0; i < number.length; ++i) digits[i] = static_cast<char>(text.At(number.start + i));
      const char* const first = digits + (digits[0] == '+' ? 1 : 0);
      int64_t integer;
      const auto [end, failure] = std::from_chars(first, digits + number.length, integer);
      if (failure == std::errc() && end == digits + number.length) return Clamp<T>(integer);
    }
  }
  return Saturate<T>(number.value);
}

// The number at the start of a text, whatever follows.
template <typename T>
bool ReadNumber(const MString& text, T& value) {
  const std::optional<MScannedNumber> number = MScanNumber(text, 0);
  if (number) value = ToNumber<T>(text, *number);
  return number.has_value();
}

template <typename T>
bool ReadAttribute(const MXMLItem& item, const MString& name, T& value) {
  return item.HasAttribute(name) && ReadNumber(item.CachedAttribute(), value);
}

template <typename T>
bool ReadFormatted(const MString& format, const MString& text, T& value) {
  const MScannedNumbers scanned = MScanFormat(format, text);
  if (scanned.count != 1) return false;
  value = ToNumber<T>(text, scanned.numbers[0]);
  return true;
}

}  // namespace

template <typename T, typename S>
MValueNumber<T, S>::MValueNumber(T* target, T initial, T minimum, T maximum)
    : inlineValue_(initial),
      target_(target ? target : &inlineValue_),
      minimum_(minimum),
      maximum_(maximum),
      default_(initial) {
  const double range = static_cast<double>(maximum) - static_cast<double>(minimum);
  if constexpr (std::is_integral_v<S>)
    step_ = Saturate<S>(std::trunc(range * kSmallStep));
  else
    step_ = Saturate<S>(range * kSmallStep);
  if (!(step_ > 0)) step_ = 1;
  maxStep_ = Advance(S(0), step_, kLargeStep);
  const T limited = MValueNumber::Limit(initial);
  if (limited != initial) Store(limited);
}

template <typename T, typename S>
void MValueNumber<T, S>::Store(T value) noexcept {
  MStoreShared(*target_, value);
  changed_ = true;
}

// Returns whether the value has changed.
template <typename T, typename S>
bool MValueNumber<T, S>::Write(T value) {
  const T before = GetValue();
  Store(value);
  Validate();
  return GetValue() != before;
}

template <typename T, typename S>
T MValueNumber<T, S>::Limit(T value) const noexcept {
  if (value > maximum_) value = maximum_;
  if (!(value >= minimum_)) value = minimum_;  // what is no number too
  return value;
}

template <typename T, typename S>
void MValueNumber<T, S>::Validate() {
  const T value = GetValue();
  const T limited = Limit(value);
  if (limited != value) Store(limited);
}

template <typename T, typename S>
bool MValueNumber<T, S>::SetValue(T value) {
  if constexpr (!std::is_integral_v<T>)
    if (!std::isfinite(value)) return false;
  return Write(value);
}

template <typename T, typename S>
void MValueNumber<T, S>::SetRange(T minimum, T maximum) {
  minimum_ = minimum;
  maximum_ = maximum;
  Validate();
}

template <typename T, typename S>
void MValueNumber<T, S>::SetFormat(const MString& format) {
  try {
    MFormat{format};
    format_ = format;
  } catch (const MException&) {  // it stays as it was
  }
}

template <typename T, typename S>
void MValueNumber<T, S>::FromText(const MString& text) {
  T value;
  if (ReadNumber(text, value)) Store(value);
}

template <typename T, typename S>
bool MValueNumber<T, S>::Reset() {
  return Write(default_);
}

template <typename T, typename S>
bool MValueNumber<T, S>::Save(MXMLItem& item) const {
  item.SetAttribute(GetKey(), NumberText(GetValue()));
  return true;
}

template <typename T, typename S>
void MValueNumber<T, S>::Load(const MXMLItem& item) {
  T value;
  if (!item.HasAttribute(GetKey()))
    Reset();
  else if (ReadFormatted("{0}", item.CachedAttribute(), value))
    Write(value);
}

template <typename T, typename S>
void MValueNumber<T, S>::LoadFromXml(const MXMLItem& item) {
  ReadAttribute(item, "mmin", minimum_);
  ReadAttribute(item, "mmax", maximum_);
  const bool hasDefault = ReadAttribute(item, "default", default_);
  if (hasDefault) Store(default_);
  if (T value; ReadAttribute(item, "value", value)) {
    Store(value);
    if (!hasDefault) default_ = value;
  }
  ReadAttribute(item, "inc", step_);
  if (!ReadAttribute(item, "maxinc", maxStep_)) maxStep_ = std::max(maxStep_, step_);
  if (item.HasAttribute("format")) SetFormat(item.CachedAttribute());
  Validate();
}

template <typename T, typename S>
void MValueNumber<T, S>::Show(MString& text, T value) const {
  if constexpr (std::is_integral_v<T>)
    text = Format(format_).Arg(int64_t{value}).Text();
  else
    text = Format(format_).Arg(double{value}).Text();
}

template <typename T, typename S>
bool MValueNumber<T, S>::Read(const MString& text, T& value) const {
  return ReadFormatted(format_, text, value);
}

template <typename T, typename S>
void MValueNumber<T, S>::ShowAny(MString& text, T value) const {
  const MValueFunctions& functions = GetFunctions();
  if (functions.display)
    functions.display(functions.context, text, static_cast<double>(value));
  else
    Show(text, value);
}

template <typename T, typename S>
void MValueNumber<T, S>::GetText(MString& text) const {
  if (GetFunctions().display)
    ShowAny(text, GetValue());
  else
    FormatValue(text);
}

template <typename T, typename S>
void MValueNumber<T, S>::FormatValue(MString& text) const {
  Show(text, GetValue());
}

template <typename T, typename S>
MString MValueNumber<T, S>::FormatAt(double position) const {
  MString text;
  ShowAny(text, std::isfinite(position) ? Limit(At(position)) : GetValue());
  return text;
}

template <typename T, typename S>
bool MValueNumber<T, S>::SetText(const MString& text) {
  const MValueFunctions& functions = GetFunctions();
  if (!functions.parse) return ParseValue(text);
  double value = 0;
  if (!functions.parse(functions.context, text, value) || !std::isfinite(value)) return false;
  return Write(Saturate<T>(value));
}

template <typename T, typename S>
bool MValueNumber<T, S>::ParseValue(const MString& text) {
  T value;
  return Read(text, value) && Write(value);
}

template <typename T, typename S>
bool MValueNumber<T, S>::Step(S width, int32_t count) {
  if constexpr (!std::is_integral_v<S>)
    if (!std::isfinite(width)) return false;
  return Write(Advance(GetValue(), width, count));
}

template <typename T, typename S>
bool MValueNumber<T, S>::StepBy(int32_t count, int32_t zoom) {
  const double zoomed = std::ldexp(static_cast<double>(step_), zoom);
  S width = zoomed < static_cast<double>(maxStep_) ? Saturate<S>(zoomed) : maxStep_;
  if (std::is_integral_v<S> && width == 0 && step_ > 0 && maxStep_ > 0) width = 1;  // an integer always moves
  return Step(width, count);
}

template <typename T, typename S>
bool MValueNumber<T, S>::StepSmall(int32_t count) {
  return Step(step_, count);
}

template <typename T, typename S>
double MValueNumber<T, S>::GetPosition() const {
  if (!(minimum_ < maximum_)) return 0;
  // Halves, since the length of the range may be beyond a double.
  const double minimum = static_cast<double>(minimum_) / 2;
  const double position =
      (static_cast<double>(GetValue()) / 2 - minimum) / (static_cast<double>(maximum_) / 2 - minimum);
  return position > 0 ? std::min(position, 1.0) : 0;
}

template <typename T, typename S>
T MValueNumber<T, S>::At(double position) const noexcept {
  const double minimum = static_cast<double>(minimum_);
  const double maximum = static_cast<double>(maximum_);
  const double range = maximum - minimum;
  if (std::isfinite(range)) return Saturate<T>(minimum + position * range);
  return Saturate<T>(std::lerp(minimum, maximum, std::clamp(position, 0.0, 1.0)));
}

template <typename T, typename S>
bool MValueNumber<T, S>::SetPosition(double position) {
  return std::isfinite(position) && Write(At(position));
}

template <typename T, typename S>
int32_t MValueNumber<T, S>::GetIndexCount() const {
  const double count =
      std::floor(static_cast<double>(maximum_)) - std::ceil(static_cast<double>(minimum_)) + 1;
  return std::max(0, Saturate<int32_t>(count));
}

// A double holds the indices of every range that a list can show.
template <typename T, typename S>
double MValueNumber<T, S>::IndexValue(int32_t index) const noexcept {
  return std::ceil(static_cast<double>(minimum_)) + index;
}

template <typename T, typename S>
void MValueNumber<T, S>::GetIndexText(ShortText& text, int32_t index) const {
  Shorten(text, NumberText(Saturate<T>(IndexValue(index))));
}

template <typename T, typename S>
bool MValueNumber<T, S>::SetIndex(int32_t index) {
  const T before = GetValue();
  Store(Saturate<T>(IndexValue(index)));
  return GetValue() != before;
}

template <typename T, typename S>
void MValueNumber<T, S>::GetRawText(MString& text) const {
  text = NumberText(GetValue());
}

template class MValueNumber<double, double>;
template class MValueNumber<float, double>;
template class MValueNumber<int32_t, int32_t>;
template class MValueNumber<int16_t, int32_t>;
template class MValueNumber<int64_t, int64_t>;
