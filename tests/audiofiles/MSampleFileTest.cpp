#include "audiofiles/MSampleFile.h"

#include <sys/stat.h>

#include <thread>

#include "audiofiles/MSampleCache.h"
#include "tests/audiofiles/SampleFiles.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/core/FileTests.h"

namespace {

const std::string kWav = Wav(Form(1, 8), "\xFE");

// What loading raises: message, then place.
std::string Failure(const std::string& path) {
  MAudioBuffer buffer;
  try {
    LoadSamples(buffer, Text(path));
    return "";
  } catch (const MException& raised) {
    return Utf8(raised.message) + " | " + Utf8(raised.source) + " | " + std::to_string(raised.code);
  }
}

TEST(MSampleFile, IsWhatItsExtensionSaysWhateverItsCase) {
  const TemporaryFolder folder;
  for (const char* const name : {"x.wav", "x.WAV", "a.b.Wav", ".wav", "x.mp3.wav"}) {
    MAudioBuffer buffer;
    LoadSamples(buffer, Text(folder.WriteFile(name, kWav)));
    EXPECT_EQ(Samples(buffer), std::vector<float>{1.0f}) << name;
  }
  for (const char* const name : {"x.mp3", "x.MP3", "y.wav.Mp3"}) {
    const std::string path = folder.WriteFile(name, kWav);
    EXPECT_EQ(Failure(path),
              "Invalid file contents. Invalid MPEG header in WAVe file. | " + path + ", byte 36 | 256");
  }
}

TEST(MSampleFile, OfAnyOtherNameIsZSD) {
  const TemporaryFolder folder;
  for (const char* const name : {"x.zsd", "x.aiff", "x", "wav", "mp3", "x.wav.", "x.wave", "x.mp"}) {
    const std::string path = folder.WriteFile(name, kWav + std::string(60, 'x'));
    EXPECT_EQ(Failure(path), "Invalid file contents. Invalid ZSD header. | " + path + ", byte 0 | 256");
    for (const char* const bytes : {"RIFF", ""}) {
      folder.WriteFile(name, bytes);
      EXPECT_EQ(Failure(path), "Invalid file contents. No ZSD header found. | " + path + ", byte 0 | 256");
    }
  }
  MAudioBuffer buffer;
  LoadSamples(buffer, Text(folder.WriteFile("good", Zsd(1, 1, 8000, 1, "\xFF\xFF\xFF\x7F"))));
  EXPECT_EQ(Samples(buffer), std::vector<float>{1.0f});
}

TEST(MSampleFile, FolderWithADotInItsNameDoesNotCount) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.Path("pack.wav"));
  EXPECT_NE(Failure(folder.WriteFile("pack.wav/kick", kWav)), "");
}

TEST(MSampleFile, ThatIsNotThereOrAFolderLeavesTheBufferAlone) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder.Path("folder.wav"));
  for (const char* const name : {"missing.wav", "folder.wav"}) {
    const std::string path = folder.Path(name);
    MAudioBuffer buffer;
    buffer.SetSize(1, 3);
    EXPECT_RAISES(LoadSamples(buffer, Text(path)),
                  "File \"" + path + "\" could not be open. Make sure it exists.", 257);
    EXPECT_EQ(buffer.GetLength(), 3);
  }
}

TEST(MSampleFile, MayBeAPipe) {
  const TemporaryFolder folder;
  for (const char* const name : {"pipe.wav", "pipe.zsd"}) {
    const std::string path = folder.Path(name);
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&] {
      std::ofstream(path, std::ios::binary)
          << (path.ends_with("wav") ? Wav(Form(1, 16), Pattern(20000)) : Zsd(1, 5000, 1, 1, Pattern(20000)));
    });
    MAudioBuffer buffer;
    EXPECT_NO_THROW(LoadSamples(buffer, Text(path)));
    EXPECT_EQ(buffer.GetLength(), path.ends_with("wav") ? 10000 : 5000);
    writer.join();
  }
}

TEST(MSampleCache, LoadsASampleOnceForAllItsUsers) {
  const TemporaryFolder folder;
  const MString path = Text(folder.WriteFile("x.wav", kWav));
  MSampleCache cache;
  const MAudioBuffer* const sample = cache.Acquire(path);
  EXPECT_EQ(Samples(*sample), std::vector<float>{1.0f});
  std::filesystem::remove(folder.Path("x.wav"));
  EXPECT_EQ(cache.Acquire(path), sample);
  cache.Share(sample);
  cache.Release(sample);
  cache.Release(sample);
  EXPECT_EQ(cache.GetCount(), 1);
  EXPECT_EQ(Samples(*sample), std::vector<float>{1.0f});
  cache.Release(sample);
  EXPECT_EQ(cache.GetCount(), 0);
  MAudioBuffer stranger;
  EXPECT_RAISES(cache.Release(&stranger), "Invalid sample to release.", 0);
}

TEST(MSampleCache, KeepsNothingOfAFileThatCannotBeRead) {
  const TemporaryFolder folder;
  MSampleCache cache;
  EXPECT_RAISES(cache.Acquire(Text(folder.WriteFile("x.wav", "RIFF"))),
                "Invalid file contents. No WAVe header found.", 256);
  EXPECT_EQ(cache.GetCount(), 0);
  folder.WriteFile("x.wav", kWav);
  EXPECT_EQ(cache.Acquire(Text(folder.Path("x.wav")))->GetLength(), 1);
}

}  // namespace
