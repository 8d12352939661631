#include "core/MShownValue.h"

#include <algorithm>
#include <cmath>

#include "core/MFormat.h"
#include "core/MNumberScanner.h"
#include "core/MUnitText.h"

namespace {

constexpr double kShortRange = 4096;
constexpr int kSearchSteps = 200;
constexpr double kLargestInteger = 9007199254740992;  // 2^53

constexpr const MUnitText* kUnits[] = {
    &MUnits::kPercent,        &MUnits::kSquaredDecibels,   &MUnits::kMilliseconds,
    &MUnits::kFrequencyLog10, &MUnits::kFrequency,         &MUnits::kVolume,
    &MUnits::kWholePercent,   &MUnits::kWholeMilliseconds, &MUnits::kPan,
};

MString Show(const MShownValue& shown, double value) {
  MString text;
  shown.show(shown.context, text, value);
  return text;
}

bool Fits(const MShownValue& shown, double value) {
  return !shown.isWhole || value == std::nearbyint(value);
}

// Functions are asked for values of the range only: they may not be made for others.
double Limit(const MShownValue& shown, double value) {
  return std::max(shown.minimum, std::min(shown.maximum, value));
}

// Whether the function shows a value in the way of `write`. Where it gives a name instead of a number, its
// way is told at the end of the range.
template <typename Write>
bool IsShownAs(const MShownValue& shown, double value, Write&& write) {
  const double limited = Limit(shown, value);
  const MString actual = Show(shown, limited);
  if (actual == write(limited)) return true;
  return !MReadQuantity(actual) && Show(shown, shown.maximum) == write(shown.maximum);
}

// A number in the format.
std::optional<double> ReadInFormat(const MShownValue& shown, const MString& text) {
  if (shown.format.IsEmpty()) return std::nullopt;
  const MScannedNumbers scanned = MScanFormat(shown.format, text);
  if (scanned.count != 1 || !Fits(shown, scanned.numbers[0].value)) return std::nullopt;
  const auto write = [&](double value) {
    MFormat written(shown.format);
    if (shown.isWhole && std::abs(value) <= kLargestInteger)
      return written.Arg(static_cast<int64_t>(value)).Text();
    return written.Arg(value).Text();
  };
  const double value = scanned.numbers[0].value;
  return IsShownAs(shown, value, write) ? std::optional(value) : std::nullopt;
}

std::optional<double> ReadInUnits(const MShownValue& shown, const MString& text) {
  for (const MUnitText* const unit : kUnits) {
    const std::optional<double> value = unit->read(text);
    if (value && Fits(shown, *value) && IsShownAs(shown, *value, unit->show)) return value;
  }
  return std::nullopt;
}

std::optional<double> ReadName(const MShownValue& shown, const MString& text) {
  const MString name = MTrimmed(text);
  const auto isName = [&](double value) { return Show(shown, value).Compare(name) == 0; };
  for (const double value : {shown.minimum, shown.maximum}) {
    if (isName(value)) return value;
  }
  if (shown.minimum < 0 && shown.maximum > 0 && isName(0)) return 0;
  if (!shown.isWhole || !(shown.maximum - shown.minimum <= kShortRange)) return std::nullopt;
  const std::optional<MQuantity> typed = MReadQuantity(name);
  const bool isNumber = typed && typed->unit.IsEmpty();
  for (double value = shown.minimum; value <= shown.maximum; ++value) {
    const MString actual = Show(shown, value);
    if (actual.Compare(name) == 0) return value;
    const std::optional<MQuantity> quantity = isNumber ? MReadQuantity(actual) : std::nullopt;
    if (quantity && typed->number == quantity->number) return value;
  }
  return std::nullopt;
}

// Finds where a function that rises or falls shows a number.
class Search {
 public:
  Search(const MShownValue& shown, const MQuantity& typed) : shown_(shown), typed_(typed) {}

  std::optional<double> Run() {
    const std::optional<double> first = Distance(shown_.minimum);
    const std::optional<double> last = Distance(shown_.maximum);
    if (!first || !last || *first * *last > 0 || *first == *last) return std::nullopt;
    sign_ = *first < *last ? 1 : -1;
    // The stretch of values that show the number ends where it is passed.
    const std::optional<double> low = FindEdge(true);
    const std::optional<double> high = FindEdge(false);
    if (!low || !high) return std::nullopt;
    return *low + (*high - *low) / 2;
  }

 private:
  // From the typed number to the one that is shown; none for another unit.
  std::optional<double> Distance(double value) const {
    const std::optional<MQuantity> quantity = MReadQuantity(Show(shown_, value));
    if (!quantity) return std::nullopt;
    if (!typed_.unit.IsEmpty() && typed_.unit.Compare(quantity->unit) != 0) return std::nullopt;
    return quantity->number - typed_.number;
  }

  // The last value below the number, or the first one above it; the end of the range if there is none.
  std::optional<double> FindEdge(bool isLow) const {
    double low = shown_.minimum;
    double high = shown_.maximum;
    for (int i = 0; i < kSearchSteps; ++i) {
      const double middle = low + (high - low) / 2;
      if (middle <= low || middle >= high) break;
      const std::optional<double> distance = Distance(middle);
      if (!distance) return std::nullopt;
      const double ahead = sign_ * *distance;
      (isLow ? ahead >= 0 : ahead > 0) ? high = middle : low = middle;
    }
    const double edge = isLow ? low : high;
    const double other = isLow ? high : low;
    return Distance(edge) == 0.0 || Distance(other) != 0.0 ? edge : other;
  }

  const MShownValue& shown_;
  const MQuantity& typed_;
  double sign_ = 1;
};

}  // namespace

std::optional<double> MReadShownValue(const MShownValue& shown, const MString& text) {
  if (const std::optional<double> value = ReadInFormat(shown, text)) return value;
  if (const std::optional<double> value = ReadInUnits(shown, text)) return value;
  if (const std::optional<double> value = ReadName(shown, text)) return value;
  const std::optional<MQuantity> typed = MReadQuantity(text);
  if (!typed || shown.isWhole || !(shown.minimum < shown.maximum)) return std::nullopt;
  return Search(shown, *typed).Run();
}
