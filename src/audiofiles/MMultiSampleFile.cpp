#include "audiofiles/MMultiSampleFile.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "audiofiles/MSampleConversion.h"
#include "core/MFileStream.h"
#include "core/MTranslate.h"
#include "core/MXMLItemIterator.h"
#include "core/MXMLNumber.h"
#include "resources/MLargeResourceFile.h"

namespace {

constexpr int32_t kChunkBytes = 1 << 16;

int64_t ReadWhole(const MXMLItem& item, const MString& name) {
  return item.GetAttribute(name).ToInteger();
}

int32_t ReadNumber32(const MXMLItem& item, const MString& name) {
  return static_cast<int32_t>(std::clamp<int64_t>(ReadWhole(item, name), INT32_MIN, INT32_MAX));
}

[[noreturn]] void ThrowNotAvailable() {
  throw MException(Translate("Sample is not available."));
}

MMultiSampleFile::File ReadFile(const MXMLItem& item) {
  return {ReadNumber32(item, "channels"), ReadNumber32(item, "length"), ReadNumber32(item, "bps"),
          ReadWhole(item, "filestart"), ReadWhole(item, "filesize")};
}

MMultiSampleFile::Take ReadTake(const MXMLItem& item) {
  MMultiSampleFile::Take take = {};
  take.length = std::max(ReadNumber32(item, "length"), 0);
  take.loudness = MReadNumber(item, "rms");
  take.loudestTrack = ReadNumber32(item, "maxrmsindex");
  MXMLItemIterator files(item, "file");
  while (const MXMLItem* const file = files.Next())
    if (take.files.size() < MMultiSampleFile::kMostTracks) take.files.push_back(ReadFile(*file));
  return take;
}

bool IsKnown(int32_t bits) {
  return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

}  // namespace

MMultiSampleFile::MMultiSampleFile(const MString& path) : path_(path) {
  try {
    MXMLItem root;
    library_ =
        std::make_unique<MLargeResourceFile>(std::make_unique<MFileStream>(path, MFileStream::kRead), root);
    ReadIndex(root);
  } catch (MException& failure) {
    failure.AddSource(path);
    throw;
  }
}

MMultiSampleFile::~MMultiSampleFile() = default;

void MMultiSampleFile::ReadIndex(const MXMLItem& root) {
  sampleRate_ = std::max(ReadNumber32(root, "samplerate"), 1);
  MXMLItemIterator tracks(root, "track");
  while (const MXMLItem* const track = tracks.Next())
    if (tracks_.size() < kMostTracks)
      tracks_.push_back(
          {track->GetAttribute("name"), MReadNumber(*track, "volume", 1), MReadNumber(*track, "pan")});
  MXMLItemIterator samples(root, "sample");
  List<int32_t> groups;
  while (const MXMLItem* const sample = samples.Next()) {
    takes_.push_back(ReadTake(*sample));
    groups.push_back(ReadNumber32(*sample, "group"));
  }
  if (takes_.empty()) throw MException(Translate("Empty multisample."));
  FindLayers(groups);
}

void MMultiSampleFile::FindLayers(const List<int32_t>& groups) {
  const double last = takes_.back().loudness;
  const double loudest = last != 0 ? last : 1;
  for (Take& take : takes_) {
    const double loudness = take.loudness / loudest;
    take.loudness = std::isfinite(loudness) ? loudness : 0;
  }
  std::size_t first = 0;
  for (std::size_t i = 0; i < takes_.size(); ++i) {
    if (i + 1 < takes_.size() && groups[i + 1] == groups[i]) continue;
    layers_.push_back({takes_[i].loudness, static_cast<int32_t>(first), static_cast<int32_t>(i)});
    first = i + 1;
  }
}

int32_t MMultiSampleFile::GetLongest() const noexcept {
  int32_t longest = 0;
  for (const Take& take : takes_) longest = std::max(longest, take.length);
  return longest;
}

void MMultiSampleFile::Read(MAudioBuffer& buffer, int32_t take, int32_t track, int32_t limit) const {
  const Take& from = takes_[static_cast<std::size_t>(take)];
  if (track < 0 || track >= static_cast<int32_t>(from.files.size())) ThrowNotAvailable();
  const File& file = from.files[static_cast<std::size_t>(track)];
  if (file.channels < 1 || file.channels > MAudioBuffer::kMaximumChannels || file.length < 0)
    ThrowNotAvailable();
  if (!IsKnown(file.bits))
    throw MException(Translate("Invalid source bitrate."), MErrorCode::kTransferFailed);
  try {
    buffer.SetSize(file.channels, 0);
    buffer.sampleRate = sampleRate_;
    buffer.bitDepth = file.bits;
    ReadSamples(buffer, file, std::min(file.length, limit));
  } catch (MException& failure) {
    buffer.Resize(0, false);
    failure.AddSource(path_);
    throw;
  } catch (...) {
    buffer.Resize(0, false);
    throw;
  }
}

// Memory grows with the bytes that are there: an index may promise any number.
void MMultiSampleFile::ReadSamples(MAudioBuffer& buffer, const File& file, int32_t length) const {
  const MSampleFormat format = {file.channels, file.bits, file.bits == 32};
  const bool isCompressed = library_->HasCompressedItems();
  const std::unique_ptr<MStream> stream = library_->OpenItem(file.start, file.size, isCompressed);
  const int64_t bytes = int64_t{length} * format.GetFrameBytes();
  if (!isCompressed) {
    if (stream->GetSize() < bytes) MStream::ThrowShortRead();
    buffer.Reserve(length);
  }
  uint8_t chunk[kChunkBytes];
  const int32_t most = kChunkBytes / format.GetFrameBytes();
  for (int32_t done = 0; done < length;) {
    const int32_t frames = std::min(most, length - done);
    stream->ReadRequired(chunk, frames * format.GetFrameBytes());
    if (done + frames > buffer.GetCapacity())
      buffer.Reserve(static_cast<int32_t>(std::min<int64_t>(length, int64_t{2} * (done + frames))));
    buffer.Resize(done + frames, false);
    MConvertSamples(buffer, done, format, chunk, frames);
    done += frames;
  }
}
