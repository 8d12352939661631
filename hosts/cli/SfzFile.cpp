#include "hosts/cli/SfzFile.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>

#include "hosts/cli/Failure.h"
#include "hosts/cli/System.h"
#include "hosts/cli/Words.h"

namespace cli {

namespace {

using Opcodes = std::map<std::string, std::string>;

// Headers, from the outermost to the innermost. What follows another header is passed over.
constexpr std::array<std::string_view, 4> kHeaders = {"global", "master", "group", "region"};
constexpr std::size_t kRegion = kHeaders.size() - 1;

bool IsNameLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

class SfzReader {
 public:
  explicit SfzReader(const std::string& path) : path_(path) {
    const std::size_t slash = path.rfind('/');
    folder_ = slash == std::string::npos ? "" : path.substr(0, slash + 1);
  }

  std::vector<SfzRegion> Read() {
    if (const std::string why = WhyUnreadable(path_); !why.empty())
      throw Failure(ExitCode::kFile, path_ + ": " + why);
    std::ifstream file(path_);
    for (std::string line; std::getline(file, line);) {
      ++line_;
      if (!line.empty() && line.back() == '\r') line.pop_back();
      ReadLine(WithoutComments(line));
    }
    EndRegion();
    if (regions_.empty()) throw Failure(ExitCode::kFile, path_ + ": there is no region in this SFZ file");
    return std::move(regions_);
  }

 private:
  [[noreturn]] void Fail(int32_t line, const std::string& what) const {
    throw Failure(ExitCode::kFile, path_ + ", line " + std::to_string(line) + ": " + what);
  }

  std::string WithoutComments(const std::string& line) {
    std::string text;
    for (std::size_t i = 0; i < line.size(); ++i) {
      const std::string pair = line.substr(i, 2);
      if (isComment_) {
        isComment_ = pair != "*/";
        if (!isComment_) ++i;
      } else if (pair == "/*") {
        isComment_ = true;
        ++i;
      } else if (pair == "//") {
        break;
      } else {
        text += line[i];
      }
    }
    return text;
  }

  void ReadLine(const std::string& line) {
    for (std::size_t i = 0; i < line.size();) {
      if (line[i] == ' ' || line[i] == '\t') {
        ++i;
      } else if (line[i] == '<') {
        const std::size_t end = line.find('>', i);
        if (end == std::string::npos) Fail(line_, "a header does not end");
        BeginHeader(line.substr(i + 1, end - i - 1));
        i = end + 1;
      } else if (line[i] == '#') {
        Fail(line_, "#include and #define cannot be read");
      } else {
        i = ReadOpcode(line, i);
      }
    }
  }

  // A value ends in front of the next opcode or header, and may hold blanks.
  std::size_t ReadOpcode(const std::string& line, std::size_t begin) {
    const std::size_t equals = line.find('=', begin);
    const bool isName = equals != std::string::npos &&
                        std::all_of(&line[begin], &line[equals], IsNameLetter) && equals > begin;
    if (!isName) Fail(line_, '"' + line.substr(begin) + "\" is no opcode");
    std::size_t end = equals + 1;
    for (; end < line.size() && line[end] != '<'; ++end) {
      if (line[end] != ' ' && line[end] != '\t') continue;
      std::size_t name = end + 1;
      while (name < line.size() && IsNameLetter(line[name])) ++name;
      if (name > end + 1 && name < line.size() && line[name] == '=') break;
    }
    const std::size_t last = line.find_last_not_of(" \t", end - 1);
    SetOpcode(line.substr(begin, equals - begin), line.substr(equals + 1, last - equals));
    return end;
  }

  void SetOpcode(const std::string& name, const std::string& value) {
    if (isControl_ && name == "default_path") defaultPath_ = value;
    if (header_ < kHeaders.size()) opcodes_[header_][name] = value;
  }

  void BeginHeader(const std::string& name) {
    EndRegion();
    isControl_ = name == "control";
    header_ = static_cast<std::size_t>(std::find(kHeaders.begin(), kHeaders.end(), name) - kHeaders.begin());
    for (std::size_t i = header_; i < kHeaders.size(); ++i) opcodes_[i].clear();
    regionLine_ = line_;
  }

  std::string Get(const char* name) const {
    for (std::size_t i = kHeaders.size(); i-- > 0;)
      if (const auto found = opcodes_[i].find(name); found != opcodes_[i].end()) return found->second;
    return {};
  }

  int32_t GetVelocity(const char* name, int32_t usual) const {
    const std::string text = Get(name);
    if (text.empty()) return usual;
    const std::optional<double> number = ParseNumber(text);
    if (!number || *number < 0 || *number > 127)
      Fail(regionLine_, std::string(name) + "=" + text + " is not a velocity from 0 to 127");
    return static_cast<int32_t>(*number);
  }

  void EndRegion() {
    if (header_ != kRegion) return;
    header_ = kHeaders.size();
    SfzRegion region{Get("sample"), GetVelocity("lovel", 0), GetVelocity("hivel", 127)};
    if (region.sample.empty()) Fail(regionLine_, "the region has no sample");
    region.sample = defaultPath_ + region.sample;
    std::replace(region.sample.begin(), region.sample.end(), '\\', '/');
    if (!region.sample.starts_with('/')) region.sample = folder_ + region.sample;
    if (const std::string why = WhyUnreadable(region.sample); !why.empty())
      Fail(regionLine_, region.sample + ": " + why);
    CheckVelocities(region);
    const std::string keys = Get("key") + " " + Get("lokey") + " " + Get("hikey");
    if (!regions_.empty() && keys != keys_)
      Fail(regionLine_, "the region is for another key than those before; a multisample is one sound");
    keys_ = keys;
    regions_.push_back(std::move(region));
  }

  void CheckVelocities(const SfzRegion& region) const {
    if (region.lowest > region.highest) Fail(regionLine_, "lovel is above hivel");
    for (const SfzRegion& other : regions_) {
      const bool isSame = other.lowest == region.lowest && other.highest == region.highest;
      if (!isSame && region.lowest <= other.highest && other.lowest <= region.highest)
        Fail(regionLine_, "the velocities of the region overlap those of another one");
    }
  }

  const std::string& path_;
  std::string folder_;
  int32_t line_ = 0;
  bool isComment_ = false;
  bool isControl_ = false;
  std::string defaultPath_;
  std::size_t header_ = kHeaders.size();
  std::array<Opcodes, kHeaders.size()> opcodes_;
  int32_t regionLine_ = 0;
  std::string keys_;
  std::vector<SfzRegion> regions_;
};

}  // namespace

std::vector<SfzRegion> ReadSfz(const std::string& path) {
  return SfzReader(path).Read();
}

}  // namespace cli
