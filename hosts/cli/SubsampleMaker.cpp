#include "hosts/cli/SubsampleMaker.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <filesystem>

#include "audiofiles/MSubSampleLibrary.h"
#include "dsp/MRealFFT.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/InstrumentCommand.h"
#include "hosts/cli/Json.h"
#include "hosts/cli/Print.h"
#include "hosts/cli/Progress.h"
#include "hosts/cli/SpectrumFrames.h"
#include "hosts/cli/TakeFiles.h"

namespace cli {

namespace {

static_assert(std::endian::native == std::endian::little);

constexpr int32_t kBands = MSubSampleLibrary::kBands;
constexpr int32_t kSize = MSubSampleLibrary::kBins;
static_assert(kSize == FrameReader::kSize);
constexpr int32_t kLowestRate = 22050, kHighestRate = 192000;
constexpr int64_t kMostSeconds = 600;  // that Grainloom plays
constexpr int64_t kStartSize = 76, kBandSize = 20, kSoundSize = 28;

struct Recording {
  std::string path;
  int32_t channels = 0;
  int32_t length = 0;
  int32_t frames = 0;
  double centroid = 0;  // hertz
  Difference difference = {};
};

// Bands in floats of the packed spectrum: 0, 16, 32, 64, ... 4096.
constexpr int32_t FirstBin(int32_t band) {
  return band == 0 ? 0 : kSize >> (kBands - band);
}
constexpr int32_t BinCount(int32_t band) {
  return (kSize >> (kBands - 1 - band)) - FirstBin(band);
}
static_assert(FirstBin(kBands - 1) + BinCount(kBands - 1) == kSize && BinCount(0) == 16);

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw Failure(ExitCode::kFile, path + ": " + why);
}

class SubsampleMaker {
 public:
  explicit SubsampleMaker(const SubsamplesArguments& arguments) : output_(arguments.output) {
    for (const std::string& source : arguments.sources) {
      std::error_code error;
      std::vector<std::string> files = {source};
      if (std::filesystem::is_directory(source, error)) files = ListSoundFiles(source);
      for (const std::string& file : files) recordings_.push_back({file});
    }
    if (recordings_.size() > std::size_t{MSubSampleLibrary::kMostSounds})
      Refuse(output_, "a subsample library has at most 10000 recordings");
    for (const Recording& recording : recordings_) RequireOther(recording.path, output_);
  }

  void Make() {
    for (Recording& recording : recordings_) Survey(recording);
    std::stable_sort(recordings_.begin(), recordings_.end(),
                     [](const Recording& a, const Recording& b) { return a.centroid < b.centroid; });
    OutputFile output(output_);
    WriteHeader(output);
    Progress progress(frames_, sampleRate_);
    int64_t done = 0;
    for (Recording& recording : recordings_) {
      WriteSpectra(recording, output);
      progress.Show(done += recording.length);
    }
    output.Commit();
  }

  std::string Describe() const {
    Json bands = Json::array(), recordings = Json::array();
    for (int32_t b = 0; b < kBands; ++b) bands.push_back({{"first", FirstBin(b)}, {"bins", BinCount(b)}});
    for (const Recording& r : recordings_) {
      const std::optional<double> ratio = r.difference.GetRatio();
      recordings.push_back({{"file", r.path},
                            {"channels", r.channels},
                            {"length", r.length},
                            {"frames", r.frames},
                            {"centroid", r.centroid},
                            {"snr", ratio ? Json(*ratio) : Json()}});
    }
    const Json made = {
        {"kind", "subsamples"}, {"rate", sampleRate_}, {"bands", bands}, {"recordings", recordings}};
    return JsonText(made);
  }

 private:
  // Counts the frames and finds the centroid.
  void Survey(Recording& recording) {
    FrameReader reader(recording.path);
    CheckFormat(reader.GetFormat(), recording.path);
    recording.channels = reader.GetFormat().channels;
    double power = 0, moment = 0;
    for (; reader.Next(); ++recording.frames) {
      if (reader.GetLength() > kMostSeconds * sampleRate_)
        Refuse(recording.path, "it lasts longer than ten minutes");
      for (int32_t c = 0; c < recording.channels; ++c) AddPower(reader.GetChannel(c), power, moment);
    }
    if (recording.frames == 0) Refuse(recording.path, "it has no samples");
    if (!std::isfinite(power)) Refuse(recording.path, "it has samples that are no numbers, or are too large");
    recording.length = static_cast<int32_t>(reader.GetLength());
    if (power > 0) recording.centroid = moment / power * sampleRate_ / kSize;
    frames_ += recording.length;
  }

  void CheckFormat(const AudioFormat& format, const std::string& path) {
    const std::string rate = "its sample rate is " + std::to_string(format.sampleRate) + " hertz";
    if (format.channels > 8) Refuse(path, "it has more than eight channels");
    if (format.sampleRate < kLowestRate || format.sampleRate > kHighestRate)
      Refuse(path, rate + ", which is not from 22050 to 192000");
    if (sampleRate_ == 0) sampleRate_ = format.sampleRate;
    if (format.sampleRate != sampleRate_)
      Refuse(path, rate + ", that of the others " + std::to_string(sampleRate_));
  }

  void AddPower(const float* frame, double& power, double& moment) {
    std::copy_n(frame, kSize, spectrum_.data());
    transform_.Forward(spectrum_.data());
    for (int32_t i = 0; i < kSize; ++i) {
      const double bin = i == 1 ? kSize / 2 : i / 2;
      const double square =
          double{spectrum_[static_cast<std::size_t>(i)]} * spectrum_[static_cast<std::size_t>(i)];
      power += square;
      moment += bin * square;
    }
  }

  template <typename Number>
  static void Put(std::string& bytes, Number number) {
    char raw[sizeof number];
    std::memcpy(raw, &number, sizeof number);
    bytes.append(raw, sizeof number);
  }

  static int64_t DataSize(const Recording& recording, int32_t bins) {
    return int64_t{sizeof(float)} * recording.channels * recording.frames * bins;
  }

  // The data of a recording lies together, band after band.
  void WriteHeader(OutputFile& output) {
    std::string bytes, name = std::filesystem::path(output_).stem().string();
    name.resize(64);
    name.back() = 0;
    Put(bytes, sampleRate_);
    bytes += name;
    bytes.append(8, '\0');
    for (int32_t b = 0; b < kBands; ++b) {
      Put(bytes, FirstBin(b));
      Put(bytes, BinCount(b));
      Put(bytes, static_cast<int32_t>(recordings_.size()));
      bytes.append(8, '\0');
      int64_t start = 0;
      for (const Recording& recording : recordings_) {
        Put(bytes, recording.frames);
        Put(bytes, recording.length);
        Put(bytes, recording.channels);
        Put(bytes, start + DataSize(recording, FirstBin(b)));
        bytes.append(8, '\0');
        start += DataSize(recording, kSize);
      }
    }
    output.Write(bytes.data(), static_cast<int64_t>(bytes.size()));
    end_ = kStartSize + kBands * (kBandSize + kSoundSize * static_cast<int64_t>(recordings_.size()));
  }

  void WriteSpectra(Recording& recording, OutputFile& output) {
    FrameReader reader(recording.path);
    const AudioFormat& format = reader.GetFormat();
    const bool isSame = format.channels == recording.channels && format.sampleRate == sampleRate_;
    std::vector<FrameComparison> comparisons(static_cast<std::size_t>(recording.channels));
    int32_t frame = 0;
    for (; isSame && frame < recording.frames && reader.Next(); ++frame)
      for (int32_t c = 0; c < recording.channels; ++c) {
        std::copy_n(reader.GetChannel(c), kSize, spectrum_.data());
        transform_.Forward(spectrum_.data());
        WriteBands(recording, c, frame, output);
        transform_.Inverse(spectrum_.data());
        comparisons[static_cast<std::size_t>(c)].Add(reader.GetChannel(c), spectrum_.data(),
                                                     recording.difference);
      }
    if (!isSame || frame < recording.frames || reader.GetLength() != recording.length)
      Refuse(recording.path, "the file has changed while it was read");
    for (int32_t c = 0; c < recording.channels; ++c)
      comparisons[static_cast<std::size_t>(c)].Finish(reader.GetChannel(c), recording.difference);
    output.ThrowIfFailed();
    end_ += DataSize(recording, kSize);
  }

  void WriteBands(const Recording& recording, int32_t channel, int32_t frame, OutputFile& output) const {
    for (int32_t b = 0; b < kBands; ++b) {
      const int64_t row = int64_t{channel} * recording.frames + frame;
      const int64_t size = int64_t{sizeof(float)} * BinCount(b);
      output.Seek(end_ + DataSize(recording, FirstBin(b)) + row * size, SEEK_SET);
      output.Write(spectrum_.data() + FirstBin(b), size);
    }
  }

  const std::string output_;
  std::vector<Recording> recordings_;
  int32_t sampleRate_ = 0;
  int64_t frames_ = 0;  // of all recordings
  int64_t end_ = 0;     // of the file so far
  MRealFFT transform_{kSize};
  std::vector<float> spectrum_ = std::vector<float>(kSize);
};

}  // namespace

void MakeSubsamples(const SubsamplesArguments& arguments) {
  SubsampleMaker maker(arguments);
  maker.Make();
  Print(maker.Describe());
}

}  // namespace cli
