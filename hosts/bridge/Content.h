#pragma once
#include <filesystem>
#include <string>
#include <vector>

namespace bridge {

// The folder of what Sonvelle brings along (samples, states), seen from the binary that looks for it:
// "content" beside it, as in a build tree; "share/sonvelle" in one of the folders above, as where it is
// installed; or "sonvelle" in the user's folder of data. Empty if there is none.
std::filesystem::path FindContent(const std::filesystem::path& binary);

// "sonvelle" in the user's folder of data; empty if the user has none.
std::filesystem::path GetUserContent();

// Instruments copy files that they are to play to the content. Where this user cannot write to it, as where
// it is installed for all users: GetUserContent, with a link to each of its files that is not there yet; the
// content itself if that cannot be made.
std::filesystem::path MakeWritable(const std::filesystem::path& content);

// A state that comes with a plug-in.
struct Preset {
  std::string name;
  std::string text;  // of the state
};

// The plug-in's states in the content, ordered by name. Files that cannot be read are left out.
std::vector<Preset> ReadPresets(const std::filesystem::path& content, std::string_view plugin);

}  // namespace bridge
