#include "hosts/cli/MultisampleMaker.h"

#include <bit>

#include "core/MException.h"
#include "core/MXMLItem.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/cli/AudioFiles.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/InstrumentCommand.h"
#include "hosts/cli/Json.h"
#include "hosts/cli/OutputStream.h"
#include "hosts/cli/Print.h"
#include "hosts/cli/Progress.h"
#include "hosts/cli/Takes.h"
#include "hosts/cli/Warnings.h"
#include "hosts/cli/Words.h"
#include "resources/MLargeResourceWriter.h"

namespace cli {

namespace {

constexpr int64_t kChunkFrames = 1 << 12;

using Compression = MLargeResourceWriter::Compression;

Compression ToCompression(const std::string& name) {
  if (name == "zlib") return Compression::kZLib;
  return name == "bzip2" ? Compression::kBZIP : Compression::kNone;
}

class MultisampleWriter {
 public:
  MultisampleWriter(const TakeSet& set, OutputFile& output, Compression compression)
      : set_(set), stream_(output), writer_(stream_, compression), progress_(set.frames, set.sampleRate) {}

  void Write() {
    MXMLItem root("multisample");
    Set(root, "samplerate", set_.sampleRate);
    for (const std::string& name : set_.tracks) {
      MXMLItem& track = root.AddSubItem("track");
      track.SetAttribute("name", bridge::FromUtf8(name));
      Set(track, "volume", 1);
      Set(track, "pan", 0);
    }
    for (const Take& take : set_.takes) WriteTake(take, root.AddSubItem("sample"));
    writer_.Finish(root);
  }

 private:
  static void Set(MXMLItem& item, const MString& name, int64_t number) {
    item.SetAttribute(name, MString::FromInteger(number));
  }

  void WriteTake(const Take& take, MXMLItem& item) {
    Set(item, "length", take.length);
    item.SetAttribute("rms", MString::FromNarrow(NumberText(take.rms).c_str()));
    Set(item, "maxrmsindex", take.loudestTrack);
    Set(item, "group", take.layer);
    for (const TakeTrack& track : take.tracks) {
      WriteTrack(track);
      const MLargeResourceWriter::Place place = writer_.EndItem();
      MXMLItem& file = item.AddSubItem("file");
      Set(file, "channels", track.channels);
      Set(file, "length", track.length);
      Set(file, "bps", track.bits);
      Set(file, "filestart", place.start);
      Set(file, "filesize", place.size);
    }
  }

  void WriteTrack(const TakeTrack& track) {
    MStream& item = writer_.BeginItem();
    AudioReader reader(track.path);
    const auto channels = static_cast<std::size_t>(track.channels);
    floats_.resize(static_cast<std::size_t>(kChunkFrames) * channels);
    integers_.resize(floats_.size());
    int64_t left = track.length;
    const AudioFormat& format = reader.GetFormat();
    const bool isSame = format.channels == track.channels && format.sampleRate == set_.sampleRate &&
                        reader.GetBits() == track.bits;
    if (!isSame) left = -1;
    while (left > 0) {
      const int64_t wanted = std::min(left, kChunkFrames);
      const int64_t frames = track.bits == 32 ? reader.Read(floats_.data(), wanted)
                                              : reader.ReadIntegers(integers_.data(), wanted);
      if (frames < wanted) break;
      WriteSamples(item, static_cast<std::size_t>(frames) * channels, track.bits);
      left -= frames;
      progress_.Show(done_ += frames);
    }
    if (left != 0) throw Failure(ExitCode::kFile, track.path + ": the file has changed while it was read");
  }

  // Interleaved and little-endian.
  void WriteSamples(MStream& item, std::size_t count, int32_t bits) {
    const std::size_t size = static_cast<std::size_t>(bits) / 8;
    bytes_.resize(count * size);
    for (std::size_t i = 0; i < count; ++i) {
      const uint32_t word = bits == 32 ? std::bit_cast<uint32_t>(floats_[i])
                                       : static_cast<uint32_t>(integers_[i]) >> (32 - bits);
      for (std::size_t b = 0; b < size; ++b) bytes_[i * size + b] = static_cast<uint8_t>(word >> (8 * b));
    }
    item.Write(bytes_.data(), static_cast<int32_t>(bytes_.size()));
  }

  const TakeSet& set_;
  OutputStream stream_;
  MLargeResourceWriter writer_;
  Progress progress_;
  int64_t done_ = 0;
  std::vector<float> floats_;
  std::vector<int32_t> integers_;
  std::vector<uint8_t> bytes_;
};

std::string Describe(const TakeSet& set) {
  Json takes = Json::array();
  for (const Take& take : set.takes)
    takes.push_back({{"name", take.name}, {"layer", take.layer}, {"rms", take.rms}, {"length", take.length}});
  const Json made = {{"kind", "multisample"},
                     {"rate", set.sampleRate},
                     {"layers", set.takes.back().layer},
                     {"tracks", set.tracks},
                     {"takes", takes}};
  return JsonText(made);
}

}  // namespace

void MakeMultisample(const MultisampleArguments& arguments) {
  const std::vector<TakeFile> files = ListTakeFiles(arguments.source);
  for (const TakeFile& file : files) RequireOther(file.path, arguments.output);
  RequireOther(arguments.source, arguments.output);
  const TakeSet set = ReadTakes(files);
  OutputFile output(arguments.output);
  try {
    MultisampleWriter(set, output, ToCompression(arguments.compression)).Write();
  } catch (const MException& raised) {
    throw Failure(ExitCode::kOutput, arguments.output + ": it cannot be written",
                  bridge::ToUtf8(raised.message));
  }
  output.Commit();
  if (set.areLevelsReplaced)
    Warn(arguments.output +
         ": the layers are not louder one by one, so that their order counts instead of their loudness");
  Print(Describe(set));
}

}  // namespace cli
