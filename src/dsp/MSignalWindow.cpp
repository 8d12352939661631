#include "dsp/MSignalWindow.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "core/MException.h"
#include "core/MTranslate.h"

namespace {

// All shapes but Bartlett, of two samples and more.
double GetShape(int32_t type, int32_t i, int32_t size) {
  constexpr double kPi = std::numbers::pi;
  const double last = size - 1;
  const double x = i / last;
  switch (type) {
    case MSignalWindow::kHamming:
      return 0.53836 - 0.46164 * std::cos(2 * kPi * x);
    case MSignalWindow::kHann:
      return (1 - std::cos(2 * kPi * x)) * 0.5;
    case MSignalWindow::kCosine:
      return std::sin(kPi * x);
    case MSignalWindow::kLanczos: {
      const double t = 2 * x - 1;
      return t == 0 ? 1 : std::sin(t) / t;
    }
    case MSignalWindow::kGauss: {
      const double deviations = (i - last / 2) / (0.4 * last / 2);
      return std::exp(-0.5 * deviations * deviations);
    }
    default:
      return 1;
  }
}

// From both ends together, so that the two central samples of an even size are both 1.
void FillBartlett(float* samples, int32_t size) {
  for (int32_t i = 0; i <= size / 2; ++i)
    samples[i] = samples[size - 1 - i] = static_cast<float>(2.0 * i / size);
}

}  // namespace

const char* MSignalWindow::GetTypeName(int32_t type) noexcept {
  static constexpr const char* kNames[kTypeCount] = {"Rectangular", "Hamming",  "Hann", "Cosine",
                                                     "Lanczos",     "Bartlett", "Gauss"};
  return type >= 0 && type < kTypeCount ? kNames[type] : nullptr;
}

void MSignalWindow::Set(int32_t size, int32_t type, bool halfComplement) {
  if (type < 0 || type >= kTypeCount) throw MException(Translate("Unknown signal window type."));
  size = std::max(size, 0);
  samples_.resize(static_cast<std::size_t>(size));
  type_ = type;
  float* const samples = samples_.data();
  if (type == kBartlett && size > 0)
    FillBartlett(samples, size);
  else if (size == 1)
    samples[0] = 1;
  else
    for (int32_t i = 0; i < size; ++i) samples[i] = static_cast<float>(GetShape(type, i, size));
  if (halfComplement)
    for (int32_t i = 0; i < size / 2; ++i) samples[i] = 1 - samples[i + size / 2];
  double sum = 0, squareSum = 0;
  for (const double sample : samples_) {
    sum += sample;
    squareSum += sample * sample;
  }
  sum_ = static_cast<float>(sum);
  squareSum_ = static_cast<float>(squareSum);
}
