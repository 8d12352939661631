#include "audiofiles/MMultiSampleCache.h"

namespace {

template <bool isSingle>
MObject* Load(const MString& path, double maximalSeconds) {
  return new MMultiSample(path, maximalSeconds, isSingle);
}

}  // namespace

MMultiSample* MMultiSampleCache::Acquire(const MString& path, double maximalSeconds, bool isSingle) {
  auto* const found = static_cast<MMultiSample*>(
      MSharedCache::Acquire(path, isSingle ? Load<true> : Load<false>, maximalSeconds));
  if (!isSingle) found->ReadLayers();
  return found;
}
