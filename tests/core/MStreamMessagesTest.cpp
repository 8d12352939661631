#include <gtest/gtest.h>

#include "core/MBZIPStream.h"
#include "core/MFileStream.h"
#include "core/MMD5Stream.h"
#include "core/MSizeStream.h"
#include "core/MTranslate.h"
#include "core/MZLibStream.h"
#include "tests/common/Texts.h"
#include "tests/core/StreamDoubles.h"

namespace {

// Puts "* " before the translation of one text.
class Translated {
 public:
  explicit Translated(const char* text) {
    MString translation = Buffer("* ");
    translation.Append(text);
    table_.Set(MString::Literal(text), MString(), translation);
    before_ = MSetTranslationTable(&table_);
  }
  Translated(const Translated&) = delete;
  Translated& operator=(const Translated&) = delete;
  ~Translated() { MSetTranslationTable(before_); }

 private:
  MTranslationTable table_;
  MTranslationTable* before_;
};

template <typename Use>
std::string MessageOf(Use use) {
  try {
    use();
  } catch (const MException& raised) {
    return Utf8(raised.message);
  }
  return "nothing";
}

// Expects `use` to raise `text`, with the argument in its place, in the language of the process.
template <typename Use>
void ExpectTranslated(const char* text, const std::string& argument, Use use) {
  const Translated translated(text);
  std::string expected = std::string("* ") + text;
  if (const std::size_t place = expected.find("{0}"); place != std::string::npos)
    expected.replace(place, 3, argument);
  EXPECT_EQ(MessageOf(use), expected);
}

TEST(MStreamMessages, AreTranslatedBeforeTheirArgumentsAreFilledIn) {
  BareStream bare;
  ExpectTranslated("Service \"{0}\" is not implemented.", "flush stream", [&] { bare.Flush(); });
  MMemoryStream memory;
  ExpectTranslated("Invalid seek origin.", "", [&] { memory.Seek(0, kBadOrigin); });
  ExpectTranslated("Could not read required data from stream.", "", [&] {
    char byte;
    memory.ReadRequired(&byte, 1);
  });
  MSizeStream window(&memory, 0, false, false);
  ExpectTranslated("The stream cannot be written, because its size is out of range.", "",
                   [&] { Put(window, "x"); });
  ExpectTranslated("Seeking operation is forbidden for the size-stream.", "",
                   [&] { window.Seek(0, MSeekOrigin::kStart); });
}

TEST(MStreamMessages, OfFiltersAreTranslated) {
  BareStream base;
  MZLibStream zlib(nullptr, true);
  MBZIPStream bzip(nullptr, true);
  ExpectTranslated("Could not initialize deflating.", "", [&] { bzip.Open(&base, true, 1); });
  ExpectTranslated("ZLIB stream has not been terminated.", "", [&] {
    zlib.Open(&base, true);
    zlib.Close();
  });
  ExpectTranslated("BZIP2 stream has not been terminated.", "", [&] { MBZIPStream(&base, true); });
  ForwardStream noise("no compressed data");
  zlib.Open(&noise, false);
  const Translated translated("Source compressed stream has invalid content.");
  EXPECT_EQ(MessageOf([&] { Take(zlib, 1); }),
            "Invalid file contents. * Source compressed stream has invalid content.");
}

TEST(MStreamMessages, OfHashesAreTranslated) {
  MMD5Stream hash;
  hash.Finish();
  ExpectTranslated("Cryptographic hash stream has not been initialized.", "", [&] { Put(hash, "x"); });
}

TEST(MStreamMessages, OfFilesAreTranslatedBeforeTheirPathIsFilledIn) {
  MFileStream file;
  ExpectTranslated("File stream is not initialized.", "", [&] { file.Flush(); });
  ExpectTranslated("File \"{0}\" could not be open. Make sure it exists.", "/dev/{0}",
                   [&] { file.Open("/dev/{0}", MFileStream::kRead); });
  ExpectTranslated(
      "File \"{0}\" could not be created. Make sure there is no write-protected file already existing.",
      "/dev", [&] { file.Open("/dev", MFileStream::kWrite | MFileStream::kCreate); });
  ExpectTranslated("Error writing to file \"{0}\". Probably disk full.", "/dev/full", [&] {
    file.Open("/dev/full", MFileStream::kWrite);
    Put(file, "x");
    file.Close();
  });
  ExpectTranslated("Error reading from file \"{0}\".", "/proc/self/mem", [&] {
    file.Open("/proc/self/mem", MFileStream::kRead);
    Take(file, 1);
  });
  ExpectTranslated("Could not perform file seek.", "", [&] {
    file.Open("/proc/self/exe", MFileStream::kRead);
    file.Seek(-1, MSeekOrigin::kStart);
  });
}

}  // namespace
