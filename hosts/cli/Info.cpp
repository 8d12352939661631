#include "hosts/cli/Info.h"

#include <filesystem>

#include "audiofiles/MMultiSampleFile.h"
#include "audiofiles/MSampleFile.h"
#include "audiofiles/MSubSampleLibrary.h"
#include "core/MException.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Listing.h"
#include "hosts/cli/Paths.h"
#include "hosts/cli/Words.h"
#include "resources/MResourceLibrary.h"

namespace cli {

namespace {

std::string DescribeResources(const MString& file) {
  MResourceLibrary library;
  library.LoadFile(file);
  return ResourcesAsJson(library);
}

std::string DescribeSample(const MString& file) {
  MAudioBuffer sample;
  LoadSamples(sample, file);
  return SampleAsJson(sample);
}

struct Kind {
  const char* extension;
  const char* name;
  std::string (*describe)(const MString& file);
};

constexpr Kind kKinds[] = {
    {".mrf", "resource library", DescribeResources},
    {".qxmultisample", "multisample",
     [](const MString& file) { return MultisampleAsJson(MMultiSampleFile(file)); }},
    {".qxsubsamplelib", "subsample library",
     [](const MString& file) { return SubsamplesAsJson(MSubSampleLibrary(file)); }},
    {"", "sample", DescribeSample},  // all else
};

const Kind& KindOf(const std::string& path) {
  const std::string extension = ToLower(std::filesystem::path(path).extension().string());
  const Kind* kind = kKinds;
  while (*kind->extension && extension != kind->extension) ++kind;
  return *kind;
}

// "a.wav, byte 12" where the exception knows the place, else the path.
std::string PlaceOf(const MException& raised, const std::string& path) {
  return raised.source.IsEmpty() ? path : bridge::ToUtf8(raised.source);
}

}  // namespace

std::string DescribeFile(const std::string& path) {
  const Kind& kind = KindOf(path);
  try {
    return kind.describe(ToLibraryPath(path));
  } catch (const MException& raised) {
    throw Failure(ExitCode::kFile, PlaceOf(raised, path) + ": it cannot be read as a " + kind.name,
                  bridge::ToUtf8(raised.message));
  }
}

}  // namespace cli
