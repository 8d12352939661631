#include <gtest/gtest.h>

#include "core/MFileStream.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"
#include "tests/core/StreamModel.h"

namespace {

// One line by the default rules, as Line() gives it.
std::string FileLine(Model& model, int32_t size) {
  std::string text;
  bool any = false;
  while (static_cast<int32_t>(text.size()) < size - 1) {
    const std::string byte = model.Read(1);
    if (byte.empty()) return (any ? "0:" : "2:") + text;
    if (byte[0] == '\n' || byte[0] == '\0') return "0:" + text;
    if (byte[0] == '\r') continue;
    text += byte;
    any = true;
  }
  return "1:" + text;
}

void SeekFile(MFileStream& stream, Model& model, Dice& dice) {
  const auto origin = static_cast<MSeekOrigin>(dice.Between(0, 2));
  const int64_t offset = dice.Between(-60, 60) * dice.Between(1, 50);
  const int64_t from[] = {0, model.position, model.Size()};
  const int64_t target = from[static_cast<int32_t>(origin)] + offset;
  if (target < 0) {
    EXPECT_THROW(stream.Seek(offset, origin), MException);
  } else {
    stream.Seek(offset, origin);
    model.position = target;
  }
}

void StepFile(MFileStream& stream, Model& model, int64_t& sizeWhenOpened, Dice& dice) {
  const auto count = static_cast<int32_t>(dice.Between(0, 40));
  switch (dice.Between(0, 19)) {
    case 0:
      stream.Open(MString(), MFileStream::kWrite);
      sizeWhenOpened = model.Size();
      model.position = 0;
      break;
    case 1:
      stream.Truncate();
      model.bytes.resize(static_cast<std::size_t>(model.position));
      break;
    case 2:
      stream.Flush();
      break;
    case 3:
    case 4:
      EXPECT_EQ(Line(stream, count + 1), FileLine(model, count + 1));
      break;
    case 5:
    case 6:
    case 7:
      SeekFile(stream, model, dice);
      break;
    case 8:
    case 9:
    case 10:
    case 11:
      EXPECT_EQ(Take(stream, count), model.Read(count));
      break;
    case 12:
      EXPECT_EQ(stream.GetSize(), model.Size());
      break;
    default: {
      const std::string data = dice.SomeBytes();
      Put(stream, data);
      model.Write(data);
    }
  }
  ASSERT_EQ(stream.GetPosition(), model.position);
  ASSERT_EQ(stream.IsEnd(), model.position >= sizeWhenOpened);
}

TEST(MFileStream, BehavesAsAVectorUnderRandomOperations) {
  const TemporaryFolder folder;
  for (uint32_t seed = 1; seed <= kSeeds && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    Model model;
    int64_t sizeWhenOpened = 0;
    MFileStream stream(Buffer(folder.Path("file").c_str()), MFileStream::kWrite | MFileStream::kCreate);
    for (int step = 0; step < kSteps; ++step) {
      ASSERT_NO_FATAL_FAILURE(StepFile(stream, model, sizeWhenOpened, dice)) << "step " << step;
    }
    stream.Close();
    ASSERT_EQ(folder.ReadFile("file"), std::string(model.bytes.begin(), model.bytes.end()));
  }
}

}  // namespace
