#pragma once
// Files for the instruments that play some.

#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/instruments/ContentFolder.h"
#include "tests/instruments/GrainloomUnderTest.h"

// None is there for the first one; the others are each for some of the instruments.
constexpr const char* kFuzzedFiles[] = {"", "tone.wav", "layers.qxMultiSample", "small.qxSubSampleLib"};

class FuzzedFiles {
 public:
  FuzzedFiles() {
    TestRandom random(1);
    const AudioBlock tone = AudioBlock::Noise(2, 3000, random);
    std::vector<std::vector<float>> channels;
    for (int32_t c = 0; c < 2; ++c) channels.emplace_back(tone[c], tone[c] + tone.GetLength());
    folder_.WriteSample("Samples/tone.wav", channels);
    MultiSampleInTest layers;
    layers.tracks.push_back("<track name=\"second\" volume=\"0.5\" pan=\"0.2\"/>");
    for (int32_t group = 0; group < 3; ++group)
      layers.takes.push_back(
          {0.3 + 0.3 * group, group, {TrackInTest::Of(channels[0]), TrackInTest::Of(channels[1])}});
    folder_.GetFolder().WriteFile("MultiSamples/layers.qxMultiSample", layers.Make());
    folder_.GetFolder().WriteFile("SubSampleLibraries/small.qxSubSampleLib",
                                  SmallLibrary(3, 2000).GetBytes());
  }

 private:
  const ContentFolder folder_;
};
