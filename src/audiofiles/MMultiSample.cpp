#include "audiofiles/MMultiSample.h"

#include <algorithm>
#include <limits>

#include "core/MGuard.h"

namespace {

constexpr int32_t kNoLength = 0x7FFFFFFF;
constexpr int32_t kHeadMilliseconds = 2500;
constexpr int32_t kLongestFadeSeconds = 4;
constexpr double kNearby = 1e-50;

int32_t Limited(double samples) {
  return static_cast<int32_t>(std::clamp(samples, 0.0, double{kNoLength}));
}

}  // namespace

MMultiSample::MMultiSample(const MString& path, double maximalSeconds, bool isSingle)
    : file_(path), maximalSeconds_(maximalSeconds), isSingle_(isSingle) {
  const double rate = file_.GetSampleRate();
  if (maximalSeconds < kNoLimit) maximalLength_ = Limited(maximalSeconds * rate);
  while (takes_.size() < file_.GetTakes().size())
    takes_.push_back(std::make_unique<MSampleTake>(GetTrackCount()));
  for (const MMultiSampleFile::Layer& layer : file_.GetLayers())
    ReadTake(layer.first, true, Limited(rate * kHeadMilliseconds / 1000));
  Start();
}

MMultiSample::~MMultiSample() {
  StopAndJoin();
}

int32_t MMultiSample::FindLayer(double loudness) const noexcept {
  const auto& layers = file_.GetLayers();
  const auto found = std::lower_bound(
      layers.begin(), layers.end(), loudness,
      [](const MMultiSampleFile::Layer& layer, double v) { return layer.loudness < v - kNearby; });
  return std::min(static_cast<int32_t>(found - layers.begin()), static_cast<int32_t>(layers.size()) - 1);
}

void MMultiSample::ReadTake(int32_t take, bool isHead, int32_t limit) {
  MSampleTake& target = *takes_[static_cast<std::size_t>(take)];
  const MLocker locker(target.lock_);
  bool isComplete = true;
  for (int32_t track = 0; track < GetTrackCount(); ++track)
    if (!ReadTrack(take, track, isHead, std::min(limit, maximalLength_))) isComplete = false;
  if (isComplete) target.isLoaded_.store(true, std::memory_order_release);
  const int32_t loudest = file_.GetTakes()[static_cast<std::size_t>(take)].loudestTrack;
  const MAudioBuffer* buffer = nullptr;
  if (loudest >= 0 && loudest < GetTrackCount())
    buffer = target.GetWhole(loudest) ? target.GetWhole(loudest) : target.GetHead(loudest);
  loudest_.store(buffer, std::memory_order_release);
}

bool MMultiSample::ReadTrack(int32_t take, int32_t track, bool isHead, int32_t limit) {
  const auto number = static_cast<std::size_t>(track);
  MSampleTake::Track& target = takes_[static_cast<std::size_t>(take)]->tracks_[number];
  if (target.whole.Get()) return true;
  const auto& files = file_.GetTakes()[static_cast<std::size_t>(take)].files;
  const bool isCut = number < files.size() && files[number].length > limit;
  if (isHead && isCut) {
    if (!target.head.Get()) file_.Read(target.head.samples, take, track, limit);
    target.head.isThere.store(true, std::memory_order_release);
    return false;
  }
  MAudioBuffer& buffer = target.whole.samples;
  file_.Read(buffer, take, track, limit);
  const int32_t length = buffer.GetLength();
  const int64_t longestFade = int64_t{kLongestFadeSeconds} * file_.GetSampleRate();
  if (isCut) buffer.Fade(static_cast<int32_t>(std::min<int64_t>(length / 2, longestFade)), 1, length, 0);
  target.whole.isThere.store(true, std::memory_order_release);
  return true;
}

void MMultiSample::Request(int32_t layer) {
  const MLocker locker(lock_);
  if (layer < 0 || requests_.Find(layer) >= 0) return;
  requests_.Add(layer);
  wake_.Release();
}

bool MMultiSample::FinishLoading() {
  constexpr uint32_t kPatience = 20;  // milliseconds, in case that somebody else was told
  for (;;) {
    {
      const MLocker locker(lock_);
      if ((requests_.IsEmpty() && !isReading_) || IsStopRequested()) return !std::exchange(hasFailed_, false);
    }
    served_.Acquire(kPatience);
  }
}

bool MMultiSample::BeginRequest(int32_t& layer) {
  const MLocker locker(lock_);
  if (requests_.IsEmpty() || IsStopRequested()) return false;
  layer = requests_[0];
  requests_.Remove(0);
  isReading_ = true;
  return true;
}

void MMultiSample::EndRequest(bool isDone) {
  const MLocker locker(lock_);
  isReading_ = false;
  if (!isDone) hasFailed_ = true;
  served_.Release();
}

// With a single take the layer's number counts as that of the take.
void MMultiSample::Serve(int32_t layer) {
  if (IsSingle()) {
    if (layer < static_cast<int32_t>(takes_.size())) ReadTake(layer, false, kNoLength);
    return;
  }
  if (layer >= static_cast<int32_t>(file_.GetLayers().size())) return;
  const MMultiSampleFile::Layer& from = file_.GetLayers()[static_cast<std::size_t>(layer)];
  for (int32_t take = from.first; take <= from.last && !IsStopRequested(); ++take)
    ReadTake(take, false, kNoLength);
}

uint32_t MMultiSample::Run() {
  while (!IsStopRequested()) {
    int32_t layer = 0;
    if (BeginRequest(layer))
      EndRequest(MRunGuarded("MMultiSample::Run", [&] { Serve(layer); }));
    else
      wake_.Acquire(kWaitForever);
  }
  return 0;
}
