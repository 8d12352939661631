#pragma once
// MEnvelopeComputer, a curve that was compiled into a list of formulas: reading needs no search, at most one
// polynomial per sample (two powers in a super-ellipse), and no memory. Building allocates.
//
// Reading goes forward: the computer keeps its place, so one computer serves one reader. It holds nothing of
// the data. Before it is built, and as a copy, it reads as 0 everywhere.

#include <memory>
#include <vector>

#include "dsp/MEnvelopeData.h"
#include "dsp/MEnvelopeItem.h"

class MEnvelopeComputer {
 public:
  M_LIBRARY_MEMORY

  static constexpr double kNever = 1.7e308;

  MEnvelopeComputer() noexcept = default;
  // A copy keeps the ends of the items alone, and must be built before it is read.
  MEnvelopeComputer(const MEnvelopeComputer& other);
  MEnvelopeComputer& operator=(const MEnvelopeComputer& other);
  ~MEnvelopeComputer() = default;

  // Compiles the curve and goes to the minimum of its x range. Numbers that are not finite count as 0,
  // tensions are limited to -1..1 and smooth sizes to 0..1; the points should be in order (MEnvelopeData::
  // Normalize). An unknown type raises "Invalid control point type." and leaves the computer as it was.
  void Build(const MEnvelopeData& data);

  // The curve at x, at or behind the x of the last read; else the item that served that one goes on. [any]
  double GetValue(double x) noexcept;
  // Goes back to x, if the last read was behind it. [any]
  void Seek(double x) noexcept;
  // Writes the curve at start + i step, i below the count, and goes behind the last of these. A step of 0 or
  // below reads all of them from the item that serves the start. The float fill begins each item at the end
  // of the one before where rounding would begin it earlier, so the two may drift apart by that. [any]
  void FillDouble(double* output, double start, double step, int32_t count) noexcept;
  void FillFloat(float* output, double start, double step, int32_t count) noexcept;

  bool IsBuilt() const noexcept { return isBuilt_; }
  double GetCurrentX() const noexcept { return currentX_; }
  int32_t GetCurrentIndex() const noexcept { return currentIndex_; }
  double GetXMinimum() const noexcept { return xMinimum_; }
  double GetXMaximum() const noexcept { return xMaximum_; }
  // The smallest x from which the curve stays at zero; kNever if there is none.
  double GetTailStart() const noexcept { return tailStart_; }

  int32_t GetItemCount() const noexcept { return static_cast<int32_t>(items_.size()); }
  // "Index out of range."
  const MEnvelopeItems::Item& GetItem(int32_t index) const;

  // One value of a curve, by a computer that is made for it.
  static double Evaluate(const MEnvelopeData& data, double x);

 private:
  friend class MEnvelopeBuilder;
  using ItemPointer = std::unique_ptr<MEnvelopeItems::Item>;
  using Items = std::vector<ItemPointer, MAllocator<ItemPointer>>;

  template <typename Out>
  void Fill(Out* output, double start, double step, int32_t count) noexcept;
  void Advance(double x) noexcept;

  Items items_;
  bool isBuilt_ = false;
  int32_t currentIndex_ = 0;
  double currentX_ = 0;
  double xMinimum_ = 0;
  double xMaximum_ = 0;
  double tailStart_ = kNever;
};

// The last item serves whatever no item before it does.
inline void MEnvelopeComputer::Advance(double x) noexcept {
  while (currentIndex_ + 1 < GetItemCount() && items_[static_cast<std::size_t>(currentIndex_)]->GetEnd() <= x)
    ++currentIndex_;
}

inline double MEnvelopeComputer::GetValue(double x) noexcept {
  if (!isBuilt_) return 0;
  Advance(x);
  currentX_ = x;
  return items_[static_cast<std::size_t>(currentIndex_)]->GetValue(x);
}
