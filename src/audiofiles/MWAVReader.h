#pragma once
#include "audiofiles/MSampleConversion.h"
#include "core/MMemory.h"
#include "core/MStream.h"

// Reads a RIFF WAVE file of 1 to 8 channels, 8, 16, 24 or 32 bits or 32-bit float (tags 1 and 3), in parts.
// Any depth but 32 is read as integers, whatever the tag. A chunk is followed by the next one without a pad
// byte: writers that pad odd chunks before the samples make files that fail here.
//
// What is wrong raises "Invalid file contents. " and what it is (kTransferFailed), only a depth that nobody
// knows raises "Invalid source bitrate." (kTransferFailed); the source is the place, "byte 12", counted from
// where the stream stood. Behind a failure the reader holds no stream.
class MWAVReader final : public MObject {
 public:
  MWAVReader() = default;
  MWAVReader(const MWAVReader&) = delete;
  MWAVReader& operator=(const MWAVReader&) = delete;

  // Reads up to the first sample. The stream stays the caller's, who does not move it between the parts.
  void Open(MStream& stream);

  const MSampleFormat& GetFormat() const noexcept { return format_; }
  int32_t GetSampleRate() const noexcept { return sampleRate_; }  // in hertz, as it stands in the file
  int32_t GetDataBytes() const noexcept { return dataBytes_; }
  int32_t GetBytesLeft() const noexcept { return bytesLeft_; }

  // Fills `target` with the next samples, as many as it is long, or with the rest, which makes it shorter; it
  // gets the file's channels. With nothing left it becomes empty. True if nothing was left or, before this
  // call, fewer bytes than the target had samples. The rest of a frame at the end is dropped.
  bool Read(MAudioBuffer& target);
  // The same with all that is left, whatever the length of `target`.
  void ReadRest(MAudioBuffer& target);

 private:
  void ParseChunks();
  void ParseFormat();
  void ParseData();
  void SkipUnknown();
  bool Take(void* bytes, int32_t count);
  void Skip(int64_t count);
  void ReadBytes(MAudioBuffer& target, int32_t count);
  void ReadPieces(MStream& source, MAudioBuffer& target, int32_t count);
  [[noreturn]] void Fail(const char* message) const;

  MStream* stream_ = nullptr;  // none before Open and behind a failure
  MSampleFormat format_;
  int32_t sampleRate_ = 0;
  int32_t dataBytes_ = 0;
  int32_t bytesLeft_ = 0;
  int64_t position_ = 0;  // of the stream, counted from where Open found it
};

// Reads all of a WAV file. The buffer is emptied first and gets the file's rate and depth; after a failure it
// has the samples that came.
void LoadWAV(MAudioBuffer& buffer, MStream& stream);
