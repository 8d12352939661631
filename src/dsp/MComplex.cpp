#include "dsp/MComplex.h"

#include <cmath>

#include "core/MException.h"
#include "core/MTranslate.h"

// R. L. Smith, "Algorithm 116: Complex division", Communications of the ACM 5 (1962).
MComplex& MComplex::operator/=(const MComplex& other) {
  const auto [c, d] = other;
  if (c == 0 && d == 0) throw MException(Translate("Complex division by zero."));
  if (std::abs(c) > std::abs(d)) {
    const double ratio = d / c;
    const double divisor = d * ratio + c;
    *this = {(real + imaginary * ratio) / divisor, (imaginary - real * ratio) / divisor};
  } else {
    const double ratio = c / d;
    const double divisor = c * ratio + d;
    *this = {(real * ratio + imaginary) / divisor, (imaginary * ratio - real) / divisor};
  }
  return *this;
}

double MComplex::GetModulus() const noexcept {
  return std::sqrt(real * real + imaginary * imaginary);
}
