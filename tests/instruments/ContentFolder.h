#pragma once
// A folder of content for instruments, with the library's configuration on it: "Samples", "MultiSamples" and
// "SubSampleLibraries", and "own" as the user's own folder of samples.

#include <cstring>
#include <string>
#include <vector>

#include "plugin/SonvelleConfiguration.h"
#include "tests/common/DataFolder.h"
#include "tests/common/Texts.h"

class ContentFolder {
 public:
  ContentFolder() {
    for (const char* const name : {"Samples", "MultiSamples", "SubSampleLibraries", "own"})
      std::filesystem::create_directories(folder_.GetPath() / name);
    data_.Write("SonvelleConfiguration.cfg", "<SonvelleCfg GlobalPath=\"" + folder_.GetPath().string() +
                                                 "\" SamplePathCustom=\"" + folder_.Path("own") + "\"/>");
    SonvelleConfiguration::Create();
  }
  ~ContentFolder() { SonvelleConfiguration::Destroy(); }

  const TemporaryFolder& GetFolder() const { return folder_; }
  std::string Path(const std::string& name) const { return folder_.Path(name); }
  MString Text(const std::string& name) const { return Buffer(Path(name).c_str()); }
  bool Has(const std::string& name) const { return std::filesystem::exists(Path(name)); }

  // A WAV file of 32-bit floats, channel by channel.
  void WriteSample(const std::string& name, const std::vector<std::vector<float>>& channels,
                   int32_t rate = 44100) const {
    std::string data;
    for (std::size_t i = 0; i < channels[0].size(); ++i)
      for (const std::vector<float>& channel : channels)
        data.append(reinterpret_cast<const char*>(&channel[i]), sizeof(float));
    const auto count = static_cast<uint16_t>(channels.size());
    std::string file =
        "RIFF" + Number<uint32_t>(36 + data.size()) + "WAVEfmt " + Number<uint32_t>(16) +
        Number<uint16_t>(3) + Number<uint16_t>(count) + Number<uint32_t>(static_cast<std::size_t>(rate)) +
        Number<uint32_t>(static_cast<std::size_t>(rate) * count * 4u) + Number<uint16_t>(count * 4u) +
        Number<uint16_t>(32) + "data" + Number<uint32_t>(data.size()) + data;
    const std::filesystem::path path = folder_.GetPath() / name;
    std::filesystem::create_directories(path.parent_path());
    folder_.WriteFile(name, file);
  }

 private:
  template <typename T>
  static std::string Number(std::size_t value) {
    const auto number = static_cast<T>(value);
    return std::string(reinterpret_cast<const char*>(&number), sizeof number);
  }

  TemporaryFolder folder_;
  DataFolder data_;
};
