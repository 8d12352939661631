// The first byte says how the file is compressed and read, the bytes up to the next zero are the index of a
// multisample, and the rest are its items: opening it raises or gives layers, and each of their takes is read
// or not. A take that is there has all its tracks.

#include "audiofiles/MMultiSample.h"
#include "core/MException.h"
#include "core/MGuard.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/resources/ResourceFiles.h"

namespace {

void Check(const MMultiSample& multiSample) {
  const MMultiSampleFile& file = multiSample.GetFile();
  const auto tracks = static_cast<int32_t>(file.GetTracks().size());
  for (std::size_t i = 0; i < file.GetTakes().size(); ++i) {
    const MSampleTake& take = multiSample.GetTake(static_cast<int32_t>(i));
    for (int32_t track = 0; take.IsLoaded() && track < tracks; ++track) {
      const MAudioBuffer* const whole = take.GetWhole(track);
      if (!whole || whole->GetChannelCount() < 1) __builtin_trap();
      volatile float last = whole->GetLength() > 0 ? whole->GetChannel(0)[whole->GetLength() - 1] : 0;
      (void)last;
    }
  }
  for (const double loudness : {-1.0, 0.0, 0.5, 1.0, 1e300})
    if (multiSample.FindLayer(loudness) >= static_cast<int32_t>(file.GetLayers().size())) __builtin_trap();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  static const TemporaryFolder kFolder;
  if (size < 2) return 0;
  const std::string text(reinterpret_cast<const char*>(input) + 1, size - 1);
  const std::size_t end = std::min(text.find('\0'), text.size());
  const std::string items = text.substr(std::min(end + 1, text.size()));
  const std::string path = kFolder.WriteFile("fuzzed", LargeFile(text.substr(0, end), items, input[0] & 7));
  try {
    const double seconds = input[0] & 8 ? 0.01 * input[0] : MMultiSample::kNoLimit;
    MMultiSample multiSample(MString::FromNarrow(path.c_str()), seconds, input[0] & 16);
    const auto layers = static_cast<int32_t>(multiSample.GetFile().GetLayers().size());
    for (int32_t layer = -1; layer <= std::min(layers, 50); ++layer) multiSample.Request(layer);
    multiSample.FinishLoading();
    Check(multiSample);
  } catch (const MException& raised) {
    if (raised.message.IsEmpty()) __builtin_trap();
  }
  return 0;
}
