#include "instruments/generators/MPowerOfTen.h"

#include <cmath>

MPowerOfTen::MPowerOfTen() {
  for (int32_t i = 0; i < kSteps; ++i) powers_[i] = std::exp2(static_cast<double>(i) / kSteps);
}
