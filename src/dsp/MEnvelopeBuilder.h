#pragma once
// Compiles control points into the items of a computer.

#include "dsp/MEnvelopeComputer.h"

class MEnvelopeBuilder {
 public:
  // Does all of it. Raises "Invalid control point type."
  explicit MEnvelopeBuilder(const MEnvelopeData& data);

  MEnvelopeComputer::Items TakeItems() noexcept { return std::move(items_); }
  double GetTailStart() const noexcept { return tailStart_; }

 private:
  using Item = MEnvelopeItems::Item;
  using ItemPointer = MEnvelopeComputer::ItemPointer;
  struct Corner;

  void ReadPoints(const MEnvelopeData& data);
  static ItemPointer MakeSegment(const MEnvelopePoint& p, const MEnvelopePoint& q);
  static ItemPointer MakeShape(const MEnvelopePoint& p, const MEnvelopePoint& q);
  void SolveSmooth(std::size_t index);
  void RoundCorners();
  void ExtendTail(double x, double y) noexcept;
  Corner FindCorner(std::size_t index) const noexcept;
  static ItemPointer MakeCorner(int32_t smoothingType, const Corner& corner);

  std::vector<MEnvelopePoint, MAllocator<MEnvelopePoint>> points_;  // with numbers that can be used
  MEnvelopeComputer::Items items_;                                  // items_[i] ends at point i
  double tailStart_ = MEnvelopeComputer::kNever;
  bool hasTailEnded_ = false;
};
