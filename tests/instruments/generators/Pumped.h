#pragma once
// Sounds of generator objects in tests: pumped block by block, or written down by a test.

#include <utility>
#include <vector>

#include "core/MXMLItem.h"
#include "instruments/generators/MAudioGeneratorObject.h"
#include "tests/common/AudioBlock.h"

// What a sound is made of: blocks of these sizes, the last size again and again; without a size one block.
using Sizes = std::vector<int32_t>;

// The first samples of a state; a sample that no block writes is no number. `calls` gets, per block, whether
// the sound was over with it.
inline AudioBlock Pump(MAudioGeneratorObject& object, MGeneratorState& state, int32_t channels,
                       int32_t samples, const Sizes& sizes = {}, std::vector<bool>* calls = nullptr) {
  AudioBlock out = AudioBlock::Constant(channels, samples, NAN);
  std::size_t next = 0;
  for (int32_t done = 0; done < samples;) {
    int32_t size = samples - done;
    if (!sizes.empty()) size = std::min(size, sizes[std::min(next++, sizes.size() - 1)]);
    MAudioBuffer buffer;
    buffer.SetView(out.From(done), channels, size);
    const bool isOver = object.Compute(state, buffer);
    if (calls) calls->push_back(isOver);
    done += size;
  }
  return out;
}

inline AudioBlock Pump(MAudioGeneratorObject& object, int32_t channels, int32_t samples,
                       const Sizes& sizes = {}, double gain = 1, double ratio = 1) {
  const MGeneratorStatePointer state = object.CreateState(gain, ratio);
  return Pump(object, *state, channels, samples, sizes);
}

// The splits into blocks that every object has to bear.
inline const std::vector<Sizes> kSplits = {{1}, {63}, {64}, {255}, {256}, {257}, {441, 3, 0, 512}, {4096}};

// Plays a signal of its own in all channels, times the gain and, from the second channel on, times 1 - the
// channel / 4; the state counts on as a sound of the object does.
class Written final : public MAudioGeneratorObject {
 public:
  explicit Written(std::vector<double> signal = {})
      : MAudioGeneratorObject("Written", "Written"), samples(std::move(signal)) {}

  std::vector<double> samples;
  mutable double lastGain = 0, lastRatio = 0;
  int32_t calls = 0;

  double GetLength(bool inSeconds) const override {
    const auto count = static_cast<double>(samples.size());
    return inSeconds ? count / GetRate() : count;
  }
  MGeneratorStatePointer CreateState(double gain, double ratio) const override {
    lastGain = gain;
    lastRatio = ratio;
    std::unique_ptr<Place> place(new Place);
    place->gain = gain;
    return place;
  }
  bool Compute(MGeneratorState& state, MAudioBuffer& buffer) override {
    auto& place = static_cast<Place&>(state);
    ++calls;
    for (int32_t i = 0; i < buffer.GetLength(); ++i, ++place.next) {
      const double sample = place.next < samples.size() ? samples[place.next] * place.gain : 0;
      for (int32_t c = 0; c < buffer.GetChannelCount(); ++c)
        buffer.GetChannel(c)[i] = static_cast<float>(sample * (1 - c / 4.0));
    }
    return place.next >= samples.size();
  }
  void Save(MXMLItem& item) const override { item.SetAttribute("written", "1"); }
  void Load(const MXMLItem& item) override { isLoaded = item.HasAttribute("written"); }

  bool isLoaded = false;

 private:
  struct Place : MGeneratorState {
    std::size_t next = 0;
    double gain = 1;
  };
};
