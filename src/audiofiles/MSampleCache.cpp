#include "audiofiles/MSampleCache.h"

#include <memory>

#include "audiofiles/MSampleFile.h"

namespace {

MObject* Load(const MString& path, double) {
  auto sample = std::make_unique<MAudioBuffer>();
  LoadSamples(*sample, path);
  return sample.release();
}

}  // namespace

const MAudioBuffer* MSampleCache::Acquire(const MString& path) {
  return static_cast<const MAudioBuffer*>(MSharedCache::Acquire(path, Load));
}
