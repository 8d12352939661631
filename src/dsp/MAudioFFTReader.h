#pragma once
#include "dsp/MRealFFT.h"
#include "dsp/MSignalWindow.h"

// Turns a running stream of samples into windowed, overlapping spectra. Each time N samples are there, they
// are multiplied with the window and transformed (MRealFFT gives the layout), and the newest v = truncate(N x
// overlap) of them stay for the next spectrum. At first N is 4096, the window "Hann" and the overlap 0. The
// object holds 256 KB itself; feeding needs no memory and takes any samples.
class MAudioFFTReader {
 public:
  M_LIBRARY_MEMORY

  MAudioFFTReader();
  MAudioFFTReader(const MAudioFFTReader&) = delete;
  MAudioFFTReader& operator=(const MAudioFFTReader&) = delete;
  virtual ~MAudioFFTReader() = default;

  // Adds samples, or zeros; a count below 1 does nothing. Null samples are zeros. [audio]
  void Feed(const float* samples, int32_t count);
  void FeedSilence(int32_t count) { Feed(nullptr, count); }
  // Forgets the samples that wait for the next spectrum. [audio]
  void Reset() noexcept { fill_ = 0; }

  // The three below are not for use while another thread feeds. Sets N and makes the window "Hann" again;
  // what MRealFFT::IsSize does not allow is ignored. Samples that wait stay, the oldest N of them when they
  // are more. Missing memory raises "Out of memory." and changes nothing. [any, not audio]
  void SetSize(int32_t size);
  // Makes the window of another type; raises as MSignalWindow does. [any, not audio]
  void SetWindowType(int32_t type) { window_.Set(GetSize(), type); }
  // As a fraction of N. In use it is limited to 0 to 0.95, so v is below N; not a number counts as 0. [audio]
  void SetOverlap(double overlap) noexcept { overlap_ = overlap; }

  int32_t GetSize() const noexcept { return transform_.GetSize(); }
  int32_t GetFill() const noexcept { return fill_; }  // samples that wait
  double GetOverlap() const noexcept { return overlap_; }
  const MSignalWindow& GetWindow() const noexcept { return window_; }

 protected:
  // Takes a spectrum of `size` floats, which it may change. It must not feed the reader. [audio]
  virtual void HandleSpectrum(int32_t size, float* spectrum) = 0;

 private:
  void Fire();

  static constexpr int32_t kInitialSize = 4096;

  float ring_[MRealFFT::kMaximumSize];
  int32_t fill_ = 0;
  MRealFFT transform_;
  float scratch_[MRealFFT::kMaximumSize];
  double overlap_ = 0;
  MSignalWindow window_;
};
