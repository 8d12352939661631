#include "hosts/cli/Takes.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "audiofiles/MMultiSampleFile.h"
#include "hosts/cli/AudioFiles.h"
#include "hosts/cli/Failure.h"

namespace cli {

namespace {

constexpr int64_t kChunkFrames = 1 << 14;

[[noreturn]] void Refuse(const std::string& path, const std::string& why) {
  throw Failure(ExitCode::kFile, path + ": " + why);
}

// The energy, and the number of frames.
void Measure(AudioReader& reader, TakeTrack& track) {
  const auto channels = static_cast<std::size_t>(track.channels);
  std::vector<float> samples(static_cast<std::size_t>(kChunkFrames) * channels);
  int64_t length = 0;
  while (const int64_t frames = reader.Read(samples.data(), kChunkFrames)) {
    for (std::size_t i = 0; i < static_cast<std::size_t>(frames) * channels; ++i)
      track.energy += double{samples[i]} * samples[i];
    length += frames;
  }
  track.energy /= track.channels;
  if (!std::isfinite(track.energy)) Refuse(track.path, "it has samples that are no numbers");
  if (length == 0) Refuse(track.path, "it has no samples");
  if (length > INT32_MAX / track.channels / 4) Refuse(track.path, "it is too long for a multisample");
  track.length = static_cast<int32_t>(length);
}

class TakeReader {
 public:
  TakeSet Read(const std::vector<TakeFile>& files) {
    for (const TakeFile& file : files) Add(file);
    CheckTakes();
    for (Take& take : set_.takes) FindLoudness(take);
    SortByLoudness(set_.takes.begin(), set_.takes.end());
    if (set_.takes.front().named)
      TakeNamedLayers();
    else
      FindLayers();
    return std::move(set_);
  }

 private:
  void Add(const TakeFile& file) {
    AudioReader reader(file.path);
    const AudioFormat& format = reader.GetFormat();
    if (format.channels > MAudioBuffer::kMaximumChannels)
      Refuse(file.path, "it has more than eight channels");
    if (set_.sampleRate == 0) set_.sampleRate = format.sampleRate;
    if (format.sampleRate != set_.sampleRate)
      Refuse(file.path, "its sample rate is " + std::to_string(format.sampleRate) +
                            " hertz, that of the others " + std::to_string(set_.sampleRate));
    TakeTrack track{file.path, format.channels, 0, reader.GetBits(), 0};
    Measure(reader, track);
    set_.frames += track.length;
    auto [found, isNew] = tracks_.try_emplace(file.take);
    if (isNew) set_.takes.push_back({file.take, file.layer, file.level, 0, 0, 0, 0, {}});
    if (!found->second.emplace(file.track, track).second)
      Refuse(file.path, "there is a recording of track \"" + file.track + "\" of this take already");
  }

  void CheckTakes() {
    for (const auto& [name, track] : tracks_[set_.takes.front().name]) set_.tracks.push_back(name);
    if (set_.tracks.size() > MMultiSampleFile::kMostTracks)
      Refuse(set_.takes.front().name, "it has more than sixteen tracks");
    for (Take& take : set_.takes) {
      std::vector<std::string> names;
      for (const auto& [name, track] : tracks_[take.name]) {
        names.push_back(name);
        take.tracks.push_back(track);
      }
      const std::string& path = take.tracks.front().path;
      if (names != set_.tracks) Refuse(path, "its take has other tracks than " + set_.takes.front().name);
      if (take.named.has_value() != set_.takes.front().named.has_value())
        Refuse(path, "only some of the names tell a layer");
    }
  }

  static void FindLoudness(Take& take) {
    double energy = 0;
    for (std::size_t t = 0; t < take.tracks.size(); ++t) {
      energy += take.tracks[t].energy;
      take.length = std::max(take.length, take.tracks[t].length);
      if (take.tracks[t].energy > take.tracks[static_cast<std::size_t>(take.loudestTrack)].energy)
        take.loudestTrack = static_cast<int32_t>(t);
    }
    take.rms = std::sqrt(energy / take.length);
  }

  static void SortByLoudness(std::vector<Take>::iterator begin, std::vector<Take>::iterator end) {
    std::stable_sort(begin, end, [](const Take& a, const Take& b) {
      return std::pair(a.named, a.rms) < std::pair(b.named, b.rms);
    });
  }

  void FindLayers() {
    const double most = std::pow(10.0, kLayerDecibels / 20);
    double softest = -1;
    int32_t layer = 0;
    for (Take& take : set_.takes) {
      if (softest < 0 || take.rms > softest * most) {
        softest = take.rms;
        ++layer;
      }
      take.layer = layer;
    }
  }

  // The reader looks layers up by the loudness of their last takes, which has to rise.
  void TakeNamedLayers() {
    int32_t layer = 0;
    for (std::size_t i = 0; i < set_.takes.size(); ++i) {
      const Take* const before = i > 0 ? &set_.takes[i - 1] : nullptr;
      Take& take = set_.takes[i];
      const bool isNext = !before || before->named != take.named;
      if (isNext) ++layer;
      if (isNext && before && take.rms <= before->rms) set_.areLevelsReplaced = true;
      take.layer = layer;
    }
    if (!set_.areLevelsReplaced) return;
    for (Take& take : set_.takes) take.rms = take.level > 0 ? take.level : double(take.layer) / layer;
  }

  TakeSet set_;
  std::map<std::string, std::map<std::string, TakeTrack>> tracks_;  // of a take, by the names of both
};

}  // namespace

TakeSet ReadTakes(const std::vector<TakeFile>& files) {
  return TakeReader().Read(files);
}

}  // namespace cli
