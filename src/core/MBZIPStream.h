#pragma once
#include "core/MCompressionStream.h"

// A filter for the format of bzip2, one stream of it. The level is the size of a block in 100 kB; level 0
// does not exist and raises "Could not initialize deflating.". IsEnd is HasEnded: never true in a source that
// was cut off, and nothing is raised without a base.
class MBZIPStream : public MCompressionStream {
 public:
  // Opens.
  MBZIPStream(MStream* base, bool isCompressing, int32_t quality = kBestQuality);

  bool IsEnd() override;

 private:
  struct Compressor;
  struct Decompressor;

  Work* MakeCompressor(int32_t level) override;
  Work* MakeDecompressor() override;
};
