#pragma once
#include <span>

#include "hosts/bridge/Parameters.h"

class MXMLItem;

namespace bridge {

// One instance of a plug-in, from kAttach to kDestroy. Every operation is one service; an exception of the
// plug-in (MException) passes through, but for those of its destruction.
//
// [audio] operations neither allocate nor lock here and may run on another thread than the others, one at a
// time. Prepare comes before the first block and never during one.
class Plugin {
 public:
  // Makes the instance. `callback`, if there is one, hears MHostCode with `context` first. Raises MException
  // when the entry point gives no instance.
  explicit Plugin(MPluginEntryPoint* entryPoint, MHostCallback* callback = nullptr, void* context = nullptr);
  Plugin(Plugin&& other) noexcept;
  Plugin& operator=(Plugin&& other) noexcept;
  ~Plugin();

  // The table. Rows may be read at any time; values change through SetValue.
  std::span<const MPluginParameter> GetParameters() const noexcept;
  // The index of the row with this key, or -1.
  int32_t FindParameter(std::string_view key) const;
  // Stores the value as StoreValue does and tells the plug-in; between blocks. The index lies in the table.
  // [any]
  void SetValue(int32_t index, double value);
  // The two halves of SetValue, for several rows that change at once: the plug-in is told of the last one.
  void StoreValue(int32_t index, double value) noexcept;
  void TellChanged(int32_t index) { Call(MService::kParameterChanged, index); }

  // Writes the plug-in's state to the item, beside what that has already. Its texts may point into the
  // library. [host]
  void SaveState(MXMLItem& item);
  // Takes over the state in the item, all of it: what the item lacks gets its default. Between blocks. [host]
  void LoadState(MXMLItem& item);
  // Runs a command of the plug-in; -1 if it knows none of that name. [host]
  MWord Command(const char* name, MWord argument = 0);

  // Sets the format of all later blocks and clears the plug-in's memory. [host]
  void Prepare(int32_t channels, int32_t sampleRate);
  // Reads and writes `samples` values per channel; `out` may be `in`. Denormals are flushed. [audio]
  void Process(const float* const* in, float* const* out, int32_t samples);
  // Whether nothing is left in the effect's memory. [audio]
  bool IsSilent() { return Call(MService::kIsSilent) != 0; }
  // The samples by which the effect delays the signal. [host]
  int32_t GetLatency() { return static_cast<int32_t>(Call(MService::kGetLatency)); }
  // `samples` of time pass without a block. [audio]
  void Skip(int32_t samples);

  // An instrument's: the format of all later streams. [host]
  void PrepareStreams(int32_t channels, int32_t sampleRate);
  // A stream for a note that begins `delay` samples from now, null if it has none. Allocates. [audio]
  MWord CreateStream(int32_t delay, double volume, double ratio);
  // The stream's next block, one of MStreamResult. Denormals are flushed. [audio]
  int32_t ComputeStream(MWord& stream, float* const* out, int32_t samples);
  // Ends a stream; null is none. [audio]
  void CloseStream(MWord& stream);

 private:
  MWord Call(int32_t service, MWord a = 0, MWord b = 0, MWord c = 0);
  void Destroy() noexcept;

  MPluginEntryPoint* entryPoint_;
  void* instance_;
  MPluginPublicBlock* block_;
};

}  // namespace bridge
