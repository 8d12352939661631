#include "core/MLocale.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "tests/core/FileTests.h"

namespace {

using Strings = std::vector<std::string>;

Strings Words(const char* text) {
  std::istringstream words(text);
  return Strings(std::istream_iterator<std::string>(words), {});
}

const char* const kLanguages =
    "Default "
    "Abkhazian Afrikaans Albanian Amharic Arabic Armenian Assamese Aymara Azerbaijani Bashkir "
    "Basque Bengali Bhutani Bihari Bislama Breton Bulgarian Burmese Byelorussian Cambodian "
    "Catalan Chinese Corsican Croatian Czech Danish Dutch English Esperanto Estonian Faroese "
    "Finnish French Frisian Gaelic Galician Georgian German Greek Greenlandic Guarani Gujarati "
    "Hausa Hebrew Hindi Hungarian Icelandic Indonesian Interlingua Interlingue Inuktitut "
    "Inupiak Irish Italian Japanese Javanese Kannada Kashmiri Kazakh Kinyarwanda Kirghiz Korean "
    "Kurdish Kurundi Laothian Latin Latvian Lingala Lithuanian Macedonian Malagasy Malay "
    "Malayalam Maltese Maori Marathi Moldavian Mongolian Nauru Nepali Norwegian Occitan Oriya "
    "Pashto Persian Polish Portuguese Punjabi Quechua RhaetoRomance Romanian Russian Samoan "
    "Sangho Sanskrit Serbian SerboCroatian Sesotho Setswana Shona Sindhi Singhalese Siswati "
    "Slovak Slovenian Somali Spanish Sundanese Swahili Swedish Tagalog Tajik Tamil Tatar Telugu "
    "Tibetan Tigrinya Tonga Tsonga Turkish Turkmen Uigur Ukrainian Uzbek Vietnamese Volapuk "
    "Welsh Wolof Xhosa Yiddish Yoruba Zhuang Nynorsk ";

const char* const kCountries =
    "Afghanistan Albania Algeria AmericanSamoa Andorra Angola Anguilla Antarctica "
    "AntiguaAndBarbuda Argentina Armenia Aruba Australia Austria Azerbaijan Bahamas Bahrain "
    "Bangladesh Barbados Belarus Belgium Belize Benin Bermuda Bhutan Bolivia "
    "BosniaAndHerzegowina Botswana BouvetIsland Brazil BritishIndianOceanTerritory "
    "BruneiDarussalam Bulgaria BurkinaFaso Burundi Cambodia Cameroon Canada CapeVerde "
    "CaymanIslands CentralAfricanRepublic Chile China ChristmasIsland CocosIslands Colombia "
    "Comoros DemocraticRepublicOfCongo PeoplesRepublicOfCongo CookIslands CostaRica IvoryCoast "
    "Croatia Cyprus CzechRepublic Denmark Djibouti Dominica DominicanRepublic EastTimor Ecuador "
    "Egypt ElSalvador EquatorialGuinea Eritrea Estonia Ethiopia FalklandIslands FaroeIslands "
    "Finland France MetropolitanFrance FrenchGuiana FrenchPolynesia FrenchSouthernTerritories "
    "Gabon Gambia Georgia Germany Ghana Gibraltar Greece Greenland Grenada Guadeloupe Guatemala "
    "Guinea GuineaBissau Guyana Haiti HeardAndMcDonaldIslands Honduras HongKong Hungary Iceland "
    "India Indonesia Ireland Israel Italy Jamaica Japan Jordan Kazakhstan Kenya Kiribati "
    "DemocraticRepublicOfKorea RepublicOfKorea Kuwait Kyrgyzstan Latvia Lebanon Lesotho Liberia "
    "LibyanArabJamahiriya Liechtenstein Lithuania Luxembourg Macau Macedonia Madagascar Malawi "
    "Malaysia Maldives Malta MarshallIslands Martinique Mauritania Mauritius Mayotte Mexico "
    "Micronesia Moldova Monaco Mongolia Montserrat Morocco Mozambique Myanmar Namibia Nepal "
    "Netherlands NetherlandsAntilles NewCaledonia NewZealand Nicaragua Niger Nigeria "
    "NorfolkIsland NorthernMarianaIslands Norway Pakistan Palau PalestinianTerritory Panama "
    "PapuaNewGuinea Paraguay Philippines Pitcairn Poland Portugal PuertoRico Qatar Reunion "
    "Romania RussianFederation Rwanda SaintKittsAndNevis StLucia StVincentAndTheGrenadines "
    "Samoa SanMarino SaoTomeAndPrincipe SaudiArabia Senegal Seychelles SierraLeone Singapore "
    "Slovakia Slovenia SolomonIslands Somalia SouthAfrica "
    "SouthGeorgiaAndTheSouthSandwichIslands Spain SriLanka StHelena StPierreAndMiquelon Sudan "
    "Suriname SvalbardAndJanMayenIslands Swaziland Sweden Switzerland SyrianArabRepublic Taiwan "
    "Tajikistan Tanzania Thailand Tokelau TrinidadAndTobago Tunisia Turkey Turkmenistan "
    "TurksAndCaicosIslands Tuvalu Uganda Ukraine UnitedArabEmirates UnitedKingdom UnitedStates "
    "UnitedStatesMinorOutlyingIslands Uruguay Uzbekistan Vanuatu VaticanCityState Venezuela "
    "VietNam BritishVirginIslands USVirginIslands WallisAndFutunaIslands WesternSahara Yemen "
    "Yugoslavia Zambia Zimbabwe ";

// The codes of ISO 639-1 in force and, behind them, the withdrawn ones that the names stand for.
const char* const kLanguageRegistry =
    "aa ab ae af ak am an ar as av ay az ba be bg bi bm bn bo br bs ca ce ch co cr cs cu cv cy da de dv dz "
    "ee "
    "el en eo es et eu fa ff fi fj fo fr fy ga gd gl gn gu gv ha he hi ho hr ht hu hy hz ia id ie ig ii ik "
    "io "
    "is it iu ja jv ka kg ki kj kk kl km kn ko kr ks ku kv kw ky la lb lg li ln lo lt lu lv mg mh mi mk ml "
    "mn "
    "mr ms mt my na nb nd ne ng nl nn no nr nv ny oc oj om or os pa pi pl ps pt qu rm rn ro ru rw sa sc sd "
    "se "
    "sg si sk sl sm sn so sq sr ss st su sv sw ta te tg th ti tk tl tn to tr ts tt tw ty ug uk ur uz ve vi "
    "vo "
    "wa wo xh yi yo za zh zu "
    "bh mo sh";

// The same of ISO 3166-1.
const char* const kCountryRegistry =
    "AD AE AF AG AI AL AM AO AQ AR AS AT AU AW AX AZ BA BB BD BE BF BG BH BI BJ BL BM BN BO BQ "
    "BR BS BT BV BW BY BZ CA CC CD CF CG CH CI CK CL CM CN CO CR CU CV CW CX CY CZ DE DJ DK DM "
    "DO DZ EC EE EG EH ER ES ET FI FJ FK FM FO FR GA GB GD GE GF GG GH GI GL GM GN GP GQ GR GS "
    "GT GU GW GY HK HM HN HR HT HU ID IE IL IM IN IO IQ IR IS IT JE JM JO JP KE KG KH KI KM KN "
    "KP KR KW KY KZ LA LB LC LI LK LR LS LT LU LV LY MA MC MD ME MF MG MH MK ML MM MN MO MP MQ "
    "MR MS MT MU MV MW MX MY MZ NA NC NE NF NG NI NL NO NP NR NU NZ OM PA PE PF PG PH PK PL PM "
    "PN PR PS PT PW PY QA RE RO RS RU RW SA SB SC SD SE SG SH SI SJ SK SL SM SN SO SR SS ST SV "
    "SX SY SZ TC TD TF TG TH TJ TK TL TM TN TO TR TT TV TW TZ UA UG UM US UY UZ VA VC VE VG VI "
    "VN VU WF WS YE YT ZA ZM ZW "
    "AN FX TP YU";

std::set<std::string> Registered(const char* codes) {
  const Strings words = Words(codes);
  return {words.begin(), words.end()};
}

TEST(MLocale, LanguagesStandInTheirOrder) {
  EXPECT_EQ(MLocale::kLanguageCount, 134);
  EXPECT_EQ(Strings(std::begin(MLocale::kLanguageNames), std::end(MLocale::kLanguageNames)),
            Words(kLanguages));
}

TEST(MLocale, CountriesStandInTheirOrder) {
  EXPECT_EQ(MLocale::kCountryCount, 226);
  EXPECT_EQ(Strings(std::begin(MLocale::kCountryNames), std::end(MLocale::kCountryNames)), Words(kCountries));
}

TEST(MLocale, EnumeratorsAreTheNumbersOfTheNames) {
  EXPECT_EQ(static_cast<int>(MLocale::Language::kDefault), 0);
  EXPECT_STREQ(MLocale::kLanguageNames[static_cast<int>(MLocale::Language::kCzech)], "Czech");
  EXPECT_EQ(static_cast<int>(MLocale::Language::kCzech), 25);
  EXPECT_EQ(static_cast<int>(MLocale::Language::kNynorsk), 133);
  EXPECT_EQ(static_cast<int>(MLocale::Country::kAfghanistan), 0);
  EXPECT_EQ(static_cast<int>(MLocale::Country::kZimbabwe), 225);
}

TEST(MLocale, CodesAreOneStringOfPairs) {
  EXPECT_EQ(std::strlen(MLocale::kLanguageCodes), 268u);
  EXPECT_EQ(std::strlen(MLocale::kCountryCodes), 452u);
  EXPECT_EQ(std::string(MLocale::kLanguageCodes).substr(0, 8), "  abafsq");
  EXPECT_EQ(Utf8(MLocale::GetCode(MLocale::Language::kDefault)), "  ");
}

TEST(MLocale, EachCodeIsRegisteredAndStandsOnce) {
  std::set<std::string> languages = Registered(kLanguageRegistry), countries = Registered(kCountryRegistry);
  EXPECT_EQ(languages.size(), 183u + 3u);
  EXPECT_EQ(countries.size(), 249u + 4u);
  for (int32_t i = 1; i < MLocale::kLanguageCount; ++i)
    EXPECT_EQ(languages.erase(Utf8(MLocale::GetCode(MLocale::Language{i}))), 1u)
        << MLocale::kLanguageNames[i];
  for (int32_t i = 0; i < MLocale::kCountryCount; ++i)
    EXPECT_EQ(countries.erase(Utf8(MLocale::GetCode(MLocale::Country{i}))), 1u) << MLocale::kCountryNames[i];
}

TEST(MLocale, CodesBelongToTheirNames) {
  // Where the letters of the name alone would lead elsewhere.
  const std::map<std::string, std::string> languages{
      {"Albanian", "sq"},      {"Armenian", "hy"},  {"Basque", "eu"},        {"Bhutani", "dz"},
      {"Burmese", "my"},       {"Cambodian", "km"}, {"Chinese", "zh"},       {"Croatian", "hr"},
      {"Czech", "cs"},         {"Dutch", "nl"},     {"Faroese", "fo"},       {"Frisian", "fy"},
      {"Gaelic", "gd"},        {"Georgian", "ka"},  {"German", "de"},        {"Greek", "el"},
      {"Greenlandic", "kl"},   {"Hebrew", "he"},    {"Icelandic", "is"},     {"Indonesian", "id"},
      {"Irish", "ga"},         {"Javanese", "jv"},  {"Kirghiz", "ky"},       {"Kurundi", "rn"},
      {"Malay", "ms"},         {"Malagasy", "mg"},  {"Malayalam", "ml"},     {"Maltese", "mt"},
      {"Maori", "mi"},         {"Marathi", "mr"},   {"Moldavian", "mo"},     {"Norwegian", "no"},
      {"Nynorsk", "nn"},       {"Persian", "fa"},   {"RhaetoRomance", "rm"}, {"Sangho", "sg"},
      {"SerboCroatian", "sh"}, {"Sesotho", "st"},   {"Setswana", "tn"},      {"Siswati", "ss"},
      {"Spanish", "es"},       {"Swedish", "sv"},   {"Swahili", "sw"},       {"Tibetan", "bo"},
      {"Tigrinya", "ti"},      {"Tonga", "to"},     {"Tsonga", "ts"},        {"Ukrainian", "uk"},
      {"Welsh", "cy"},         {"Zhuang", "za"},
  };
  std::size_t found = 0;
  for (int32_t i = 1; i < MLocale::kLanguageCount; ++i)
    if (const auto row = languages.find(MLocale::kLanguageNames[i]); row != languages.end()) {
      EXPECT_EQ(Utf8(MLocale::GetCode(MLocale::Language{i})), row->second) << row->first;
      ++found;
    }
  EXPECT_EQ(found, languages.size());
}

// The list of the time zone database: each country of ours whose name stands there alike has its code.
TEST(MLocale, CountriesAgreeWithTheTimeZoneDatabase) {
  std::ifstream file("/usr/share/zoneinfo/iso3166.tab");
  if (!file) GTEST_SKIP() << "the time zone database is not installed";
  std::map<std::string, std::string> codes;
  for (std::string line; std::getline(file, line);) {
    if (line.size() < 4 || line[0] == '#') continue;
    std::string name;
    for (const char c : line.substr(3))
      if (c != ' ') name += c;
    codes[name] = line.substr(0, 2);
  }
  codes.erase("EastTimor");  // TL since 2002; TP belongs to that name
  int found = 0;
  for (int32_t i = 0; i < MLocale::kCountryCount; ++i)
    if (const auto row = codes.find(MLocale::kCountryNames[i]); row != codes.end()) {
      EXPECT_EQ(Utf8(MLocale::GetCode(MLocale::Country{i})), row->second) << row->first;
      ++found;
    }
  EXPECT_GT(found, 150);
}

TEST(MLocale, CountriesUnderOlderOrLongerNamesHaveTheirCodes) {
  const std::map<std::string, std::string> codes{
      {"AmericanSamoa", "AS"},
      {"AntiguaAndBarbuda", "AG"},
      {"BosniaAndHerzegowina", "BA"},
      {"BruneiDarussalam", "BN"},
      {"CentralAfricanRepublic", "CF"},
      {"CocosIslands", "CC"},
      {"DemocraticRepublicOfCongo", "CD"},
      {"PeoplesRepublicOfCongo", "CG"},
      {"IvoryCoast", "CI"},
      {"EastTimor", "TP"},
      {"MetropolitanFrance", "FX"},
      {"FrenchSouthernTerritories", "TF"},
      {"HeardAndMcDonaldIslands", "HM"},
      {"DemocraticRepublicOfKorea", "KP"},
      {"RepublicOfKorea", "KR"},
      {"LibyanArabJamahiriya", "LY"},
      {"Macedonia", "MK"},
      {"Myanmar", "MM"},
      {"NetherlandsAntilles", "AN"},
      {"PalestinianTerritory", "PS"},
      {"Reunion", "RE"},
      {"RussianFederation", "RU"},
      {"SaintKittsAndNevis", "KN"},
      {"StVincentAndTheGrenadines", "VC"},
      {"Samoa", "WS"},
      {"SaoTomeAndPrincipe", "ST"},
      {"SouthGeorgiaAndTheSouthSandwichIslands", "GS"},
      {"StPierreAndMiquelon", "PM"},
      {"SvalbardAndJanMayenIslands", "SJ"},
      {"Swaziland", "SZ"},
      {"SyrianArabRepublic", "SY"},
      {"TrinidadAndTobago", "TT"},
      {"TurksAndCaicosIslands", "TC"},
      {"UnitedKingdom", "GB"},
      {"UnitedStatesMinorOutlyingIslands", "UM"},
      {"VaticanCityState", "VA"},
      {"BritishVirginIslands", "VG"},
      {"USVirginIslands", "VI"},
      {"WallisAndFutunaIslands", "WF"},
      {"Yugoslavia", "YU"},
  };
  std::size_t found = 0;
  for (int32_t i = 0; i < MLocale::kCountryCount; ++i)
    if (const auto row = codes.find(MLocale::kCountryNames[i]); row != codes.end()) {
      EXPECT_EQ(Utf8(MLocale::GetCode(MLocale::Country{i})), row->second) << row->first;
      ++found;
    }
  EXPECT_EQ(found, codes.size());
}

TEST(MLocale, NumbersOutOfRangeRaise) {
  for (const int32_t number : {-1, 134, 0x7FFFFFFF})
    EXPECT_RAISES(MLocale::GetCode(MLocale::Language{number}), "Index out of range.", 0);
  EXPECT_RAISES(MLocale::GetCode(MLocale::Country{226}), "Index out of range.", 0);
}

}  // namespace
