#pragma once
#include "core/MStream.h"

// Writes what `source` holds from its position on to `target`.
void MCopyStream(MStream& source, MStream& target);

// Two upper-case hexadecimal digits for each byte from the position on, or, with `rewind`, from the start.
MString MHexadecimalText(MStream& stream, bool rewind);
