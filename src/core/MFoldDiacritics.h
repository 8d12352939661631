#pragma once
#include "core/MTypes.h"

struct MFoldRow {
  MChar accented;
  MChar base;
};

// Letters with a diacritic and their base letters, sorted. Made by tools/make_fold_table.py.
constexpr int32_t kFoldRowCount = 988;
extern const MFoldRow kFoldRows[kFoldRowCount];
