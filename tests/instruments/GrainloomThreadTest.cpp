#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/common/TestRandom.h"
#include "tests/instruments/GrainloomUnderTest.h"

namespace {

// For ThreadSanitizer: whatever the threads touch has to be atomic or locked.
TEST(GrainloomThreads, StreamsPlayWhileOtherThreadsMakeSamplesAndStates) {
  GrainloomUnderTest grainloom;
  grainloom.WriteLibrary(SmallLibrary());
  grainloom.WriteLibrary(SmallLibrary(5, 3000), "other");
  grainloom.LoadEmptyState();
  std::atomic<int> running = 2;
  std::thread editor([&] {
    for (int32_t i = 0; i < 40; ++i) {
      grainloom->Randomize(i % 2 == 0);
      grainloom->SetBand(i % 10, {static_cast<float>(i % 3), 0, i, 1});
      grainloom.Set(0, 0.01 * i);
      if (i % 8 == 0) grainloom->SelectLibrary("", MString::Literal(i % 16 == 0 ? "other" : "missing"));
    }
    --running;
  });
  std::thread host([&] {
    for (int32_t i = 0; i < 40; ++i) {
      MXMLItem item("state");
      grainloom.Save(item);
      grainloom.Load(item);
      grainloom.Call(MService::kStateLoaded);
      grainloom->GetBand(i % 10);
    }
    --running;
  });
  int32_t heard = 0;
  while (running > 0) {
    MWord stream = 0;
    MStreamRequest request;
    request.ratio = 1.5;
    request.result = &stream;
    if (grainloom.Call(MService::kCreateStream, MAsWord(&request)) != 0) continue;
    float left[300], right[300];
    float* out[] = {left, right};
    for (int32_t i = 0; i < 5; ++i)
      grainloom.Call(MService::kComputeStream, MAsWord(out), 300, MAsWord(&stream));
    for (const float sample : left) heard += std::isfinite(sample);
    grainloom.Close(stream);
  }
  editor.join();
  host.join();
  EXPECT_GT(heard, 0);
}

}  // namespace
