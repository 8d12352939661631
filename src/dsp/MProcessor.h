#pragma once

// True if the processor and the system run AVX2 and FMA instructions. Asks the processor each time, which may
// take microseconds on a virtual machine: for constructors and preparation, not for loops. [any, not audio]
bool MHasAVX2() noexcept;
