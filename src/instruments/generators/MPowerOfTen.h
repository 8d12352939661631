#pragma once
#include <bit>
#include <cstdint>

// Powers of ten of exponents from -6 to 6 within 4e-15 of their size, for every sample of a tone that glides:
//   10^y = 2^(k/64) e^t,  k = round(64 y log2(10)),  t = y ln(10) - k/64 ln(2),
// by a table and the series of e^t up to t^5, |t| < 0.0055.
class MPowerOfTen {
 public:
  MPowerOfTen();

  double Get(double y) const noexcept {
    const double z = y * kLog2Of10;
    const int32_t k = static_cast<int32_t>(z * kSteps + kOffset) - static_cast<int32_t>(kOffset);
    const double t = (z - k * (1.0 / kSteps)) * kLn2;
    const double series = 1 + t * (1 + t * (1.0 / 2 + t * (1.0 / 6 + t * (1.0 / 24 + t * (1.0 / 120)))));
    const auto exponent = static_cast<uint64_t>(k >> 6) + 1023;
    return std::bit_cast<double>(exponent << 52) * powers_[k & (kSteps - 1)] * series;
  }

 private:
  static constexpr int32_t kSteps = 64;
  static constexpr double kOffset = 2048.5;  // makes a truncated number a rounded one
  static constexpr double kLog2Of10 = 3.32192809488736234787;
  static constexpr double kLn2 = 0.693147180559945309417;

  double powers_[kSteps];  // 2^(i/64)
};
