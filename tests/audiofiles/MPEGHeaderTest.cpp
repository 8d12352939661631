#include "audiofiles/MPEGHeader.h"

#include <gtest/gtest.h>
#include <mad.h>

#include <initializer_list>

namespace {

using mp3dec::MPEGHeader;

// What another decoder makes of a head; its frame's size in bytes, 0 if it refuses it.
int SizeWithMad(mad_header& header, const uint8_t (&head)[4]) {
  unsigned char bytes[4096] = {head[0], head[1], head[2], head[3]};
  mad_stream stream;
  mad_stream_init(&stream);
  mad_stream_buffer(&stream, bytes, sizeof bytes);
  stream.sync = 1;
  mad_header_init(&header);
  const bool done = mad_header_decode(&header, &stream) == 0 && stream.this_frame == bytes;
  const auto size = static_cast<int>(stream.next_frame - stream.this_frame);
  mad_stream_finish(&stream);
  return done ? size : 0;
}

TEST(MPEGHeader, AgreesWithAnotherDecoderForEveryHead) {
  int accepted = 0;
  for (int second = 0xE0; second <= 0xFF; second += 2 - second % 2)  // with and without checksum alike
    for (int third = 0; third < 256; ++third)
      for (const int fourth : {0x00, 0x44, 0x80, 0xC0}) {
        const uint8_t bytes[4] = {0xFF, static_cast<uint8_t>(second | 1), static_cast<uint8_t>(third),
                                  static_cast<uint8_t>(fourth)};
        if (third >> 4 == 0) continue;  // the free format, which is not ours
        const bool isLowRate = (second >> 3 & 3) == 0;
        MPEGHeader ours;
        mad_header theirs;
        const bool isOurs = MPEGHeader::Parse(bytes, ours);
        const int size = SizeWithMad(theirs, bytes);
        if (isLowRate && (second >> 1 & 3) != 1) {
          EXPECT_FALSE(isOurs);
          continue;
        }
        ASSERT_EQ(isOurs, size > 0) << second << " " << third;
        if (!isOurs) continue;
        ++accepted;
        ASSERT_EQ(ours.frameBytes, size) << second << " " << third;
        ASSERT_EQ(ours.layer, static_cast<int>(theirs.layer));
        ASSERT_EQ(ours.sampleRate, static_cast<int>(theirs.samplerate));
        ASSERT_EQ(ours.bitRate, static_cast<int>(theirs.bitrate));
        ASSERT_EQ(ours.channels, MAD_NCHANNELS(&theirs));
        ASSERT_EQ(ours.samples, static_cast<int>(32 * MAD_NSBSAMPLES(&theirs)));
        ASSERT_LE(ours.frameBytes, MPEGHeader::kMostFrameBytes);
      }
  EXPECT_GT(accepted, 1000);
}

TEST(MPEGHeader, RefusesTheFreeFormat) {
  MPEGHeader header;
  for (int second = 0xE0; second <= 0xFF; ++second)
    for (int third = 0; third < 16; ++third) {
      const uint8_t bytes[4] = {0xFF, static_cast<uint8_t>(second), static_cast<uint8_t>(third), 0};
      EXPECT_FALSE(MPEGHeader::Parse(bytes, header));
    }
}

TEST(MPEGHeader, BeginsWithElevenBitsSet) {
  MPEGHeader header;
  EXPECT_TRUE(MPEGHeader::Parse({0xFF, 0xFB, 0x90, 0}, header));
  EXPECT_FALSE(MPEGHeader::Parse({0xFE, 0xFB, 0x90, 0}, header));
  EXPECT_FALSE(MPEGHeader::Parse({0xFF, 0xDB, 0x90, 0}, header));
}

}  // namespace
