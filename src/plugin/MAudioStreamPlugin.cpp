#include "plugin/MAudioStreamPlugin.h"

#include <algorithm>
#include <cmath>

#include "core/MFlushDenormals.h"
#include "core/MGuard.h"

namespace {

MStreamRequest Limit(MStreamRequest request) noexcept {
  request.delay = std::max(request.delay, 0);
  if (!std::isfinite(request.volume)) request.volume = 0;
  request.volume = std::clamp(request.volume, -1e15, 1e15);
  if (!std::isfinite(request.ratio) || request.ratio <= 0) request.ratio = 1;
  request.ratio = std::clamp(request.ratio, 1e-6, 1e6);
  return request;
}

}  // namespace

MWord MAudioStreamPlugin::Service(int32_t service, MServiceArguments* arguments) {
  const auto word = [arguments](int32_t index) { return GetWord(arguments, index); };
  const auto number = [arguments](int32_t index) { return GetNumber(arguments, index); };
  switch (service) {
    case MService::kPrepareStreams:
      return Prepare(number(0), number(1));
    case MService::kCreateStream:
      return CreateStream(MAsAddress<MStreamRequest>(word(0)));
    case MService::kComputeStream: {
      float** const out = MAsAddress<float*>(word(0));
      if (!AreAllThere(out, channels_)) return MStreamResult::kNotStarted;
      const MFlushDenormals flush;
      return ComputeStream(out, std::max(number(1), 0), MAsAddress<MWord>(word(2)));
    }
    case MService::kStreamQuery:
      return StreamQuery(word(0), word(1));
    case MService::kCloseStream:
      return CloseStream(MAsAddress<MWord>(word(0)));
    case MService::kCollectFiles:
      return word(0) != 0 ? CollectFiles(MAsAddress<MCollectedFiles>(word(0))) : 0;
    default:
      return MPlugin::Service(service, arguments);
  }
}

int32_t MAudioStreamPlugin::Prepare(int32_t channels, int32_t sampleRate) {
  channels_ = std::max(channels, 0);
  sampleRate_ = sampleRate;
  Update();
  return 0;
}

int32_t MAudioStreamPlugin::CreateStream(MStreamRequest* request) {
  if (!request || !request->result) return 1;
  MAudioStream* stream = nullptr;
  MRunGuarded(createPlace_, [&] {
    const MStreamRequest limited = Limit(*request);
    stream = NewStream(limited);
    if (stream) stream->delay = limited.delay;
  });
  if (!stream) return 1;
  *request->result = MAsWord(stream);
  return 0;
}

int32_t MAudioStreamPlugin::ComputeStream(float** out, int32_t samples, MWord* handle) {
  MAudioStream* const stream = handle ? MAsAddress<MAudioStream>(*handle) : nullptr;
  if (!stream) {
    ClearBlock(out, 0, samples);
    return MStreamResult::kEnded;
  }
  if (stream->delay >= samples) {
    stream->delay -= samples;
    return MStreamResult::kNotStarted;
  }
  const int32_t first = std::exchange(stream->delay, 0);
  ClearBlock(out, 0, first);
  return Render(*stream, out, first, samples);
}

int32_t MAudioStreamPlugin::CloseStream(MWord* handle) {
  if (handle && *handle) FreeStream(MAsAddress<MAudioStream>(std::exchange(*handle, 0)));
  return 0;
}

void MAudioStreamPlugin::ClearBlock(float** out, int32_t first, int32_t end) const noexcept {
  for (int32_t c = 0; c < channels_; ++c) std::fill(out[c] + first, out[c] + std::max(first, end), 0.0f);
}
