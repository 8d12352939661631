#pragma once
#include <vector>

#include "audiofiles/MSharedCache.h"

class MFileStream;

// One sound of a subsample library, as spectra. Values that are not finite are 0.
class MSubSample {
 public:
  int32_t frames = 0;    // spectra a channel
  int32_t length = 0;    // of the sound, in samples, 0 and more
  int32_t channels = 0;  // 1..8
  int64_t offset = 0;    // of the data, from the start of all data

 private:
  friend class MSubSampleLibrary;

  std::vector<float, MAllocator<float>> data_;
  bool isRead_ = false;
};

// A file "qxSubSampleLib": ten bands of the spectrum with many sounds each. Everything in it is
// little-endian:
//   rate (4 bytes, hertz), name (64), reserved (8), then for each band
//   first bin (4), bin count (4), count of sounds (4), reserved (8), and for each sound
//   frames (4), length (4), channels (4), offset (8), reserved (8);
// then the data: of each sound, channel after channel, frame after frame, its band's bins as 32-bit floats.
// "Bin" is one float of the packed spectrum of kBins that MRealFFT.h tells of.
//
// Making one reads the file up to the data. The data of a sound is read when it is first asked for, and
// stays.
class MSubSampleLibrary final : public MObject {
 public:
  static constexpr int32_t kBands = 10;
  static constexpr int32_t kBins = 8192;  // of a whole spectrum
  static constexpr int32_t kMostSounds = 10000;

  struct Band {
    int32_t firstBin = 0;  // 0..8191
    int32_t binCount = 1;  // 1..8192, and may reach behind the spectrum
    std::vector<MSubSample, MAllocator<MSubSample>> sounds;

    int32_t GetCount() const noexcept { return static_cast<int32_t>(sounds.size()); }
  };

  // Raises what MFileStream raises; "Could not read required data from stream." for a file that is too short;
  // "Invalid file contents. " with "Subsample library contains invalid fields." (a rate outside of 22050..
  // 192000, a band outside of its limits) or "Subsample library contains invalid data." (frames, channels or
  // offset of a sound), kTransferFailed. The source is the path and the place, "byte 84".
  explicit MSubSampleLibrary(const MString& path);

  int32_t GetRate() const noexcept { return rate_; }  // in hertz
  const Band& GetBand(int32_t band) const noexcept { return bands_[band]; }
  // The most sounds of a band.
  int32_t GetLargestCount() const noexcept;

  // The spectra of one sound, null if it has no frames: value b of frame f of channel c has the index
  // (c x frames + f) x binCount + b. Raises "Invalid subsample index." for a sound that is not there, what
  // MFileStream raises, and "Could not read required data from stream." where the file ends too early. [any]
  const float* Read(int32_t band, int32_t sound);

 private:
  void ReadBand(MFileStream& file, Band& band);
  void ReadData(MSubSample& sound, int32_t binCount) const;

  MString path_;
  int32_t rate_ = 0;
  int64_t dataStart_ = 0;
  Band bands_[kBands];
  MLock lock_;  // guards the data of the sounds
};

// Libraries, each in memory once for all plug-ins that use it.
class MSubSampleLibraryCache final : public MSharedCache {
 public:
  MSubSampleLibraryCache() : MSharedCache("Invalid subsample library to release.") {}

  // The library of a path, one more use of it counted. Raises what MSubSampleLibrary raises; nothing is kept
  // then.
  MSubSampleLibrary* Acquire(const MString& path);
  // One use less, as in the base. Raises "Invalid subsample library to release."
  void Release(const MSubSampleLibrary* library) { MSharedCache::Release(library); }
};
