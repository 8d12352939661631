#pragma once
// An instrument behind the numbered services. A stream sounds for `length` frames behind its delay and the
// latency; a sample is its volume times what `wave` says for its frame, the same in all channels. It notes
// what its host asks.

#include <functional>
#include <string>
#include <vector>

#include "core/MException.h"
#include "core/MXMLItem.h"
#include "plugin/MHostInterface.h"

class FakeInstrument {
 public:
  static inline int32_t length = 1000;     // of a sound, in frames
  static inline int32_t latency = 0;       // frames in front of later sounds: result 2
  static inline bool makesStreams = true;  // else CreateStream has none
  static inline bool failsToClose = false;
  static inline int32_t loadingResult = -1;  // of the command "FinishLoading"
  static inline double (*wave)(int32_t frame) = [](int32_t) { return 1.0; };
  static inline std::function<void(const std::string&)> note = [](const std::string&) {};

  static inline int32_t openStreams = 0;
  static inline std::vector<double> ratios;  // of all streams that were made
  static inline int32_t channels = 0, sampleRate = 0;

  static void Reset() {
    length = 1000;
    latency = 0;
    makesStreams = true;
    failsToClose = false;
    wave = [](int32_t) { return 1.0; };
    ratios.clear();
  }

  static MWord M_CALL EntryPoint(void*, int32_t service, MServiceArguments* arguments) {
    static MPluginPublicBlock block;
    const auto word = [arguments](int32_t i) { return arguments->slot[i].value; };
    const auto number = [word](int32_t i) { return std::to_string(word(i)).insert(0, 1, ' '); };
    switch (service) {
      case MService::kAttach:
        note("attach");
        return MAsWord(&block);
      case MService::kPublicBlock:
        return MAsWord(&block);
      case MService::kDestroy:
        note("destroy");
        return 0;
      case MService::kLoadState:
        note("load");
        return 0;
      case MService::kStateLoaded:
        note("loaded");
        return 0;
      case MService::kCommand:
        note("command " + std::string(MAsAddress<const char>(word(0))));
        return std::string(MAsAddress<const char>(word(0))) == "FinishLoading" ? loadingResult : 0;
      case MService::kPrepareStreams:
        note("prepare" + number(0) + number(1));
        channels = static_cast<int32_t>(word(0));
        sampleRate = static_cast<int32_t>(word(1));
        return 0;
      case MService::kCreateStream:
        return Create(*MAsAddress<MStreamRequest>(word(0)));
      case MService::kComputeStream:
        note("compute" + number(1));
        return Compute(MAsAddress<float*>(word(0)), static_cast<int32_t>(word(1)),
                       *MAsAddress<Stream>(*MAsAddress<MWord>(word(2))));
      case MService::kCloseStream:
        return Close(*MAsAddress<MWord>(word(0)));
      default:
        return -1;
    }
  }

 private:
  struct Stream {
    double volume;
    int32_t start;  // frame of its sound
    int32_t end;
    int32_t position = 0;
  };

  static MWord Create(const MStreamRequest& request) {
    const std::vector<std::string> numbers = {std::to_string(request.delay), std::to_string(request.volume),
                                              std::to_string(request.ratio)};
    note("create " + numbers[0] + " " + numbers[1] + " " + numbers[2]);
    if (!makesStreams || request.volume < 0) return 1;
    const int32_t start = request.delay + latency;
    *request.result = MAsWord(new Stream{request.volume, start, start + length});
    ++openStreams;
    ratios.push_back(request.ratio);
    return 0;
  }

  static MWord Compute(float** out, int32_t frames, Stream& stream) {
    constexpr float kOfNobody = 99;  // what lies in the buffers of a block that has not begun
    const bool hasBegun = stream.position + frames > stream.start;
    for (int32_t i = 0; i < frames; ++i, ++stream.position) {
      const bool sounds = stream.position >= stream.start && stream.position < stream.end;
      const double sample = sounds ? stream.volume * wave(stream.position - stream.start) : 0;
      for (int32_t c = 0; c < channels; ++c) out[c][i] = hasBegun ? static_cast<float>(sample) : kOfNobody;
    }
    if (!hasBegun) return MStreamResult::kNotStarted;
    return stream.position >= stream.end ? MStreamResult::kEnded : MStreamResult::kSounds;
  }

  static MWord Close(MWord& handle) {
    if (handle == 0) return 0;
    note("close");
    delete MAsAddress<Stream>(handle);
    handle = 0;
    --openStreams;
    if (failsToClose) throw MException("It fails.");
    return 0;
  }
};
