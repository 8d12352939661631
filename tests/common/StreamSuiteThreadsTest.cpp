#include <atomic>
#include <thread>

#include "tests/common/StreamSuite.h"

namespace {

// For ThreadSanitizer: whatever both threads touch has to be atomic or locked.
TEST_P(StreamSuite, AnotherThreadMayLoadStatesAndWriteRowsWhileNotesPlay) {
  TestRandom random;
  StreamUnderTest instrument(GetEntry());
  PrepareSound(instrument, 2, kLowRate);
  const std::string saved = instrument.Save();
  std::atomic<bool> isDone = false;
  std::thread host([&] {
    for (int32_t i = 0; i < 40; ++i) {
      instrument.Load(i % 2 == 0 ? saved : GetState());
      instrument.Save();
      for (int32_t row = 0; row < instrument.GetRowCount(); ++row)
        instrument.Set(row, instrument.GetRow(row).real.defaultValue);
    }
    isDone = true;
  });
  while (!isDone) {
    MWord note = instrument.Create(1, random.Real(0.5, 2), random.Below(100));
    EXPECT_TRUE(instrument.Pull(note, 3000, {64, 333}).IsFinite());
    instrument.Close(note);
  }
  host.join();
}

}  // namespace
