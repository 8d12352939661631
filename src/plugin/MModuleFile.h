#pragma once
#include "core/MString.h"

// The handle of the library that this code is linked into, or that of the process for a program.
void* MGetModuleHandle() noexcept;

// The path of that library or program, links resolved. Raises the text of the system's error.
MString MGetModulePath();
