#include "tests/common/StreamSuite.h"

#include "tests/audiofiles/MultiSampleInTest.h"
#include "tests/instruments/GrainloomUnderTest.h"

namespace {

// A sound that falls over 0.3 s.
std::vector<float> Tone(double step) {
  constexpr int32_t kLength = 13230;
  std::vector<float> tone;
  for (int32_t i = 0; i < kLength; ++i)
    tone.push_back(static_cast<float>(0.5 * (1 - static_cast<double>(i) / kLength) * std::sin(step * i)));
  return tone;
}

std::string PrepareSample(ContentFolder& content) {
  content.WriteSample("Samples/Suite/tone.wav", {Tone(0.07), Tone(0.11)});
  return R"(<state subpath="Suite" filename="tone.wav"/>)";
}

std::string PrepareTracks(ContentFolder& content) {
  MultiSampleInTest file;
  file.rate = 44100;
  file.tracks = {R"(<track name="a" volume="1" pan="0.25"/>)", R"(<track name="b" volume="0.5" pan="-1"/>)"};
  file.takes = {{1, 0, {TrackInTest::Of(Tone(0.07)), TrackInTest::Of(Tone(0.11))}}};
  content.GetFolder().WriteFile("MultiSamples/suite.qxMultiSample", file.Make());
  return R"(<state filename="suite.qxMultiSample"/>)";
}

std::string PrepareLibrary(ContentFolder& content) {
  std::filesystem::create_directories(content.Path("SubSampleLibraries/Suite"));
  content.GetFolder().WriteFile("SubSampleLibraries/Suite/small.qxSubSampleLib", SmallLibrary().GetBytes());
  return R"(<state subpath="Suite" filename="small.qxSubSampleLib"/>)";
}

// All modes, with a glide and filters. No noise, which never comes twice. What has memory is silent before it
// is over, since the end of an object cuts off what would sound on.
std::string PrepareChains(ContentFolder&) {
  return R"(<state>
    <envelope1 length="0.3" enabled="1" volume="0.8" pan="0.25" lpenable="1" lpcutoff="3000" hpenable="1">
      <frequency><Point x="0" y="2.5"/><Point x="1" y="3.2"/></frequency>
      <volume><Point x="0" y="1"/><Point x="0.8" y="0"/><Point x="1" y="0"/></volume>
    </envelope1>
    <envelope2 length="0.2" enabled="1" pan="-0.5" phase="0.25"><shape value="6.5"/></envelope2>
    <envelope3 length="0.1" enabled="1" volume="0.5" mixermode="1"/>
    <envelope4 length="0.3" enabled="1" volume="0.3" mixermode="2"/>
  </state>)";
}

// Every instrument has a row, by name.
const std::vector<StreamSound> kSounds = {
    {"Grainloom", false, PrepareLibrary, {StreamAllowance::kLocks}},
    {"Layerbox", false, PrepareTracks, {StreamAllowance::kLocks, StreamAllowance::kDelaySkips}},
    {"Playbox", false, PrepareSample},
    {"Toneloom4NN", true, PrepareChains},
    {"Vinylrake", false, PrepareSample},
};

TEST(StreamSounds, EveryInstrumentHasOne) {
  std::vector<std::string> instruments, sounds;
  for (const PluginEntry& entry : GetAllInstruments()) instruments.push_back(entry.name);
  for (const StreamSound& sound : kSounds) sounds.push_back(sound.instrument);
  std::sort(instruments.begin(), instruments.end());
  EXPECT_EQ(instruments, sounds);
}

}  // namespace

const PluginEntry& StreamSuite::GetEntry() {
  static const std::vector<PluginEntry> instruments = GetAllInstruments();
  for (const PluginEntry& entry : instruments)
    if (entry.name == GetParam().instrument) return entry;
  throw std::invalid_argument(GetParam().instrument);
}

bool StreamSuite::IsAllowed(StreamAllowance allowance) {
  const std::vector<StreamAllowance>& allowances = GetParam().allowances;
  return std::find(allowances.begin(), allowances.end(), allowance) != allowances.end();
}

int32_t StreamSuite::GetLength(StreamUnderTest& instrument) {
  MWord note = instrument.Create();
  std::vector<MWord> results;
  instrument.Pull(note, kLowRate, {1}, &results);
  instrument.Close(note);
  const auto end = std::find(results.begin(), results.end(), MWord{MStreamResult::kEnded});
  EXPECT_NE(end, results.end()) << "the note does not end";
  return static_cast<int32_t>(end - results.begin()) + 1;
}

INSTANTIATE_TEST_SUITE_P(Instruments, StreamSuite, testing::ValuesIn(kSounds),
                         [](const testing::TestParamInfo<StreamSound>& sound) {
                           return sound.param.instrument;
                         });
