#include "dsp/MFilter.h"

#include <cmath>
#include <numbers>

#include "dsp/MComplex.h"

// H(z) = (b0 + b1 z1 + b2 z2) / (1 - a1 z1 - a2 z2), z1 = e^(-jw), z2 = e^(-2jw).
double MGetSectionMagnitude(double b0, double b1, double b2, double a1, double a2, double frequencyHz,
                            double sampleRate) {
  const double w = 2 * std::numbers::pi * frequencyHz / sampleRate;
  const MComplex once{std::cos(w), std::sin(w)};
  MComplex twice = once;
  twice *= once;
  MComplex z1{1, 0}, z2{1, 0};
  z1 /= once;
  z2 /= twice;
  MComplex response{b0 + b1 * z1.real + b2 * z2.real, b1 * z1.imaginary + b2 * z2.imaginary};
  response /= MComplex{1 - a1 * z1.real - a2 * z2.real, -a1 * z1.imaginary - a2 * z2.imaginary};
  return response.GetModulus();
}
