#pragma once
#include "audiofiles/MSharedCache.h"
#include "core/MAudioBuffer.h"

// Samples of files, each in memory once for all plug-ins and streams that play it. They are never written to,
// so any thread may read them without a lock while it counts as a user.
class MSampleCache final : public MSharedCache {
 public:
  // The samples of a path, one more use of it counted. Raises what LoadSamples raises; nothing is kept then.
  const MAudioBuffer* Acquire(const MString& path);
  // One more and one use less, as in the base. Raises "Invalid sample to release."
  void Share(const MAudioBuffer* sample) { MSharedCache::Share(sample); }
  void Release(const MAudioBuffer* sample) { MSharedCache::Release(sample); }
};
