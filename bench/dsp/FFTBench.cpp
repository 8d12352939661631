// The real transform there and back, beside FFTW and KissFFT in single precision. Ours works in place and
// gets its samples by a copy in each turn; the others read one array and write another.

#include <fftw3.h>
#include <kissfft/kiss_fftr.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "bench/Calibrated.h"
#include "core/MFlushDenormals.h"
#include "dsp/MAudioFFTProcessorCrossFade.h"
#include "dsp/MAudioFFTReader.h"

namespace {

std::vector<float> Noise(int64_t size) {
  std::vector<float> samples(static_cast<std::size_t>(size));
  uint32_t seed = 1;
  for (float& sample : samples) {
    seed = seed * 1664525u + 1013904223u;
    sample = static_cast<float>(seed) / 4294967296.0f - 0.5f;
  }
  return samples;
}

void ThereAndBack(benchmark::State& state, MRealFFT::Path path) {
  const std::vector<float> samples = Noise(state.range(0));
  std::vector<float> data = samples;
  const MRealFFT transform(static_cast<int32_t>(state.range(0)), path);
  Calibrate(state);
  for (auto _ : state) {
    std::copy(samples.begin(), samples.end(), data.begin());
    transform.Forward(data.data());
    benchmark::ClobberMemory();
    transform.Inverse(data.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK_CAPTURE(ThereAndBack, widest, MRealFFT::Path::kWidest)
    ->Name("RealFFT")
    ->Arg(256)
    ->Arg(1024)
    ->Arg(4096)
    ->Arg(16384);
BENCHMARK_CAPTURE(ThereAndBack, baseline, MRealFFT::Path::kBaseline)
    ->Name("RealFFTBaseline")
    ->Arg(256)
    ->Arg(1024)
    ->Arg(4096)
    ->Arg(16384);

// With plans that FFTW has measured.
void RealFFTFFTW(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  const std::size_t floats = static_cast<std::size_t>(size);
  float* const samples = fftwf_alloc_real(floats);
  float* const result = fftwf_alloc_real(floats);
  fftwf_complex* const spectrum = fftwf_alloc_complex(floats / 2 + 1);
  const fftwf_plan forward = fftwf_plan_dft_r2c_1d(size, samples, spectrum, FFTW_MEASURE);
  const fftwf_plan inverse = fftwf_plan_dft_c2r_1d(size, spectrum, result, FFTW_MEASURE);
  const std::vector<float> noise = Noise(size);
  std::copy(noise.begin(), noise.end(), samples);
  Calibrate(state);
  for (auto _ : state) {
    fftwf_execute(forward);
    benchmark::ClobberMemory();
    fftwf_execute(inverse);
    benchmark::ClobberMemory();
  }
  fftwf_destroy_plan(forward);
  fftwf_destroy_plan(inverse);
  fftwf_free(samples);
  fftwf_free(result);
  fftwf_free(spectrum);
}
BENCHMARK(RealFFTFFTW)->Arg(256)->Arg(1024)->Arg(4096)->Arg(16384);

void RealFFTKissFFT(benchmark::State& state) {
  const int size = static_cast<int>(state.range(0));
  const std::vector<float> samples = Noise(size);
  std::vector<float> result(samples.size());
  std::vector<kiss_fft_cpx> spectrum(samples.size() / 2 + 1);
  const kiss_fftr_cfg forward = kiss_fftr_alloc(size, 0, nullptr, nullptr);
  const kiss_fftr_cfg inverse = kiss_fftr_alloc(size, 1, nullptr, nullptr);
  Calibrate(state);
  for (auto _ : state) {
    kiss_fftr(forward, samples.data(), spectrum.data());
    benchmark::ClobberMemory();
    kiss_fftri(inverse, spectrum.data(), result.data());
    benchmark::ClobberMemory();
  }
  kiss_fftr_free(forward);
  kiss_fftr_free(inverse);
}
BENCHMARK(RealFFTKissFFT)->Arg(256)->Arg(1024)->Arg(4096)->Arg(16384);

// Blocks of 256 stereo frames through the processor; per frame, as an effect counts.
void CrossFadeProcessor(benchmark::State& state) {
  constexpr int32_t kBlock = 256;
  const int32_t size = static_cast<int32_t>(state.range(0));
  MAudioQueue source, destination;
  source.Prepare(2, 48000, kBlock + size);
  destination.Prepare(2, 48000, kBlock + 4 * size);
  MAudioFFTProcessorCrossFade processor(source, destination, size, nullptr, nullptr);
  processor.Prepare();
  const std::vector<float> left = Noise(kBlock), right = left;
  std::vector<float> leftOut(kBlock), rightOut(kBlock);
  Calibrate(state);
  const MFlushDenormals flush;
  for (auto _ : state) {
    const float* const in[] = {left.data(), right.data()};
    float* const out[] = {leftOut.data(), rightOut.data()};
    source.Append(in, kBlock);
    processor.Run();
    destination.Read(out, kBlock);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kBlock);
}
BENCHMARK(CrossFadeProcessor)->Arg(4096);

// Blocks of 256 samples with an overlap of a half; per sample.
void SpectrumReader(benchmark::State& state) {
  class Reader : public MAudioFFTReader {
    void HandleSpectrum(int32_t, float* spectrum) override { benchmark::DoNotOptimize(spectrum); }
  };
  constexpr int32_t kBlock = 256;
  const auto reader = std::make_unique<Reader>();
  reader->SetSize(static_cast<int32_t>(state.range(0)));
  reader->SetOverlap(0.5);
  const std::vector<float> samples = Noise(kBlock);
  Calibrate(state);
  const MFlushDenormals flush;
  for (auto _ : state) reader->Feed(samples.data(), kBlock);
  state.SetItemsProcessed(state.iterations() * kBlock);
}
BENCHMARK(SpectrumReader)->Arg(4096);

}  // namespace
