#pragma once
// A subsample library on the disk, and what is rendered from it.

#include <memory>

#include "instruments/MSubSampleRenderer.h"
#include "tests/audiofiles/SubSampleFile.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"

class SubSampleLibraryInTest {
 public:
  explicit SubSampleLibraryInTest(const SubSampleFile& file)
      : library_(new MSubSampleLibrary(
            Buffer(folder_.WriteFile("test.qxSubSampleLib", file.GetBytes()).c_str()))) {}

  MSubSampleLibrary& operator*() const { return *library_; }
  const TemporaryFolder& GetFolder() const { return folder_; }

  // The samples of all channels.
  std::vector<std::vector<float>> Render(MSubSampleBands bands = {}, double colorOffset = 0) {
    MAudioBuffer target;
    MRenderSubSamples(target, *library_, bands, colorOffset);
    std::vector<std::vector<float>> channels;
    for (int32_t c = 0; c < target.GetChannelCount(); ++c)
      channels.emplace_back(target.GetChannel(c), target.GetChannel(c) + target.GetLength());
    return channels;
  }

 private:
  TemporaryFolder folder_;
  std::unique_ptr<MSubSampleLibrary> library_;
};

// A sound of noise in all its values.
inline SubSampleFile::Sound NoiseSound(int32_t frames, int32_t length, int32_t channels, int32_t bins,
                                       TestRandom& random) {
  SubSampleFile::Sound sound{frames, length, channels, {}};
  sound.values.resize(static_cast<std::size_t>(frames * channels * bins));
  for (float& value : sound.values) value = static_cast<float>(random.Real(-1, 1));
  return sound;
}
