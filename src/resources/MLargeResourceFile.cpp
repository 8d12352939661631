#include "resources/MLargeResourceFile.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "core/MBZIPStream.h"
#include "core/MException.h"
#include "core/MMD5Stream.h"
#include "core/MMemoryStream.h"
#include "core/MSizeStream.h"
#include "core/MStreamTools.h"
#include "core/MTranslate.h"
#include "core/MXMLItem.h"
#include "core/MZLibStream.h"

namespace {

struct Tail {
  static constexpr int32_t kSize = 28;

  uint8_t digest[16];
  uint32_t length, lengthHigh, flags;

  explicit Tail(MStream& stream) {
    uint8_t bytes[kSize];
    stream.ReadRequired(bytes, kSize);
    std::memcpy(digest, bytes, sizeof digest);
    length = Word(bytes + 16);
    lengthHigh = Word(bytes + 20);
    flags = Word(bytes + 24);
  }

  static uint32_t Word(const uint8_t* bytes) noexcept {
    uint32_t value = 0;
    for (int32_t i = 3; i >= 0; --i) value = value << 8 | bytes[i];
    return value;
  }
};

[[noreturn]] void ThrowInvalid() {
  throw MException(Translate("Invalid large resource library format."), MErrorCode::kTransferFailed);
}

// Whatever the encoding, a mark has one of these bytes: the last of an overlong form in UTF-8 has its high
// bit set.
void CheckMarks(MMemoryStream& text) {
  const uint8_t* const bytes = text.GetData();
  const auto isMark = [](uint8_t byte) { return (byte & 0x7F) == '<' || (byte & 0x7F) == '='; };
  if (std::count_if(bytes, bytes + text.GetSize(), isMark) > MLargeResourceFile::kMostIndexMarks)
    ThrowInvalid();
}

void CheckDigest(const MMemoryStream& text, int32_t size, const uint8_t (&expected)[16]) {
  MMD5Stream hash;
  hash.Write(text.GetData(), size);
  hash.Finish();
  MMemoryStream digest;
  hash.WriteDigest(digest);
  if (std::memcmp(digest.GetData(), expected, sizeof expected) != 0)
    throw MException(Translate("Resource library file is corrupt."), MErrorCode::kTransferFailed);
}

}  // namespace

MLargeResourceFile::MLargeResourceFile(std::unique_ptr<MStream> file, MXMLItem& root)
    : file_(std::move(file)) {
  const int64_t end = file_->GetSize() - Tail::kSize;
  if (end < 0) MStream::ThrowShortRead();
  file_->Seek(end, MSeekOrigin::kStart);
  const Tail tail(*file_);
  if (tail.lengthHigh != 0 || tail.length > uint32_t{kLongestIndex}) ThrowInvalid();
  flags_ = tail.flags;
  itemsSize_ = end - int64_t{tail.length};
  if (itemsSize_ < 0) MStream::ThrowShortRead();

  file_->Seek(itemsSize_, MSeekOrigin::kStart);
  MSizeStream window(file_.get(), tail.length, false, false);
  MMemoryStream text;
  MCopyStream(window, text);
  if (text.GetSize() < int64_t{tail.length}) MStream::ThrowShortRead();
  text.Seek(0, MSeekOrigin::kStart);
  if (flags_ & kIndexCompressed) {
    MMemoryStream stored(text);
    text.Clear();
    MCopyStream(*Decompress(stored, kLongestIndexText), text);
    text.Seek(0, MSeekOrigin::kStart);
  }
  CheckDigest(text, static_cast<int32_t>(text.GetSize()), tail.digest);
  CheckMarks(text);
  root.Load(text);
}

std::unique_ptr<MStream> MLargeResourceFile::OpenItem(int64_t offset, int64_t size, bool isCompressed) const {
  offset = std::clamp<int64_t>(offset, 0, itemsSize_);
  file_->Seek(offset, MSeekOrigin::kStart);
  if (!isCompressed)
    return std::unique_ptr<MStream>(
        new MSizeStream(file_.get(), std::min(size, itemsSize_ - offset), false, true));
  std::unique_ptr<MStream> content = Decompress(*file_, std::numeric_limits<int64_t>::max());
  std::unique_ptr<MStream> window(new MSizeStream(content.get(), size, true, false));
  content.release();
  return window;
}

// A filter that gives at most `limit` bytes, or raises.
std::unique_ptr<MStream> MLargeResourceFile::Decompress(MStream& stored, int64_t limit) const {
  std::unique_ptr<MCompressionStream> filter;
  if (flags_ & kBZIP)
    filter.reset(new MBZIPStream(&stored, false));
  else
    filter.reset(new MZLibStream(&stored, false));
  filter->SetReadLimit(limit);
  return filter;
}
