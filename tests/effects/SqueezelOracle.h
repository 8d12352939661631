#pragma once
// A plain model of Squeezel, sample by sample in doubles. Only the filters of the side chain run in single
// precision; the model runs them in doubles as well, and the difference tells how far another order of their
// sums may lead. An answer is a range: the gains of all levels that lie within that distance, so that a curve
// that jumps may be read on either side of the jump.

#include <cmath>
#include <map>
#include <numbers>
#include <string>

#include "tests/common/AudioBlock.h"
#include "tests/effects/OracleCurve.h"

constexpr double kOracleBias = double{1e-25f};

class SqueezelOracleFilter {
 public:
  bool isOn = false;

  void Design(bool isLowPass, double hertz, double sampleRate) {
    const double rate = static_cast<float>(sampleRate);
    hertz = static_cast<float>(hertz < 0.5 * rate ? hertz : 0.4999 * rate);
    const double w = 2 * std::numbers::pi * hertz / rate, cs = std::cos(w), alpha = std::sin(w) / 2;
    const double edge = isLowPass ? 1 - cs : -(1 + cs), a0 = 1 + alpha;
    b0_ = b2_ = static_cast<float>(std::abs(edge) / 2 / a0 + kOracleBias);
    b1_ = static_cast<float>(edge / a0 + kOracleBias);
    a1_ = static_cast<float>(2 * cs / a0 + kOracleBias);
    a2_ = static_cast<float>((alpha - 1) / a0 + kOracleBias);
  }

  template <typename Real>
  struct State {
    Real x1 = 0, x2 = 0, y1 = 0, y2 = 0;
  };
  template <typename Real>
  Real Run(State<Real>& s, Real x) const {
    const Real y =
        s.x2 * Real{b2_} + s.x1 * Real{b1_} + (s.y2 * Real{a2_} + s.y1 * Real{a1_}) + x * Real{b0_};
    s = {x, s.x1, y, s.y1};
    return y;
  }

 private:
  float b0_ = 0, b1_ = 0, b2_ = 0, a1_ = 0, a2_ = 0;
};

// The static curve: the gain for a level.
struct SqueezelOracleCurve {
  double T = 0, s = 1, inputGain = 1, outputGain = 1, m = 1, G = 1;
  double a = 0, b = 0, cx = 0, cy = 0, squaredRadius = 0;
  int32_t knee = 0;
  bool isDrawn = false;
  MEnvelopeComputer drawn;

  double Line(double x) const { return s * x + (T - T * s); }
  double Hard(double x) const { return x > T ? m * Line(x) : m * x; }
  double Arc(double x) const { return cy + std::sqrt(std::max(0.0, squaredRadius - (x - cx) * (x - cx))); }
  void SetKnee(int32_t mode, double size) {
    knee = std::abs(s - 1) < 1e-50 || std::abs(size) < 1e-50 ? 0 : mode;
    if (knee == 0) return;
    a = std::max(1e-20, T - size * 0.25 * 0.7071067811865476);
    b = (T - a) * 1.4142135623730951 / std::sqrt(s * s + 1) + T;
    const double ya = Hard(a) / m, yb = Hard(b) / m;
    // (a, ya) + v (1, -1) meets (b, yb) + w (s, -1).
    const double w = (b - a + yb - ya) / (1 - s);
    cx = b + w * s;
    cy = yb - w;
    squaredRadius = (a - cx) * (a - cx) + (ya - cy) * (ya - cy);
  }
  // `way` is how far a drawn curve may be from its formula.
  double GainOf(double x, double way) {
    if (isDrawn) {
      if (!(x - 1e-20 > 0)) return G;
      drawn.Seek(0);
      const double v = std::max(0.0, drawn.GetValue(std::sqrt(x)) + way);
      return v * v / x * G;
    }
    if (knee == 0) return x > T ? G * Line(x) / x : G;
    if (x >= b) return G * Line(x) / x;
    if (x <= a) return G;
    if (knee == 2) return Arc(x) / x * G;
    const double u = (x - a) / (b - a);
    return ((1 - u) * Hard(a) + u * Hard(b)) / x * inputGain;
  }
};

class SqueezelOracle {
 public:
  using Rows = std::map<std::string, double>;
  static constexpr int32_t kChannels = 8;
  static constexpr double kDrawn = 1e-9;

  Rows rows = {{"gain", 0},          {"outputgain", 0},   {"attack", 0.01}, {"release", 0.05},
               {"rmslength", 0.001}, {"threshold", 0.5},  {"ratio", 1.8},   {"kneemode", 0},
               {"kneesize", 0.25},   {"linkchannels", 1}, {"maximize", 1},  {"customshape", 0}};
  MEnvelopeData graph;
  bool isFiltered = false, plays = false;
  bool isEditorOpen = false;
  double fastLevel = 0, slowLevel = 0;
  double lowReduction = 1.000000001, highReduction = 1.000000001;
  double lowest = 20, highest = 20000;

  struct Range {
    std::vector<std::vector<double>> low, high;
  };

  SqueezelOracle() {
    for (const double at : {0.0, 0.5, 1.0}) graph.Add(at, at);
  }
  void Prepare(int32_t channels, int32_t sampleRate) {
    channels_ = channels;
    sampleRate_ = sampleRate;
    Update();
  }
  void Update();
  Range Process(const AudioBlock& in);
  // What the editor shows of an output whose first channel has this peak.
  void Measure(double peak, int32_t samples);
  void Skip(int32_t samples);

 private:
  struct Detector {
    double P = 0, E = 0;
  };
  struct Gains {
    double low, high;
  };
  struct Channel {
    SqueezelOracleFilter::State<float> rounded[2];
    SqueezelOracleFilter::State<double> exact[2];
    Detector detector, exactDetector;
  };

  double Coefficient(const char* key) const {
    const double samples = sampleRate_ * rows.at(key);
    return std::abs(samples) < 1e-50 ? 0 : std::exp(-1 / samples);
  }
  void Step(Detector& detector, double p) const {
    detector.P = (1 - rms_) * p + rms_ * detector.P + kOracleBias;
    const double L = std::sqrt(detector.P);
    const double c = L <= detector.E ? release_ : attack_;
    detector.E = c * detector.E + (1 - c) * L + kOracleBias;
  }
  bool HasFilter() const { return filters_[0].isOn || filters_[1].isOn; }
  int32_t Served() const { return std::min(channels_, kChannels); }
  Gains GainsOf(const Channel& heard);
  void StepFrame(const AudioBlock& in, int32_t i, Range& range);

  int32_t channels_ = 0, sampleRate_ = 0;
  bool isReady_ = false, isBypassed_ = false, isLinked_ = true;
  double attack_ = 0, release_ = 0, rms_ = 0, fastDecay_ = 0, slowDecay_ = 0;
  SqueezelOracleCurve curve_;
  SqueezelOracleFilter filters_[2];
  Channel states_[kChannels];
  double noise_ = 0;  // the largest that rounding made of late of what the detectors hear
};

inline void SqueezelOracle::Update() {
  if (sampleRate_ < 1) return;
  isReady_ = true;
  curve_.isDrawn = rows["customshape"] != 0;
  isBypassed_ = !curve_.isDrawn && std::abs(rows["ratio"] - 1) < 1e-50;
  for (Channel& channel : states_)
    if (isBypassed_) channel.detector = channel.exactDetector = {};
  isLinked_ = rows["linkchannels"] != 0;
  attack_ = Coefficient("attack");
  release_ = Coefficient("release");
  rms_ = Coefficient("rmslength");
  curve_.inputGain = std::pow(10, rows["gain"] * 0.05);
  curve_.outputGain = std::pow(10, rows["outputgain"] * 0.05);
  const double T = curve_.T = rows["threshold"] * rows["threshold"];
  const double top = std::pow(10, 20 * std::log10(T) / rows["ratio"] * 0.05);
  curve_.s = std::abs(T - 1) < 1e-50 ? 1 : (top - T) / (1 - T);
  curve_.m = rows["maximize"] != 0 && !curve_.isDrawn ? 1 / top : 1;
  curve_.G = curve_.inputGain * curve_.outputGain * curve_.m;
  curve_.SetKnee(static_cast<int32_t>(rows["kneemode"]), rows["kneesize"]);
  if (isEditorOpen && !curve_.isDrawn) {
    graph.Clear();
    graph.Add(graph.xMinimum, 0);
    graph.Add(rows["threshold"], std::sqrt(T * curve_.m));
    graph.Add(graph.xMaximum, std::sqrt(top * curve_.m));
  }
  if (curve_.isDrawn) curve_.drawn.Build(graph);
  fastDecay_ = std::exp(-1 / (sampleRate_ * 0.1));
  slowDecay_ = std::exp(-1 / (sampleRate_ * 2.5));
  filters_[0].isOn = isFiltered && highest < 20000;
  filters_[1].isOn = isFiltered && lowest - 1e-20 > 20;
  filters_[0].Design(true, highest, sampleRate_);
  filters_[1].Design(false, lowest, sampleRate_);
}

// All gains that the level of a detector may have.
inline SqueezelOracle::Gains SqueezelOracle::GainsOf(const Channel& heard) {
  const double E = heard.detector.E;
  const double way = 1e-11 * E + 4 * (std::abs(E - heard.exactDetector.E) + noise_ * curve_.inputGain);
  Gains gains = {INFINITY, -INFINITY};
  for (const double level : {E, E - way, E + way}) {
    for (const double drawn : {-kDrawn, kDrawn}) {
      const double gain = curve_.GainOf(std::max(level, 0.0), drawn);
      gains = {std::min(gains.low, gain), std::max(gains.high, gain)};
      if (!curve_.isDrawn) break;
    }
  }
  return gains;
}

inline void SqueezelOracle::StepFrame(const AudioBlock& in, int32_t i, Range& range) {
  double rounded[kChannels], exact[kChannels], roundedSum = 0, exactSum = 0;
  noise_ = HasFilter() ? 0.99 * noise_ : 0;
  for (int32_t c = 0; c < Served(); ++c) {
    float x = in[c][i];
    double y = double{x};
    for (int32_t f = 0; f < 2; ++f) {
      if (!filters_[f].isOn) continue;
      x = filters_[f].Run(states_[c].rounded[f], x);
      y = filters_[f].Run(states_[c].exact[f], y);
    }
    rounded[c] = double{x};
    exact[c] = y;
    noise_ = std::max(noise_, std::abs(rounded[c] - exact[c]));
    roundedSum += std::pow(rounded[c] * curve_.inputGain, 2);
    exactSum += std::pow(exact[c] * curve_.inputGain, 2);
  }
  Gains gains = {};
  for (int32_t c = 0; c < Served(); ++c) {
    Channel& heard = states_[isLinked_ ? 0 : c];
    if (!isLinked_ || c == 0) {
      Step(heard.detector, isLinked_ ? roundedSum / Served() : std::pow(rounded[c] * curve_.inputGain, 2));
      Step(heard.exactDetector, isLinked_ ? exactSum / Served() : std::pow(exact[c] * curve_.inputGain, 2));
    }
    if (!isLinked_ || c == 0) gains = GainsOf(heard);
    const double x = double{in[c][i]};
    range.low[static_cast<std::size_t>(c)].push_back(std::min(x * gains.low, x * gains.high));
    range.high[static_cast<std::size_t>(c)].push_back(std::max(x * gains.low, x * gains.high));
    if (!plays || !HasFilter()) continue;
    const double way = 4 * noise_;
    range.low[static_cast<std::size_t>(c)].back() = rounded[c] - way;
    range.high[static_cast<std::size_t>(c)].back() = rounded[c] + way;
  }
}

inline SqueezelOracle::Range SqueezelOracle::Process(const AudioBlock& in) {
  Range range;
  range.low.resize(static_cast<std::size_t>(channels_));
  const bool isScaled = isReady_ && isBypassed_;
  for (int32_t c = isReady_ && !isBypassed_ ? Served() : 0; c < channels_; ++c)
    for (int32_t i = 0; i < in.GetLength(); ++i)
      range.low[static_cast<std::size_t>(c)].push_back(
          double{in[c][i]} * (isScaled && c < Served() ? curve_.inputGain * curve_.outputGain : 1));
  range.high = range.low;
  for (int32_t i = 0; i < in.GetLength() && isReady_ && !isBypassed_; ++i) StepFrame(in, i, range);
  return range;
}

inline void SqueezelOracle::Measure(double peak, int32_t samples) {
  if (!isEditorOpen || !isReady_ || Served() < 1 || samples < 1) return;
  fastLevel = std::max(fastLevel * std::pow(fastDecay_, samples), peak);
  slowLevel = std::max(slowLevel * std::pow(slowDecay_, samples), peak);
  const auto shown = [](double ratio) { return ratio >= 0.999 ? 1.000000001 : std::sqrt(ratio); };
  const Gains gains = isBypassed_ ? Gains{curve_.G, curve_.G} : GainsOf(states_[0]);
  lowReduction = std::min(shown(gains.low / curve_.G * (1 - 1e-9)), shown(gains.high / curve_.G));
  highReduction = shown(gains.high / curve_.G * (1 + 1e-9));
}

inline void SqueezelOracle::Skip(int32_t samples) {
  if (!isReady_ || samples < 1) return;
  if (isBypassed_) {
    fastLevel = slowLevel = 0;
    return;
  }
  const int32_t used = isLinked_ ? std::min(Served(), 1) : Served();
  bool isActive = false;
  for (int32_t c = 0; c < used; ++c) {
    isActive |= states_[c].detector.E > 1e-20;
    for (Detector* const detector : {&states_[c].detector, &states_[c].exactDetector}) {
      if (!(detector->E > 1e-20)) *detector = {};
      for (int32_t i = 0; i < samples && detector->E > 1e-20; ++i) Step(*detector, 0);
    }
  }
  for (Channel& channel : states_)
    for (int32_t f = 0; f < 2; ++f) channel.rounded[f] = {}, channel.exact[f] = {};
  if (isActive) Measure(0, samples);
}
