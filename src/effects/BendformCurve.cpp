#include "effects/BendformCurve.h"

#include <algorithm>
#include <cmath>

using MEnvelopeItems::Item;
using Piece = BendformCurve::Piece;

namespace {

constexpr double kAccuracy = 1e-9;
constexpr int32_t kMostHalvings = 5;

double ValueAt(const Piece& piece, double s) {
  const auto& c = piece.c;
  return (((c[4] * s + c[3]) * s + c[2]) * s + c[1]) * s + c[0];
}

// Through five points of the item, by Newton's differences.
Piece Interpolate(const Item& item, double start, double end) {
  Piece piece = {end, start, 4 / (end - start), {}, nullptr};
  double d[5];
  for (int32_t i = 0; i < 5; ++i) d[i] = item.GetValue(start + i / piece.scale);
  for (int32_t order = 1; order < 5; ++order)
    for (int32_t i = 4; i >= order; --i) d[i] -= d[i - 1];
  piece.c[0] = d[0];
  piece.c[1] = d[1] - d[2] / 2 + d[3] / 3 - d[4] / 4;
  piece.c[2] = d[2] / 2 - d[3] / 2 + d[4] * 11 / 24;
  piece.c[3] = d[3] / 6 - d[4] / 4;
  piece.c[4] = d[4] / 24;
  return piece;
}

bool IsAccurate(const Piece& piece, const Item& item) {
  for (const double s : {0.05, 3.95, 0.3, 3.7, 1.5, 2.5})
    if (!(std::abs(ValueAt(piece, s) - item.GetValue(piece.start + s / piece.scale)) <= kAccuracy))
      return false;
  return true;
}

// Behind the last point.
Piece MakeTail(const Item& item, double start) {
  const double value = item.GetValue(start);
  const bool isFlat = value == item.GetValue(start + 1);
  return {MEnvelopeComputer::kNever, start, 1, {value, 0, 0, 0, 0}, isFlat ? nullptr : &item};
}

bool IsLine(const Piece& piece, double rise) {
  const auto& c = piece.c;
  return c[0] == 0 && std::abs(c[1] * piece.scale - rise) < 1e-14 && std::abs(c[2]) < 1e-14 &&
         std::abs(c[3]) < 1e-14 && std::abs(c[4]) < 1e-14;
}

}  // namespace

void BendformCurve::AddItem(const Item& item, double start, double end, int32_t depth) {
  if (!(start < end)) return;
  Piece piece = Interpolate(item, start, end);
  if (!IsAccurate(piece, item)) {
    if (depth < kMostHalvings) {
      const double middle = start + (end - start) / 2;
      AddItem(item, start, middle, depth + 1);
      AddItem(item, middle, end, depth + 1);
      return;
    }
    piece.item = &item;
  }
  pieces_.push_back(piece);
}

void BendformCurve::Build(const MEnvelopeData& data) {
  view_ = View();
  computer_.Build(data);
  pieces_.clear();
  double start = 0;
  for (int32_t i = 0; i + 1 < computer_.GetItemCount(); ++i) {
    const Item& item = computer_.GetItem(i);
    AddItem(item, start, item.GetEnd(), 0);
    start = std::max(start, item.GetEnd());
  }
  pieces_.push_back(MakeTail(computer_.GetItem(computer_.GetItemCount() - 1), start));

  cells_.assign(kCells + 1, 0);
  uint32_t piece = 0;
  for (std::size_t cell = 0; cell < cells_.size(); ++cell) {
    while (pieces_[piece].end <= static_cast<double>(cell) / kCells) ++piece;
    cells_[cell] = piece;
  }
  const Piece &first = pieces_.front(), &last = pieces_.back();
  view_.pieces = pieces_.data();
  view_.cells = cells_.data();
  view_.hasItems = std::any_of(pieces_.begin(), pieces_.end(), [](const Piece& each) { return each.item; });
  view_.isSingle = pieces_.size() == 2 && !first.item && !last.item &&
                   std::abs(ValueAt(first, (first.end - first.start) * first.scale) - last.c[0]) <= kAccuracy;
  view_.isIdentity = view_.isSingle && first.end == 1 && IsLine(first, 1);
}
