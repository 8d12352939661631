#include "hosts/bridge/NoteEvent.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using bridge::NoteEvent;
using bridge::ReadMidiMessage;

TEST(NoteEvent, ANoteHasItsChannelKeyAndVolume) {
  const auto event = ReadMidiMessage(0x93, 61, 100);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->kind, NoteEvent::Kind::kPress);
  EXPECT_EQ(event->channel, 3);
  EXPECT_EQ(event->key, 61);
  EXPECT_EQ(event->volume, 100 / 127.0);
}

TEST(NoteEvent, ANoteEndsByItsReleaseOrByTheVelocityZero) {
  for (const uint8_t status : {uint8_t{0x8F}, uint8_t{0x9F}}) {
    const auto event = ReadMidiMessage(status, 127, 0);
    ASSERT_TRUE(event);
    EXPECT_EQ(event->kind, NoteEvent::Kind::kRelease);
    EXPECT_EQ(event->channel, 15);
    EXPECT_EQ(event->key, 127);
  }
}

TEST(NoteEvent, ThePedalIsDownFromTheMiddleOn) {
  EXPECT_FALSE(ReadMidiMessage(0xB0, 64, 63)->isDown);
  EXPECT_TRUE(ReadMidiMessage(0xB0, 64, 64)->isDown);
  EXPECT_EQ(ReadMidiMessage(0xB0, 64, 64)->kind, NoteEvent::Kind::kPedal);
  EXPECT_FALSE(ReadMidiMessage(0xB0, 121, 127)->isDown) << "controllers are reset";
}

TEST(NoteEvent, ChannelsAreSilencedOrReleased) {
  EXPECT_EQ(ReadMidiMessage(0xB1, 120, 0)->kind, NoteEvent::Kind::kSilence);
  for (uint8_t controller = 123; controller < 128; ++controller)
    EXPECT_EQ(ReadMidiMessage(0xB1, controller, 0)->kind, NoteEvent::Kind::kReleaseAll);
}

TEST(NoteEvent, AVelocityThatIsTheFloatOfAMidiVelocityIsThatToTheBit) {
  for (int32_t n = 0; n <= 127; ++n) {
    EXPECT_EQ(bridge::GetVolume(n / 127.0), n / 127.0);
    EXPECT_EQ(bridge::GetVolume(static_cast<float>(n / 127.0)), n / 127.0);
  }
  EXPECT_EQ(bridge::GetVolume(0.3), 0.3);
  EXPECT_EQ(bridge::GetVolume(7), 1);
  EXPECT_EQ(bridge::GetVolume(-1), 0);
  EXPECT_EQ(bridge::GetVolume(std::nan("")), 0);
}

TEST(NoteEvent, OtherMessagesMeanNothing) {
  for (int32_t status = 0; status < 256; ++status) {
    const int32_t kind = status & 0xF0;
    if (kind == 0x80 || kind == 0x90 || kind == 0xB0) continue;
    EXPECT_FALSE(ReadMidiMessage(static_cast<uint8_t>(status), 64, 64)) << status;
  }
  EXPECT_FALSE(ReadMidiMessage(0xB0, 7, 100));
  EXPECT_FALSE(ReadMidiMessage(0xB0, 122, 0));
}

TEST(NoteEvent, BytesBeyondDataAreCut) {
  EXPECT_EQ(ReadMidiMessage(0x90, 0xFF, 0xFF)->key, 127);
  EXPECT_EQ(ReadMidiMessage(0x90, 0xFF, 0xFF)->volume, 1);
}

}  // namespace
