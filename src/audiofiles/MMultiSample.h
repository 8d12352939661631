#pragma once
#include <atomic>
#include <memory>
#include <vector>

#include "audiofiles/MMultiSampleFile.h"
#include "core/MList.h"
#include "core/MSemaphore.h"
#include "core/MThread.h"

// One recording of a multisample as far as it is in memory. Buffers are filled by one thread and never
// touched again once they are announced.
class MSampleTake {
 public:
  M_LIBRARY_MEMORY

  explicit MSampleTake(int32_t tracks) : tracks_(static_cast<std::size_t>(tracks)) {}

  // Whether all tracks are there as a whole. [any]
  bool IsLoaded() const noexcept { return isLoaded_.load(std::memory_order_acquire); }
  // A whole track, or the beginning of one; null as long as it is not there. [any]
  const MAudioBuffer* GetWhole(int32_t track) const noexcept { return GetTrack(track).whole.Get(); }
  const MAudioBuffer* GetHead(int32_t track) const noexcept { return GetTrack(track).head.Get(); }

 private:
  friend class MMultiSample;

  struct Buffer {
    const MAudioBuffer* Get() const noexcept {
      return isThere.load(std::memory_order_acquire) ? &samples : nullptr;
    }

    MAudioBuffer samples;
    std::atomic<bool> isThere = false;
  };
  struct Track {
    Buffer whole;
    Buffer head;
  };

  const Track& GetTrack(int32_t track) const noexcept { return tracks_[static_cast<std::size_t>(track)]; }

  MLock lock_;  // one reader of the file at a time
  std::vector<Track, MAllocator<Track>> tracks_;
  std::atomic<bool> isLoaded_ = false;
};

// A multisample in memory: 2.5 seconds of the first take of each layer at first, and all takes of a layer
// once it is requested, which a thread of the multisample reads. What was read stays. Takes longer than the
// maximal length are cut to it and faded out.
class MMultiSample final : public MThread {
 public:
  static constexpr double kNoLimit = 1.7e308;

  // Reads the index and the heads, and starts the thread. Raises what MMultiSampleFile does. With
  // `isSingle` a request reads one take alone, the one whose number is the layer's.
  MMultiSample(const MString& path, double maximalSeconds, bool isSingle);
  ~MMultiSample() override;

  const MMultiSampleFile& GetFile() const noexcept { return file_; }
  double GetMaximalSeconds() const noexcept { return maximalSeconds_; }
  int32_t GetLongest() const noexcept { return std::min(file_.GetLongest(), maximalLength_); }
  const MSampleTake& GetTake(int32_t take) const { return *takes_[static_cast<std::size_t>(take)]; }

  bool IsSingle() const noexcept { return isSingle_.load(std::memory_order_relaxed); }
  // From now on requests read whole layers. [any]
  void ReadLayers() noexcept { isSingle_.store(false, std::memory_order_relaxed); }

  // The first layer at or above a loudness, within 1e-50; the first or the last one beyond them. [any]
  int32_t FindLayer(double loudness) const noexcept;
  // Has the thread read a layer, unless it stands in the list already. [any]
  void Request(int32_t layer);
  // Waits until all that was requested is read; false if some of it, since the last call, could not be.
  // [host]
  bool FinishLoading();

  // The loudest track of the take that was read last, as far as it is there; null if the file names none.
  // [any]
  const MAudioBuffer* GetLoudest() const noexcept { return loudest_.load(std::memory_order_acquire); }

 protected:
  uint32_t Run() override;
  void WakeUp() noexcept override { wake_.Release(); }

 private:
  using Takes = std::vector<std::unique_ptr<MSampleTake>, MAllocator<std::unique_ptr<MSampleTake>>>;

  void ReadTake(int32_t take, bool isHead, int32_t limit);
  int32_t GetTrackCount() const noexcept { return static_cast<int32_t>(file_.GetTracks().size()); }
  // Whether the track is there as a whole now.
  bool ReadTrack(int32_t take, int32_t track, bool isHead, int32_t limit);
  bool BeginRequest(int32_t& layer);
  void Serve(int32_t layer);
  void EndRequest(bool isDone);

  MMultiSampleFile file_;
  const double maximalSeconds_;
  int32_t maximalLength_ = 0x7FFFFFFF;
  Takes takes_;
  std::atomic<bool> isSingle_;
  std::atomic<const MAudioBuffer*> loudest_ = nullptr;

  MSemaphore wake_{true};
  MSemaphore served_{true};
  MLock lock_;  // guards the rest
  MList<int32_t> requests_;
  bool isReading_ = false;
  bool hasFailed_ = false;
};
