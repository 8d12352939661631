// Sections over blocks of seeded noise at 48 kHz; the time is that of a frame, all channels together.

#include <vector>

#include "bench/Calibrated.h"
#include "core/MFlushDenormals.h"
#include "dsp/MFilterCascade.h"

namespace {

constexpr int32_t kFrames = 65536;
constexpr int32_t kPlaces = 7;

// Calls run(in, out, samples) on one block after the other.
template <typename Out, typename Run>
void RunBlocks(benchmark::State& state, Run run) {
  const int32_t samples = static_cast<int32_t>(state.range(0));
  std::vector<float> input(2 * kFrames);
  uint32_t seed = 1;
  for (float& sample : input) {
    seed = seed * 1664525u + 1013904223u;
    sample = static_cast<float>(seed) / 4294967296.0f - 0.5f;
  }
  std::vector<Out> left(static_cast<std::size_t>(samples)), right(left);
  Out* const out[] = {left.data(), right.data()};
  Calibrate(state);
  const MFlushDenormals flush;
  int32_t position = 0;
  for (auto _ : state) {
    const float* const in[] = {input.data() + position, input.data() + kFrames + position};
    run(in, out, samples);
    benchmark::ClobberMemory();
    position += samples;
    if (position + samples > kFrames) position = 0;
  }
  state.SetItemsProcessed(state.iterations() * samples);
}

template <typename Filter>
std::vector<Filter> GetBands(int32_t count) {
  std::vector<Filter> bands(static_cast<std::size_t>(count));
  for (int32_t i = 0; i < count; ++i)
    bands[static_cast<std::size_t>(i)].Set(MBiquadType::kPeak, i % 2 == 0 ? 6 : -6, 200 << i, 48000, 0.6);
  return bands;
}

void BiquadPlain(benchmark::State& state) {
  const auto bands = GetBands<MBiquadFilter>(1);
  MBiquadState states;
  RunBlocks<float>(state,
                   [&](auto in, auto out, int32_t samples) { bands[0].Run(states, in[0], out[0], samples); });
}

void Biquads(benchmark::State& state, int32_t count, int32_t channels, bool plain) {
  const auto bands = GetBands<MBiquadFilter>(count);
  const MFilterKernels& kernels = plain ? kPlainFilterKernels : MGetFilterKernels();
  MBiquadState states[2 * kPlaces];
  RunBlocks<float>(state, [&](auto in, auto out, int32_t samples) {
    MBiquadCascade::Run(bands, states, kPlaces, in, out, channels, samples, kernels);
  });
}

void FloatPair(benchmark::State& state) {
  const auto bands = GetBands<MBiquadFilterFloat>(2);
  MBiquadStateFloat states[2 * kPlaces];
  RunBlocks<float>(state, [&](auto in, auto out, int32_t samples) {
    MBiquadCascade::Run(bands, states, kPlaces, in, out, 2, samples);
  });
}

void ResonantPair(benchmark::State& state, bool rounded, bool plain) {
  MResonantLowPass low;
  MResonantHighPass high;
  low.Set(2000, 0.5, 48000);
  high.Set(1000, 0.5, 48000);
  const MResonantFilter sections[] = {low, high};
  const MFilterKernels& kernels = plain ? kPlainFilterKernels : MGetFilterKernels();
  MResonantState states[4];
  if (rounded)
    RunBlocks<float>(state, [&](auto in, auto out, int32_t samples) {
      MResonantCascade::Run(sections, states, 2, in, out, 2, samples, kernels);
    });
  else
    RunBlocks<double>(state, [&](auto in, auto out, int32_t samples) {
      MResonantCascade::RunPair(low, high, states, in, out, 2, samples, kernels);
    });
}

#define M_BLOCKS Arg(64)->Arg(256)->Arg(1024)
BENCHMARK(BiquadPlain)->Name("BiquadMonoSection")->Arg(256);
BENCHMARK_CAPTURE(Biquads, mono, 1, 1, false)->Name("BiquadMono")->M_BLOCKS;
BENCHMARK_CAPTURE(Biquads, stereo, 1, 2, false)->Name("BiquadStereo")->M_BLOCKS;
BENCHMARK_CAPTURE(Biquads, six, 6, 2, false)->Name("SixBiquads")->M_BLOCKS;
BENCHMARK_CAPTURE(Biquads, sixPlain, 6, 2, true)->Name("SixBiquadsSSE2")->Arg(256);
BENCHMARK(FloatPair)->Name("FloatBiquadPair")->Arg(256);
BENCHMARK_CAPTURE(ResonantPair, rounded, true, false)->Name("ResonantPair")->M_BLOCKS;
BENCHMARK_CAPTURE(ResonantPair, plain, true, true)->Name("ResonantPairSSE2")->Arg(256);
BENCHMARK_CAPTURE(ResonantPair, unrounded, false, false)->Name("ResonantPairUnrounded")->Arg(256);

}  // namespace
