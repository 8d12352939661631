#include "tests/core/Balanced.h"
#include "tests/core/MStringRecord.h"
#include "tests/core/OnThreads.h"

namespace {

using MStringThreads = Balanced;

TEST_F(MStringThreads, CopiesMayBeTakenAndDroppedOnManyThreads) {
  const MString text = Buffer("shared by all");
  OnThreads(8, [&](int) {
    for (int i = 0; i < 5000; ++i) {
      const MString copy = text;
      MString other;
      other = copy;
      ASSERT_EQ(other.At(0), u's');
    }
  });
  EXPECT_EQ(ReferencesOf(text), 1);
  EXPECT_EQ(table.GetAllocated(), 1);
}

TEST_F(MStringThreads, HoldersThatWriteGetUnitsOfTheirOwn) {
  for (int round = 0; round < 200; ++round) {
    std::vector<MString> texts(8, Buffer("shared"));
    OnThreads(8, [&](int thread) {
      MString& mine = texts[static_cast<std::size_t>(thread)];
      mine.Append(static_cast<MChar>('0' + thread));
      mine.Insert(0, u'x');
    });
    for (std::size_t thread = 0; thread < 8; ++thread)
      ASSERT_EQ(Utf8(texts[thread]), "xshared" + std::to_string(thread));
  }
}

TEST_F(MStringThreads, TheLastHolderReleasesTheBlockOnWhateverThread) {
  for (int round = 0; round < 500; ++round) {
    std::vector<MString> texts(4, Buffer("shared"));
    OnThreads(4, [&](int thread) { texts[static_cast<std::size_t>(thread)].Clear(); });
    ASSERT_EQ(table.GetBalance(), 0);
  }
}

}  // namespace
