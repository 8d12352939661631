#include "core/MLocale.h"

#include "core/MException.h"

namespace {

MString PairAt(const char* codes, int32_t index, int32_t count) {
  if (index < 0 || index >= count) MThrowIndexOutOfRange();
  return MString::FromNarrow(codes + 2 * index, 2);
}

}  // namespace

const char* const MLocale::kLanguageNames[kLanguageCount] = {
#define M_LANGUAGE(name, code) #name,
#include "core/MLocaleLanguages.inc"
#undef M_LANGUAGE
};

const char* const MLocale::kCountryNames[kCountryCount] = {
#define M_COUNTRY(name, code) #name,
#include "core/MLocaleCountries.inc"
#undef M_COUNTRY
};

const char MLocale::kLanguageCodes[2 * kLanguageCount + 1] =
#define M_LANGUAGE(name, code) code
#include "core/MLocaleLanguages.inc"
#undef M_LANGUAGE
    ;

const char MLocale::kCountryCodes[2 * kCountryCount + 1] =
#define M_COUNTRY(name, code) code
#include "core/MLocaleCountries.inc"
#undef M_COUNTRY
    ;

MString MLocale::GetCode(Language language) {
  return PairAt(kLanguageCodes, static_cast<int32_t>(language), kLanguageCount);
}

MString MLocale::GetCode(Country country) {
  return PairAt(kCountryCodes, static_cast<int32_t>(country), kCountryCount);
}
