#include "audiofiles/MPEGFrameDecoder.h"

#include <mpg123.h>

#include "core/MMemory.h"

namespace mp3dec {

namespace {

constexpr long kFlags = MPG123_QUIET | MPG123_NO_RESYNC | MPG123_IGNORE_INFOFRAME |
                        MPG123_IGNORE_STREAMLENGTH | MPG123_SKIP_ID3V2 | MPG123_NO_READAHEAD |
                        MPG123_NO_FRANKENSTEIN;
constexpr long kRates[] = {44100, 48000, 32000, 22050, 24000, 16000, 11025, 12000, 8000};

bool Prepare(mpg123_handle* handle) {
  bool done = mpg123_param(handle, MPG123_FLAGS, kFlags, 0) == MPG123_OK &&
              mpg123_param(handle, MPG123_RVA, MPG123_RVA_OFF, 0) == MPG123_OK &&
              mpg123_format_none(handle) == MPG123_OK;
  for (const long rate : kRates)
    done =
        done && mpg123_format(handle, rate, MPG123_MONO | MPG123_STEREO, MPG123_ENC_SIGNED_16) == MPG123_OK;
  return done && mpg123_open_feed(handle) == MPG123_OK;
}

}  // namespace

MPEGFrameDecoder::MPEGFrameDecoder() : handle_(mpg123_new(nullptr, nullptr)) {
  if (handle_ && Prepare(handle_)) return;
  mpg123_delete(handle_);
  MThrowOutOfMemory();
}

MPEGFrameDecoder::~MPEGFrameDecoder() {
  mpg123_delete(handle_);
}

void MPEGFrameDecoder::Restart() {
  if (mpg123_open_feed(handle_) != MPG123_OK) MThrowOutOfMemory();
}

bool MPEGFrameDecoder::Decode(const uint8_t* frame, const MPEGHeader& header, void* pcm) {
  const auto wanted =
      static_cast<std::size_t>(header.samples) * static_cast<std::size_t>(header.channels) * 2;
  std::size_t done = 0;
  std::size_t count = static_cast<std::size_t>(header.frameBytes);
  // The first frame only tells the format at the first call.
  for (int call = 0; call < 3 && done < wanted; ++call) {
    std::size_t written = 0;
    const int result =
        mpg123_decode(handle_, frame, count, static_cast<uint8_t*>(pcm) + done, wanted - done, &written);
    done += written;
    if (result != MPG123_OK && result != MPG123_NEW_FORMAT) break;
    frame = nullptr;
    count = 0;
  }
  return done == wanted;
}

}  // namespace mp3dec
