#include "instruments/Toneloom4NN.h"

#include <gtest/gtest.h>

#include <numbers>
#include <string>

#include "tests/common/Texts.h"
#include "tests/instruments/StreamPlayer.h"

namespace {

using Player = StreamPlayer<Toneloom4NNAudioStreamPlugin>;

// A chain's item in a state, switched on or off.
MXMLItem& AddChain(MXMLItem& state, const char* name, bool isEnabled = true) {
  MXMLItem& chain = state.AddSubItem(MString::Literal(name));
  chain.SetAttribute("enabled", isEnabled ? "1" : "0");
  return chain;
}

void AddCurve(MXMLItem& chain, const char* name, std::initializer_list<std::pair<double, double>> points) {
  MXMLItem& curve = chain.AddSubItem(MString::Literal(name));
  for (const auto& [x, y] : points) {
    MXMLItem& point = curve.AddSubItem("Point");
    point.SetAttribute("x", MString::FromDouble(x, 6));
    point.SetAttribute("y", MString::FromDouble(y, 6));
    point.SetAttribute("Type", "Mode 2");
  }
}

TEST(Toneloom4NN, HasNoRows) {
  Player player;
  EXPECT_EQ(MAsAddress<MPluginPublicBlock>(player.Call(MService::kPublicBlock))->parameterCount, 0);
}

TEST(Toneloom4NN, NewInstrumentPlaysThreeHundredHertzTimesTheRatioThatFallsForATenthOfASecond) {
  for (const int32_t rate : {44100, 48000}) {
    Player player(2, rate);
    for (int32_t key = -12; key <= 12; key += 4) {
      const double ratio = std::exp2(key / 12.0);
      const Player::Block block = player.Play(rate / 5, 0.5, ratio);
      const int32_t length = rate / 10;
      for (std::size_t i = 0; i < block[0].size(); ++i) {
        const double time = static_cast<double>(i);
        const double expected =
            i < static_cast<std::size_t>(length)
                ? 0.5 * (1 - time / length) * std::sin(2 * std::numbers::pi * 300 * ratio * time / rate)
                : 0;
        // The wave's table bends the sine by less than one of its places.
        ASSERT_NEAR(block[0][i], expected, 0.5 * 2 * std::numbers::pi / 8192) << key << " at " << i;
        ASSERT_EQ(block[1][i], block[0][i]);
      }
    }
  }
}

TEST(Toneloom4NN, DelayLongerThanABlockStartsTheNoteInsideOne) {
  Player player(1);
  const Player::Block prompt = player.Play(2000);
  MWord note = player.Create(1, 1, 600);
  for (const MWord result : {2, 2, 0}) {
    const Player::Block block = player.Compute(note, 256, {256});
    EXPECT_EQ(player.GetResult(), result);
    for (std::size_t i = 0; i < 256; ++i)
      ASSERT_FLOAT_EQ(block[0][i], result == 0 && i >= 88 ? prompt[0][i - 88] : 0) << i;
  }
  player.Close(note);
}

TEST(Toneloom4NN, WithAllChainsOffTheFirstBlockIsSilentAndReportsTheEnd) {
  Player player;
  MXMLItem state("state");
  AddChain(state, "envelope1", false);
  player.Load(state);
  MWord note = player.Create();
  ASSERT_NE(note, 0);
  EXPECT_EQ(player.Compute(note, 64)[1], std::vector<float>(64, 0.0f));
  EXPECT_EQ(player.GetResult(), MStreamResult::kEnded);
  player.Close(note);
}

TEST(Toneloom4NN, ChainsAreNamedByTheirSourcesAndSavedByTheirOutermostFilters) {
  Player player;
  EXPECT_EQ(Utf8(player.GetPlugin().GetMixer().GetDisplayName()),
            "Oscillator 1 & Oscillator 2 & Oscillator 3 & Oscillator 4 & Noise 1 & Noise 2");
  std::vector<std::string> names;
  for (MXMLItem* const child : player.Save().GetChildren()) {
    names.push_back(Utf8(child->GetName()));
    EXPECT_EQ(Utf8(child->GetAttribute("enabled")), names.size() == 1 ? "1" : "0") << names.back();
    EXPECT_EQ(Utf8(child->GetAttribute("mixermode")), "0");
    const bool isNoise = names.back()[0] == 'B';
    EXPECT_EQ(child->HasAttribute("phase"), !isNoise);
    EXPECT_EQ(child->HasSubItem("frequency"), !isNoise);
    EXPECT_TRUE(child->HasAttribute("lpcutoff") && child->HasSubItem("volume"));
  }
  EXPECT_EQ(names, (std::vector<std::string>{"envelope1", "envelope2", "envelope3", "envelope4", "BandPass1",
                                             "BandPass2"}));
}

TEST(Toneloom4NN, StateWithoutTheItemsGivesTheDefaults) {
  Player player;
  const Player::Block expected = player.Play(5000);
  MXMLItem state("state");
  for (const char* const name : {"envelope1", "envelope2", "envelope4", "BandPass2"}) {
    MXMLItem& chain = AddChain(state, name);
    chain.SetAttribute("length", "3");
    chain.SetAttribute("volume", "0.1");
  }
  player.Load(state);
  EXPECT_NE(player.Play(5000), expected);
  MXMLItem empty("state");
  player.Load(empty);
  EXPECT_EQ(player.Play(5000), expected);
}

TEST(Toneloom4NN, ItemWithoutAVolumeCurvePlaysWithoutDecay) {
  Player player(1);
  MXMLItem state("state");
  AddChain(state, "envelope1").SetAttribute("phase", "0.25");
  player.Load(state);
  const Player::Block block = player.Play(4410);
  // A period of 300 Hz is 147 samples.
  for (std::size_t i = 0; i < 4410; i += 147) EXPECT_NEAR(block[0][i], 1, 1e-3);
}

TEST(Toneloom4NN, FourDifferentOscillatorsComeBackWithEqualAudio) {
  Player first, second;
  MXMLItem state("state");
  const char* const names[] = {"envelope1", "envelope2", "envelope3", "envelope4"};
  for (int32_t i = 0; i < 4; ++i) {
    MXMLItem& chain = AddChain(state, names[i]);
    chain.SetAttribute("mixermode", MString::FromInteger(i % 3));
    chain.SetAttribute("volume", MString::FromDouble(1 - 0.2 * i, 4));
    chain.SetAttribute("pan", MString::FromDouble(0.3 * i - 0.4, 4));
    chain.SetAttribute("length", MString::FromDouble(0.3 - 0.04 * i, 4));
    chain.SetAttribute("hpenable", MString::FromInteger(i % 2));
    AddCurve(chain, "volume", {{0, 0.2}, {0.3, 1}, {1, 0.1 * i}});
    AddCurve(chain, "frequency", {{0, 2 + 0.2 * i}, {1, 3}});
    MXMLItem& shape = chain.AddSubItem("shape");
    shape.SetAttribute("value", MString::FromDouble(1.3 * i, 4));
    shape.SetAttribute("EnvelopeDepth", MString::FromDouble(0.2 * i, 4));
    AddCurve(shape, "Envelope", {{0, 0}, {0.4, 0.9}, {1, -0.5}});
  }
  first.Load(state);
  second.Load(first.Save());
  const Player::Block sound = first.Play(15000, 1, 1.3);
  EXPECT_GT(*std::max_element(sound[0].begin(), sound[0].end()), 0.1);
  EXPECT_NE(sound[0], sound[1]);
  EXPECT_EQ(second.Play(15000, 1, 1.3), sound);
}

// A gate that closes in the middle, and a low-pass: behind the filter the gate is sharp, in front of it the
// filter sounds on.
TEST(Toneloom4NN, EnvelopeStandsBehindTheFilterOfAnOscillatorAndInFrontOfThatOfANoise) {
  const auto soundBehindTheGate = [](const char* name) {
    Player player(1, 44100);
    MXMLItem state("state");
    AddChain(state, "envelope1", false);
    MXMLItem& chain = name[0] == 'e' ? state.SubItem("envelope1") : AddChain(state, name);
    chain.SetAttribute("enabled", "1");
    chain.SetAttribute("lpenable", "1");
    chain.SetAttribute("lpcutoff", "100");
    AddCurve(chain, "volume", {{0, 1}, {0.5, 1}, {0.5001, 0}, {1, 0}});
    player.Load(state);
    const Player::Block block = player.Play(4410);
    float peak = 0;
    for (std::size_t i = 2210; i < 2300; ++i) peak = std::max(peak, std::abs(block[0][i]));
    return peak;
  };
  EXPECT_EQ(soundBehindTheGate("envelope1"), 0);
  EXPECT_GT(soundBehindTheGate("BandPass1"), 1e-4);
}

TEST(Toneloom4NN, ServesEightChannelsAndClearsTheRest) {
  Player player(11);
  const Player::Block block = player.Play(1000, 1, 1, 77);
  for (std::size_t c = 0; c < 11; ++c)
    EXPECT_EQ(block[c], c < 8 ? block[0] : std::vector<float>(1000, 0.0f)) << c;
  EXPECT_NE(block[0], block[10]);
}

TEST(Toneloom4NN, EditsOfTheWaveReachANoteThatPlaysAndOthersDoNot) {
  Player player(1);
  const Player::Block expected = player.Play(4000);
  MWord note = player.Create();
  player.Compute(note, 1000);
  MXMLItem state("state");
  MXMLItem& chain = AddChain(state, "envelope1");
  chain.SetAttribute("length", "2");
  chain.SetAttribute("volume", "0.1");
  chain.SetAttribute("lpenable", "1");
  player.Load(state);
  const Player::Block same = player.Compute(note, 1000);
  for (std::size_t i = 0; i < 1000; ++i) ASSERT_NEAR(same[0][i], expected[0][1000 + i], 1e-6);
  chain.AddSubItem("shape").SetAttribute("value", "11");
  player.Load(state);
  const Player::Block other = player.Compute(note, 1000);
  double distance = 0;
  for (std::size_t i = 0; i < 1000; ++i)
    distance = std::max<double>(distance, std::abs(other[0][i] - expected[0][2000 + i]));
  EXPECT_GT(distance, 0.2);
  player.Close(note);
}

std::vector<int32_t> codes;

MWord M_CALL NoteCode(void*, int32_t code, MServiceArguments*) {
  codes.push_back(code);
  return 0;
}

TEST(Toneloom4NN, ChangesOfChainsEndInTheNotificationOfTheHost) {
  Player player;
  player.Call(MService::kAttach, 0, MAsWord(&NoteCode));
  codes.clear();
  player.GetPlugin().GetMixer().FireChange();
  player.GetPlugin().GetMixer().FireStructureChange();
  EXPECT_EQ(codes, (std::vector<int32_t>{MHostCode::kParametersChanged, MHostCode::kParametersChanged}));
}

}  // namespace
