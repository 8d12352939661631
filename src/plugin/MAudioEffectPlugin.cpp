#include "plugin/MAudioEffectPlugin.h"

#include <algorithm>
#include <cstring>

#include "core/MFlushDenormals.h"

MWord MAudioEffectPlugin::Service(int32_t service, MServiceArguments* arguments) {
  const auto word = [arguments](int32_t index) { return GetWord(arguments, index); };
  const auto number = [arguments](int32_t index) { return GetNumber(arguments, index); };
  switch (service) {
    case MService::kPrepare:
      return Prepare(number(0), number(1));
    case MService::kProcess: {
      float** const in = MAsAddress<float*>(word(0));
      float** const out = MAsAddress<float*>(word(1));
      const int32_t samples = std::max(number(2), 0);
      if (samples > 0 && (!AreAllThere(in, channels_) || !AreAllThere(out, channels_))) return 0;
      const MFlushDenormals flush;
      Process(in, out, samples);
      return 0;
    }
    case MService::kIsSilent:
      return IsSilent();
    case MService::kGetLatency:
      return GetLatency();
    case MService::kSkip: {
      const MFlushDenormals flush;
      Skip(std::max(number(0), 0));
      return 0;
    }
    default:
      return MPlugin::Service(service, arguments);
  }
}

int32_t MAudioEffectPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  channels_ = std::max(channels, 0);
  sampleRate_ = sampleRate;
  Update();
  return 0;
}

void MAudioEffectPlugin::CopyChannels(float** in, float** out, int32_t first, int32_t end,
                                      int32_t samples) noexcept {
  for (int32_t c = first; c < end && samples > 0; ++c)
    if (in[c] != out[c]) std::memmove(out[c], in[c], static_cast<std::size_t>(samples) * sizeof(float));
}
