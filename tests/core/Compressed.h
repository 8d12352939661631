#pragma once
// Data for tests of the compressing streams, and whole streams in one call.

#include <zlib.h>

#include <type_traits>

#include "core/MBZIPStream.h"
#include "core/MZLibStream.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

constexpr char kInvalidContent[] = "Invalid file contents. Source compressed stream has invalid content.";

template <typename Stream>
constexpr const char* kUnfinished =
    std::is_same_v<Stream, MZLibStream> ? "ZLIB stream has not been terminated."
                                        : "BZIP2 stream has not been terminated.";

template <typename Stream>
std::string Compressed(const std::string& bytes, int32_t quality = MCompressionStream::kBestQuality) {
  BareStream base;
  Stream stream(&base, true, quality);
  Put(stream, bytes);
  stream.Finish();
  return base.written;
}

// All that the stream gives, read in pieces of `piece` bytes.
inline std::string Rest(MStream& stream, int32_t piece = 1000) {
  std::string all;
  for (std::string part = "-"; !part.empty(); all += part) part = Take(stream, piece);
  return all;
}

template <typename Stream>
std::string Decompressed(const std::string& bytes, int32_t piece = 1000) {
  ForwardStream base(bytes);
  Stream stream(&base, false);
  return Rest(stream, piece);
}

// Half of it noise, half of it words that repeat.
inline std::string Mixed(std::size_t count, TestRandom& random) {
  std::string bytes;
  while (bytes.size() < count)
    if (random.Integer(0, 9) > 0)
      bytes += "word" + std::to_string(random.Integer(0, 99)) + ' ';
    else
      for (int i = 0; i < 50; ++i) bytes += static_cast<char>(random.Integer(0, 255));
  bytes.resize(count);
  return bytes;
}
