#include "hosts/cli/AudioFiles.h"

#include <sndfile.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "hosts/cli/Failure.h"
#include "hosts/cli/System.h"

namespace cli {

namespace {

// What a plain WAV file is expected to hold at most, and can hold: its sizes have 32 bits. Between the two
// lies what a header may be wrong about the length of its data.
constexpr int64_t kExpectedInPlainWav = int64_t{1} << 31;
constexpr int64_t kMostInPlainWav = (int64_t{1} << 32) - 4096;

// From here on a number of frames stands for none: headers of streams, and libsndfile, give various.
constexpr sf_count_t kNobodyKnows = sf_count_t{1} << 48;

OutputFile& Output(void* file) {
  return *static_cast<OutputFile*>(file);
}

SF_VIRTUAL_IO MakeVirtualFile() {
  SF_VIRTUAL_IO io;
  io.get_filelen = [](void* file) -> sf_count_t { return Output(file).GetSize(); };
  io.seek = [](sf_count_t offset, int whence, void* file) -> sf_count_t {
    return Output(file).Seek(offset, whence);
  };
  io.read = [](void* bytes, sf_count_t count, void* file) -> sf_count_t {
    return Output(file).Read(bytes, count);
  };
  io.write = [](const void* bytes, sf_count_t count, void* file) -> sf_count_t {
    return Output(file).Write(bytes, count);
  };
  io.tell = [](void* file) -> sf_count_t { return Output(file).Seek(0, SEEK_CUR); };
  return io;
}

// What is wrong with a file that libsndfile does not open. It checks the numbers of a header last.
std::string WhyNotOpened() {
  const std::string text = sf_strerror(nullptr);
  const std::string start = text.find("SF_INFO") != std::string::npos
                                ? "its header names no usable sample rate or number of channels"
                                : "it cannot be read as a sound file";
  return start + ": " + text;
}

// Raises when the header promises more bytes of samples than the file has; libsndfile tells so only in its
// log. Programs that write a stream put a number near the largest there, since they do not know the length.
void RequireWhole(SNDFILE* file, const std::string& path) {
  constexpr unsigned long long kStream = 0x7FFFF000;
  char log[4096] = {};
  sf_command(file, SFC_GET_LOG_INFO, log, sizeof log);
  const char* const line = std::strstr(log, "\ndata : ");
  unsigned long long promised = 0, found = 0;
  if (!line || std::sscanf(line, "\ndata : %llu (should be %llu", &promised, &found) != 2) return;
  if (promised <= found || promised >= kStream) return;
  throw Failure(ExitCode::kFile, path + ": the file is cut off: its header promises " +
                                     std::to_string(promised) + " bytes of samples, but only " +
                                     std::to_string(found) + " are there");
}

int32_t BitsOf(int format) noexcept {
  switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_S8:
    case SF_FORMAT_PCM_U8:
    case SF_FORMAT_PCM_16:
    case SF_FORMAT_ULAW:
    case SF_FORMAT_ALAW:
    case SF_FORMAT_ALAC_16:
      return 16;
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_ALAC_20:
    case SF_FORMAT_ALAC_24:
      return 24;
    default:
      return 32;
  }
}

}  // namespace

struct AudioReader::Handle {
  explicit Handle(SNDFILE* opened) : file(opened) {}
  ~Handle() { sf_close(file); }

  SNDFILE* const file;
};

AudioReader::AudioReader(const std::string& path) : path_(path) {
  const std::string reason = WhyUnreadable(path);
  if (!reason.empty()) throw Failure(ExitCode::kFile, path + ": " + reason);
  SF_INFO info = {};
  SNDFILE* const file = sf_open(path == "-" ? "./-" : path.c_str(), SFM_READ, &info);
  if (!file) throw Failure(ExitCode::kFile, path + ": " + WhyNotOpened());
  handle_ = std::make_unique<Handle>(file);
  RequireWhole(file, path);
  format_ = {info.channels, info.samplerate};
  bits_ = BitsOf(info.format);
  if (info.frames < kNobodyKnows) frames_ = info.frames;
}

AudioReader::~AudioReader() = default;

int64_t AudioReader::Read(float* interleaved, int64_t frames) {
  return Check(sf_readf_float(handle_->file, interleaved, frames), frames);
}

int64_t AudioReader::ReadIntegers(int32_t* interleaved, int64_t frames) {
  return Check(sf_readf_int(handle_->file, interleaved, frames), frames);
}

int64_t AudioReader::Check(int64_t got, int64_t wanted) const {
  if (got < wanted && sf_error(handle_->file) != SF_ERR_NO_ERROR)
    throw Failure(ExitCode::kFile, path_ + ": reading failed: " + sf_strerror(handle_->file));
  return got;
}

struct AudioWriter::Handle {
  ~Handle() {
    if (file) sf_close(file);
  }

  SF_VIRTUAL_IO io = MakeVirtualFile();
  SNDFILE* file = nullptr;
};

AudioWriter::AudioWriter(OutputFile& output, const AudioFormat& format, std::optional<int64_t> expectedFrames)
    : output_(output),
      frameBytes_(int64_t{4} * format.channels),
      framesLeft_(std::numeric_limits<int64_t>::max()),
      handle_(std::make_unique<Handle>()) {
  const bool isPlain = expectedFrames && *expectedFrames <= kExpectedInPlainWav / frameBytes_;
  if (isPlain) framesLeft_ = kMostInPlainWav / frameBytes_;
  SF_INFO info = {};
  info.channels = format.channels;
  info.samplerate = format.sampleRate;
  info.format = SF_FORMAT_FLOAT | (isPlain ? SF_FORMAT_WAV : SF_FORMAT_RF64);
  handle_->file = sf_open_virtual(&handle_->io, SFM_WRITE, &info, &output_);
  output_.ThrowIfFailed();
  if (!handle_->file) throw Failure(ExitCode::kOutput, output.GetPath() + ": " + sf_strerror(nullptr));
  sf_command(handle_->file, SFC_SET_ADD_PEAK_CHUNK, nullptr, SF_FALSE);
  sf_command(handle_->file, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
}

AudioWriter::~AudioWriter() = default;

void AudioWriter::Write(const float* interleaved, int64_t frames) {
  framesLeft_ -= frames;
  if (framesLeft_ < 0)
    throw Failure(
        ExitCode::kOutput,
        output_.GetPath() + ": the input is much longer than its header says, too long for a WAV file");
  const int64_t written = sf_writef_float(handle_->file, interleaved, frames);
  output_.ThrowIfFailed();
  if (written != frames)
    throw Failure(ExitCode::kOutput, output_.GetPath() + ": " + sf_strerror(handle_->file));
}

void AudioWriter::Close() {
  sf_close(std::exchange(handle_->file, nullptr));
  DropPeaks();
  output_.ThrowIfFailed();
}

// libsndfile puts the peaks, with the time of day, into every RF64 file. The chunk becomes one of nothing.
void AudioWriter::DropPeaks() {
  struct {
    char name[4];
    uint8_t size[4];
  } chunk;
  constexpr int64_t kFirstChunk = 12;
  int64_t position = kFirstChunk;
  while (output_.Seek(position, SEEK_SET) == position &&
         output_.Read(&chunk, sizeof chunk) == int64_t{sizeof chunk} &&
         std::memcmp(chunk.name, "data", 4) != 0) {
    const uint32_t size = uint32_t{chunk.size[0]} | uint32_t{chunk.size[1]} << 8 |
                          uint32_t{chunk.size[2]} << 16 | uint32_t{chunk.size[3]} << 24;
    if (std::memcmp(chunk.name, "PEAK", 4) == 0) {
      std::memcpy(chunk.name, "JUNK", 4);
      output_.Seek(position, SEEK_SET);
      output_.Write(&chunk, sizeof chunk);
      const std::vector<char> nothing(size);
      output_.Write(nothing.data(), size);
    }
    position += int64_t{sizeof chunk} + size + size % 2;
  }
}

}  // namespace cli
