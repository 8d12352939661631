#pragma once
// What the fuzzers of sample files share.

#include "tests/audiofiles/SampleFiles.h"

// What reading the bytes gives: the message raised, if any, and the samples that are there then.
template <typename Load>
std::string Result(Load load, MAudioBuffer& buffer, MStream& stream) {
  std::string result;
  try {
    load(buffer, stream);
  } catch (const MException& raised) {
    result = Utf8(raised.message);
    if (result.empty()) __builtin_trap();
  }
  for (int32_t c = 0; c < buffer.GetChannelCount(); ++c) {
    const float* const samples = buffer.GetChannel(c);
    if (samples[-1] != 0 || samples[buffer.GetLength()] != 0) __builtin_trap();
  }
  return result;
}

inline bool AreSame(const MAudioBuffer& one, const MAudioBuffer& other) {
  if (one.GetChannelCount() != other.GetChannelCount() || one.GetLength() != other.GetLength()) return false;
  const auto bytes = static_cast<std::size_t>(one.GetLength()) * sizeof(float);
  for (int32_t c = 0; c < one.GetChannelCount(); ++c)
    if (std::memcmp(one.GetChannel(c), other.GetChannel(c), bytes) != 0) return false;
  return true;
}

// Reading from memory takes at most `memoryPerByte` bytes for each byte of the file, and a stream that goes
// forward in short pieces gives the same. Returns what was raised.
template <typename Load>
std::string CheckLoad(Load load, MAudioBuffer& buffer, const std::string& bytes, std::size_t memoryPerByte) {
  MMemoryStream memory(bytes.data(), static_cast<int32_t>(bytes.size()));
  const std::string result = Result(load, buffer, memory);
  const auto samples =
      static_cast<std::size_t>(buffer.GetCapacity()) * static_cast<std::size_t>(buffer.GetChannelCount());
  if (samples * sizeof(float) > memoryPerByte * bytes.size()) __builtin_trap();
  ShortPieces pieces(bytes);
  MAudioBuffer other;
  const std::string otherResult = Result(load, other, pieces);
  // It cannot go back behind a format that is too short.
  if (otherResult == "Service \"backward seek in a stream\" is not implemented.") return result;
  if (result != otherResult || (result.empty() && !AreSame(buffer, other))) __builtin_trap();
  return result;
}
