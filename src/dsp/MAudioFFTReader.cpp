#include "dsp/MAudioFFTReader.h"

#include <algorithm>

MAudioFFTReader::MAudioFFTReader() : transform_(kInitialSize) {
  window_.Set(kInitialSize, MSignalWindow::kHann);
}

void MAudioFFTReader::SetSize(int32_t size) {
  if (!MRealFFT::IsSize(size)) return;
  window_.Set(size, MSignalWindow::kHann);
  transform_ = MRealFFT(size);
  fill_ = std::min(fill_, size);
}

void MAudioFFTReader::Feed(const float* samples, int32_t count) {
  while (count > 0) {
    const int32_t size = GetSize();
    // Nothing fits into a ring that a smaller size has left full.
    const int32_t taken = std::min(count, size - fill_);
    if (samples) {
      std::copy_n(samples, taken, ring_ + fill_);
      samples += taken;
    } else {
      std::fill_n(ring_ + fill_, taken, 0.0f);
    }
    count -= taken;
    fill_ += taken;
    if (fill_ == size) Fire();
  }
}

void MAudioFFTReader::Fire() {
  const int32_t size = GetSize();
  const float* const window = window_.GetSamples();
  for (int32_t i = 0; i < size; ++i) scratch_[i] = ring_[i] * window[i];
  transform_.Forward(scratch_);
  // The comparison is false for what is not a number. At 0.95 of four samples three stay, so feeding ends.
  const double overlap = overlap_ > 0 ? std::min(overlap_, 0.95) : 0;
  const int32_t kept = static_cast<int32_t>(size * overlap);
  std::copy_n(ring_ + size - kept, kept, ring_);
  fill_ = kept;
  HandleSpectrum(size, scratch_);
}
