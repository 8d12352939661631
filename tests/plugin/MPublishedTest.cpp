#include "plugin/MPublished.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// A record with a size that is no multiple of a word, all of whose numbers are the same.
struct Record {
  int32_t numbers[101] = {};
};

Record AllOf(int32_t number) {
  Record record;
  for (int32_t& each : record.numbers) each = number;
  return record;
}

bool IsWhole(const Record& record) {
  for (const int32_t each : record.numbers)
    if (each != record.numbers[0]) return false;
  return true;
}

struct WithDefault {
  double gain = 3;
};

TEST(MPublished, GivesADefaultRecordBeforeTheFirstIsSet) {
  MPublished<WithDefault> published;
  EXPECT_EQ(published.Get().gain, 3);
}

TEST(MPublished, GivesTheLastRecordThatWasSet) {
  MPublished<Record> published;
  for (const int32_t number : {5, -7, 0}) {
    published.Set(AllOf(100));
    published.Set(AllOf(number));
    EXPECT_TRUE(IsWhole(published.Get()));
    EXPECT_EQ(published.Get().numbers[100], number);
  }
}

TEST(MPublished, NeverGivesARecordThatIsHalfWritten) {
  constexpr int32_t kLast = 20000;
  MPublished<Record> published;
  const std::jthread writer([&] {
    for (int32_t number = 1; number <= kLast; ++number) published.Set(AllOf(number));
  });
  int32_t before = 0;
  while (before < kLast) {
    const Record& record = published.Get();
    ASSERT_TRUE(IsWhole(record));
    ASSERT_GE(record.numbers[0], before);
    before = record.numbers[0];
  }
}

}  // namespace
