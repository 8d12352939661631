#pragma once
#include "audiofiles/MMultiSample.h"
#include "audiofiles/MSharedCache.h"

// Multisamples of files, one per path and maximal length for all plug-ins and streams that play it.
class MMultiSampleCache final : public MSharedCache {
 public:
  MMultiSampleCache() : MSharedCache("Invalid subsample library to release.") {}

  // One more use of a multisample, which is made if it is not there (MMultiSample says what that raises). One
  // that reads single takes reads layers from now on if that is asked for, not the reverse.
  MMultiSample* Acquire(const MString& path, double maximalSeconds, bool isSingle);
};
