#include "hosts/lv2/FileKind.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "core/MException.h"
#include "core/MFileTools.h"
#include "core/MPath.h"
#include "hosts/bridge/Parameters.h"
#include "instruments/MSampleFolders.h"

namespace lv2 {

namespace {

constexpr FileKind kKinds[] = {
    {"Playbox", "sample", "Sample", "filename", &SonvelleConfiguration::samplePath, true},
    {"Vinylrake", "sample", "Sample", "FileName", &SonvelleConfiguration::samplePath, true},
    {"Layerbox", "multisample", "Multisample", "filename", &SonvelleConfiguration::multiSamplePath, false},
    {"Grainloom", "library", "Subsample library", "filename", &SonvelleConfiguration::subSampleLibraryPath,
     false},
};

}  // namespace

const FileKind* FindFileKind(const bridge::PluginType& type) noexcept {
  const FileKind* const found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                             [&](const FileKind& kind) { return kind.plugin == type.name; });
  return found == std::end(kKinds) ? nullptr : found;
}

std::string GetStateFile(const FileKind& kind, const MXMLItem& state) {
  const SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  const MString name = state.GetAttribute(MString::Literal(kind.attribute));
  if (!shared || name.IsEmpty()) return {};
  const bool isCustom = kind.isImported && state.GetAttribute("CustomSamplePath").ToInteger() != 0;
  const MString& root = isCustom ? shared->samplePathCustom : shared->*kind.root;
  return bridge::ToUtf8(NormalizePath(JoinPath(JoinPath(root, state.GetAttribute("subpath")), name)));
}

void SetStateFile(const FileKind& kind, MXMLItem& state, const std::string& path) {
  const SonvelleConfiguration* const shared = SonvelleConfiguration::Get();
  if (!shared) throw MException("The folders of the content are not known.");
  const std::filesystem::path file = std::filesystem::path(path).lexically_normal();
  const MString source = bridge::FromUtf8(file.parent_path().string());
  const MString name = bridge::FromUtf8(file.filename().string());
  const MString& root = shared->*kind.root;
  MString subpath;
  if (!MIsBelowFolder(source, root, subpath)) {
    subpath = JoinPath("Imported", MWithoutParents(source));
    const MString target = JoinPath(root, subpath);
    CreatePath(target);
    CopyFile(JoinPath(source, name), JoinPath(target, name));
  }
  state.SetAttribute("subpath", subpath);
  state.SetAttribute(MString::Literal(kind.attribute), name);
  if (kind.isImported) state.SetAttribute("CustomSamplePath", "0");
}

bool IsSameContent(const std::string& first, const std::string& second) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (fs::equivalent(first, second, error)) return true;
  if (error || !fs::is_regular_file(first, error) ||
      fs::file_size(first, error) != fs::file_size(second, error))
    return false;
  std::ifstream one(first, std::ios::binary), other(second, std::ios::binary);
  using Bytes = std::istreambuf_iterator<char>;
  return one && other && std::equal(Bytes(one), Bytes(), Bytes(other), Bytes());
}

}  // namespace lv2
