#pragma once
#include <cstdint>

// The resource library that is built in, in the small form of MResourceLibrary: a picture for each shape of
// an equalizer's band, made of resources/filters.
extern const int32_t MBuiltInResourcesSize;
extern const uint8_t MBuiltInResources[];
