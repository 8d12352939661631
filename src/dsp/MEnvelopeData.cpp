#include "dsp/MEnvelopeData.h"

#include "core/MException.h"

namespace {

constexpr double kLeastDistance = 1e-10;

// A limit of a range that is the wrong way round, or no number, must not stop anything.
double Within(double value, double minimum, double maximum) noexcept {
  if (!std::isfinite(value)) value = 0;
  if (value > maximum) value = maximum;
  if (value < minimum) value = minimum;
  return value;
}

}  // namespace

MEnvelopeData::MEnvelopeData(const MEnvelopeData& other)
    : xMinimum(other.xMinimum), xMaximum(other.xMaximum), yMinimum(other.yMinimum), yMaximum(other.yMaximum) {
  points_.reserve(other.points_.size());
  for (const auto& point : other.points_) Add(*point);
}

MEnvelopeData& MEnvelopeData::operator=(const MEnvelopeData& other) {
  return *this = MEnvelopeData(other);
}

MEnvelopePoint& MEnvelopeData::operator[](int32_t index) {
  if (index < 0 || index >= GetCount()) MThrowIndexOutOfRange();
  return *points_[static_cast<std::size_t>(index)];
}

const MEnvelopePoint& MEnvelopeData::operator[](int32_t index) const {
  return const_cast<MEnvelopeData&>(*this)[index];
}

MEnvelopePoint& MEnvelopeData::Add(double x, double y) {
  MEnvelopePoint point;
  point.x = x;
  point.y = y;
  return Add(point);
}

MEnvelopePoint& MEnvelopeData::Insert(int32_t index, const MEnvelopePoint& point) {
  if (index < 0 || index > GetCount()) MThrowIndexOutOfRange();
  std::unique_ptr<MEnvelopePoint> added(new MEnvelopePoint(point));
  return **points_.insert(points_.begin() + index, std::move(added));
}

void MEnvelopeData::Remove(int32_t index) {
  if (index < 0 || index >= GetCount()) MThrowIndexOutOfRange();
  points_.erase(points_.begin() + index);
}

int32_t MEnvelopeData::FindIndex(double x) const noexcept {
  int32_t found = -1;
  for (const auto& point : points_) {
    if (!(point->x <= x)) break;
    ++found;
  }
  return found;
}

void MEnvelopeData::SelectAll() noexcept {
  for (const auto& point : points_) point->Set(MEnvelopeFlag::kSelected, true);
}

void MEnvelopeData::ClearSelection() noexcept {
  for (const auto& point : points_) point->Set(MEnvelopeFlag::kSelected, false);
}

int32_t MEnvelopeData::CountSelected() const noexcept {
  return static_cast<int32_t>(std::count_if(points_.begin(), points_.end(), [](const auto& point) {
    return point->Has(MEnvelopeFlag::kSelected);
  }));
}

void MEnvelopeData::DeleteSelected() {
  std::erase_if(points_, [](const auto& point) {
    return point->Has(MEnvelopeFlag::kSelected) &&
           !point->Has(MEnvelopeFlag::kFixedX | MEnvelopeFlag::kFixedY);
  });
}

void MEnvelopeData::ScaleX(double factor, bool range) noexcept {
  for (const auto& point : points_) point->x *= factor;
  if (!range) return;
  xMinimum *= factor;
  xMaximum *= factor;
}

void MEnvelopeData::ScaleY(double factor, bool range) noexcept {
  for (const auto& point : points_) point->y *= factor;
  if (!range) return;
  yMinimum *= factor;
  yMaximum *= factor;
}

// After the first loop no point is in front of its predecessor, so there is nothing to sort; the second one
// parts what is so far from 0 that the first could not.
void MEnvelopeData::Normalize() noexcept {
  for (const auto& point : points_) {
    point->x = Within(point->x, xMinimum, xMaximum);
    point->y = Within(point->y, yMinimum, yMaximum);
  }
  for (std::size_t i = 1; i < points_.size(); ++i)
    if (points_[i - 1]->x >= points_[i]->x) points_[i]->x = points_[i - 1]->x + kLeastDistance;
  for (std::size_t i = 0; i + 1 < points_.size(); ++i)
    if (points_[i]->x >= points_[i + 1]->x) points_[i]->x = points_[i + 1]->x - kLeastDistance;
}
