#pragma once
#include "dsp/MEnvelopeComputer.h"
#include "dsp/MSampleReading.h"
#include "plugin/MAudioStreamPlugin.h"

class MAudioBuffer;

// The first of start, start + step, start + 2 step and so on that is not below `end`, by its number from 0 to
// `count`, which stands for none. The step is above 0. [audio]
int32_t MStepsBelow(double end, double start, double step, int32_t count) noexcept;

// Fills the row "delay": seconds of silence in front of a recording, or below 0 what is cut off its
// beginning.
void AddSampleDelayParameter(MPluginParameter& row);

// A note that plays a recording: what Playbox, Layerbox and Grainloom have in common. Places are in samples
// of the recording, in front of it where they are below 0; the note has ended at or behind `length`.
struct MSampleStream : MAudioStream {
  static constexpr int32_t kChunk = MSampleReading::kMost;  // samples are computed at a time

  double position = 0;
  double speed = 1;  // samples of the recording per sample of output; exactly 1 is a copy
  int32_t length = 0;
  double volume = 1;
  bool hasEnvelope = false;
  MEnvelopeComputer envelope;

  // Begins at -(delay x output rate), truncated toward zero; the row of the delay is limited to a minute.
  void SetStart(const MPluginParameter& seconds, int32_t outputRate) noexcept;
  // The speed of a note: recording's rate x ratio / output rate, 1 if it is within 1e-50 of that.
  void SetSpeed(int32_t recordingRate, double ratio, int32_t outputRate) noexcept;
  // Takes a copy of a curve of gains over 0 to 1, if one of its points is not 1 within 1e-50, and spreads it
  // over `length`. A curve that stays at zero from some place on cuts the length to that.
  void SetEnvelope(const MEnvelopeData& curve);

  // volume x envelope at `count`, at most kChunk, samples of output from `place` on, which never goes back.
  // [audio]
  void ReadGains(float* gains, double place, int32_t count) noexcept;

  // Fills out[c][first] to out[c][end - 1] with channel c modulo the recording's, and moves on. Returns
  // whether the note has ended. [audio]
  bool Play(const MAudioBuffer& recording, float** out, int32_t channels, int32_t first,
            int32_t end) noexcept;
};
