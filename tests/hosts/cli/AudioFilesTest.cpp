#include "hosts/cli/AudioFiles.h"

#include <gtest/gtest.h>

#include "hosts/cli/Failure.h"
#include "tests/common/TemporaryFolder.h"

namespace {

TEST(AudioWriter, RefusesToOverflowAPlainFileWhenTheExpectedLengthWasWrong) {
  const TemporaryFolder folder;
  cli::OutputFile output(folder.Path("out.wav"));
  cli::AudioWriter writer(output, {1, 48000}, 10);
  const float samples[] = {0.5f};
  writer.Write(samples, 1);
  // It looks at the number before it looks at the samples.
  EXPECT_THROW(writer.Write(samples, int64_t{1} << 30), cli::Failure);
}

TEST(AudioWriter, TakesAnyLengthWhenNobodyKnowsIt) {
  const TemporaryFolder folder;
  cli::OutputFile output(folder.Path("out.wav"));
  cli::AudioWriter writer(output, {2, 48000}, std::nullopt);
  const float samples[] = {0.5f, 0.25f, -0.5f, -0.25f};
  writer.Write(samples, 2);
  writer.Close();
  EXPECT_FALSE(std::filesystem::exists(folder.Path("out.wav")));
  output.Commit();
  cli::AudioReader reader(folder.Path("out.wav"));
  float read[6] = {};
  EXPECT_EQ(reader.Read(read, 3), 2);
  EXPECT_EQ(read[3], -0.25f);
}

}  // namespace
