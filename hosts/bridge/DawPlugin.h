#pragma once
#include <atomic>
#include <mutex>
#include <vector>

#include "hosts/bridge/DawParameters.h"
#include "hosts/bridge/EffectRunner.h"
#include "hosts/bridge/Voices.h"

namespace bridge {

// A plug-in in a DAW: all that the plug-in formats share. An adapter of a format makes one per instance and
// translates its calls.
//
// [audio] operations neither allocate, lock nor wait, but for notes, whose streams the instrument makes and
// closes; they raise nothing. One block is Begin, then changes and notes, each behind the RunTo of its frame,
// then End. [host] operations may come from any other thread while blocks are processed, but for Activate,
// Deactivate and SetOffline, and one at a time. They raise MException where it is said.
class DawPlugin {
 public:
  static constexpr int32_t kMostFrames = 1 << 16;  // at once

  // What the adapter is told.
  class Client {
   public:
    virtual ~Client() = default;
    // The plug-in has changed values by itself. [any]
    virtual void OnValuesChanged() noexcept = 0;
    // DoWork is to be called on a thread that may wait. [audio]
    virtual void OnWorkWaiting() noexcept = 0;
    // GetLatency gives another number than before. [any]
    virtual void OnLatencyChanged() noexcept = 0;
  };

  // The client outlives the plug-in. Raises MException when the plug-in cannot be made.
  DawPlugin(const PluginType& type, Client& client);
  DawPlugin(const DawPlugin&) = delete;
  DawPlugin& operator=(const DawPlugin&) = delete;
  ~DawPlugin();

  const PluginType& GetType() const noexcept { return type_; }
  bool IsInstrument() const noexcept { return type_.kind == PluginKind::kInstrument; }
  // What services the formats need beyond those here; for instruments' commands, between blocks.
  Plugin& GetPlugin() noexcept { return plugin_; }

  // Places in the list are those of the operations below.
  std::span<const DawParameter> GetParameters() const noexcept { return parameters_.GetAll(); }
  const DawParameters& GetParameterList() const noexcept { return parameters_; }
  double GetValue(int32_t place) const noexcept;  // table units [any]
  // Sets a value out of time, limited to the range. [host]
  void SetValue(int32_t place, double value);

  // The state as text, and as an item for those that look into it. Raise MException. [host]
  std::string SaveState();
  void SaveState(MXMLItem& item);
  void LoadState(std::string_view text);
  void LoadState(MXMLItem& item);
  // Runs a command of the plug-in, as Plugin::Command. [host]
  MWord Command(const char* name, MWord argument = 0);

  // Blocks of up to `mostFrames` in this format follow; larger ones, and than kMostFrames, are worked on in
  // parts. [host]
  void Activate(int32_t channels, int32_t sampleRate, int32_t mostFrames);
  void Deactivate();
  bool IsActive() const noexcept { return isActive_; }
  // Offline nothing is missed: all that notes and changes need is read or computed before the sound goes on.
  void SetOffline(bool isOffline);
  // The samples by which the sound is behind. [any]
  int32_t GetLatency() const noexcept { return latency_.load(std::memory_order_relaxed); }
  // The samples that sound behind the end of the input, with the latency, or behind that of the last note;
  // kEndlessTail. Measures an effect anew when the state has changed. Raises MException. [host; instruments:
  // any]
  int64_t GetTail();
  // Whether OnWorkWaiting is ever called.
  bool HasWork() const noexcept { return areRowsWork_; }
  // What OnWorkWaiting asked for. Raises MException. [host]
  void DoWork();

  // Clears all memory, cuts all notes and lifts all pedals. [audio]
  void Reset() noexcept;
  // `in` may be null for instruments, and have null channels; the channels of `out` may be any of those.
  void Begin(const float* const* in, float* const* out, int32_t frames) noexcept;
  // Goes on to this frame of the block; a frame that has passed counts as now.
  void RunTo(int32_t frame) noexcept;
  // From the current frame on. All rows that change at one frame lead to one update of the plug-in.
  void Change(int32_t place, double value) noexcept;
  // A note's number, which is not below 0, or -1, as Voices::Press.
  int64_t Play(const NoteEvent& event) noexcept;
  // One note by its number, as the operations of Voices.
  void ReleaseNote(int64_t number) noexcept;
  void ChokeNote(int64_t number) noexcept;
  bool HasNote(int64_t number) const noexcept { return voices_.HasNote(number); }
  // Ends all notes at once and lifts all pedals.
  void Cut() noexcept;
  void End() noexcept;
  // The notes that have ended by themselves in what was run last (Voices::GetEnded).
  std::span<const int64_t> GetEnded() const noexcept { return voices_.GetEnded(); }
  // Whether nothing sounds, or will without input.
  bool IsQuiet() const noexcept;

 private:
  static MWord M_CALL HearPlugin(void* context, int32_t code, MServiceArguments* arguments);
  const DawParameter& At(int32_t place) const noexcept {
    return GetParameters()[static_cast<std::size_t>(place)];
  }
  void NoteChange() noexcept;
  int64_t GetReleaseTail() const noexcept;
  void ApplyHostControls() noexcept;
  void ApplyChanges();
  void ApplyToEffect();
  void ApplyAsWork();
  void TellPending();
  void UpdateLatency() noexcept;
  void Render(int32_t frames);
  void Silence(int32_t frames) noexcept;

  const PluginType type_;
  Client& client_;
  Plugin plugin_;
  const bool areRowsWork_;  // of a thread that may wait
  DawParameters parameters_;
  Turn turn_;  // of whoever changes the plug-in
  EffectRunner effect_;
  Voices voices_;
  std::mutex hostLock_;  // one [host] operation at a time
  bool isActive_ = false;
  bool isOffline_ = false;
  int32_t channels_ = 0;
  int32_t sampleRate_ = 0;
  int32_t mostFrames_ = 0;
  std::atomic<int32_t> latency_ = 0;
  std::atomic<bool> areHostControlsNew_ = true;
  std::atomic<bool> isOtherSound_ = false;  // instruments: the host has changed what they play
  std::atomic<uint64_t> pendingRows_ = 0;   // work: rows that the plug-in is yet to be told of
  std::atomic<bool> isLatencyOld_ = false;
  std::atomic<bool> isTailKnown_ = false;
  int64_t tail_ = 0;
  int32_t changedRow_ = -1;    // others: a row that has changed since the last update
  bool isWorkNew_ = false;     // work: rows have changed since the client was told
  std::vector<float*> outAt_;  // where the piece begins
  const float* const* in_ = nullptr;
  float* const* out_ = nullptr;
  int32_t position_ = 0;
  int32_t frames_ = 0;
};

}  // namespace bridge
