#pragma once
#include "core/MString.h"

// UTF-8 of a text, with a zero byte behind it that counts in the size when `terminate` is set. Surrogate
// pairs make four bytes; a surrogate without its partner is dropped, a held high one together with the unit
// behind it. The code points 0x10FE01 to 0x10FEFF are a channel for raw bytes: each comes out as its lowest
// eight bits, and the unit behind it is skipped.
MBytes MEncodeUTF8(const MString& text, bool terminate);
