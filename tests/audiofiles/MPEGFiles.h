#pragma once
// MPEG audio for tests: of Debian's encoders, frames of layer I of our own, and the wrappers around them.

#include <cmath>
#include <cstdlib>

#include "tests/audiofiles/SampleFiles.h"
#include "tests/common/TemporaryFolder.h"

// Something with tones, noise and attacks, as a WAV file of 16 bits.
inline std::string Music(int rate, int channels, double seconds) {
  TestRandom random(7);
  std::string data;
  const int frames = static_cast<int>(rate * seconds);
  for (int i = 0; i < frames; ++i)
    for (int c = 0; c < channels; ++c) {
      const double time = static_cast<double>(i) / rate;
      const double envelope = std::exp(-6 * std::fmod(time + 0.1 * c, 0.25));
      const double value = 0.35 * std::sin(2 * M_PI * (330 + 110 * c) * time + 2 * std::sin(9 * time)) +
                           0.3 * envelope * std::sin(2 * M_PI * 0.21 * rate * time) +
                           0.25 * envelope * random.Real(-1, 1);
      data += Little(static_cast<uint64_t>(std::lrint(value * 32000)), 2);
    }
  return Wav(Form(channels, 16, 1, static_cast<uint32_t>(rate)), data);
}

inline bool IsInstalled(const std::string& encoder) {
  return std::system(("command -v " + encoder + " >/dev/null").c_str()) == 0;
}

struct Encoding {
  const char* encoder;  // lame for layer III, twolame for layer II
  const char* options;
  int rate;  // of the music
  int channels;
};

inline void PrintTo(const Encoding& encoding, std::ostream* out) {
  *out << encoding.encoder << " " << encoding.options << ", " << encoding.rate << " Hz, "
       << encoding.channels;
}

inline std::string Encode(const Encoding& encoding, double seconds = 1.0) {
  const TemporaryFolder folder;
  const std::string in = folder.WriteFile("in.wav", Music(encoding.rate, encoding.channels, seconds));
  const std::string command = std::string(encoding.encoder) + " " + encoding.options + " " + in + " " +
                              folder.Path("out") + " 2>/dev/null";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return folder.ReadFile("out");
}

// Skips a test on a machine without an encoder; tools/install-deps installs both.
#define REQUIRE_ENCODER(name) \
  if (!IsInstalled(name))     \
  GTEST_SKIP() << "the encoder " << name << " is not installed (tools/install-deps test)"

// Bits from the highest of each byte on.
class BitWriter {
 public:
  void Put(uint32_t value, int bits) {
    for (int bit = bits - 1; bit >= 0; --bit) {
      if (used_ % 8 == 0) bytes_ += '\0';
      const uint32_t byte = static_cast<uint8_t>(bytes_.back()) | (value >> bit & 1) << (7 - used_ % 8);
      bytes_.back() = static_cast<char>(byte);
      ++used_;
    }
  }
  int GetUsed() const { return used_; }
  // With zero bits up to a size in bytes.
  std::string Take(std::size_t size) {
    bytes_.resize(size);
    return bytes_;
  }

 private:
  std::string bytes_;
  int used_ = 0;
};

// Frames of layer I: as many random allocations, scale factors and samples as find room. `mode`: 0 stereo,
// 1 joint stereo, 2 two channels, 3 mono. The second byte of the head: 0xFF MPEG-1, 0xF7 MPEG-2.
inline std::string LayerIFrame(TestRandom& random, uint8_t second, int rateIndex, int bitRateIndex, int mode,
                               int frameBytes) {
  const int channels = mode == 3 ? 1 : 2;
  const int extension = mode == 1 ? random.Below(4) : 0;
  const int bound = mode == 1 ? 4 * (extension + 1) : 32;
  BitWriter out;
  out.Put(0xFF, 8);
  out.Put(second, 8);
  out.Put(static_cast<uint32_t>(bitRateIndex << 4 | rateIndex << 2), 8);
  out.Put(static_cast<uint32_t>(mode << 6 | extension << 4), 8);
  int allocation[32][2] = {};
  int left = frameBytes * 8 - 32 - 4 * (bound * channels + 32 - bound);
  for (int band = 0; band < 32; ++band)
    for (int c = 0; c < channels; ++c) {
      const bool shared = band >= bound;
      const int bits = random.OneIn(3) ? 0 : random.Integer(1, 14);
      const int cost = bits == 0 ? 0 : 12 * (bits + 1) + 6 * (shared ? channels : 1);
      if (!(shared && c == 1) && cost <= left) left -= cost, allocation[band][c] = bits;
      if (shared && c == 1) allocation[band][1] = allocation[band][0];
      if (!(shared && c == 1)) out.Put(static_cast<uint32_t>(allocation[band][c]), 4);
    }
  for (int band = 0; band < 32; ++band)
    for (int c = 0; c < channels; ++c)
      if (allocation[band][c] > 0) out.Put(static_cast<uint32_t>(random.Integer(18, 62)), 6);
  for (int i = 0; i < 12; ++i)
    for (int band = 0; band < 32; ++band)
      for (int c = 0; c < (band < bound ? channels : 1); ++c) {
        const int bits = allocation[band][c];
        if (bits > 0) out.Put(static_cast<uint32_t>(random.Below((2 << bits) - 1)), bits + 1);
      }
  return out.Take(static_cast<std::size_t>(frameBytes));
}

inline std::string SyncsafeSize(uint32_t size) {
  std::string text;
  for (int shift = 21; shift >= 0; shift -= 7) text += static_cast<char>(size >> shift & 0x7F);
  return text;
}

inline std::string ID3v2(const std::string& contents) {
  return std::string("ID3\3\0\0", 6) + SyncsafeSize(static_cast<uint32_t>(contents.size())) + contents;
}

inline std::string ID3v1() {
  return "TAG" + std::string(125, ' ');
}

inline std::string APETag() {
  return "APETAGEX" + Little(2000, 4) + Little(32, 4) + Little(0, 4) + Little(0, 4) + std::string(8, '\0');
}
