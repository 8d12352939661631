#pragma once
#include <vector>

#include "instruments/generators/MAudioGeneratorObject.h"

// What an object does with the mix of the objects in front of it.
namespace MMixerMode {
constexpr int32_t kAdd = 0;
constexpr int32_t kRing = 1;  // mix (x + 1 - volume)
constexpr int32_t kFreq = 2;  // mix(t - delay + depth x): modulates its time
}  // namespace MMixerMode

// Mixes a list of objects, each by its mode, volume and pan, as they stand when a sound begins. The first
// enabled object is the base: the mix begins with it, whatever its mode. When it is over, from the next block
// on the first object of mode kAdd that is not takes its place, and what stands in front of that rests.
//
// x is what an object makes, with its volume and pan. A pan p acts on stereo alone and moves the other side's
// signal across:
//   above 0: left' = left (1 - p) v,         right' = (right + left p) v;
//   below 0: left' = (left - right p) v,     right' = right (1 + p) v.
// kFreq reads the mix with a cubic at the place  i - D - 4 + D x,  x limited to -1..1, where D is the whole
// part of 200 volume, at most 200.
//
// One thread at a time computes with a mixer.
class MMixerAudioFilter final : public MAudioGeneratorObject {
 public:
  MMixerAudioFilter() : MAudioGeneratorObject("Mixer", "Mixer") {}

  int32_t shownObject = 0;  // index of the object whose editor is shown
  bool usesPan = true;      // off, all pans count as 0

  // Appends an object, which is not owned and has to outlive the mixer. It starts as it is to be in a new
  // instrument: enabled or not, mode kAdd, its editor not shown.
  void Add(MAudioGeneratorObject& object, bool isEnabledAtFirst);

  MString GetDisplayName() const override;  // those of all objects, joined with " & "
  void SetFormat(int32_t channels, int32_t sampleRate) override;
  // The greatest of all objects, enabled or not; 0 without any.
  double GetLength(bool inSeconds) const override;
  MGeneratorStatePointer CreateState(double gain, double ratio) const override;
  // Blocks of more than 8192 samples are worked off in parts.
  bool Compute(MGeneratorState& state, MAudioBuffer& buffer) override;  // [audio]
  void AddChangeHandler(const Handler& handler) override;
  void AddStructureHandler(const Handler& handler) override;
  // Gives every object what it has in a new instrument.
  void Reset() override;
  // A child per object, by the object's item name, with what the object saves and "enabled", "volume", "pan"
  // and "mixermode".
  void Save(MXMLItem& item) const override;
  void Load(const MXMLItem& item) override;

 private:
  struct Mix;
  struct Voice;
  struct Entry {
    MAudioGeneratorObject* object;
    bool isEnabledAtFirst;
  };

  static constexpr int32_t kPart = 8192;

  static int32_t ChooseBase(const Mix& mix) noexcept;
  void MixPart(Mix& mix, int32_t base, MAudioBuffer& out);
  void MixVoice(Voice& voice, MAudioGeneratorObject& object, MAudioBuffer& out, MAudioBuffer& work);

  std::vector<Entry, MAllocator<Entry>> objects_;
  MAudioBuffer work_;
};
