#pragma once
// A mixer written down plainly in doubles: one call after the other, one sample after the other. What stands
// in the work buffer is rounded to float, since a depth of 200 samples makes that rounding heard.

#include <algorithm>
#include <cmath>
#include <vector>

#include "tests/instruments/generators/SoundModel.h"

class MixerModel {
 public:
  struct Object {
    Signal signal = {};  // of the first channel; channel c has 1 - c / 4 of it
    bool isEnabled = true;
    int32_t mode = 0;
    double volume = 1;
    double pan = 0;
    std::size_t next = 0;
    bool isOver = false;
    std::vector<Signal> past = {};  // all of the mix so far, per channel
  };
  using Block = std::vector<Signal>;

  std::vector<Object> objects;

  // The next block, and whether the sound is over with it.
  bool Compute(Block& out) {
    const auto base = ChooseBase();
    if (base == objects.size()) {
      for (Signal& channel : out) std::fill(channel.begin(), channel.end(), 0.0);
      return true;
    }
    Pull(objects[base], out);
    ApplyGain(objects[base], out);
    for (std::size_t i = base + 1; i < objects.size(); ++i)
      if (objects[i].isEnabled) Combine(objects[i], out);
    return std::all_of(objects.begin(), objects.end(),
                       [](const Object& object) { return !object.isEnabled || object.isOver; });
  }

 private:
  std::size_t ChooseBase() const {
    std::size_t first = 0;
    while (first < objects.size() && !objects[first].isEnabled) ++first;
    if (first == objects.size() || !objects[first].isOver) return first;
    for (std::size_t i = 0; i < objects.size(); ++i)
      if (objects[i].isEnabled && objects[i].mode == 0 && !objects[i].isOver) return i;
    return objects.size();
  }

  static void Pull(Object& object, Block& block) {
    for (std::size_t i = 0; i < block[0].size(); ++i, ++object.next)
      for (std::size_t c = 0; c < block.size(); ++c)
        block[c][i] = object.next < object.signal.size()
                          ? object.signal[object.next] * (1 - static_cast<double>(c) / 4)
                          : 0;
    Round(block);
    object.isOver = object.next >= object.signal.size();
  }

  static void Round(Block& block) {
    for (Signal& channel : block)
      for (double& sample : channel) sample = static_cast<float>(sample);
  }

  static void ApplyGain(const Object& object, Block& block) {
    const double v = object.volume, p = object.pan;
    for (std::size_t i = 0; i < block[0].size(); ++i) {
      if (block.size() != 2 || std::abs(p) <= 1e-20) {
        for (Signal& channel : block) channel[i] *= v;
        continue;
      }
      const double left = block[0][i], right = block[1][i];
      block[0][i] = p > 0 ? left * (1 - p) * v : left * v + right * -p * v;
      block[1][i] = p > 0 ? right * v + left * p * v : right * (1 + p) * v;
    }
  }

  static void Combine(Object& object, Block& out) {
    Block work(out.size(), Signal(out[0].size()));
    const bool wasOver = object.isOver;
    if (!wasOver) {
      Pull(object, work);
      ApplyGain(object, work);
      Round(work);
    }
    for (std::size_t c = 0; c < out.size(); ++c) {
      for (std::size_t i = 0; i < out[c].size() && object.mode < 2; ++i) {
        if (object.mode == 0)
          out[c][i] += work[c][i];
        else
          out[c][i] *= wasOver ? 1 - object.volume : work[c][i] + 1 - object.volume;
      }
    }
    if (object.mode == 2) Modulate(object, work, out);
  }

  static void Modulate(Object& object, const Block& work, Block& out) {
    const int32_t depth = static_cast<int32_t>(std::clamp(object.volume * 200, 0.0, 200.0));
    object.past.resize(out.size());
    for (std::size_t c = 0; c < out.size(); ++c) {
      Signal& past = object.past[c];
      const auto before = static_cast<int64_t>(past.size());
      past.insert(past.end(), out[c].begin(), out[c].end());
      const auto y = [&](int64_t place) {
        return before + place < 0 ? 0 : past[static_cast<std::size_t>(before + place)];
      };
      for (std::size_t i = 0; i < out[c].size(); ++i) {
        const double m = std::clamp(work[c][i], -1.0, 1.0);
        const double position = m * depth + static_cast<double>(i) - depth - 4;
        const auto p = static_cast<int64_t>(std::floor(position));
        const double t = position - static_cast<double>(p);
        const double a = y(p - 1), b = y(p), d = y(p + 1), e = y(p + 2);
        out[c][i] =
            b + t * (0.5 * (d - a) + t * (2 * d + a - 0.5 * (5 * b + e) + 0.5 * t * (3 * (b - d) - a + e)));
      }
    }
  }
};
