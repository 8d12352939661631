#include <gtest/gtest.h>

#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"
#include "tests/core/StreamModel.h"

namespace {

// One line by the rules of memory streams, as Line() gives it.
std::string MemoryLine(Model& model, int32_t size) {
  if (!model.CanRead()) return "2:";
  std::string text;
  while (static_cast<int32_t>(text.size()) < size - 1) {
    const int64_t at = model.position++;
    if (at >= model.Size() || model.bytes[static_cast<std::size_t>(at)] == '\n') return "0:" + text;
    if (model.bytes[static_cast<std::size_t>(at)] != '\r')
      text += static_cast<char>(model.bytes[static_cast<std::size_t>(at)]);
  }
  return "1:" + text;
}

struct Memory {
  MMemoryStream stream;
  Model model;
};

void SeekMemory(Memory& memory, Dice& dice) {
  Model& model = memory.model;
  const auto origin = static_cast<MSeekOrigin>(dice.Between(0, 2));
  const int64_t offset = dice.Between(-60, 60) * dice.Between(1, 5);
  memory.stream.Seek(offset + dice.Between(-1, 1) * (int64_t{1} << 32), origin);
  if (origin == MSeekOrigin::kStart) model.position = std::clamp<int64_t>(offset, 0, model.Size());
  if (origin == MSeekOrigin::kCurrent) model.position = std::min(model.position + offset, model.Size());
  if (origin == MSeekOrigin::kEnd) model.position = std::max<int64_t>(model.Size() + offset, 0);
}

void WriteMemory(Memory& memory, const std::string& data) {
  if (memory.model.position < 0 && !data.empty()) {
    EXPECT_THROW(Put(memory.stream, data), MException);
  } else {
    Put(memory.stream, data);
    memory.model.Write(data);
  }
}

void StepMemory(std::vector<Memory>& memories, Dice& dice) {
  Memory& memory = memories[static_cast<std::size_t>(dice.Between(0, 2))];
  Model& model = memory.model;
  const auto count = static_cast<int32_t>(dice.Between(0, 40));
  switch (dice.Between(0, 19)) {
    case 0:
      memory = memories[static_cast<std::size_t>(dice.Between(0, 2))];
      break;
    case 1:
      memory.stream.SetCapacity(count * 20);
      model.bytes.resize(static_cast<std::size_t>(std::min<int64_t>(model.Size(), count * 20)));
      model.position = std::min<int64_t>(model.position, count * 20);
      break;
    case 2:
      if (count != 0) break;
      memory.stream.Clear();
      model = Model();
      break;
    case 3:
    case 4:
      EXPECT_EQ(Line(memory.stream, count + 1), UpToZero(MemoryLine(model, count + 1)));
      break;
    case 5:
    case 6:
    case 7:
      SeekMemory(memory, dice);
      break;
    case 8:
    case 9:
    case 10:
    case 11:
      EXPECT_EQ(Take(memory.stream, count), model.Read(count));
      break;
    default:
      WriteMemory(memory, dice.SomeBytes());
  }
}

TEST(MMemoryStream, BehavesAsAVectorUnderRandomOperations) {
  for (uint32_t seed = 1; seed <= kSeeds && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    std::vector<Memory> memories(3);
    for (int step = 0; step < kSteps; ++step) {
      StepMemory(memories, dice);
      for (Memory& memory : memories) {
        ASSERT_EQ(memory.stream.GetPosition(), memory.model.position) << "step " << step;
        ASSERT_EQ(memory.stream.IsEnd(), memory.model.position >= memory.model.Size());
        ASSERT_EQ(All(memory.stream), std::string(memory.model.bytes.begin(), memory.model.bytes.end()));
      }
    }
  }
}

}  // namespace
