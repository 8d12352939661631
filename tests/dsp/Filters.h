#pragma once
// Plain models of the filters, written from their formulas in double.

#include <cmath>
#include <numbers>
#include <vector>

#include "dsp/MFilterCascade.h"
#include "tests/common/AudioBlock.h"

constexpr double kBias = 1.0000000195414814e-25;

// A section with the recursive coefficients as they are added.
struct ModelSection {
  double b0, b1, b2, a1, a2;
  double inputBias = 0, outputBias = 0;
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;

  double Step(double sample) {
    const double x = sample + inputBias;
    const double y = b0 * x + b1 * x1 + b2 * x2 + a1 * y1 + a2 * y2 + outputBias;
    x2 = x1, x1 = x, y2 = y1, y1 = y;
    return y;
  }
};

// The cookbook, with a0 divided out, the recursive pair negated and the bias in all five.
inline ModelSection ModelBiquad(int32_t type, double gain, double frequency, double rate, double q) {
  const double A = std::pow(10, gain / 40), w = 2 * std::numbers::pi * frequency / rate;
  const double sn = std::sin(w), cs = std::cos(w), alpha = sn / (2 * q), beta = 2 * std::sqrt(A);
  double b0 = 1, b1 = -2 * cs, b2 = 1, a0 = 1 + alpha, a1 = -2 * cs, a2 = 1 - alpha;
  if (type == 0) {
    b0 = 1 + alpha * A, b2 = 1 - alpha * A, a0 = 1 + alpha / A, a2 = 1 - alpha / A;
  } else if (type == 1) {
    b0 = A * ((A + 1) - (A - 1) * cs + beta * alpha), b1 = 2 * A * ((A - 1) - (A + 1) * cs);
    b2 = A * ((A + 1) - (A - 1) * cs - beta * alpha), a0 = (A + 1) + (A - 1) * cs + beta * alpha;
    a1 = -2 * ((A - 1) + (A + 1) * cs), a2 = (A + 1) + (A - 1) * cs - beta * alpha;
  } else if (type == 2) {
    b0 = A * ((A + 1) + (A - 1) * cs + beta * alpha), b1 = -2 * A * ((A - 1) + (A + 1) * cs);
    b2 = A * ((A + 1) + (A - 1) * cs - beta * alpha), a0 = (A + 1) - (A - 1) * cs + beta * alpha;
    a1 = 2 * ((A - 1) - (A + 1) * cs), a2 = (A + 1) - (A - 1) * cs - beta * alpha;
  } else if (type == 3) {
    b0 = b2 = (1 - cs) / 2, b1 = 1 - cs;
  } else if (type == 4) {
    b0 = b2 = (1 + cs) / 2, b1 = -(1 + cs);
  } else if (type == 5) {
    b0 = alpha, b1 = 0, b2 = -alpha;
  }
  return {b0 / a0 + kBias, b1 / a0 + kBias, b2 / a0 + kBias, kBias - a1 / a0, kBias - a2 / a0};
}

inline ModelSection ModelLowPass(double frequency, double r, double rate) {
  const double c = 1 / std::tan(std::numbers::pi * frequency / rate);
  const double d = 1.299999974668026 * r + 0.10000000149011612, g = 1 / ((c + d) * c + 1);
  return {g + kBias, 2 * g + kBias, g + kBias, kBias - 2 * (1 - c * c) * g, kBias - (c * c + 1 - c * d) * g,
          kBias,     kBias};
}

inline ModelSection ModelHighPass(double frequency, double r, double rate) {
  const double c = std::tan(std::numbers::pi * frequency / rate);
  const double d = 1.379999976605177 * r + 0.019999999552965164, g = 1 / ((c + d) * c + 1);
  return {g + kBias, kBias - 2 * g, g + kBias, kBias - 2 * (c * c - 1) * g, kBias - (c * c + 1 - c * d) * g,
          kBias,     kBias};
}

// Runs a block through sections in series, each output rounded to float, every channel from fresh states.
inline AudioBlock RunModel(const std::vector<ModelSection>& sections, const AudioBlock& in) {
  AudioBlock out(in.GetChannelCount(), in.GetLength());
  for (int32_t c = 0; c < in.GetChannelCount(); ++c) {
    std::vector<ModelSection> own = sections;
    for (int32_t i = 0; i < in.GetLength(); ++i) {
      out[c][i] = in[c][i];
      for (ModelSection& section : own) out[c][i] = static_cast<float>(section.Step(double{out[c][i]}));
    }
  }
  return out;
}

// The amplitude that a filter, run(in, out, samples), gives a sine of amplitude 1 once it has settled.
template <typename Run>
double MeasureMagnitude(Run run, double frequency, double rate) {
  constexpr int32_t kSettled = 40000, kWindow = 20000;
  AudioBlock in(1, kSettled + kWindow), out(1, kSettled + kWindow);
  const double w = 2 * std::numbers::pi * frequency / rate;
  in.Fill([w](int32_t i) { return std::sin(w * i); });
  run(in[0], out[0], in.GetLength());
  double sine = 0, cosine = 0;
  for (int32_t i = kSettled; i < in.GetLength(); ++i) {
    sine += out[0][i] * std::sin(w * i);
    cosine += out[0][i] * std::cos(w * i);
  }
  return 2 * std::sqrt(sine * sine + cosine * cosine) / kWindow;
}
