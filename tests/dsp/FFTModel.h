#pragma once
// The real transform from its definition, in double: R[k] + i I[k] = sum x[n] e^(+2 pi i k n / N), packed as
// R[0], R[N/2], R[1], I[1], R[2], I[2] ...

#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <vector>

#include "tests/common/TestRandom.h"

using ComplexList = std::vector<std::complex<double>>;

inline std::vector<double> Widen(const std::vector<float>& samples) {
  return std::vector<double>(samples.begin(), samples.end());
}

inline std::vector<float> NoiseSamples(int32_t size, uint32_t seed = 1) {
  TestRandom random(seed);
  std::vector<float> samples(static_cast<std::size_t>(size));
  for (float& sample : samples) sample = static_cast<float>(random.Real(-1, 1));
  return samples;
}

// e^(2 pi i part / whole), with the part reduced first.
inline std::complex<double> UnitRoot(std::size_t part, std::size_t whole) {
  return std::polar(1.0,
                    2 * std::numbers::pi * static_cast<double>(part % whole) / static_cast<double>(whole));
}

// One bin by the direct sum.
inline std::complex<double> DirectBin(const std::vector<double>& samples, std::size_t k) {
  std::complex<double> sum = 0;
  for (std::size_t n = 0; n < samples.size(); ++n) sum += samples[n] * UnitRoot(k * n, samples.size());
  return sum;
}

inline ComplexList Halved(ComplexList values) {
  const std::size_t half = values.size() / 2;
  if (half == 0) return values;
  ComplexList even(half), odd(half);
  for (std::size_t i = 0; i < half; ++i) {
    even[i] = values[2 * i];
    odd[i] = values[2 * i + 1];
  }
  even = Halved(std::move(even));
  odd = Halved(std::move(odd));
  for (std::size_t k = 0; k < half; ++k) {
    const std::complex<double> turned = UnitRoot(k, 2 * half) * odd[k];
    values[k] = even[k] + turned;
    values[k + half] = even[k] - turned;
  }
  return values;
}

inline std::vector<double> Packed(const ComplexList& bins) {
  std::vector<double> spectrum;
  for (std::size_t k = 0; k < bins.size() / 2; ++k) {
    spectrum.push_back(bins[k].real());
    spectrum.push_back(k == 0 ? bins[bins.size() / 2].real() : bins[k].imag());
  }
  return spectrum;
}

// The whole spectrum by halving the direct sum over and over.
inline std::vector<double> ModelForward(const std::vector<double>& samples) {
  return Packed(Halved(ComplexList(samples.begin(), samples.end())));
}

// N/2 times the samples of a packed spectrum.
inline std::vector<double> ModelInverse(const std::vector<double>& spectrum) {
  const std::size_t size = spectrum.size();
  ComplexList bins(size);
  bins[0] = spectrum[0];
  bins[size / 2] = spectrum[1];
  for (std::size_t k = 1; k < size / 2; ++k) {
    bins[size - k] = {spectrum[2 * k], spectrum[2 * k + 1]};  // the other sign: bins in the other order
    bins[k] = std::conj(bins[size - k]);
  }
  bins = Halved(std::move(bins));
  std::vector<double> samples;
  for (const std::complex<double>& value : bins) samples.push_back(value.real() / 2);
  return samples;
}

// The root of the mean square of the difference, as a part of that of the expected values.
template <typename Values>
double RelativeError(const Values& values, const std::vector<double>& expected) {
  double difference = 0, power = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    difference += (values[i] - expected[i]) * (values[i] - expected[i]);
    power += expected[i] * expected[i];
  }
  return std::sqrt(difference / (power > 0 ? power : 1));
}
