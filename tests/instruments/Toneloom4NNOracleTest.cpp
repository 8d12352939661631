// Toneloom 4NN beside a plain model, over random chains, notes and blocks. The settings come in as a state.

#include <gtest/gtest.h>

#include "core/MXMLItem.h"
#include "dsp/MRandomSequence.h"
#include "instruments/Toneloom4NN.h"
#include "tests/common/TestRandom.h"
#include "tests/instruments/StreamPlayer.h"
#include "tests/instruments/ToneloomModel.h"

namespace {

using ToneloomModel::Chain;
using Chains = ToneloomModel::Note::Chains;

// Writes a number with the four decimals of a state, and gives what they say.
double Write(MXMLItem& item, const char* key, double value) {
  const MString text = MString::FromDouble(value, 4);
  item.SetAttribute(MString::Literal(key), text);
  return text.ToDouble();
}
int32_t WriteNumber(MXMLItem& item, const char* key, int32_t value) {
  item.SetAttribute(MString::Literal(key), MString::FromInteger(value));
  return value;
}

// A curve over 0..1 whose inner points have places that no sample meets. No super-ellipses: where they rise
// at a right angle, the rounding of a place to a float shows.
MEnvelopeData WriteCurve(MXMLItem& item, TestRandom& random, double low, double high) {
  MEnvelopeData curve;
  curve.yMinimum = low;
  curve.yMaximum = high;
  const bool isFlat = random.OneIn(4);
  const double level = random.Real(low, high);
  const int32_t inner = isFlat ? 0 : random.Below(4);
  for (int32_t i = 0; i < inner + 2; ++i) {
    MEnvelopePoint point;
    point.x = i == 0 ? 0 : i > inner ? 1 : (i + random.Real(0.1, 0.9)) / (inner + 2);
    point.y = isFlat ? level : random.Real(low, high);
    point.type = random.OneIn(2) ? MEnvelopeType::kMode1 : MEnvelopeType::kMode2;
    point.tension = random.Real(-0.6, 0.6);
    curve.Add(point);
  }
  curve.Save(item);
  curve.Load(item);
  return curve;
}

// Random settings of a chain, in its item and as the model wants them.
Chain WriteChain(MXMLItem& item, bool isNoise, double longest, TestRandom& random) {
  Chain chain;
  chain.isNoise = isNoise;
  chain.length = Write(item, "length", random.OneIn(8) ? 0 : random.Real(0.0005, longest));
  if (!isNoise) {
    chain.phase = Write(item, "phase", random.OneIn(3) ? 0 : random.Real(-1, 2));
    MXMLItem& shape = item.AddSubItem("shape");
    chain.wave.shape = Write(shape, "value", random.OneIn(3) ? random.Below(14) : random.Real(0, 13));
    chain.wave.customDepth = Write(shape, "EnvelopeDepth", random.OneIn(2) ? 0 : random.Real(0, 1));
    chain.wave.curve = WriteCurve(shape.AddSubItem("Envelope"), random, -1, 1);
    chain.frequency = WriteCurve(item.AddSubItem("frequency"), random, std::log10(20.0), std::log10(10000.0));
    chain.wave.Build();
  }
  chain.hasLowPass = WriteNumber(item, "lpenable", random.Below(2)) != 0;
  chain.hasHighPass = WriteNumber(item, "hpenable", random.OneIn(3)) != 0;
  chain.lowPassHertz = Write(item, "lpcutoff", std::pow(10, random.Real(1, 4.5)));
  chain.highPassHertz = Write(item, "hpcutoff", std::pow(10, random.Real(1, 4.5)));
  chain.gains = WriteCurve(item.AddSubItem("volume"), random, 0, 1);
  chain.isEnabled = WriteNumber(item, "enabled", !random.OneIn(3)) != 0;
  chain.volume = Write(item, "volume", random.OneIn(3) ? 1 : random.Real(0, 1.2));
  chain.pan = Write(item, "pan", random.OneIn(3) ? 0 : random.Real(-1.2, 1.2));
  chain.mode = WriteNumber(item, "mixermode", random.OneIn(2) ? 0 : random.Below(3));
  return chain;
}

Chains WriteChains(MXMLItem& state, double longest, TestRandom& random) {
  Chains chains;
  const char* const items[] = {"envelope1", "envelope2", "envelope3", "envelope4", "BandPass1", "BandPass2"};
  for (std::size_t k = 0; k < chains.size(); ++k)
    chains[k] = WriteChain(state.AddSubItem(MString::Literal(items[k])), k >= 4, longest, random);
  return chains;
}

struct Comparison {
  double peak = 0, distance = 0;
  int32_t ended = 0;
};

// Plays one note in both, in blocks of a fixed size, or of any for 0, until some blocks behind its end.
void Compare(StreamPlayer<Toneloom4NNAudioStreamPlugin>& toneloom, const Chains& chains, int32_t channels,
             int32_t rate, int32_t fixed, TestRandom& random, Comparison& found) {
  const double volume = random.Real(0.1, 1), ratio = random.OneIn(3) ? 1 : std::pow(2, random.Real(-2, 2));
  int32_t delay = random.OneIn(2) ? 0 : random.Below(600);
  ToneloomModel::Random numbers{static_cast<uint32_t>(random.Bits())};
  MRandomSequence::Set(numbers.x);
  ToneloomModel::Note note(chains, volume, ratio, rate, static_cast<std::size_t>(std::min(channels, 8)));
  MWord handle = toneloom.Create(volume, ratio, delay);
  ASSERT_NE(handle, 0);
  int32_t behind = 0;
  for (int32_t done = 0; done < 100000 && behind < 3;) {
    const int32_t size = fixed > 0 ? fixed : random.Integer(1, 900);
    done += size;
    const auto block = toneloom.Compute(handle, size, {size});
    if (delay >= size) {
      delay -= size;
      ASSERT_EQ(toneloom.GetResult(), MStreamResult::kNotStarted);
      continue;
    }
    const auto first = static_cast<std::size_t>(delay);
    delay = 0;
    const auto [sound, hasEnded] = note.Compute(static_cast<std::size_t>(size) - first, numbers);
    ASSERT_EQ(toneloom.GetResult(), hasEnded ? MStreamResult::kEnded : MStreamResult::kSounds);
    behind += hasEnded;
    for (std::size_t c = 0; c < block.size(); ++c) {
      for (std::size_t i = 0; i < block[c].size(); ++i) {
        const double expected = i < first || c >= sound.size() ? 0 : sound[c][i - first];
        found.peak = std::max(found.peak, std::abs(expected));
        found.distance = std::max(found.distance, std::abs(block[c][i] - expected));
      }
    }
  }
  found.ended += behind > 0;
  toneloom.Close(handle);
}

TEST(Toneloom4NNOracle, SoundsAsTheModelSounds) {
  TestRandom random;
  int32_t loud = 0, ended = 0;
  for (int32_t round = 0; round < 60; ++round) {
    const int32_t channels = random.OneOf<int32_t>({1, 2, 2, 2, 3, 8, 10});
    const int32_t rate = random.OneOf<int32_t>({22050, 44100, 96000});
    StreamPlayer<Toneloom4NNAudioStreamPlugin> toneloom(channels, rate);
    MXMLItem state("state");
    const Chains chains = WriteChains(state, 0.06, random);
    toneloom.Load(state);
    Comparison found;
    const int32_t size = random.OneOf<int32_t>({0, 1, 63, 64, 256, 441, 512, 4096, 8192});
    Compare(toneloom, chains, channels, rate, size, random, found);
    ASSERT_LT(found.distance, 5e-5 * std::max(found.peak, 1.0))
        << "round " << round << ", peak " << found.peak;
    loud += found.peak > 0.05;
    ended += found.ended;
  }
  EXPECT_GT(loud, 30);
  EXPECT_GT(ended, 40);
}

// Longer blocks are worked off in parts, in which noises take their numbers in turn; so there are none here.
TEST(Toneloom4NNOracle, SoundsAsTheModelSoundsInVeryLongBlocks) {
  TestRandom random;
  for (int32_t round = 0; round < 15; ++round) {
    StreamPlayer<Toneloom4NNAudioStreamPlugin> toneloom(2, 96000);
    MXMLItem state("state");
    Chains chains = WriteChains(state, 0.4, random);
    for (const char* const noise : {"BandPass1", "BandPass2"})
      WriteNumber(state.SubItem(MString::Literal(noise)), "enabled", 0);
    chains[4].isEnabled = chains[5].isEnabled = false;
    toneloom.Load(state);
    Comparison found;
    Compare(toneloom, chains, 2, 96000, random.OneOf<int32_t>({8193, 10000, 16384, 25000}), random, found);
    ASSERT_LT(found.distance, 5e-5 * std::max(found.peak, 1.0))
        << "round " << round << ", peak " << found.peak;
  }
}

}  // namespace
