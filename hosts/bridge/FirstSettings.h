#pragma once
#include "core/MString.h"

namespace bridge {

// Where the library finds no settings at its start, it takes the current folder as that of the content
// ("Samples", "MultiSamples", "SubSampleLibraries") for good. This writes settings that name this folder, and
// leaves settings that are there as they are, readable or not. To be called before the library is opened.
// Raises MException when they cannot be written.
void WriteFirstSettings(const MString& contentFolder);

}  // namespace bridge
