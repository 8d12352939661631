#pragma once
// Sample files as tests write them, and what is read from them.

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "core/MAudioBuffer.h"
#include "tests/common/TestRandom.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

// The lowest `bytes` bytes of a number, the lowest first.
inline std::string Little(uint64_t value, int bytes) {
  std::string text;
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> 8 * i);
  return text;
}

inline std::string FloatBytes(float value) {
  uint32_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return Little(bits, 4);
}

inline std::string Chunk(const std::string& id, const std::string& data) {
  return id + Little(data.size(), 4) + data;
}

inline std::string Form(int channels, int bits, int tag = 1, uint32_t rate = 44100) {
  const int frame = channels * bits / 8;
  return Little(static_cast<uint64_t>(tag), 2) + Little(static_cast<uint64_t>(channels), 2) +
         Little(rate, 4) + Little(uint64_t{rate} * static_cast<uint64_t>(frame), 4) +
         Little(static_cast<uint64_t>(frame), 2) + Little(static_cast<uint64_t>(bits), 2);
}

inline std::string Riff(const std::string& chunks) {
  return "RIFF" + Little(chunks.size() + 4, 4) + "WAVE" + chunks;
}

inline std::string Wav(const std::string& form, const std::string& data) {
  return Riff(Chunk("fmt ", form) + Chunk("data", data));
}

inline std::string Zsd(int32_t channels, int32_t length, int32_t rate, float peak,
                       const std::string& samples) {
  return "ZSD1" + Pattern(32) + Little(static_cast<uint32_t>(rate), 4) +
         Little(static_cast<uint32_t>(channels), 4) + Little(static_cast<uint32_t>(length), 4) +
         FloatBytes(peak) + "reserved" + samples;
}

// A stream that gives few bytes at a time, does not know its size and goes forward only.
class ShortPieces final : public ForwardStream {
 public:
  using ForwardStream::ForwardStream;
  int32_t Read(void* bytes, int32_t count) override { return ForwardStream::Read(bytes, std::min(count, 7)); }
  // The default takes a short piece for the end.
  void Seek(int64_t offset, MSeekOrigin origin) override {
    if (offset < 0) MStream::Seek(offset, origin);
    char byte;
    while (offset-- > 0 && ForwardStream::Read(&byte, 1) == 1) {
    }
  }
  int64_t GetPosition() override { return MStream::GetPosition(); }
  int64_t GetSize() override { return MStream::GetSize(); }
};

// All samples of a channel, the guards checked.
inline std::vector<float> Samples(const MAudioBuffer& buffer, int32_t channel = 0) {
  const float* const samples = buffer.GetChannel(channel);
  if (!samples) return {};
  EXPECT_EQ(samples[-1], 0);
  EXPECT_EQ(samples[buffer.GetLength()], 0);
  return std::vector<float>(samples, samples + buffer.GetLength());
}

inline void ExpectSame(const MAudioBuffer& one, const MAudioBuffer& other) {
  ASSERT_EQ(one.GetChannelCount(), other.GetChannelCount());
  for (int32_t c = 0; c < one.GetChannelCount(); ++c) EXPECT_EQ(Samples(one, c), Samples(other, c)) << c;
}

// Expects reading the bytes to fail with this message behind the prefix and this place, whatever the stream.
template <typename Load>
void ExpectInvalid(Load load, const std::string& bytes, const std::string& message,
                   const std::string& place) {
  SCOPED_TRACE(message);
  for (const bool pieces : {false, true}) {
    MMemoryStream memory(bytes.data(), static_cast<int32_t>(bytes.size()));
    ShortPieces forward(bytes);
    MAudioBuffer buffer;
    try {
      load(buffer, pieces ? static_cast<MStream&>(forward) : memory);
      ADD_FAILURE() << "nothing was raised";
    } catch (const MException& raised) {
      EXPECT_EQ(Utf8(raised.message), "Invalid file contents. " + message);
      EXPECT_EQ(raised.code, 256);
      EXPECT_EQ(Utf8(raised.source), place);
    }
  }
}
