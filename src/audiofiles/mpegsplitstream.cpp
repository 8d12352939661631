#include "audiofiles/mpegsplitstream.h"

#include <algorithm>

namespace mp3dec {

namespace {

constexpr uint32_t kPackCode = 0x1BA;
constexpr uint32_t kFirstWithLength = 0x1BB;
constexpr uint32_t kHighestCode = 0x1FF;
constexpr int32_t kMostStuffing = 16;  // of an MPEG-1 packet

bool IsAudio(uint32_t code) {
  return code >= 0x1C0 && code <= 0x1DF;
}

}  // namespace

void mpegsplitstream::Close() {
  base_.Close();  // else going back would begin again
  packetLeft_ = 0;
  hasEnded_ = true;
  Restart(GetPosition());
}

int32_t mpegsplitstream::Fetch(uint8_t* bytes, int32_t count) {
  int32_t done = 0;
  while (done < count && !hasEnded_) {
    if (packetLeft_ == 0) {
      hasEnded_ = !NextPacket();
      continue;
    }
    const int32_t wanted = std::min(count - done, packetLeft_);
    const int32_t read = base_.RawRead(bytes + done, wanted);
    done += read;
    packetLeft_ -= read;
    hasEnded_ = read < wanted;
  }
  return done;
}

// Goes to the payload of the stream's next packet. False at the end and at what is no packet.
bool mpegsplitstream::NextPacket() {
  uint32_t code;
  while (base_.Read32(code)) {
    if (code == kPackCode) {
      if (!SkipPack()) return false;
      continue;
    }
    if (code < kFirstWithLength || code > kHighestCode) return false;  // 0x1B9, the end, as well
    if (IsAudio(code) && (id_ == 0 || id_ == code)) {
      id_ = code;
      return ReadPacket();
    }
    uint32_t length;
    if (!base_.Read16(length) || !base_.Skip(length)) return false;
  }
  return false;
}

bool mpegsplitstream::SkipPack() {
  uint8_t first;
  if (base_.RawPeek(&first, 1) < 1) return false;
  if (first >> 4 == 2) return base_.Skip(8);  // MPEG-1
  uint8_t stuffing;
  return first >> 6 == 1 && base_.Skip(9) && base_.Read(&stuffing, 1) && base_.Skip(stuffing & 7);
}

bool mpegsplitstream::ReadPacket() {
  uint32_t length;
  if (!base_.Read16(length)) return false;
  const int64_t end = base_.Ioctl(kGetPosition) + length;
  if (!SkipPacketHead()) return false;
  const int64_t left = end - base_.Ioctl(kGetPosition);
  packetLeft_ = static_cast<int32_t>(std::max<int64_t>(left, 0));
  return left >= 0;
}

bool mpegsplitstream::SkipPacketHead() {
  uint8_t byte;
  if (!base_.Read(&byte, 1)) return false;
  if (byte >> 6 == 2) {  // MPEG-2: flags, then the length of what they announce
    uint8_t length;
    return base_.Skip(1) && base_.Read(&length, 1) && base_.Skip(length);
  }
  for (int32_t i = 0; i < kMostStuffing && byte == 0xFF; ++i)
    if (!base_.Read(&byte, 1)) return false;
  if (byte >> 6 == 1 && !(base_.Skip(1) && base_.Read(&byte, 1))) return false;  // size of the buffer
  if (byte >> 4 == 2) return base_.Skip(4);                                      // one time stamp
  if (byte >> 4 == 3) return base_.Skip(9);                                      // two
  return byte == 0x0F;                                                           // none
}

int64_t mpegsplitstream::RawSeek(int64_t position) {
  position = std::max<int64_t>(position, 0);
  if (!MoveInBuffer(position) && position < GetPosition()) {
    if (base_.RawSeek(start_) != start_) return -1;
    packetLeft_ = 0;
    hasEnded_ = false;
    Restart(0);
  }
  ReadOnTo(position);
  return GetPosition();
}

int64_t mpegsplitstream::RawIoctl(int32_t request, MWord, MWord) {
  if (request == kGetPosition) return GetPosition();
  if (request == kCanSeek) return base_.Ioctl(kCanSeek);
  if (request == kHasEnded) {
    uint8_t byte;
    return RawPeek(&byte, 1) == 0;
  }
  return -1;
}

}  // namespace mp3dec
