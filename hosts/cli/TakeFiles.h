#pragma once
// Which recordings a multisample is made of, and what each of them is.

#include <optional>
#include <string>
#include <vector>

namespace cli {

// The recording of one track (microphone) of one take.
struct TakeFile {
  std::string path;
  std::string take;              // the same for all tracks of a take
  std::string track;             // "main" where the name tells none
  std::optional<int32_t> layer;  // number of the layer, the softest first
  double level = 0;              // of the layer, 0..1, where the source tells it, else 0
};

// What the name of a file, without its extension, says. Its words are separated by "_", "-", "." or blanks. A
// word of digits alone, or of "rr", "take" and digits, counts takes; one of "v", "vel", "layer" and digits
// tells the layer. The take is all up to the last such word, the track what stands behind it:
// "kick_v3_2_oh" is track "oh" of the take "kick_v3_2" in layer 3. A name without such a word is a take.
TakeFile ParseTakeName(const std::string& name);

// The sound files of a folder, by their extensions, in the order of their names; what begins with a dot is
// left out. Raises Failure with kFile, also where there are none.
std::vector<std::string> ListSoundFiles(const std::string& folder);

// The recordings of a folder, or those that an SFZ file names. Raises Failure with kFile, as ReadSfz does.
std::vector<TakeFile> ListTakeFiles(const std::string& source);

}  // namespace cli
