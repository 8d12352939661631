#include "dsp/MEnvelopeBuilder.h"

#include "core/MException.h"
#include "core/MTranslate.h"
#include "dsp/MEnvelopeItemsSSE.h"

using namespace MEnvelopeItems;

namespace {

constexpr double kNever = MEnvelopeComputer::kNever;
constexpr double kSame = 1e-50;
constexpr double kNoTension = 1e-20;

bool IsTense(const MEnvelopePoint& point) noexcept {
  return (MEnvelopeType::UsesTension(point.type) && std::abs(point.tension) >= kNoTension) ||
         (MEnvelopeType::UsesTensionX(point.type) && std::abs(point.tensionX) >= kNoTension);
}

// The distance or the numbers may be too much for the formulas: no distance at all, or overflow.
bool IsUsable(const Item& item, double x1, double x2) noexcept {
  return std::isfinite(item.GetValue(x1)) && std::isfinite(item.GetValue(0.5 * x1 + 0.5 * x2)) &&
         std::isfinite(item.GetValue(x2));
}

}  // namespace

// Where a rounded corner begins and ends, with the curve's slopes there.
struct MEnvelopeBuilder::Corner {
  double x1, y1, slope1;
  double x2, y2, slope2;
};

MEnvelopeBuilder::MEnvelopeBuilder(const MEnvelopeData& data) {
  ReadPoints(data);
  if (points_.empty()) {
    const double middle = (data.yMinimum + data.yMaximum) * 0.5;
    items_.emplace_back(new ItemConstant(kNever, std::isfinite(middle) ? middle : 0));
    return;
  }
  if (points_.size() == 1) {
    items_.emplace_back(new ItemConstant(kNever, points_[0].y));
    return;
  }
  items_.reserve(points_.size() + 1);
  items_.emplace_back(new ItemConstant(points_[0].x, points_[0].y));
  for (std::size_t i = 0; i + 1 < points_.size(); ++i)
    items_.push_back(MakeSegment(points_[i], points_[i + 1]));
  items_.emplace_back(new ItemConstant(kNever, points_.back().y));
  for (std::size_t i = 1; i + 1 < items_.size(); ++i)
    if (!items_[i]) SolveSmooth(i);
  RoundCorners();
}

void MEnvelopeBuilder::ReadPoints(const MEnvelopeData& data) {
  points_.reserve(static_cast<std::size_t>(data.GetCount()));
  for (int32_t i = 0; i < data.GetCount(); ++i) {
    MEnvelopePoint& point = points_.emplace_back(data[i]);
    point.x = MLimitedNumber(point.x, -kNever, kNever);
    point.y = MLimitedNumber(point.y, -kNever, kNever);
    point.tension = MLimitedNumber(point.tension, -1, 1);
    point.tensionX = MLimitedNumber(point.tensionX, -1, 1);
    point.smooth1 = MLimitedNumber(point.smooth1, 0, 1);
    point.smooth2 = MLimitedNumber(point.smooth2, 0, 1);
  }
}

// Null for a segment that must wait for its neighbours.
MEnvelopeComputer::ItemPointer MEnvelopeBuilder::MakeSegment(const MEnvelopePoint& p,
                                                             const MEnvelopePoint& q) {
  if (p.type == MEnvelopeType::kSmooth1) return nullptr;
  if (!(std::abs(p.y - q.y) < kNoTension)) {
    ItemPointer item = MakeShape(p, q);
    if (IsUsable(*item, p.x, q.x)) return item;
  }
  return ItemPointer(new ItemConstant(q.x, p.y));
}

MEnvelopeComputer::ItemPointer MEnvelopeBuilder::MakeShape(const MEnvelopePoint& p, const MEnvelopePoint& q) {
  if (!MEnvelopeType::IsKnown(p.type)) throw MException(Translate("Invalid control point type."));
  if (!IsTense(p)) return ItemPointer(new ItemLinear(p.x, p.y, q.x, q.y));
  switch (p.type) {
    case MEnvelopeType::kMode1:
      return ItemPointer(new ItemQuadraticSSE(q.x, MakeQuadratic(p.x, p.y, q.x, q.y, p.tension)));
    case MEnvelopeType::kMode2:
      return ItemPointer(new ItemFourthOrderSSE(q.x, MakeFourthOrder(p.x, p.y, q.x, q.y, p.tension)));
    case MEnvelopeType::kMode3:
      return ItemPointer(new ItemExponencial(p.x, p.y, q.x, q.y, p.tension));
    default: {
      const double cx = p.x + (1 + p.tensionX) * (q.x - p.x) * 0.5;
      const double cy = p.y + (1 + p.tension) * (q.y - p.y) * 0.5;
      return ItemPointer(new ItemBezierSSE(q.x, Bezier(p.x, p.y, cx, cy, q.x, q.y)));
    }
  }
}

// The neighbour behind may be waiting as well.
void MEnvelopeBuilder::SolveSmooth(std::size_t index) {
  const MEnvelopePoint& p = points_[index - 1];
  const MEnvelopePoint& q = points_[index];
  const double s1 = items_[index - 1]->GetLeftSlope(p.x);
  const double s2 = items_[index + 1] ? items_[index + 1]->GetRightSlope(q.x) : 0;
  ItemPointer item(new ItemCubicSSE(q.x, MakeCubic(p.x, p.y, s1, q.x, q.y, s2)));
  if (!IsUsable(*item, p.x, q.x)) item.reset(new ItemConstant(q.x, p.y));
  items_[index] = std::move(item);
}

void MEnvelopeBuilder::ExtendTail(double x, double y) noexcept {
  if (std::abs(y) >= kSame) hasTailEnded_ = true;
  if (!hasTailEnded_) tailStart_ = x;
}

// Corners are collected and then put between the items, since putting in one by one is slow for many points.
void MEnvelopeBuilder::RoundCorners() {
  MEnvelopeComputer::Items corners(points_.size());
  for (std::size_t i = points_.size(); i-- > 0;) {
    const MEnvelopePoint& point = points_[i];
    ExtendTail(point.x, point.y);
    if (std::abs(point.smooth1) < 1e-5 && std::abs(point.smooth2) < 1e-5) continue;
    const Corner corner = FindCorner(i);
    if (!(corner.x1 < corner.x2)) continue;
    if (std::abs(corner.y1 - corner.y2) < kSame && std::abs(corner.y1 - point.y) < kSame) continue;
    corners[i] = MakeCorner(point.smoothingType, corner);
    if (!corners[i]) continue;
    items_[i]->SetEnd(corner.x1);
    ExtendTail(corner.x2, corner.y2);
  }
  MEnvelopeComputer::Items all;
  all.reserve(items_.size() + corners.size());
  for (std::size_t i = 0; i < items_.size(); ++i) {
    all.push_back(std::move(items_[i]));
    if (i < corners.size() && corners[i]) all.push_back(std::move(corners[i]));
  }
  items_ = std::move(all);
}

MEnvelopeBuilder::Corner MEnvelopeBuilder::FindCorner(std::size_t index) const noexcept {
  const MEnvelopePoint& point = points_[index];
  const bool isFirst = index == 0;
  const bool isLast = index + 1 == points_.size();
  double toLeft = isFirst ? kNever : (point.x - points_[index - 1].x) * 0.5;
  double toRight = isLast ? kNever : (points_[index + 1].x - point.x) * 0.5;
  if (point.Has(MEnvelopeFlag::kSymmetric)) toLeft = toRight = std::min(toLeft, toRight);
  if (isFirst) toLeft = toRight;
  if (isLast) toRight = toLeft;
  const double s1 = point.smooth1;
  const double s2 = point.Has(MEnvelopeFlag::kLinked) ? s1 : point.smooth2;
  const double left = point.x - toLeft;
  const double right = point.x + toRight;
  Corner corner;
  corner.x1 = s1 * left + (1 - s1) * point.x;
  corner.x2 = s2 * right + (1 - s2) * point.x;
  corner.y1 = items_[index]->GetValue(corner.x1);
  corner.y2 = items_[index + 1]->GetValue(corner.x2);
  corner.slope1 = items_[index]->GetLeftSlope(corner.x1);
  corner.slope2 = items_[index + 1]->GetRightSlope(corner.x2);
  return corner;
}

// Null if there is nothing that can be used.
MEnvelopeComputer::ItemPointer MEnvelopeBuilder::MakeCorner(int32_t smoothingType, const Corner& corner) {
  constexpr double kLeastDistance = 0.001;
  const auto [x1, y1, slope1, x2, y2, slope2] = corner;
  if (smoothingType < 0 || smoothingType >= MEnvelopeSmoothing::kCount) return nullptr;
  double distance = kNever;  // from x1 to where the two tangents meet
  if (smoothingType == MEnvelopeSmoothing::kMode1 && std::abs(slope2 - slope1) >= kSame)
    distance = ((y1 - y2) - (x1 - x2) * slope2) / (slope2 - slope1);
  ItemPointer item;
  if (distance >= kLeastDistance && distance <= (x2 - x1) - kLeastDistance)
    item.reset(new ItemBezierSSE(x2, Bezier(x1, y1, x1 + distance, y1 + distance * slope1, x2, y2)));
  else
    item.reset(new ItemCubicSSE(x2, MakeCubic(x1, y1, slope1, x2, y2, slope2)));
  return IsUsable(*item, x1, x2) ? std::move(item) : nullptr;
}
