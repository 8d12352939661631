#pragma once
// Grainloom with a configuration of its own, whose folder of subsample libraries the test fills.

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "core/MXMLItem.h"
#include "instruments/Grainloom.h"
#include "tests/audiofiles/SubSampleFile.h"
#include "tests/common/ReportedTexts.h"
#include "tests/common/TestRandom.h"
#include "tests/instruments/ContentFolder.h"

class GrainloomUnderTest {
 public:
  GrainloomUnderTest() { Call(MService::kPrepareStreams, 2, 44100); }
  GrainloomUnderTest(const GrainloomUnderTest&) = delete;
  GrainloomUnderTest& operator=(const GrainloomUnderTest&) = delete;

  GrainloomAudioStreamPlugin* operator->() { return plugin_.get(); }

  void WriteLibrary(const SubSampleFile& file,
                    const std::string& name = "Natural/Natural Bass.qxSubSampleLib") {
    WriteBytes(file.GetBytes(), name);
  }
  void WriteBytes(const std::string& bytes, const std::string& name = "Natural/Natural Bass.qxSubSampleLib") {
    const std::filesystem::path path = std::filesystem::path("SubSampleLibraries") / name;
    std::filesystem::create_directories(content_.GetFolder().GetPath() / path.parent_path());
    content_.GetFolder().WriteFile(path.string(), bytes);
  }

  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0) {
    MServiceArguments arguments(a, b, c);
    return plugin_->Service(service, &arguments);
  }
  // Loads a state, without a word about its end.
  void Load(MXMLItem& state) { Call(MService::kLoadState, MAsWord(&state)); }
  void LoadEmptyState() {
    MXMLItem state("state");
    Load(state);
  }
  void Save(MXMLItem& state) { Call(MService::kSaveState, MAsWord(&state)); }
  void Set(int32_t row, double value) {
    auto* const block = MAsAddress<MPluginPublicBlock>(Call(MService::kPublicBlock));
    MStoreShared(block->parameters[row].real.value, value);
    Call(MService::kParameterChanged, row);
  }

  // The handle of a note, 0 if there is none.
  MWord Create(double volume = 1, double ratio = 1, int32_t delay = 0) {
    MWord handle = 0;
    MStreamRequest request;
    request.delay = delay;
    request.volume = volume;
    request.ratio = ratio;
    request.result = &handle;
    const MWord notMade = Call(MService::kCreateStream, MAsWord(&request));
    EXPECT_EQ(notMade, handle == 0);
    return handle;
  }
  // A block of a stream; a sample that is not written is no number.
  std::vector<std::vector<float>> Compute(MWord& handle, int32_t samples, MWord expected,
                                          int32_t channels = 2) {
    std::vector<std::vector<float>> block(static_cast<std::size_t>(channels),
                                          std::vector<float>(static_cast<std::size_t>(samples), NAN));
    std::vector<float*> out;
    for (std::vector<float>& channel : block) out.push_back(channel.data());
    EXPECT_EQ(Call(MService::kComputeStream, MAsWord(out.data()), samples, MAsWord(&handle)), expected);
    return block;
  }
  void Close(MWord& handle) { Call(MService::kCloseStream, MAsWord(&handle)); }

  std::vector<float> GetSample(int32_t channel) {
    const MAudioBuffer* const sample = plugin_->GetSample();
    if (!sample || !sample->GetChannel(channel)) return {};
    return {sample->GetChannel(channel), sample->GetChannel(channel) + sample->GetLength()};
  }

  ReportedTexts reported;

 private:
  ContentFolder content_;
  std::unique_ptr<GrainloomAudioStreamPlugin> plugin_{new GrainloomAudioStreamPlugin};
};

// A library whose bands have some stereo sounds of 16 bins each, but for the last band, which is empty.
inline SubSampleFile SmallLibrary(int32_t sounds = 3, int32_t length = 9000) {
  TestRandom random(5);
  SubSampleFile file;
  for (std::size_t b = 0; b < 9; ++b) {
    file.bands[b].firstBin = static_cast<int32_t>(20 + 40 * b);
    file.bands[b].binCount = 16;
    for (int32_t s = 0; s < sounds; ++s) {
      SubSampleFile::Sound sound{2, length, 2, std::vector<float>(64)};
      for (float& value : sound.values) value = static_cast<float>(random.Real(-1, 1));
      file.bands[b].sounds.push_back(sound);
    }
  }
  return file;
}
