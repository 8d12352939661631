#pragma once

// True if the processor and the system run AVX2 and FMA instructions. The processor is asked once. [any]
bool MHasAVX2() noexcept;
