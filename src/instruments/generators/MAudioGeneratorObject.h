#pragma once
#include <memory>

#include "core/MAudioBuffer.h"
#include "core/MEvent.h"
#include "core/MFlagManager.h"
#include "core/MXMLItem.h"

class MControl;

// What one sound keeps between its blocks. It belongs to the class of the object that made it, which has to
// outlive it.
class MGeneratorState {
 public:
  M_LIBRARY_MEMORY

  MGeneratorState() = default;
  MGeneratorState(const MGeneratorState&) = delete;
  MGeneratorState& operator=(const MGeneratorState&) = delete;
  virtual ~MGeneratorState() = default;
};

using MGeneratorStatePointer = std::unique_ptr<MGeneratorState>;

// Base of the objects that make sound: sources, filters around one of them, and the mixer of many. Chains of
// them are built once and edited through their parameters. Each sound is a state of its own, so that one
// chain makes several sounds: CreateState, then Compute block by block until it says that the sound is over.
// A state keeps the parameters that it was made with, all but the wave of an oscillator, which is read live.
//
// Parameters are what an editor or a file has put there; what is used of them is limited. One thread at a
// time edits, loads or makes states; another one may compute meanwhile.
class MAudioGeneratorObject : public MEventTarget, public MFlagManager<8> {
 public:
  using Event = MEvent<MOnNotifyParams>;
  struct Handler {
    MEventTarget* target;
    Event::Callback callback;
    MWord extra = 0;
  };

  // Properties of the flag manager, at first 1: whether the editor is shown under the mixer, and the mode.
  static constexpr MString kShown = "IHTI";
  static constexpr MString kMode = "IHTM";  // one of MMixerMode

  MString displayName;  // shown to the user
  MString itemName;     // of its item in a state, and of its controls
  // What a mixer does with the object.
  bool isEnabled = true;
  double volume = 1;
  double pan = 0;  // -1 left, 1 right

  virtual MString GetDisplayName() const { return displayName; }
  // Channels are those of the buffers to come, of which eight are served. [host]
  virtual void SetFormat(int32_t channels, int32_t sampleRate);
  // The length of a sound in seconds or in samples, which are whole.
  virtual double GetLength([[maybe_unused]] bool inSeconds) const { return kEndless; }

  // Starts a sound at a linear gain, its frequencies multiplied by the ratio, which is above 0. Allocates.
  virtual MGeneratorStatePointer CreateState(double gain, double ratio) const = 0;
  // Fills the buffer with what comes next, and returns whether the sound is over with it. Allocates nothing.
  // [audio]
  virtual bool Compute(MGeneratorState& state, MAudioBuffer& buffer) = 0;

  // Hears of a changed parameter, of this object and of those that it works on.
  virtual void AddChangeHandler(const Handler& handler);
  // Hears of a change of the set of objects, likewise.
  virtual void AddStructureHandler(const Handler& handler);
  void FireChange() { changed_.Fire({this, 0}); }
  void FireStructureChange() { restructured_.Fire({this, 0}); }

  virtual void CreateEditor([[maybe_unused]] MControl* parent) {}                             // [ui]
  virtual void ShowEditor([[maybe_unused]] MControl* parent, [[maybe_unused]] bool shows) {}  // [ui]
  virtual void EditorClosed() {}                                                              // [ui]

  // Gives the parameters their defaults, all but what a mixer does with the object.
  virtual void Reset() {}
  virtual void Save(MXMLItem& item) const = 0;
  // Gives the parameters what the item says, or their defaults.
  virtual void Load(const MXMLItem& item) = 0;

  // Takes over what a mixer does with another object of the kind, but for the pan.
  virtual void CopyFrom(const MAudioGeneratorObject& other);

 protected:
  static constexpr double kEndless = 2147483647.0;

  MAudioGeneratorObject(const MString& display, const MString& item);

  int32_t GetChannels() const noexcept { return channels_; }
  int32_t GetRate() const noexcept { return sampleRate_; }  // at least 1

  static bool ReadSwitch(const MXMLItem& item, const MString& name, bool fallback);

 private:
  int32_t channels_ = 0;
  int32_t sampleRate_ = 1;
  Event changed_;
  Event restructured_;
};
