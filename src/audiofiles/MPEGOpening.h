#pragma once
#include <memory>

#include "audiofiles/binfileMStream.h"
#include "audiofiles/mpegsplitstream.h"

namespace mp3dec {

// Goes to the first frame of a file, past tags and wrappers. A program stream's audio is to be read from the
// result, which stands at its first frame; else it is null. Raises as LoadMPEG does.
std::unique_ptr<mpegsplitstream> OpenMPEG(binfileMStream& file);

}  // namespace mp3dec
