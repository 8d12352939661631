#pragma once
#include "hosts/cli/Arguments.h"

namespace cli {

// Makes a subsample library of sound files and prints as JSON what it is made of. Raises Failure.
//
// A recording is cut into frames of 8192 samples, each half over half of the next one, which are transformed
// as they are, without a window: where Grainloom fades from one frame to the next, both hold the same
// samples, so that all bands of a recording together give the recording again. Only the first half frame is
// faded in, and Grainloom scales to a peak of 1 and fades the last 200 samples. The ten bands are octaves,
// the first one as wide as the second; every recording is one sound of each, sorted by the centroid of its
// power spectrum.
void MakeSubsamples(const SubsamplesArguments& arguments);

}  // namespace cli
