#pragma once
#include "core/MAudioBuffer.h"
#include "core/MStream.h"

// Reads MPEG audio, layers I to III of MPEG-1, 2 and 2.5 (layer III), bare or behind ID3v2 tags, in a WAV
// file with the tags 0x50 and 0x55, or in a program stream. A bare stream begins with a sync word of 0xFFF0
// or above, or of MPEG-2.5; garbage before it is passed in steps of two bytes, up to 2048 bytes.
//
// The buffer is emptied first and gets all samples of all frames, 16 bits deep, with the first frame's rate
// and channels (ampegdecoder.h says what belongs to a file). What is no such file raises "Invalid file
// contents. " and "MPEG stream header error.", "Invalid MPEG header in WAVe file.", "Error initializing MPEG
// decoder." or, when no frame could be decoded, "Error decompressing MPEG stream." (kTransferFailed), with
// the place as source, "byte 12", counted from where the stream stood; in a program stream within its audio.
// Memory is taken for the frames that are there.
void LoadMPEG(MAudioBuffer& buffer, MStream& stream);
