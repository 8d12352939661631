#pragma once
#include "core/MCompressionStream.h"

// A filter for the zlib format (RFC 1950): deflate with a checksum. Level 0 stores. IsEnd is that of the
// base, so it may be true while there is more to read; without a base it raises as Read does.
class MZLibStream : public MCompressionStream {
 public:
  // Opens.
  MZLibStream(MStream* base, bool isCompressing, int32_t quality = kBestQuality);

  bool IsEnd() override;

 private:
  struct Deflater;
  struct Inflater;

  Work* MakeCompressor(int32_t level) override;
  Work* MakeDecompressor() override;
};
