#pragma once
// What the tests of files and folders share.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/MList.h"
#include "tests/common/Environment.h"
#include "tests/common/Texts.h"

// A path of the system, or any UTF-8, as a text.
inline MString Text(const std::string& utf8) {
  std::u16string units;
  for (const char16_t unit : std::filesystem::path(utf8).u16string()) units += unit;
  return MString(std::u16string_view(units));
}

inline std::vector<std::string> Names(const MList<MString>& list) {
  std::vector<std::string> names;
  for (const MString& name : list) names.push_back(Utf8(name));
  return names;
}
