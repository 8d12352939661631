// The bytes are a ZSD file: reading it raises or gives samples.

#include "audiofiles/MZSDFile.h"
#include "fuzz/SampleFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(input), size);
  MAudioBuffer buffer;
  CheckLoad(LoadZSD, buffer, bytes, 1);
  return 0;
}
