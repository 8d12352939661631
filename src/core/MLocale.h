#pragma once
#include "core/MString.h"

// Languages and countries, by number, English name and ISO code.
struct MLocale {
  // kDefault, kAbkhazian ... kNynorsk.
  enum class Language : int32_t {
#define M_LANGUAGE(name, code) k##name,
#include "core/MLocaleLanguages.inc"
#undef M_LANGUAGE
  };
  // kAfghanistan ... kZimbabwe.
  enum class Country : int32_t {
#define M_COUNTRY(name, code) k##name,
#include "core/MLocaleCountries.inc"
#undef M_COUNTRY
  };

  static constexpr int32_t kLanguageCount = 1 + static_cast<int32_t>(Language::kNynorsk);
  static constexpr int32_t kCountryCount = 1 + static_cast<int32_t>(Country::kZimbabwe);

  // Names by number.
  static const char* const kLanguageNames[kLanguageCount];
  static const char* const kCountryNames[kCountryCount];

  // The two letters of each number, one pair behind the other: ISO 639-1 in lower case, ISO 3166-1 in upper
  // case. A pair of blanks stands for no code. Codes that were withdrawn stay, as the names do.
  static const char kLanguageCodes[2 * kLanguageCount + 1];
  static const char kCountryCodes[2 * kCountryCount + 1];

  // The pair of a number. One out of range raises "Index out of range."
  static MString GetCode(Language language);
  static MString GetCode(Country country);
};
