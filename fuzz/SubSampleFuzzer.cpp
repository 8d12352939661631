// The bytes are settings of ten bands and a subsample library: making it raises or gives one, and so does
// reading each of its sounds. A sample made from it has numbers of at most 1.

#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>

#include "core/MException.h"
#include "instruments/MSubSampleRenderer.h"
#include "tests/common/TemporaryFolder.h"

namespace {

// Whether it takes a moment to make a sample from all the sounds.
bool IsSmall(const MSubSampleLibrary& library) {
  for (int32_t b = 0; b < MSubSampleLibrary::kBands; ++b)
    for (const MSubSample& sound : library.GetBand(b).sounds)
      if (sound.length > 40000 || sound.frames > 16) return false;
  return true;
}

void ReadAll(MSubSampleLibrary& library) {
  for (int32_t b = 0; b < MSubSampleLibrary::kBands; ++b) {
    for (int32_t s = -1; s <= std::min(library.GetBand(b).GetCount(), 50); ++s) {
      try {
        library.Read(b, s);
      } catch (const MException& raised) {
        if (raised.message.IsEmpty()) __builtin_trap();
      }
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  static const TemporaryFolder kFolder;
  FuzzedDataProvider data(input, size);
  MSubSampleBands bands;
  for (MSubSampleBand& band : bands)
    band = {static_cast<float>(data.ConsumeIntegral<int16_t>()) / 256, 0, data.ConsumeIntegral<int16_t>(),
            static_cast<float>(data.ConsumeIntegral<int8_t>()) / 64};
  const double colorOffset = data.ConsumeProbability<double>();
  const std::string path = kFolder.WriteFile("fuzzed", data.ConsumeRemainingBytesAsString());
  try {
    MSubSampleLibrary library(MString::FromNarrow(path.c_str()));
    if (IsSmall(library)) {
      MAudioBuffer target;
      MRenderSubSamples(target, library, bands, colorOffset);
      if (!target.IsAllBelow(1)) __builtin_trap();
      for (int32_t c = 0; c < target.GetChannelCount(); ++c)
        for (int32_t i = 0; i < target.GetLength(); ++i)
          if (!std::isfinite(target.GetChannel(c)[i])) __builtin_trap();
    }
    ReadAll(library);
  } catch (const MException& raised) {
    if (raised.message.IsEmpty()) __builtin_trap();
  }
  return 0;
}
