#include "core/MEncodingReader.h"

#include <algorithm>
#include <cstring>

#include "core/MException.h"
#include "core/MTranslate.h"

namespace MEncoding {

int32_t Reader::ReadUnits(MChar* units, int32_t count) {
  if (count < 2) MThrowIndexOutOfRange();
  for (;;) {
    const int32_t available = Fill(Codec::kLongestSequence);
    const bool isLast = available < Codec::kLongestSequence;
    const Piece piece = codec_->DecodePiece(GetBytes(), available, isLast, units, count);
    Skip(piece.bytes);
    last_ = piece;
    if (piece.units > 0 || piece.bytes == 0) return piece.units;
  }
}

void Reader::SetCodec(const Codec& codec, int32_t unread) {
  if (unread < 0 || unread > last_.units) MThrowIndexOutOfRange();
  if (unread > 0) {
    position_ -= last_.bytes;
    MChar scratch[256];
    for (int32_t kept = last_.units - unread; kept > 0;) {
      const int32_t room = std::min<int32_t>(kept, std::size(scratch));
      const Piece piece = codec_->DecodePiece(GetBytes(), fill_ - position_, false, scratch, room);
      if (piece.bytes == 0) break;  // a pair is cut in two, so it is given back whole
      position_ += piece.bytes;
      kept -= piece.units;
    }
  }
  last_ = {};
  codec_ = &codec;
}

bool Reader::DetectUTF16() {
  if (Fill(2) < 2 || GetBytes()[0] != 0xFF || GetBytes()[1] != 0xFE) return false;
  Skip(2);
  codec_ = &UTF16Codec::Get();
  return true;
}

uint8_t Reader::ReadByte() {
  if (Fill(1) < 1) throw MException(Translate("No more data in source stream."));
  const uint8_t byte = *GetBytes();
  Skip(1);
  return byte;
}

int32_t Reader::Fill(int32_t count) {
  last_ = {};
  if (fill_ - position_ < count && position_ > 0) {
    fill_ -= position_;
    std::memmove(buffer_, buffer_ + position_, static_cast<std::size_t>(fill_));
    position_ = 0;
  }
  while (fill_ - position_ < count) {
    const int32_t found = stream_.Read(buffer_ + fill_, kBufferSize - fill_);
    if (found < 1) break;
    fill_ += found;
  }
  return fill_ - position_;
}

void Reader::Skip(int32_t count) noexcept {
  last_ = {};
  position_ += std::clamp(count, 0, fill_ - position_);
}

}  // namespace MEncoding
