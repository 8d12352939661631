#include "tests/audiofiles/MadDecoder.h"

#include <mad.h>

#include <algorithm>
#include <cstdint>

MadSound DecodeWithMad(const std::string& bytes) {
  std::vector<unsigned char> guarded(bytes.begin(), bytes.end());
  guarded.insert(guarded.end(), MAD_BUFFER_GUARD, 0);
  mad_stream stream;
  mad_frame frame;
  mad_synth synth;
  mad_stream_init(&stream);
  mad_frame_init(&frame);
  mad_synth_init(&synth);
  mad_stream_buffer(&stream, guarded.data(), guarded.size());
  MadSound sound;
  while (mad_frame_decode(&frame, &stream) == 0) {
    mad_synth_frame(&synth, &frame);
    sound.rate = static_cast<int>(synth.pcm.samplerate);
    sound.channels.resize(synth.pcm.channels);
    for (unsigned c = 0; c < synth.pcm.channels; ++c)
      for (unsigned i = 0; i < synth.pcm.length; ++i)
        sound.channels[c].push_back(
            std::clamp(mad_f_todouble(synth.pcm.samples[c][i]), -1.0, 32767.0 / 32768));
    ++sound.frames;
  }
  mad_synth_finish(&synth);
  mad_frame_finish(&frame);
  mad_stream_finish(&stream);
  return sound;
}
