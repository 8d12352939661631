#pragma once
// A byte for the sizes of pieces, one for the quality, then bytes that are compressed data to one filter,
// whose result does not depend on the pieces, and plain data to another, from which they come back.

#include "tests/common/TestRandom.h"
#include "tests/core/Compressed.h"
#include "tests/core/Encodings.h"

// What comes of reading all: bytes, or nothing but the failure.
template <typename Stream>
std::string DecompressInPieces(TricklingStream base, TestRandom& random) {
  Stream stream(&base, false);
  stream.SetReadLimit(1'000'000);
  std::string all;
  try {
    for (std::string piece = "-"; !piece.empty(); all += piece)
      piece = Take(stream, random.Integer(1, 30'000));
  } catch (const MException& raised) {
    if (raised.code != MErrorCode::kTransferFailed || stream.IsValid()) __builtin_trap();
    return "raised";
  }
  if (stream.GetPosition() != std::ssize(all)) __builtin_trap();
  return (stream.HasEnded() ? "whole:" : "cut off:") + all;
}

template <typename Stream>
std::string CompressInPieces(const std::string& bytes, int32_t quality, TestRandom& random) {
  BareStream base;
  Stream stream(&base, true, quality);
  for (std::size_t at = 0; at < bytes.size();) {
    const std::string piece = bytes.substr(at, static_cast<std::size_t>(random.Below(5000)));
    Put(stream, piece);
    at += piece.size();
  }
  stream.Finish();
  return base.written;
}

// Qualities from `lowest` on.
template <typename Stream>
int FuzzCompression(const uint8_t* input, std::size_t size, int32_t lowest) {
  if (size < 2) return 0;
  TestRandom random(input[0]);
  const int32_t quality = lowest + input[1] % (101 - lowest);
  const std::string bytes(input + 2, input + size);
  const std::string found = DecompressInPieces<Stream>(TricklingStream(bytes, random), random);
  if (found != DecompressInPieces<Stream>(TricklingStream(bytes, random), random)) __builtin_trap();
  const std::string compressed = CompressInPieces<Stream>(bytes, quality, random);
  if (DecompressInPieces<Stream>(TricklingStream(compressed, random), random) != "whole:" + bytes)
    __builtin_trap();
  return 0;
}
