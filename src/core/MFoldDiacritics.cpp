#include "core/MFoldDiacritics.h"

#include <algorithm>

#include "core/MString.h"

MChar FoldDiacritics(MChar unit) noexcept {
  if (unit < 192) return unit;
  const MFoldRow* const end = kFoldRows + kFoldRowCount;
  const MFoldRow* const row =
      std::lower_bound(kFoldRows, end, unit, [](const MFoldRow& r, MChar c) { return r.accented < c; });
  return row != end && row->accented == unit ? row->base : unit;
}
