// What holds for a whole chain of objects: events reach its handlers, and its sounds leave the memory alone.

#include <gtest/gtest.h>

#include "instruments/generators/MEnvelopeAudioFilter.h"
#include "instruments/generators/MMixerAudioFilter.h"
#include "instruments/generators/MNoiseGeneratorAudioSource.h"
#include "instruments/generators/MOscillatorAudioSource.h"
#include "instruments/generators/SlotterAudioFilter.h"
#include "tests/common/AudioThreadWatch.h"
#include "tests/common/CountingFunctions.h"
#include "tests/instruments/generators/Pumped.h"

namespace {

struct Chain {
  Chain() {
    for (int32_t i = 0; i < 2; ++i) mixer.Add(outer[i], true);
    for (SlotterAudioFilter& filter : filters) filter.hasLowPass = filter.hasHighPass = true;
    outer[1].SetFlag(MAudioGeneratorObject::kMode, 2);
    mixer.SetFormat(2, 44100);
  }
  MOscillatorAudioSource oscillator;
  MNoiseGeneratorAudioSource noise;
  SlotterAudioFilter filters[2] = {SlotterAudioFilter(oscillator), SlotterAudioFilter(noise)};
  MEnvelopeAudioFilter outer[2] = {MEnvelopeAudioFilter(filters[0]), MEnvelopeAudioFilter(filters[1])};
  MMixerAudioFilter mixer;
};

struct Listener : MEventTarget {
  std::vector<MEventTarget*> senders;
  static void Hear(MEventTarget* self, MWord, const MOnNotifyParams& parameters) {
    static_cast<Listener*>(self)->senders.push_back(parameters.sender);
  }
};

TEST(GeneratorChain, ChangeOfAnyObjectReachesAHandlerOfTheMixerOnce) {
  Chain chain;
  Listener listener;
  chain.mixer.AddChangeHandler({&listener, Listener::Hear});
  const std::vector<MAudioGeneratorObject*> objects = {&chain.oscillator, &chain.noise, &chain.filters[0],
                                                       &chain.outer[1], &chain.mixer};
  for (MAudioGeneratorObject* const object : objects) {
    object->FireStructureChange();
    EXPECT_TRUE(listener.senders.empty());
    object->FireChange();
    EXPECT_EQ(listener.senders, std::vector<MEventTarget*>{object});
    listener.senders.clear();
  }
}

TEST(GeneratorChain, ChangeOfTheSetReachesItsOwnHandlers) {
  Chain chain;
  Listener listener;
  chain.mixer.AddStructureHandler({&listener, Listener::Hear});
  chain.oscillator.FireChange();
  EXPECT_TRUE(listener.senders.empty());
  chain.oscillator.FireStructureChange();
  chain.mixer.FireStructureChange();
  EXPECT_EQ(listener.senders, (std::vector<MEventTarget*>{&chain.oscillator, &chain.mixer}));
}

TEST(GeneratorChain, FilterHearsOfItsInnerObject) {
  Chain chain;
  Listener listener;
  chain.outer[0].AddChangeHandler({&listener, Listener::Hear});
  chain.noise.FireChange();
  chain.oscillator.FireChange();
  chain.outer[0].FireChange();
  EXPECT_EQ(listener.senders, (std::vector<MEventTarget*>{&chain.oscillator, &chain.outer[0]}));
}

TEST(GeneratorChain, NameAndLengthAreThoseOfTheSources) {
  Chain chain;
  chain.noise.lengthSeconds = 0.5;
  EXPECT_EQ(chain.mixer.GetDisplayName(), MString("Oscillator & Noise"));
  EXPECT_EQ(chain.mixer.GetLength(true), 0.5);
  EXPECT_EQ(chain.mixer.GetLength(false), 22050);
  EXPECT_EQ(chain.mixer.displayName, MString("Mixer"));
  EXPECT_EQ(chain.noise.itemName, MString("NoiseGen"));
  EXPECT_EQ(chain.filters[0].itemName, MString("BandPass"));
}

TEST(GeneratorChain, TwoSoundsAtATimeAreIndependent) {
  Chain chain;
  chain.outer[1].isEnabled = false;
  const AudioBlock low = Pump(chain.mixer, 2, 4410, {64}, 1, 1);
  const AudioBlock high = Pump(chain.mixer, 2, 4410, {64}, 0.5, 2);
  const MGeneratorStatePointer first = chain.mixer.CreateState(1, 1);
  const MGeneratorStatePointer second = chain.mixer.CreateState(0.5, 2);
  for (int32_t done = 0; done < 4400; done += 100) {
    const AudioBlock a = Pump(chain.mixer, *first, 2, 100, {64});
    const AudioBlock b = Pump(chain.mixer, *second, 2, 100, {64});
    for (int32_t i = 0; i < 100; ++i) {
      ASSERT_NEAR(a[0][i], low[0][done + i], 1e-6);
      ASSERT_NEAR(b[0][i], high[0][done + i], 1e-6);
    }
  }
}

TEST(GeneratorChain, ComputingNeitherAllocatesNorWaits) {
  Chain chain;
  chain.oscillator.frequencyLog10Hz[0].y = 4;
  float left[10000], right[10000];
  float* const channels[] = {left, right};
  MAudioBuffer buffer;
  const CountingFunctions table;
  const MGeneratorStatePointer state = chain.mixer.CreateState(1, 1);
  const int64_t calls = table.GetCalls();
  const AudioThreadWatch watch;
  for (const int32_t samples : {1, 64, 0, 441, 10000, 10000}) {
    buffer.SetView(channels, 2, samples);
    chain.mixer.Compute(*state, buffer);
  }
  EXPECT_EQ(watch.GetAllocations(), 0);
  EXPECT_EQ(watch.GetWaits(), 0);
  EXPECT_EQ(table.GetCalls(), calls);
}

TEST(GeneratorChain, SoundsGiveAllTheirMemoryBackAlsoWhenItRunsShort) {
  Chain chain;
  chain.oscillator.frequencyLog10Hz[0].y = 4;
  const CountingFunctions table;
  { const MGeneratorStatePointer state = chain.mixer.CreateState(1, 1); }
  EXPECT_EQ(table.GetBalance(), 0);
  for (int32_t request = 0; request < 60; ++request) {
    table.FailAfter(request);
    try {
      const MGeneratorStatePointer state = chain.mixer.CreateState(1, 1);
    } catch (const MException&) {
    }
    table.FailAfter(-1);
    EXPECT_EQ(table.GetBalance(), 0) << request;
  }
}

}  // namespace
