#include "audiofiles/ampegdecoder.h"

#include <algorithm>
#include <cstring>

#include "audiofiles/MSampleContents.h"
#include "audiofiles/abinfile.h"

namespace mp3dec {

namespace {

constexpr int32_t kFramesToLookAt = 8;
constexpr int32_t kRestartStep = 8;
constexpr int32_t kHistorySamples = 1152;  // that a frame's samples depend on, with room to spare
constexpr int32_t kReservoirBytes = 511;   // how far back a frame of layer III may reach for its bytes
constexpr int32_t kMostSideBytes = 38;     // head, checksum and side information, which are no part of it

}  // namespace

ampegdecoder::ampegdecoder(binfile& source) : source_(source), canSeek_(source.Ioctl(kCanSeek) == 1) {
  if (!PeekHeader(header_))
    MThrowInvalidContents("Error initializing MPEG decoder.", source.Ioctl(kGetPosition));
  bitRate_ = header_.bitRate;
  offset_ = GetFrameBytes();
  if (canSeek_ && header_.layer == 3) LookAhead();
  const int64_t size = source.Ioctl(kGetSize);
  if (size > 0)
    estimatedLength_ = static_cast<int64_t>(static_cast<double>(size) * 8 * header_.sampleRate / bitRate_);
  if (canSeek_) CountFrames();
}

bool ampegdecoder::PeekHeader(MPEGHeader& header) {
  uint8_t bytes[MPEGHeader::kBytes];
  return source_.RawPeek(bytes, sizeof bytes) == sizeof bytes && MPEGHeader::Parse(bytes, header);
}

void ampegdecoder::LookAhead() {
  abinfile window(source_);
  int64_t sum = 0;
  int32_t count = 0;
  uint8_t bytes[MPEGHeader::kBytes];
  MPEGHeader header;
  while (count < kFramesToLookAt && window.RawPeek(bytes, sizeof bytes) == sizeof bytes &&
         MPEGHeader::Parse(bytes, header) && header.Fits(header_)) {
    sum += header.bitRate;
    ++count;
    if (!window.Skip(header.frameBytes)) break;
  }
  bitRate_ = static_cast<int32_t>(sum / count);
}

void ampegdecoder::CountFrames() {
  const int64_t start = source_.Ioctl(kGetPosition);
  MPEGHeader header;
  while (PeekHeader(header) && header.Fits(header_)) {
    const int64_t position = source_.Ioctl(kGetPosition);
    if (!source_.Skip(header.frameBytes)) break;
    frames_.push_back(position);
  }
  source_.RawSeek(start);
}

bool ampegdecoder::DecodeNext(void* pcm) {
  MPEGHeader header;
  if (hasFailed_ || !PeekHeader(header) || !header.Fits(header_)) return false;
  hasFailed_ = !source_.Read(frame_, header.frameBytes) || !decoder_.Decode(frame_, header, pcm);
  if (!hasFailed_) ++next_;
  return !hasFailed_;
}

bool ampegdecoder::DecodeToBuffer() {
  buffered_ = -1;
  offset_ = GetFrameBytes();
  if (!DecodeNext(pcm_)) return false;
  buffered_ = next_ - 1;
  offset_ = 0;
  return true;
}

void ampegdecoder::Close() {
  source_.Close();
  hasFailed_ = true;
  offset_ = GetFrameBytes();
  buffered_ = -1;
}

int32_t ampegdecoder::RawRead(void* bytes, int32_t count) {
  auto* const target = static_cast<uint8_t*>(bytes);
  const int32_t frameBytes = GetFrameBytes();
  int32_t done = 0;
  while (done < count) {
    if (offset_ == frameBytes && count - done >= frameBytes) {
      buffered_ = -1;
      if (!DecodeNext(target + done)) break;
      done += frameBytes;
      continue;
    }
    if (offset_ == frameBytes && !DecodeToBuffer()) break;
    const int32_t copied = std::min(count - done, frameBytes - offset_);
    std::memcpy(target + done, pcm_ + offset_, static_cast<std::size_t>(copied));
    offset_ += copied;
    done += copied;
  }
  return done;
}

int32_t ampegdecoder::RawPeek(void* bytes, int32_t count) {
  if (count < 1 || (offset_ == GetFrameBytes() && !DecodeToBuffer())) return 0;
  count = std::min(count, GetFrameBytes() - offset_);
  std::memcpy(bytes, pcm_ + offset_, static_cast<std::size_t>(count));
  return count;
}

// The frame to begin with so that frame `index` comes out as if all had been decoded.
int64_t ampegdecoder::FindRestart(int64_t index) const noexcept {
  int64_t first = index - (kHistorySamples + header_.samples - 1) / header_.samples;
  for (int64_t reservoir = 0; header_.layer == 3 && first > 0 && reservoir < kReservoirBytes;) {
    --first;
    reservoir += std::max<int64_t>(frames_[first + 1] - frames_[first] - kMostSideBytes, 0);
  }
  // libmpg123's filter bank adds in an order that depends on the frames before; it repeats after eight.
  return std::max<int64_t>(first, 0) / kRestartStep * kRestartStep;
}

void ampegdecoder::DecodeUpTo(int64_t index) {
  const int64_t restart = FindRestart(index);
  if (hasFailed_ || next_ > index || next_ < restart) {
    source_.RawSeek(frames_[restart]);
    decoder_.Restart();
    hasFailed_ = false;
    next_ = restart;
  }
  while (next_ < index && DecodeNext(pcm_)) {
  }
}

int64_t ampegdecoder::RawSeek(int64_t position) {
  const auto count = static_cast<int64_t>(frames_.size());
  if (count == 0) return -1;
  const int64_t frameBytes = GetFrameBytes();
  position = std::clamp<int64_t>(position, 0, count * frameBytes);
  const int64_t index = std::min(position / frameBytes, count - 1);
  const auto offset = static_cast<int32_t>(position - index * frameBytes);  // the whole frame at the end
  if (index != buffered_) {
    buffered_ = -1;
    offset_ = GetFrameBytes();
    DecodeUpTo(index);
    if (offset == 0 || !DecodeToBuffer()) return GetPosition();
  }
  offset_ = offset;
  return GetPosition();
}

int64_t ampegdecoder::RawIoctl(int32_t request, MWord, MWord) {
  if (request == kGetPosition) return GetPosition();
  if (request == kGetSize) return frames_.empty() ? -1 : GetFrameCount() * GetFrameBytes();
  if (request == kCanSeek) return !frames_.empty();
  if (request == kHasEnded) {
    uint8_t byte;
    return RawPeek(&byte, 1) == 0;
  }
  return -1;
}

}  // namespace mp3dec
