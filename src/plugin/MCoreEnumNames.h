#pragma once
// The names of the core's enumerations, for MValueEnum.

#include <array>

#include "core/MLocale.h"
#include "core/MThread.h"
#include "plugin/MValueEnum.h"

template <>
struct MEnumNames<MThread::Priority> {
  static constexpr std::array<const char*, 7> kNames = [] {
    std::array<const char*, 7> names = {"", "", "", "", "", "", ""};
    for (const MThreadPriorityName& row : kThreadPriorityNames)
      names[static_cast<std::size_t>(row.priority)] = row.name;
    return names;
  }();
};

template <>
struct MEnumNames<MLocale::Language> {
  static constexpr std::span<const char* const> kNames = MLocale::kLanguageNames;
};

template <>
struct MEnumNames<MLocale::Country> {
  static constexpr std::span<const char* const> kNames = MLocale::kCountryNames;
};
