#pragma once
// Recordings in the frames that subsample libraries are made of, and what is heard of these again.

#include <optional>
#include <vector>

#include "hosts/cli/AudioFiles.h"

namespace cli {

// The frames of a recording, one after another: kSize samples of each channel, the second half of one frame
// being the first half of the next. The last one ends with zeros. Raises Failure as AudioReader does.
class FrameReader {
 public:
  static constexpr int32_t kSize = 8192;
  static constexpr int32_t kHop = kSize / 2;

  explicit FrameReader(const std::string& path);

  const AudioFormat& GetFormat() const noexcept { return reader_.GetFormat(); }
  int64_t GetLength() const noexcept { return length_; }  // frames of the file, so far
  const float* GetChannel(int32_t channel) const noexcept {
    return planes_.data() + static_cast<std::ptrdiff_t>(channel) * kSize;
  }

  // Goes to the next frame; false if there is none, and then nothing has changed. A recording of L samples
  // has the least number of frames, at least one, whose halves hold all of them.
  bool Next();

 private:
  AudioReader reader_;
  int32_t channels_;
  bool isFirst_ = true;
  int64_t length_ = 0;
  std::vector<float> interleaved_, planes_;
};

// How far a sound differs from another.
class Difference {
 public:
  void Add(float wanted, float got) noexcept {
    signal_ += double{wanted} * wanted;
    noise_ += (double{got} - wanted) * (double{got} - wanted);
  }
  // The ratio of signal and noise in decibels, none without noise or signal.
  std::optional<double> GetRatio() const noexcept;

 private:
  double signal_ = 0;
  double noise_ = 0;
};

// What Grainloom makes of the frames of one channel, compared with what they were made of: from one frame to
// the next it fades linearly over half a frame. The first half frame, which is faded in, does not count.
class FrameComparison {
 public:
  // `frame` as it was read, `again` as the inverse transform gives it.
  void Add(const float* frame, const float* again, Difference& difference);
  // The second half of the last frame sounds as it is.
  void Finish(const float* frame, Difference& difference) const;

 private:
  bool isFirst_ = true;
  std::vector<float> tail_ = std::vector<float>(FrameReader::kHop);
};

}  // namespace cli
