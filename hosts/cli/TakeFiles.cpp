#include "hosts/cli/TakeFiles.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "hosts/cli/Failure.h"
#include "hosts/cli/SfzFile.h"
#include "hosts/cli/Words.h"

namespace cli {

namespace {

constexpr char kSeparators[] = "_-. ";
constexpr std::string_view kTakeWords[] = {"", "rr", "take"};
constexpr std::string_view kLayerWords[] = {"v", "vel", "layer"};
constexpr std::string_view kSoundExtensions[] = {".wav", ".wave", ".aif", ".aiff", ".aifc", ".flac", ".ogg",
                                                 ".oga", ".opus", ".mp3", ".caf",  ".w64",  ".rf64", ".au",
                                                 ".snd", ".voc",  ".sd2", ".avr",  ".iff",  ".svx",  ".nist"};

// The number of a word that is one of `starts` and digits.
template <std::size_t count>
std::optional<int32_t> NumberOf(std::string_view word, const std::string_view (&starts)[count]) {
  const std::size_t digits = std::min(word.find_first_of("0123456789"), word.size());
  int32_t number = 0;
  const auto [stop, error] = std::from_chars(word.data() + digits, word.data() + word.size(), number);
  if (error != std::errc() || stop != word.data() + word.size()) return std::nullopt;
  const std::string start = ToLower(std::string(word.substr(0, digits)));
  if (std::find(starts, starts + count, start) == starts + count) return std::nullopt;
  return number;
}

TakeFile DescribeFile(const std::filesystem::path& path) {
  TakeFile file = ParseTakeName(path.stem().string());
  file.path = path.string();
  return file;
}

}  // namespace

TakeFile ParseTakeName(const std::string& name) {
  TakeFile file{{}, name, "main", std::nullopt, 0};
  for (std::size_t begin = 0; begin < name.size();) {
    const std::size_t end = std::min(name.find_first_of(kSeparators, begin), name.size());
    const std::string_view word = std::string_view(name).substr(begin, end - begin);
    const std::optional<int32_t> layer = NumberOf(word, kLayerWords);
    if (layer) file.layer = layer;
    if (layer || NumberOf(word, kTakeWords)) {
      file.take = name.substr(0, end);
      const std::size_t rest = name.find_first_not_of(kSeparators, end);
      file.track = rest == std::string::npos ? "main" : name.substr(rest);
    }
    begin = end + 1;
  }
  return file;
}

std::vector<std::string> ListSoundFiles(const std::string& folder) {
  std::vector<std::string> files;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string extension = ToLower(entry->path().extension().string());
    const bool isSound = std::find(std::begin(kSoundExtensions), std::end(kSoundExtensions), extension) !=
                         std::end(kSoundExtensions);
    if (isSound && !entry->path().filename().string().starts_with('.'))
      files.push_back(entry->path().string());
  }
  if (error) throw Failure(ExitCode::kFile, folder + ": " + error.message());
  if (files.empty()) throw Failure(ExitCode::kFile, folder + ": there is no sound file in this folder");
  std::sort(files.begin(), files.end());
  return files;
}

std::vector<TakeFile> ListTakeFiles(const std::string& source) {
  std::vector<TakeFile> files;
  std::error_code error;
  if (std::filesystem::is_directory(source, error)) {
    for (const std::string& path : ListSoundFiles(source)) files.push_back(DescribeFile(path));
    return files;
  }
  for (const SfzRegion& region : ReadSfz(source)) {
    TakeFile& file = files.emplace_back(DescribeFile(region.sample));
    file.take = std::to_string(region.highest) + "/" + file.take;
    file.layer = region.highest;
    file.level = region.highest / 127.0;
  }
  return files;
}

}  // namespace cli
