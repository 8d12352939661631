#include "hosts/cli/Info.h"

#include <algorithm>
#include <filesystem>

#include "audiofiles/MSampleFile.h"
#include "core/MException.h"
#include "hosts/bridge/Parameters.h"
#include "hosts/cli/Failure.h"
#include "hosts/cli/Listing.h"
#include "hosts/cli/Paths.h"
#include "hosts/cli/System.h"
#include "resources/MResourceLibrary.h"

namespace cli {

namespace {

std::string LowerExtension(const std::string& path) {
  std::string extension = std::filesystem::path(path).extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return extension;
}

enum class Kind { kResources, kMultisample, kSubsamples, kSample };

Kind KindOf(const std::string& path) {
  const std::string extension = LowerExtension(path);
  if (extension == ".mrf") return Kind::kResources;
  if (extension == ".qxmultisample") return Kind::kMultisample;
  if (extension == ".qxsubsamplelib") return Kind::kSubsamples;
  return Kind::kSample;
}

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

// "a.wav, byte 12" where the exception knows the place, else the path.
std::string PlaceOf(const MException& raised, const std::string& path) {
  return raised.source.IsEmpty() ? path : bridge::ToUtf8(raised.source);
}

[[noreturn]] void RefuseKind(const std::string& path, const char* kind) {
  const std::string why = WhyUnreadable(path);
  throw Failure(ExitCode::kFile,
                path + ": " + (why.empty() ? std::string(kind) + " cannot be read yet" : why));
}

}  // namespace

std::string DescribeFile(const std::string& path) {
  const Kind kind = KindOf(path);
  if (kind == Kind::kMultisample) RefuseKind(path, "multisamples");
  if (kind == Kind::kSubsamples) RefuseKind(path, "subsample libraries");
  const MString file = ToLibraryPath(path);
  try {
    return kind == Kind::kResources ? DescribeResources(file) : DescribeSample(file);
  } catch (const MException& raised) {
    throw Failure(ExitCode::kFile,
                  PlaceOf(raised, path) + ": it cannot be read as a " +
                      (kind == Kind::kResources ? "resource library" : "sample"),
                  bridge::ToUtf8(raised.message));
  }
}

}  // namespace cli
