#include "audiofiles/MSubSampleLibrary.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>

#include "audiofiles/MSampleContents.h"
#include "core/MFileStream.h"
#include "core/MTranslate.h"

namespace {

static_assert(std::endian::native == std::endian::little);

constexpr int64_t kValueSize = sizeof(float);
constexpr char kInvalidFields[] = "Subsample library contains invalid fields.";
constexpr char kInvalidData[] = "Subsample library contains invalid data.";

// A part of the header, with numbers read out of it at their places.
template <int32_t size>
class Record {
 public:
  static constexpr int32_t kSize = size;

  explicit Record(MStream& stream) { stream.ReadRequired(bytes_, kSize); }

  template <typename Number = int32_t>
  Number Get(int32_t place) const noexcept {
    Number number;
    std::memcpy(&number, bytes_ + place, sizeof number);
    return number;
  }

 private:
  uint8_t bytes_[kSize];
};
using Start = Record<76>;
using Head = Record<20>;
using SoundRecord = Record<28>;

bool IsIn(int32_t value, int32_t low, int32_t high) noexcept {
  return value >= low && value <= high;
}

// Without a limit of 32 bits.
void ReadBytes(MStream& stream, float* values, int64_t count) {
  constexpr int64_t kMost = 1 << 28;
  for (int64_t done = 0; done < count; done += kMost)
    stream.ReadRequired(values + done, static_cast<int32_t>(std::min(kMost, count - done) * kValueSize));
}

}  // namespace

MSubSampleLibrary::MSubSampleLibrary(const MString& path) : path_(path) {
  MFileStream file(path, MFileStream::kRead);
  try {
    rate_ = Start(file).Get(0);
    if (!IsIn(rate_, 22050, 192000)) MThrowInvalidContents(kInvalidFields, 0);
    for (Band& band : bands_) ReadBand(file, band);
    dataStart_ = file.GetPosition();
  } catch (MException& raised) {
    raised.AddSource(path);
    throw;
  }
}

void MSubSampleLibrary::ReadBand(MFileStream& file, Band& band) {
  const Head head(file);
  band.firstBin = head.Get(0);
  band.binCount = head.Get(4);
  const int32_t count = head.Get(8);
  if (!IsIn(band.firstBin, 0, kBins - 1) || !IsIn(band.binCount, 1, kBins) || !IsIn(count, 0, kMostSounds))
    MThrowInvalidContents(kInvalidFields, file.GetPosition() - Head::kSize);
  for (int32_t i = 0; i < count; ++i) {
    const SoundRecord record(file);
    MSubSample sound;
    sound.frames = record.Get(0);
    sound.length = std::max(record.Get(4), 0);
    sound.channels = record.Get(8);
    sound.offset = record.Get<int64_t>(12);
    if (sound.frames < 0 || !IsIn(sound.channels, 1, 8) || sound.offset < 0)
      MThrowInvalidContents(kInvalidData, file.GetPosition() - SoundRecord::kSize);
    band.sounds.push_back(std::move(sound));
  }
}

int32_t MSubSampleLibrary::GetLargestCount() const noexcept {
  int32_t largest = 0;
  for (const Band& band : bands_) largest = std::max(largest, band.GetCount());
  return largest;
}

const float* MSubSampleLibrary::Read(int32_t band, int32_t sound) {
  if (!IsIn(band, 0, kBands - 1) || !IsIn(sound, 0, bands_[band].GetCount() - 1))
    throw MException(Translate("Invalid subsample index."));
  const MLocker locked(lock_);
  MSubSample& wanted = bands_[band].sounds[static_cast<std::size_t>(sound)];
  if (!wanted.isRead_) ReadData(wanted, bands_[band].binCount);
  return wanted.data_.data();
}

void MSubSampleLibrary::ReadData(MSubSample& sound, int32_t binCount) const {
  const int64_t values = int64_t{sound.channels} * sound.frames * binCount;  // below 2^47
  if (values > 0) {
    MFileStream file(path_, MFileStream::kRead);
    try {
      if (sound.offset > file.GetSize() - dataStart_ - values * kValueSize) MStream::ThrowShortRead();
      std::vector<float, MAllocator<float>> data(static_cast<std::size_t>(values));
      file.Seek(dataStart_ + sound.offset, MSeekOrigin::kStart);
      ReadBytes(file, data.data(), values);
      std::replace_if(
          data.begin(), data.end(), [](float value) { return !std::isfinite(value); }, 0.0f);
      sound.data_ = std::move(data);
    } catch (MException& raised) {
      raised.AddSource(path_);
      throw;
    }
  }
  sound.isRead_ = true;
}

MSubSampleLibrary* MSubSampleLibraryCache::Acquire(const MString& path) {
  const auto load = [](const MString& file, double) -> MObject* { return new MSubSampleLibrary(file); };
  return static_cast<MSubSampleLibrary*>(MSharedCache::Acquire(path, load));
}
