#include "hosts/bridge/TailProbe.h"

#include <algorithm>
#include <vector>

#include "hosts/bridge/Plugin.h"

namespace bridge {

namespace {

constexpr int32_t kBlock = 1024;
constexpr int64_t kMostSeconds = 60;

}  // namespace

int64_t MeasureTail(const PluginType& type, MXMLItem& state, int32_t channels, int32_t sampleRate) {
  Plugin effect(type.entryPoint);
  effect.LoadState(state);
  effect.Prepare(channels, sampleRate);
  std::vector<float> samples(static_cast<std::size_t>(channels) * kBlock);
  std::vector<float*> planes(static_cast<std::size_t>(channels));
  for (std::size_t c = 0; c < planes.size(); ++c) planes[c] = samples.data() + c * kBlock;
  uint32_t noise = 1;
  for (int64_t done = 0; done < sampleRate; done += kBlock) {
    for (float& sample : samples) {
      noise = noise * 1664525u + 1013904223u;
      sample = static_cast<float>(static_cast<int32_t>(noise)) * 0x1p-31f;
    }
    effect.Process(planes.data(), planes.data(), kBlock);
  }
  for (int64_t tail = 0; tail < kMostSeconds * sampleRate; tail += kBlock) {
    if (effect.IsSilent()) return tail;
    std::fill(samples.begin(), samples.end(), 0.0f);
    effect.Process(planes.data(), planes.data(), kBlock);
  }
  return kEndlessTail;
}

}  // namespace bridge
