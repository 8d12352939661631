#include "dsp/MFilterCascade.h"

#include <algorithm>

namespace {

// The coefficients of both families in one order.
MSectionLanes GetLanes(const MBiquadFilter& section) {
  return {section.b0, section.b1, section.b2, section.a1, section.a2, {}, {}, {}, {}};
}

MSectionLanes GetLanes(const MResonantFilter& section) {
  return {section.c0, section.c1, section.c2, section.d1, section.d2, {}, {}, {}, {}};
}

template <typename State>
void LoadLane(MSectionLanes& lanes, int32_t lane, const State& state) {
  lanes.x1[lane] = state.x1;
  lanes.x2[lane] = state.x2;
  lanes.y1[lane] = state.y1;
  lanes.y2[lane] = state.y2;
}

template <typename State>
void StoreLane(const MSectionLanes& lanes, int32_t lane, State& state) {
  state.Reset();
  if (!MIsFinite(lanes.y1[lane], lanes.y2[lane])) return;
  state.x1 = lanes.x1[lane];
  state.x2 = lanes.x2[lane];
  state.y1 = lanes.y1[lane];
  state.y2 = lanes.y2[lane];
}

// Two channels, the second of which may be the first again: an odd last channel runs beside its own shadow.
template <typename Sample>
struct ChannelPair {
  ChannelPair(Sample* const* channels, int32_t first, int32_t count)
      : addresses{channels[first], channels[std::min(first + 1, count - 1)]} {}
  Sample* addresses[2];
};

// Packs sections and states of two channels, calls `run` on them and stores the states.
template <typename Filter, typename Function>
void RunPacked(std::span<const Filter> sections, typename Filter::State* states, int32_t secondChannel,
               Function run) {
  MSectionLanes lanes[MFilterKernels::kMaximumSections];
  for (std::size_t k = 0; k < sections.size(); ++k) {
    lanes[k] = GetLanes(sections[k]);
    LoadLane(lanes[k], 0, states[k]);
    LoadLane(lanes[k], 1, states[k + static_cast<std::size_t>(secondChannel)]);
  }
  run(lanes);
  for (std::size_t k = 0; k < sections.size(); ++k) {
    StoreLane(lanes[k], 0, states[k]);
    if (secondChannel > 0) StoreLane(lanes[k], 1, states[k + static_cast<std::size_t>(secondChannel)]);
  }
}

void Copy(const float* const* in, float* const* out, int32_t channels, int32_t samples) {
  for (int32_t c = 0; c < channels; ++c)
    for (int32_t i = 0; i < samples; ++i) out[c][i] = MCleanSample(in[c][i]);
}

// Runs at most `longest` sections at a time, the later ones in place.
template <typename Filter, typename Kernel>
void RunCascade(std::span<const Filter> sections, typename Filter::State* states, int32_t places,
                const float* const* in, float* const* out, int32_t channels, int32_t samples,
                std::size_t longest, Kernel kernel) {
  if (samples <= 0) return;
  if (sections.empty()) return Copy(in, out, channels, samples);
  for (int32_t c = 0; c < channels; c += 2) {
    const ChannelPair<const float> input(in, c, channels);
    const ChannelPair<float> output(out, c, channels);
    const float* const* source = input.addresses;
    for (std::size_t done = 0; done < sections.size(); done += longest) {
      const auto part = sections.subspan(done, std::min(longest, sections.size() - done));
      typename Filter::State* const first = states + static_cast<std::ptrdiff_t>(c) * places + done;
      RunPacked(part, first, c + 1 < channels ? places : 0, [&](MSectionLanes* lanes) {
        kernel(lanes, static_cast<int32_t>(part.size()), source, output.addresses, samples);
      });
      source = output.addresses;
    }
  }
}

}  // namespace

void MBiquadCascade::Run(std::span<const MBiquadFilter> sections, MBiquadState* states, int32_t places,
                         const float* const* in, float* const* out, int32_t channels, int32_t samples,
                         const MFilterKernels& kernels) noexcept {
  RunCascade(sections, states, places, in, out, channels, samples, MFilterKernels::kMaximumSections,
             kernels.biquads);
}

void MResonantCascade::Run(std::span<const MResonantFilter> sections, MResonantState* states, int32_t places,
                           const float* const* in, float* const* out, int32_t channels, int32_t samples,
                           const MFilterKernels& kernels) noexcept {
  RunCascade(sections, states, places, in, out, channels, samples, MFilterKernels::kResonantSections,
             kernels.resonant);
}

void MResonantCascade::RunPair(const MResonantFilter& first, const MResonantFilter& second,
                               MResonantState* states, const float* const* in, double* const* out,
                               int32_t channels, int32_t samples, const MFilterKernels& kernels) noexcept {
  if (samples <= 0) return;
  const MResonantFilter sections[] = {first, second};
  for (int32_t c = 0; c < channels; c += 2) {
    const ChannelPair<const float> input(in, c, channels);
    const ChannelPair<double> output(out, c, channels);
    RunPacked(std::span<const MResonantFilter>(sections), states + 2 * c, c + 1 < channels ? 2 : 0,
              [&](MSectionLanes* lanes) {
                kernels.resonantPair(lanes, input.addresses, output.addresses, samples);
              });
  }
}
