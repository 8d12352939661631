#pragma once
#include "audiofiles/bufferedbinfile.h"

namespace mp3dec {

// The bytes of the first audio stream (0xC0 to 0xDF) of a program stream, ISO/IEC 11172-1 or 13818-1, that
// begins where `base` stands. A broken packet ends it. Going back reads from the start again. Closing it
// closes `base`.
class mpegsplitstream final : public bufferedbinfile {
 public:
  explicit mpegsplitstream(binfile& base) : base_(base), start_(base.Ioctl(kGetPosition)) {}

  void Close() override;
  int64_t RawSeek(int64_t position) override;
  // kGetSize gives -1: it is not known.
  int64_t RawIoctl(int32_t request, MWord a, MWord b) override;

 private:
  int32_t Fetch(uint8_t* bytes, int32_t count) override;
  bool NextPacket();
  bool SkipPack();
  bool ReadPacket();
  bool SkipPacketHead();

  binfile& base_;
  int64_t start_;
  uint32_t id_ = 0;  // of the audio stream, 0 before its first packet
  int32_t packetLeft_ = 0;
  bool hasEnded_ = false;
};

}  // namespace mp3dec
