#pragma once
#include "core/MTypes.h"

// A single-byte encoding whose lower half is ASCII.
struct MEncodingTable {
  const char* names[7];  // the primary name, then its aliases; null behind the last
  MChar units[128];      // for the bytes 0x80 to 0xFF; U+FFFD for a byte without a character
};

// Made by tools/make_encoding_tables.py.
constexpr int32_t kEncodingTableCount = 28;
extern const MEncodingTable kEncodingTables[kEncodingTableCount];
