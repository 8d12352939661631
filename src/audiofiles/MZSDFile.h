#pragma once
#include "core/MAudioBuffer.h"
#include "core/MStream.h"

// Reads a ZSD file: a head of 60 bytes, "ZSD1", at 36 the sample rate, the channels and the length as signed
// 32-bit numbers, at 48 the peak factor as 32-bit float, then for each channel all of its samples as signed
// 32-bit integers; everything little-endian. A sample is integer x peak factor / 2147483647.
//
// The buffer is emptied first and gets the file's rate and peak factor, and depth 32. What is wrong raises
// "Invalid file contents. " and what it is (kTransferFailed), with the place as source, "byte 36", counted
// from where the stream stood. No memory is taken for samples that the stream does not hold.
void LoadZSD(MAudioBuffer& buffer, MStream& stream);
