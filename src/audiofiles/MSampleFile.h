#pragma once
#include "core/MAudioBuffer.h"
#include "core/MString.h"

// Reads a sample file into `buffer`. The extension, whatever its case, says what it is: "mp3" is MPEG audio,
// "wav" a WAV file, everything else ZSD (MMPEGFile.h, MWAVReader.h, MZSDFile.h). What these raise gets the
// path in front of its place, "kick.wav, byte 12"; a file that cannot be opened raises as MFileStream does
// and leaves the buffer as it was.
void LoadSamples(MAudioBuffer& buffer, const MString& path);
