#include "dsp/MSampleReading.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "dsp/MCubic.h"
#include "dsp/MRandomSequence.h"
#include "tests/common/TestRandom.h"

namespace {

std::vector<float> Noise(int32_t length) {
  TestRandom random(7);
  std::vector<float> samples;
  for (int32_t i = 0; i < length; ++i) samples.push_back(static_cast<float>(random.Real(-1, 1)));
  return samples;
}

void Read(float* out, const float* samples, int32_t length, double start, double speed, int32_t count) {
  MSampleReading(start, speed, count).Read(out, samples, length);
}

// The definition, in double and one sample at a time.
double PlainRead(const std::vector<float>& samples, double place) {
  const auto length = static_cast<double>(samples.size());
  const double whole = std::floor(place);
  if (whole < 0 || whole >= length) return 0;
  const auto at = [&](double i) {
    return i >= 0 && i < length ? double{samples[static_cast<std::size_t>(i)]} : 0.0;
  };
  const double y0 = at(whole - 1), y1 = at(whole), y2 = at(whole + 1), y3 = at(whole + 2);
  const double t = place - whole;
  return y1 + t * (0.5 * (y2 - y0) +
                   t * (2 * y2 + y0 - 0.5 * (5 * y1 + y3) + 0.5 * t * (3 * (y1 - y2) - y0 + y3)));
}

TEST(MCubic, GoesThroughTheTwoInnerValues) {
  EXPECT_EQ(MCubic(3.0, 1.0, 2.0, -5.0, 0.0), 1.0);
  EXPECT_EQ(MCubic(3.0, 1.0, 2.0, -5.0, 1.0), 2.0);
}

TEST(MCubic, KeepsALine) {
  for (const double t : {0.0, 0.25, 0.5, 0.9}) EXPECT_DOUBLE_EQ(MCubic(1.0, 3.0, 5.0, 7.0, t), 3 + 2 * t);
}

TEST(MSampleReading, ResamplesAsTheDefinitionSays) {
  for (const int32_t length : {1, 2, 3, 5, 64, 1000}) {
    const std::vector<float> samples = Noise(length);
    for (const double speed : {0.3, 0.5, 1.0, 1.5, 2.0, 2.7, 48000.0 / 44100})
      for (const double start : {-2.5, -1.0, 0.0, 0.7, length - 3.5, length + 0.0, -1e11, 1e11})
        for (const int32_t count : {0, 1, 3, 4, 7, 63, MSampleReading::kMost}) {
          std::vector<float> out(static_cast<std::size_t>(count) + 1, 9.0f);
          Read(out.data(), samples.data(), length, start, speed, count);
          for (int32_t i = 0; i < count; ++i)
            ASSERT_NEAR(out[static_cast<std::size_t>(i)], PlainRead(samples, start + i * speed), 1e-6)
                << length << " " << speed << " " << start << " " << i;
          ASSERT_EQ(out.back(), 9);  // nothing behind the end is written
        }
  }
}

TEST(MSampleReading, BuffersAndOddCountsNeedNoAlignment) {
  constexpr int32_t kLength = 37, kCount = 29;
  const std::vector<float> noise = Noise(kLength);
  for (std::size_t from = 0; from < 4; ++from)
    for (std::size_t to = 0; to < 4; ++to) {
      std::vector<float> samples(from), out(to + kCount + 1, 9.0f);
      samples.insert(samples.end(), noise.begin(), noise.end());
      for (const double speed : {0.3, 1.0, 2.7}) {
        Read(out.data() + to, samples.data() + from, kLength, -2.5, speed, kCount);
        for (int32_t i = 0; i < kCount; ++i)
          ASSERT_NEAR(out[to + static_cast<std::size_t>(i)], PlainRead(noise, -2.5 + i * speed), 1e-6)
              << from << " " << to << " " << speed << " " << i;
        ASSERT_EQ(out.back(), 9);
      }
      Read(out.data() + to, samples.data() + from, kLength, 11, 1, kCount);
      for (int32_t i = 0; i < kCount; ++i)
        ASSERT_EQ(out[to + static_cast<std::size_t>(i)],
                  11 + i < kLength ? noise[static_cast<std::size_t>(11 + i)] : 0.0f);
      ASSERT_EQ(out.back(), 9);
    }
}

TEST(MSampleReading, ValueHangsOnItsPlaceAlone) {
  const std::vector<float> samples = Noise(100);
  for (int32_t shift = 0; shift < 8; ++shift) {
    std::vector<float> all(40), part(40);
    Read(all.data(), samples.data(), 100, 10, 0.75, 40);
    Read(part.data(), samples.data(), 100, 10 + 0.75 * shift, 0.75, 40 - shift);
    for (int32_t i = shift; i < 40; ++i)
      ASSERT_EQ(all[static_cast<std::size_t>(i)], part[static_cast<std::size_t>(i - shift)]);
  }
}

TEST(MSampleReading, HugeSpeedsLeaveTheRecording) {
  const std::vector<float> samples = Noise(10);
  float out[5] = {9, 9, 9, 9, 9};
  Read(out, samples.data(), 10, 0, 2e15, 5);
  EXPECT_EQ(out[0], samples[0]);
  for (int32_t i = 1; i < 5; ++i) EXPECT_EQ(out[i], 0);
}

TEST(MSampleReading, NoPlaceReachesBeyondTheRecording) {
  const std::vector<float> samples = Noise(10);
  for (const double start : {-1e300, -4e9, -0.25, 9.5, 10.0, 3e9, 1e300, HUGE_VAL, -HUGE_VAL, std::nan("")})
    for (const double speed : {1e-300, 0.5, 1.0, 7e8, 1e300, HUGE_VAL}) {
      std::vector<float> out(12, 9.0f);
      Read(out.data(), samples.data(), 10, start, speed, 11);
      for (int32_t i = 0; i < 11; ++i) {
        const double place = start + i * speed;
        const float value = out[static_cast<std::size_t>(i)];
        if (place >= 0 && place < 10)
          ASSERT_NEAR(value, PlainRead(samples, place), 1e-6) << place;
        else
          ASSERT_EQ(value, 0) << place;
      }
      ASSERT_EQ(out.back(), 9);
    }
}

TEST(MSampleReading, AllChannelsAreReadAtTheSamePlaces) {
  const std::vector<float> left = Noise(300), right = Noise(300);
  const MSampleReading reading(-3.25, 1.3, 200);
  std::vector<float> first(200), other(200), again(200);
  reading.Read(first.data(), left.data(), 300);
  reading.Read(other.data(), right.data(), 7);
  reading.Read(again.data(), left.data(), 300);
  EXPECT_EQ(again, first);
  for (int32_t i = 0; i < 200; ++i)
    ASSERT_NEAR(other[static_cast<std::size_t>(i)],
                PlainRead({right.begin(), right.begin() + 7}, -3.25 + i * 1.3), 1e-6);
}

TEST(MSampleReading, CopiesAtWholePlacesOneApart) {
  const std::vector<float> samples = Noise(5);
  for (const double start : {-7.0, -2.0, 0.0, 3.0, 5.0, 9.0, -1e300, 1e300}) {
    float out[8] = {9, 9, 9, 9, 9, 9, 9, 9};
    Read(out, samples.data(), 5, start, 1, 7);
    for (int32_t i = 0; i < 7; ++i) {
      const double place = start + i;
      ASSERT_EQ(out[i], place >= 0 && place < 5 ? samples[static_cast<std::size_t>(place)] : 0.0f);
    }
    EXPECT_EQ(out[7], 9);
  }
}

TEST(MRandomSequence, StepsAsItsFormulaSays) {
  MRandomSequence::Set(0);
  EXPECT_EQ(MRandomSequence::Next(), 2531011u);
  EXPECT_EQ(MRandomSequence::Next(), 2531011u * 214013u + 2531011u);
  EXPECT_EQ(MRandomSequence::Get(), MRandomSequence::Follow(2531011u));
}

}  // namespace
