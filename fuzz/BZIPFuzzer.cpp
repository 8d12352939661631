#include "fuzz/CompressionFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, std::size_t size) {
  return FuzzCompression<MBZIPStream>(input, size, 11);
}
