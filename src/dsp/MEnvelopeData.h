#pragma once
// MEnvelopeData, a hand-drawn curve: control points, ordered by x, in a rectangular range. MEnvelopeComputer
// reads it. One thread at a time.

#include <memory>
#include <vector>

#include "dsp/MEnvelopePoint.h"

class MXMLItem;

class MEnvelopeData {
 public:
  M_LIBRARY_MEMORY

  // No points, both ranges 0..1.
  MEnvelopeData() noexcept = default;
  MEnvelopeData(const MEnvelopeData& other);
  MEnvelopeData(MEnvelopeData&&) noexcept = default;
  MEnvelopeData& operator=(const MEnvelopeData& other);
  MEnvelopeData& operator=(MEnvelopeData&&) noexcept = default;
  ~MEnvelopeData() = default;

  // Changing a range leaves the points alone until Normalize.
  double xMinimum = 0;
  double xMaximum = 1;
  double yMinimum = 0;
  double yMaximum = 1;

  int32_t GetCount() const noexcept { return static_cast<int32_t>(points_.size()); }
  // A point keeps its address until it is removed. "Index out of range."
  MEnvelopePoint& operator[](int32_t index);
  const MEnvelopePoint& operator[](int32_t index) const;

  MEnvelopePoint& Add(const MEnvelopePoint& point) { return Insert(GetCount(), point); }
  MEnvelopePoint& Add(double x, double y);
  // Index 0 to the count; "Index out of range."
  MEnvelopePoint& Insert(int32_t index, const MEnvelopePoint& point);
  void Remove(int32_t index);
  void Clear() noexcept { points_.clear(); }

  // The last point at or before x, seen from the front; -1 if there is none.
  int32_t FindIndex(double x) const noexcept;

  void SelectAll() noexcept;
  void ClearSelection() noexcept;
  int32_t CountSelected() const noexcept;
  // Removes the selected points, but those that are fixed in either direction.
  void DeleteSelected();

  // Multiplies every point, and the limits of the range as well if `range` is set.
  void ScaleX(double factor, bool range) noexcept;
  void ScaleY(double factor, bool range) noexcept;

  // Limits the points to the ranges, and puts each one that is not behind its predecessor 1e-10 behind it.
  // Numbers that are not finite count as 0. For use after every change.
  void Normalize() noexcept;

  // A child "Point" per point. The ranges are not stored. Load reads all points before it touches the list,
  // puts them in its place (or behind it), and normalises it. What a text does not tell is as in a new point,
  // but for the type, which is then "Mode 1", and the flags, 0.
  void Save(MXMLItem& item) const;
  void Load(const MXMLItem& item, bool replace = true);

 private:
  using Points = std::vector<std::unique_ptr<MEnvelopePoint>, MAllocator<std::unique_ptr<MEnvelopePoint>>>;

  Points points_;
};
