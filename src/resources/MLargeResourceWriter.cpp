#include "resources/MLargeResourceWriter.h"

#include <utility>

#include "core/MBZIPStream.h"
#include "core/MException.h"
#include "core/MMD5Stream.h"
#include "core/MMemoryStream.h"
#include "core/MTranslate.h"
#include "core/MXMLItem.h"
#include "core/MZLibStream.h"
#include "resources/MLargeResourceFile.h"

namespace {

void WriteNumber(MStream& target, uint64_t number, int32_t size) {
  uint8_t bytes[8];
  for (int32_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(number >> (8 * i));
  target.Write(bytes, size);
}

void WriteDigest(MStream& target, MMemoryStream& text) {
  MMD5Stream hash;
  hash.Write(text.GetData(), static_cast<int32_t>(text.GetSize()));
  hash.Finish();
  hash.WriteDigest(target);
}

}  // namespace

MLargeResourceWriter::MLargeResourceWriter(MStream& target, Compression compression) noexcept
    : target_(target), compression_(compression) {}

MLargeResourceWriter::~MLargeResourceWriter() {
  try {
    if (filter_) filter_->Close();
  } catch (const MException&) {
    // An item that was not ended is given up.
  }
}

MStream& MLargeResourceWriter::BeginItem() {
  item_.start = target_.GetPosition();
  filter_ = MakeFilter(target_);
  return filter_ ? static_cast<MStream&>(*filter_) : target_;
}

MLargeResourceWriter::Place MLargeResourceWriter::EndItem() {
  if (filter_) {
    filter_->Finish();
    item_.size = filter_->GetPosition();
    filter_.reset();
  } else {
    item_.size = target_.GetPosition() - item_.start;
  }
  return item_;
}

void MLargeResourceWriter::Finish(const MXMLItem& index) {
  MMemoryStream text;
  index.Save(text, true);
  MMemoryStream stored;
  if (const std::unique_ptr<MCompressionStream> filter = MakeFilter(stored)) {
    filter->Write(text.GetData(), static_cast<int32_t>(text.GetSize()));
    filter->Finish();
  } else {
    stored.Write(text.GetData(), static_cast<int32_t>(text.GetSize()));
  }
  if (stored.GetSize() > MLargeResourceFile::kLongestIndex ||
      text.GetSize() > MLargeResourceFile::kLongestIndexText)
    throw MException(Translate("Invalid large resource library format."), MErrorCode::kTransferFailed);
  target_.Write(stored.GetData(), static_cast<int32_t>(stored.GetSize()));
  WriteDigest(target_, text);
  WriteNumber(target_, static_cast<uint64_t>(stored.GetSize()), 8);
  uint32_t flags = 0;
  if (compression_ != Compression::kNone)
    flags = MLargeResourceFile::kItemsCompressed | MLargeResourceFile::kIndexCompressed;
  if (compression_ == Compression::kBZIP) flags |= MLargeResourceFile::kBZIP;
  WriteNumber(target_, flags, 4);
}

// None where nothing is compressed.
std::unique_ptr<MCompressionStream> MLargeResourceWriter::MakeFilter(MStream& target) const {
  if (compression_ == Compression::kNone) return nullptr;
  if (compression_ == Compression::kZLib) return std::make_unique<MZLibStream>(&target, true);
  return std::make_unique<MBZIPStream>(&target, true);
}
