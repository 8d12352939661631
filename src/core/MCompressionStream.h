#pragma once
#include "core/MStream.h"

// Base of the filters that compress what is written to them, or decompress what is read from them, over a
// base stream that they do not own. Counts and positions are those of the plain bytes.
//
// A compressor's output is complete after Finish only. When it is closed or destroyed before that, "...
// stream has not been terminated." is raised, once; a destructor that runs while an exception unwinds the
// stack gives the text to ReportFatal instead. So do not leave one to a smart pointer, whose destructor
// cannot let it through.
//
// A failure of the library or of the base closes the filter: nothing can be put right behind it, and
// destroying it is silent then. Without a base Write, Read, Finish and Flush raise "File stream is not
// initialized." (kStreamClosed).
//
// Seek is the forward-only default, GetSize and Truncate are not implemented.
class MCompressionStream : public MStream {
 public:
  static constexpr int32_t kBestQuality = 100;

  ~MCompressionStream() noexcept(false) override;

  // Closes what was open, then begins a stream over `base`; null leaves the filter unusable. Quality is 1 to
  // 100, limited to that; its tens are the level of the library, 0 to 9: 1 to 10 give 0, 91 to 100 give 9.
  // Raises "Could not initialize deflating." or "Could not initialize inflating.".
  void Open(MStream* base, bool isCompressing, int32_t quality = kBestQuality);

  // Not implemented while decompressing.
  void Write(const void* bytes, int32_t count) override;
  // Returns less than asked for only at the end of the compressed stream or of the base, whichever comes
  // first (HasEnded tells which). The base is read 4096 bytes at a time, so its position is then up to that
  // much behind the end. Contents that are none raise "Source compressed stream has invalid content."
  // (kTransferFailed). Not implemented while compressing.
  int32_t Read(void* bytes, int32_t count) override;
  int64_t GetPosition() override;
  void Flush() override;  // of the base
  bool IsValid() override;

  // Lets go of the base and of the library's memory. Nothing without a base.
  virtual void Close();
  // Writes what is left to the base, and the end mark. Nothing when that is done or while decompressing.
  virtual void Finish();

  // From here on, until the next Open, a read that takes the position beyond `bytes` counts as invalid
  // content: few compressed bytes can stand for any number of plain ones. Negative counts as 0.
  void SetReadLimit(int64_t bytes) noexcept;
  // The end of the compressed stream was read.
  bool HasEnded() const noexcept { return hasEnded_; }

 protected:
  enum class Result { kMore, kEnd, kInvalid };

  // One stream at work in a library. A step takes from the input and adds to the output; both move on. What a
  // library has no such step for is not implemented.
  struct Work {
    M_LIBRARY_MEMORY
    virtual ~Work();
    // Uses up the input unless the output gets full.
    virtual void Compress(bool isLast);
    virtual Result Decompress();

    const uint8_t* input = nullptr;
    uint32_t inputCount = 0;
    uint8_t* output = nullptr;
    uint32_t outputCount = 0;
  };

  // `unfinishedText` is what a compressor raises that was not finished.
  explicit MCompressionStream(const MString& unfinishedText) noexcept;
  MStream& Base() const;

 private:
  // Null when the library refuses.
  virtual Work* MakeCompressor(int32_t level) = 0;
  virtual Work* MakeDecompressor() = 0;

  bool Release() noexcept;
  template <typename Step>
  void CloseOnFailure(Step step);
  void Compress(bool isLast);
  void Decompress(uint8_t* bytes, uint32_t count);
  void Refill();

  static constexpr int32_t kBufferSize = 4096;
  static constexpr uint64_t kNoLimit = ~uint64_t{0};

  MString unfinishedText_;
  int exceptionsInFlight_;
  MStream* base_ = nullptr;
  Work* work_ = nullptr;  // null once a compressor is finished, and without a base
  bool isCompressing_ = false;
  bool hasEnded_ = false;
  uint64_t position_ = 0;
  uint64_t limit_ = kNoLimit;
  uint8_t input_[kBufferSize];
  uint8_t output_[kBufferSize];
};
