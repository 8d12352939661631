#pragma once
#include "audiofiles/MPEGHeader.h"
#include "core/MObject.h"

struct mpg123_handle_struct;

namespace mp3dec {

// Decodes whole frames, one at a time and in their order, with libmpg123. The library's own search for
// frames, cutting of encoder delay, info frames and gain tags are off: what goes in are the frames that we
// found, what comes out is every sample of each. It takes its memory past the allocator table, for it has no
// hook.
class MPEGFrameDecoder final : public MObject {
 public:
  // Raises "Out of memory."
  MPEGFrameDecoder();
  MPEGFrameDecoder(const MPEGFrameDecoder&) = delete;
  MPEGFrameDecoder& operator=(const MPEGFrameDecoder&) = delete;
  ~MPEGFrameDecoder() override;

  // Forgets all frames before.
  void Restart();
  // Writes the samples of a frame, interleaved as 16-bit integers of this machine's byte order. A frame of
  // layer III that needs bytes of frames before that were never decoded is silence. False if `frame` cannot
  // be decoded.
  bool Decode(const uint8_t* frame, const MPEGHeader& header, void* pcm);

 private:
  mpg123_handle_struct* handle_;
};

}  // namespace mp3dec
