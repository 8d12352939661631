#pragma once
// Sound files, streamed: any that libsndfile reads, and 32-bit float WAV.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "hosts/cli/OutputFile.h"

namespace cli {

struct AudioFormat {
  int32_t channels;
  int32_t sampleRate;  // in hertz
};

// Everything that fails raises Failure with kFile.
class AudioReader {
 public:
  explicit AudioReader(const std::string& path);
  ~AudioReader();

  const AudioFormat& GetFormat() const noexcept { return format_; }
  // As the header says, or none when it does not.
  std::optional<int64_t> GetFrames() const noexcept { return frames_; }
  // Fills `interleaved`, full scale 1; fewer frames than wanted only at the end.
  int64_t Read(float* interleaved, int64_t frames);
  // As Read, integers of 32 bits with those of the file at the top.
  int64_t ReadIntegers(int32_t* interleaved, int64_t frames);
  // The fewest bits, of 16, 24 and 32, that hold what the file has: 16 and 24 stand for integers, 32 for
  // floats, which is all that decoders of lossy formats give.
  int32_t GetBits() const noexcept { return bits_; }

 private:
  int64_t Check(int64_t got, int64_t wanted) const;

  struct Handle;
  std::string path_;
  AudioFormat format_{};
  int32_t bits_ = 32;
  std::optional<int64_t> frames_;
  std::unique_ptr<Handle> handle_;
};

// The same samples always make the same bytes. A file beyond 4 GiB is RF64. Everything that fails raises
// Failure with kOutput.
class AudioWriter {
 public:
  // `expectedFrames`: the most that will be written, none if nobody knows. The output outlives the writer.
  AudioWriter(OutputFile& output, const AudioFormat& format, std::optional<int64_t> expectedFrames);
  ~AudioWriter();

  void Write(const float* interleaved, int64_t frames);
  // Completes the header. The output is yet to be committed.
  void Close();

 private:
  void DropPeaks();

  struct Handle;
  OutputFile& output_;
  int64_t frameBytes_;
  int64_t framesLeft_;  // that the container can take
  std::unique_ptr<Handle> handle_;
};

}  // namespace cli
