#pragma once
#include <vector>

#include "core/MLock.h"
#include "dsp/MAudioFFTReader.h"

// A running spectrum as Lumascope shows it: each spectrum of N samples is reduced to 1024 points on a
// logarithmic axis of frequency, and the points are averaged over the last frames and held as peaks.
//
// Point i stands at f = 20 x 1000^((i + 0.5) / 1024) Hz, limited to (sample rate - 2) / 2, so at the place
// p[i] = f N / sample rate among the bins. A bin's level is its magnitude divided by the sum of the window,
// so a sine of amplitude a at a bin gives a / 2; the lowest bin also counts the level at half the sample
// rate. From the bottom, as long as points lie less than a bin apart, a point is interpolated between two
// bins; further up it is the mean of the bins from truncate(p[i - 1]) up to, not including, truncate(p[i]).
// Where that are none, which happens above half the sample rate, this point and all behind it are 0. What is
// not finite counts as 0.
//
// One thread feeds. Settings are not for use meanwhile; what is averaged is read under the lock, which
// feeding takes once a frame, for as long as 1024 points take to be added.
class LumascopeSpectrum final : public MAudioFFTReader {
 public:
  static constexpr int32_t kPoints = 1024;
  static constexpr int32_t kMostFrames = 256;
  static constexpr double kLowestFrequency = 20, kHighestFrequency = 20000;

  struct Settings {
    int32_t size = 4096;
    int32_t window = MSignalWindow::kHann;
    double overlap = 0;         // 0 to 0.95
    double averageSeconds = 0;  // as many whole frames as fit, 1 to 256
    int32_t sampleRate = 0;
  };

  // The lock guards what is averaged.
  explicit LumascopeSpectrum(MLock& lock) : lock_(lock) {}

  // The frequency of a point, unlimited. [any]
  static double GetFrequency(int32_t point) noexcept;

  // Resets if the number of frames, the size, the overlap or the sample rate changes. Missing memory raises
  // "Out of memory."; at worst the window is then "Hann". [any, not audio]
  void Set(const Settings& settings);
  // Forgets the frames, the peaks and the samples that wait. [any, not audio]
  void Reset();
  // Feeds zeros, in a time that does not depend on their number: when nothing but zeros is left, only the
  // peaks go on falling. [audio]
  void Skip(int32_t samples);

  int32_t GetFrameCount() const noexcept { return frameCount_; }
  float GetPosition(int32_t point) const noexcept { return positions_[point]; }  // in bins
  // The mean over the frames, and the peaks, linear: after each frame
  //   peak = max(0.99 peak, point). [ui]
  void Read(double (&mean)[kPoints], double (&peaks)[kPoints]) const;

 protected:
  void HandleSpectrum(int32_t size, float* spectrum) override;

 private:
  // Where a point comes from: the mean of `count` bins from `first` on; with a count of 0 it lies `fraction`
  // behind `first`.
  struct Source {
    int32_t first, count;
    float fraction;
  };

  int32_t CountFrames(const Settings& settings) const noexcept;
  void Place(int32_t size, int32_t sampleRate) noexcept;
  void Reduce(const float* levels, int32_t bins) noexcept;
  void AddFrame();

  MLock& lock_;
  Settings settings_;
  float positions_[kPoints] = {};
  Source sources_[kPoints] = {};
  int32_t sourceCount_ = 0;  // the points behind are 0
  float frame_[kPoints] = {};
  int32_t frameCount_ = 1;  // changed under the lock
  int32_t next_ = 0;        // the oldest frame of the ring
  // Under the lock.
  std::vector<float, MAllocator<float>> ring_;  // frameCount_ frames, none for a single one
  double sum_[kPoints] = {};  // of the frames; in double what comes also goes without a rest
  float peaks_[kPoints] = {};
};
