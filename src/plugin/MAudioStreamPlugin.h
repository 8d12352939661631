#pragma once
#include "plugin/MPlugin.h"

// One sounding note. The plug-in's own record derives from it.
struct MAudioStream {
  M_LIBRARY_MEMORY

  int32_t delay = 0;  // samples of silence that are left in front of the note; first in the record
};

// Base of all instruments. An instrument makes no sound by itself: the host asks for a stream per note and
// computes it block by block; polyphony is the host's. A stream overwrites its block: an array of addresses,
// one per channel that Prepare was given, of buffers of 32-bit floats. A block with a null address is left
// alone and counts as one in front of the note. Denormals are flushed while a stream works.
class MAudioStreamPlugin : public MPlugin {
 public:
  MWord Service(int32_t service, MServiceArguments* arguments) override;

  // Stores the format, calls Update() and returns 0; a negative number of channels is 0. [host]
  virtual int32_t Prepare(int32_t channels, int32_t sampleRate);
  // Makes a stream and stores its handle in the request's result: 0. Or, without a sound, a request or a
  // place for the result: 1, and nothing is stored. A failure is reported and gives 1. A delay below 0 is 0;
  // a volume that is not finite is 0, and all others are limited to -1e15..1e15, so that samples stay finite;
  // a ratio that is not finite or not above 0 is 1, and all others are limited to 1e-6..1e6. Allocates.
  // [audio]
  virtual int32_t CreateStream(MStreamRequest* request);
  // Computes the next block of the stream whose handle is in the word. Returns one of MStreamResult. A null
  // handle clears the block: the stream has ended. Allocates nothing. [audio]
  virtual int32_t ComputeStream(float** out, int32_t samples, MWord* handle);
  virtual int32_t StreamQuery([[maybe_unused]] MWord a, [[maybe_unused]] MWord b) { return 0; }
  // Ends the stream and stores 0 in its word; nothing happens when that is there already. Returns 0. [audio]
  virtual int32_t CloseStream(MWord* handle);
  // Appends the files that the plug-in's state needs. [host]
  virtual int32_t CollectFiles([[maybe_unused]] MCollectedFiles* files) { return 0; }

 protected:
  // `createPlace` names CreateStream of the class in reports of failures.
  explicit MAudioStreamPlugin(const char* createPlace) noexcept : createPlace_(createPlace) {}

  // A new stream, or null where there is nothing to play. The request is a limited copy. [audio]
  virtual MAudioStream* NewStream(const MStreamRequest& request) = 0;
  // Fills out[c][first] to out[c][samples - 1]; what stands in front of `first`, below `samples`, is silent
  // already. Returns kSounds or kEnded. [audio]
  virtual int32_t Render(MAudioStream& stream, float** out, int32_t first, int32_t samples) = 0;
  virtual void FreeStream(MAudioStream* stream) = 0;  // [audio]

  int32_t GetRate() const noexcept { return std::max(sampleRate_, 1); }

  // Writes zeros to out[c][first] to out[c][end - 1] of all channels.
  void ClearBlock(float** out, int32_t first, int32_t end) const noexcept;

  int32_t channels_ = 0;
  int32_t sampleRate_ = 1;  // in hertz

 private:
  const char* createPlace_;
};
