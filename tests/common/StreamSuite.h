#pragma once
// The suite of every instrument: what any host does with any of them. An instrument joins it with a row in
// StreamSuite.cpp. What a single one promises beyond that lies in tests/instruments.

#include <gtest/gtest.h>

#include <ostream>

#include "tests/common/ReportedTexts.h"
#include "tests/common/StreamUnderTest.h"
#include "tests/common/TestRandom.h"
#include "tests/instruments/ContentFolder.h"

// What an instrument is allowed to do otherwise than the others.
enum class StreamAllowance {
  kLocks,           // a block takes the plug-in's lock
  kDelaySkips,      // what is left of a delay inside a block moves the note on
  kBlocksAreHeard,  // where a block begins and ends is a part of what the instrument does
};

// How an instrument gets a sound that lasts for about 0.3 s and has ended after 0.6 s at any rate.
struct StreamSound {
  std::string instrument;
  bool soundsWhenNew;  // without a file or a state
  // Writes files into the folder of content and gives the state that plays them.
  std::string (*prepare)(ContentFolder& content);
  std::vector<StreamAllowance> allowances = {};
};

inline void PrintTo(const StreamSound& sound, std::ostream* out) {
  *out << sound.instrument;
}

class StreamSuite : public testing::TestWithParam<StreamSound> {
 protected:
  static constexpr int32_t kRate = 44100;
  static constexpr int32_t kLowRate = 8000;  // for whole notes sample by sample

  StreamSuite() : state_(GetParam().prepare(content_)) {}

  static const PluginEntry& GetEntry();
  static bool IsAllowed(StreamAllowance allowance);
  const std::string& GetState() const { return state_; }
  // Gives the instrument its sound and a format.
  void PrepareSound(StreamUnderTest& instrument, int32_t channels = 2, int32_t sampleRate = kRate) const {
    instrument.Load(state_);
    instrument.Prepare(channels, sampleRate);
  }
  // The number of samples of a note.
  static int32_t GetLength(StreamUnderTest& instrument);

  const ReportedTexts reported_;

 private:
  ContentFolder content_;
  const std::string state_;
};
