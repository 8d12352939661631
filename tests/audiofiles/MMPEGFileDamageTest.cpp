#include "audiofiles/MMPEGFile.h"
#include "audiofiles/MPEGHeader.h"
#include "tests/audiofiles/MPEGFiles.h"

namespace {

using mp3dec::MPEGHeader;

MAudioBuffer& Load(MAudioBuffer& buffer, const std::string& bytes) {
  MMemoryStream stream(bytes.data(), static_cast<int32_t>(bytes.size()));
  LoadMPEG(buffer, stream);
  return buffer;
}

MPEGHeader HeaderAt(const std::string& bytes, std::size_t at) {
  uint8_t head[4];
  std::memcpy(head, bytes.data() + at, 4);
  MPEGHeader header{};
  EXPECT_TRUE(MPEGHeader::Parse(head, header)) << at;
  return header;
}

std::vector<std::size_t> FindFrames(const std::string& bytes) {
  std::vector<std::size_t> starts;
  for (std::size_t at = 0; at < bytes.size(); at += static_cast<std::size_t>(HeaderAt(bytes, at).frameBytes))
    starts.push_back(at);
  return starts;
}

class MMPEGFileDamage : public testing::TestWithParam<Encoding> {};

// All frames are there; those before the damaged one sound as ever, and so do those behind the ones that have
// bytes in it.
TEST_P(MMPEGFileDamage, InsideOfAFrameCostsNoOther) {
  REQUIRE_ENCODER(GetParam().encoder);
  constexpr int32_t kReached = 12;
  const std::string good = Encode(GetParam(), 1.0);
  const std::vector<std::size_t> starts = FindFrames(good);
  MAudioBuffer whole, damaged;
  const std::vector<float> expected = Samples(Load(whole, good));
  const int32_t samples = HeaderAt(good, 0).samples;
  TestRandom random;
  for (int i = 0; i < 100; ++i) {
    const int32_t frame = random.Integer(2, static_cast<int32_t>(starts.size()) - kReached);
    const bool all = random.OneIn(2);
    std::string bytes = good;
    for (std::size_t at = starts[static_cast<std::size_t>(frame)] + 4;
         at < starts[static_cast<std::size_t>(frame) + 1]; ++at)
      if (all || random.OneIn(20)) bytes[at] = static_cast<char>(random.Below(256));
    const std::vector<float> got = Samples(Load(damaged, bytes));
    ASSERT_EQ(got.size(), expected.size());
    ASSERT_TRUE(std::equal(got.begin(), got.begin() + frame * samples, expected.begin())) << frame;
    const auto healed = (frame + kReached) * samples;
    // A frame that libmpg123 passes over changes how later ones are rounded.
    for (auto k = static_cast<std::size_t>(healed); k < got.size(); ++k)
      ASSERT_NEAR(got[k], expected[k], 1.01 / 32767) << frame;
  }
}

constexpr Encoding kEncodings[] = {{"lame", "--silent -b 128", 44100, 2},
                                   {"lame", "--silent -V 5", 22050, 2},
                                   {"twolame", "-b 192 -m j", 44100, 2},
                                   {"twolame", "-b 32 -m m -p", 24000, 1}};
INSTANTIATE_TEST_SUITE_P(Encodings, MMPEGFileDamage, testing::ValuesIn(kEncodings));

}  // namespace
