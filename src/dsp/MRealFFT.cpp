#include "dsp/MRealFFT.h"

#include <cassert>
#include <cmath>
#include <mutex>
#include <numbers>

#include "dsp/MProcessor.h"
#include "dsp/MRealFFTKernel.h"

namespace {

constexpr int32_t kSizes = 14;  // 4, 8, ... 32768
static_assert(MRealFFT::kMinimumSize << (kSizes - 1) == MRealFFT::kMaximumSize);

// Room for 3 M + 16 floats for each M = 2, 4, ... 16384. A size that nobody asks for costs address space
// only.
alignas(64) constinit float storage[3 * 32768 + 16 * (kSizes + 2)];
constinit MRealFFTTables tables[kSizes];
constinit std::once_flag built[kSizes];

void Turn(int32_t part, int32_t whole, float& cosine, float& sine) {
  const double angle = 2 * std::numbers::pi * part / whole;
  cosine = static_cast<float>(std::cos(angle));
  sine = static_cast<float>(std::sin(angle));
}

float* BuildFirst(int32_t points, float* to) {
  if (points < 64) {
    for (int32_t p = 0; p < points / 2; ++p, to += 2) Turn(p, points, to[0], to[1]);
    return to;
  }
  for (int32_t begin = 0; begin < points / 8; begin += 8) {
    for (int32_t r = 1; r < 8; ++r, to += 16)
      for (int32_t lane = 0; lane < 8; ++lane) Turn((begin + lane) * r, points, to[lane], to[lane + 8]);
  }
  return to;
}

float* BuildSplit(int32_t points, float* to) {
  for (int32_t begin = 1; begin < points / 2; begin += 8, to += 16) {
    for (int32_t lane = 0; lane < 8; ++lane) {
      Turn(begin + lane, 2 * points, to[lane + 8], to[lane]);
      to[lane] *= 0.5f;
      to[lane + 8] *= 0.5f;
    }
  }
  return to;
}

void BuildMiddle(int32_t points, float* to) {
  for (int32_t length = points / 8; length > 8; length /= 4) {
    for (int32_t p = 0; p < length / 4; ++p)
      for (int32_t r = 1; r < 4; ++r, to += 2) Turn(p * r, length, to[0], to[1]);
  }
}

void Build(int32_t index) {
  const int32_t points = 2 << index;
  float* const first = storage + 3 * points + 16 * (index + 1);
  float* const split = BuildFirst(points, first);
  float* const middle = BuildSplit(points, split);
  BuildMiddle(points, middle);
  tables[index] = {points, first, middle, split};
}

}  // namespace

MRealFFT::MRealFFT(int32_t size, Path path) {
  assert(IsSize(size) && "the size of a transform is a power of two from 4 to 32768");
  if (!IsSize(size)) return;
  int32_t index = 0;
  while (kMinimumSize << index < size) ++index;
  std::call_once(built[index], Build, index);
  tables_ = &tables[index];
  const bool isWide = path == Path::kWidest && kMRealFFTWide.forward && MHasAVX2();
  kernel_ = isWide ? &kMRealFFTWide : &kMRealFFTBaseline;
}

int32_t MRealFFT::GetSize() const noexcept {
  return tables_ ? 2 * tables_->points : 0;
}

void MRealFFT::Forward(float* data) const noexcept {
  if (kernel_) kernel_->forward(*tables_, data);
}

void MRealFFT::Inverse(float* data) const noexcept {
  if (kernel_) kernel_->inverse(*tables_, data);
}
