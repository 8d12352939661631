#pragma once
#include <vector>

#include "audiofiles/MPEGFrameDecoder.h"
#include "audiofiles/binfile.h"
#include "core/MMemory.h"

namespace mp3dec {

// The decoder: reads frames from a binfile, and can itself be read as one, whose bytes are the samples,
// interleaved 16-bit integers of this machine's byte order. All frames of layer, version, rate and channels
// of the first one that follow each other without a gap belong to it; whatever comes then ends it quietly, a
// tag, a frame that is cut off or one that cannot be decoded. Each gives all of its samples: an encoder's
// delay and padding stay, and so does an info frame, as silence.
class ampegdecoder final : public binfile {
 public:
  // Counts the frames of a source that can seek, which is then at its first frame again. What does not begin
  // with a frame raises "Error initializing MPEG decoder."
  explicit ampegdecoder(binfile& source);

  const MPEGHeader& GetHeader() const noexcept { return header_; }  // of the first frame
  int32_t GetFrameBytes() const noexcept { return header_.samples * header_.channels * 2; }
  // How many frames there are, -1 if the source cannot seek.
  int64_t GetFrameCount() const noexcept { return canSeek_ ? static_cast<int64_t>(frames_.size()) : -1; }
  // How many frames have been read: the last one's number, counted from 1.
  int64_t GetFrameNumber() const noexcept { return next_; }
  // In bits per second, of the first frame; of layer III, in a source that can seek, the average of up to
  // eight.
  int32_t GetBitRate() const noexcept { return bitRate_; }
  // In samples, from the source's size and the bit rate; 0 if the size is not known.
  int64_t GetEstimatedLength() const noexcept { return estimatedLength_; }

  void Close() override;
  int32_t RawRead(void* bytes, int32_t count) override;
  // No further than to the end of a frame.
  int32_t RawPeek(void* bytes, int32_t count) override;
  // Limited to 0 to the end of the last frame. What is read there is what reading from the start would give.
  int64_t RawSeek(int64_t position) override;
  int64_t RawIoctl(int32_t request, MWord a, MWord b) override;

 private:
  bool PeekHeader(MPEGHeader& header);
  void LookAhead();
  void CountFrames();
  bool DecodeNext(void* pcm);
  bool DecodeToBuffer();
  int64_t GetPosition() const noexcept { return next_ * GetFrameBytes() - (GetFrameBytes() - offset_); }
  int64_t FindRestart(int64_t index) const noexcept;
  void DecodeUpTo(int64_t index);

  binfile& source_;
  bool canSeek_;
  MPEGHeader header_{};
  int32_t bitRate_ = 0;
  int64_t estimatedLength_ = 0;
  std::vector<int64_t, MAllocator<int64_t>> frames_;  // where each begins
  MPEGFrameDecoder decoder_;
  bool hasFailed_ = false;
  int64_t next_ = 0;       // the frame that is read next
  int32_t offset_ = 0;     // in the buffer's frame, the one before the next; all of it when there is none
  int64_t buffered_ = -1;  // the frame in the buffer
  uint8_t frame_[MPEGHeader::kMostFrameBytes];
  uint8_t pcm_[MPEGHeader::kMostSamples * 2 * 2];
};

}  // namespace mp3dec
