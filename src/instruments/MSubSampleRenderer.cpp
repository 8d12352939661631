#include "instruments/MSubSampleRenderer.h"

#include <algorithm>
#include <cmath>

#include "dsp/MRealFFT.h"

namespace {

constexpr int32_t kSize = MSubSampleLibrary::kBins;
constexpr int32_t kHop = kSize / 2;
constexpr int32_t kMostSeconds = 600;
constexpr int32_t kFadeOut = 200;

// A sound that is used: which of its bins go where.
struct Part {
  const float* data = nullptr;
  const MSubSample* sound = nullptr;
  int32_t bins = 0;   // a frame has
  int32_t first = 0;  // bin that lies in the spectrum
  int32_t end = 0;
  int32_t place = 0;  // of bin 0, also below 0
  float gain = 0;

  void AddFrame(float* spectrum, int32_t channel, int32_t frame) const noexcept {
    if (frame >= sound->frames) return;
    const int64_t row = int64_t{channel % sound->channels} * sound->frames + frame;
    const float* const from = data + row * bins;
    for (int32_t b = first; b < end; ++b) spectrum[place + b] += gain * from[b];
  }
};

// What is used of a band.
struct BandParts {
  Part parts[2];  // lower and upper, each if it has data
  double fraction = 0;
  float volume = 0;
  bool isOdd = false;

  void SetGains(double phase) noexcept {
    double m = std::fmod(isOdd ? fraction + phase : fraction - phase + 1000, 2);
    if (m > 1) m = 2 - m;
    parts[0].gain = static_cast<float>((1 - m) * volume);
    parts[1].gain = static_cast<float>(m * volume);
  }
};

class Rendering {
 public:
  Rendering(MSubSampleLibrary& library, MSubSampleBands& bands) : library_(library) {
    for (int32_t b = 0; b < MSubSampleLibrary::kBands; ++b) Use(b, bands[static_cast<std::size_t>(b)]);
  }

  void Render(MAudioBuffer& target, double colorOffset) {
    const int32_t most = kMostSeconds * library_.GetRate();
    target.SetSize(channels_, std::min(length_, most));
    target.sampleRate = library_.GetRate();
    for (int32_t c = 0; c < target.GetChannelCount(); ++c) {
      for (BandParts& band : bands_) band.SetGains(c * colorOffset);
      MakeChannel(target.GetChannel(c), c, target.GetLength());
    }
  }

  // Samples that are not silent, at most.
  int32_t GetEnd(int32_t length) const noexcept {
    return static_cast<int32_t>(std::min<int64_t>(length, (int64_t{frames_} + 1) * kHop));
  }

 private:
  void Use(int32_t number, MSubSampleBand& setting) {
    const MSubSampleLibrary::Band& band = library_.GetBand(number);
    const int32_t last = band.GetCount() - 1;
    if (!std::isfinite(setting.index)) setting.index = 0;
    setting.index = std::clamp(setting.index, 0.0f, static_cast<float>(std::max(last, 0)));
    if (last < 0) return;
    const auto lower = static_cast<int32_t>(setting.index);
    BandParts& parts = bands_[number];
    parts.isOdd = number % 2 == 1;
    parts.volume = std::isfinite(setting.volume) ? setting.volume : 0;
    parts.fraction = double{setting.index} - lower;
    const int32_t place = band.firstBin + std::clamp(setting.shift, -kSize, kSize);
    parts.parts[0] = Take(number, lower, place);
    if (parts.fraction >= 1e-20 && lower < last) parts.parts[1] = Take(number, lower + 1, place);
  }

  Part Take(int32_t number, int32_t index, int32_t place) {
    const MSubSampleLibrary::Band& band = library_.GetBand(number);
    Part part;
    part.data = library_.Read(number, index);
    part.sound = &band.sounds[static_cast<std::size_t>(index)];
    part.bins = band.binCount;
    part.place = place;
    part.first = std::max(0, -place);
    part.end = std::min(band.binCount, kSize - place);
    frames_ = std::max(frames_, part.sound->frames);
    length_ = std::max(length_, part.sound->length);
    channels_ = std::max(channels_, part.sound->channels);
    return part;
  }

  void MakeFrame(float* spectrum, int32_t channel, int32_t frame) const {
    std::fill_n(spectrum, kSize, 0.0f);
    for (const BandParts& band : bands_)
      for (const Part& part : band.parts)
        if (part.data) part.AddFrame(spectrum, channel, frame);
    transform_.Inverse(spectrum);
  }

  void MakeChannel(float* out, int32_t channel, int32_t length) {
    constexpr float kScale = 2.0f / kSize;
    float* const frame = frame_.data();
    float* const tail = tail_.data();
    std::fill_n(tail, kHop, 0.0f);
    int32_t left = length;
    for (int32_t f = 0; f < frames_ && left > 0; ++f) {
      MakeFrame(frame, channel, f);
      const int32_t faded = std::min(kHop, left);
      for (int32_t i = 0; i < faded; ++i) {
        const float rise = static_cast<float>(i) / kHop;
        out[i] = rise * (kScale * frame[i]) + (1 - rise) * tail[i];
      }
      out += faded;
      left -= faded;
      const bool goesOn = left > kHop;
      float* const rest = goesOn ? tail : out;
      for (int32_t i = 0; i < std::min(kHop, left); ++i) rest[i] = kScale * frame[kHop + i];
      if (!goesOn) return;
    }
  }

  MSubSampleLibrary& library_;
  BandParts bands_[MSubSampleLibrary::kBands];
  int32_t frames_ = 0;
  int32_t length_ = 0;
  int32_t channels_ = 0;
  MRealFFT transform_{kSize};
  std::vector<float, MAllocator<float>> frame_ = Zeros(kSize);
  std::vector<float, MAllocator<float>> tail_ = Zeros(kHop);

  static std::vector<float, MAllocator<float>> Zeros(int32_t count) {
    return std::vector<float, MAllocator<float>>(static_cast<std::size_t>(count));
  }
};

// Brings the first `end` samples to a peak of 1. Sums that went beyond what a float holds are silent.
void Normalize(MAudioBuffer& target, int32_t end) noexcept {
  float peak = 0;
  for (int32_t c = 0; c < target.GetChannelCount(); ++c) {
    float* const samples = target.GetChannel(c);
    for (int32_t i = 0; i < end; ++i) {
      if (!std::isfinite(samples[i])) samples[i] = 0;
      peak = std::max(peak, std::abs(samples[i]));
    }
  }
  if (peak == 0) return;
  const double gain = 1.0 / peak;
  for (int32_t c = 0; c < target.GetChannelCount(); ++c) {
    float* const samples = target.GetChannel(c);
    for (int32_t i = 0; i < end; ++i) samples[i] = static_cast<float>(samples[i] * gain);
  }
}

}  // namespace

void MRenderSubSamples(MAudioBuffer& target, MSubSampleLibrary& library, MSubSampleBands& bands,
                       double colorOffset) {
  Rendering rendering(library, bands);
  rendering.Render(target, colorOffset);
  const int32_t length = target.GetLength();
  Normalize(target, rendering.GetEnd(length));
  if (length > 0) target.Fade(length - kFadeOut, 1, length - 1, 0);
}
