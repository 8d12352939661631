#pragma once
#include <vector>

#include "dsp/MEnvelopeComputer.h"

// A drawn curve v(u), u >= 0, cut into polynomials of degree 4, so that it can be read at any u in any order
// without a search: a table of kCells equal cells up to u = 1 says where to begin. Each polynomial is within
// 1e-9 of its curve; where that takes too narrow a piece, as at the upright ends of a super-ellipse, the
// piece asks the curve itself.
class BendformCurve {
 public:
  static constexpr int32_t kCells = 1024;

  struct Piece {
    double end;                        // serves u below it
    double start, scale;               // s = (u - start) scale
    double c[5];                       // v = sum of c[i] s^i
    const MEnvelopeItems::Item* item;  // read instead, if not null
  };
  // What the loops read.
  struct View {
    const Piece* pieces = nullptr;  // null: no curve yet
    const uint32_t* cells = nullptr;
    bool isIdentity = false;  // v = min(u, 1)
    bool hasItems = false;    // some piece asks the curve itself
    bool isSingle = false;    // v = the first piece at min(u, its end)

    // v(u) of a curve that is there, for any u that is not below 0 and a number. [any]
    double GetValue(double u) const noexcept;
  };

  // Compiles the curve. Allocates.
  void Build(const MEnvelopeData& data);
  View GetView() const noexcept { return view_; }

 private:
  void AddItem(const MEnvelopeItems::Item& item, double start, double end, int32_t depth);

  MEnvelopeComputer computer_;  // owns the items
  std::vector<Piece, MAllocator<Piece>> pieces_;
  std::vector<uint32_t, MAllocator<uint32_t>> cells_;
  View view_;
};

inline double BendformCurve::View::GetValue(double u) const noexcept {
  const double cell = u * kCells;
  const Piece* p = pieces + cells[static_cast<int32_t>(cell < kCells ? cell : kCells)];
  while (p->end <= u) ++p;
  if (p->item) return p->item->GetValue(u);
  const double s = (u - p->start) * p->scale;
  return (((s * p->c[4] + p->c[3]) * s + p->c[2]) * s + p->c[1]) * s + p->c[0];
}

// Blocks of one channel, y = depth v^2 with the sign of x + (1 - depth) x, v = v(sqrt |x|); `in` and `out`
// may be the same. A sample that is not finite comes out as it is.
struct BendformKernel {
  void (*run)(const BendformCurve::View& curve, double depth, const float* in, float* out,
              int32_t samples) noexcept;
};

extern const BendformKernel kBendformBaseline;
extern const BendformKernel kBendformWide;  // AVX2 and FMA; of nulls where it was not compiled
