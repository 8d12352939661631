#pragma once
#include "hosts/cli/Arguments.h"

namespace cli {

// Makes a multisample of the recordings of a folder (TakeFiles.h) or of an SFZ file (SfzFile.h), and prints
// as JSON what it is made of. Raises Failure.
void MakeMultisample(const MultisampleArguments& arguments);

}  // namespace cli
