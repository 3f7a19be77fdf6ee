#include "kelp0lang/CultureTable.h"

#include <algorithm>
#include <iterator>

namespace kelp {
namespace {

constexpr LanguageInfo kCultures[] = {
    {KTEXT("af-ZA"), 0x436, KTEXT("Afrikaans"), KTEXT("South Africa"), KTEXT("Afrikaans")},
    {KTEXT("sq-AL"), 0x41C, KTEXT("Albanian"), KTEXT("Albania"), KTEXT("Shqip")},
    {KTEXT("ar-DZ"), 0x1401, KTEXT("Arabic"), KTEXT("Algeria"), KTEXT("العربية")},
    {KTEXT("ar-BH"), 0x3C01, KTEXT("Arabic"), KTEXT("Bahrain"), KTEXT("العربية")},
    {KTEXT("ar-EG"), 0xC01, KTEXT("Arabic"), KTEXT("Egypt"), KTEXT("العربية")},
    {KTEXT("ar-IQ"), 0x801, KTEXT("Arabic"), KTEXT("Iraq"), KTEXT("العربية")},
    {KTEXT("ar-JO"), 0x2C01, KTEXT("Arabic"), KTEXT("Jordan"), KTEXT("العربية")},
    {KTEXT("ar-KW"), 0x3401, KTEXT("Arabic"), KTEXT("Kuwait"), KTEXT("العربية")},
    {KTEXT("ar-LB"), 0x3001, KTEXT("Arabic"), KTEXT("Lebanon"), KTEXT("العربية")},
    {KTEXT("ar-LY"), 0x1001, KTEXT("Arabic"), KTEXT("Libya"), KTEXT("العربية")},
    {KTEXT("ar-MA"), 0x1801, KTEXT("Arabic"), KTEXT("Morocco"), KTEXT("العربية")},
    {KTEXT("ar-OM"), 0x2001, KTEXT("Arabic"), KTEXT("Oman"), KTEXT("العربية")},
    {KTEXT("ar-QA"), 0x4001, KTEXT("Arabic"), KTEXT("Qatar"), KTEXT("العربية")},
    {KTEXT("ar-SA"), 0x401, KTEXT("Arabic"), KTEXT("Saudi Arabia"), KTEXT("العربية")},
    {KTEXT("ar-SY"), 0x2801, KTEXT("Arabic"), KTEXT("Syria"), KTEXT("العربية")},
    {KTEXT("ar-TN"), 0x1C01, KTEXT("Arabic"), KTEXT("Tunisia"), KTEXT("العربية")},
    {KTEXT("ar-AE"), 0x3801, KTEXT("Arabic"), KTEXT("United Arab Emirates"), KTEXT("العربية")},
    {KTEXT("ar-YE"), 0x2401, KTEXT("Arabic"), KTEXT("Yemen"), KTEXT("العربية")},
    {KTEXT("hy-AM"), 0x42B, KTEXT("Armenian"), KTEXT("Armenia"), KTEXT("Հայերեն")},
    {KTEXT("Cy-az-AZ"), 0x82C, KTEXT("Azeri (Cyrillic)"), KTEXT("Azerbaijan"), KTEXT("Азәрбајҹан")},
    {KTEXT("Lt-az-AZ"), 0x42C, KTEXT("Azeri (Latin)"), KTEXT("Azerbaijan"), KTEXT("Azərbaycan")},
    {KTEXT("eu-ES"), 0x42D, KTEXT("Basque"), KTEXT("Basque"), KTEXT("Euskara")},
    {KTEXT("be-BY"), 0x423, KTEXT("Belarusian"), KTEXT("Belarus"), KTEXT("Беларуская")},
    {KTEXT("bg-BG"), 0x402, KTEXT("Bulgarian"), KTEXT("Bulgaria"), KTEXT("Български")},
    {KTEXT("ca-ES"), 0x403, KTEXT("Catalan"), KTEXT("Catalan"), KTEXT("Català")},
    {KTEXT("zh-CN"), 0x804, KTEXT("Chinese"), KTEXT("China"), KTEXT("中文")},
    {KTEXT("zh-HK"), 0xC04, KTEXT("Chinese"), KTEXT("Hong Kong"), KTEXT("中文")},
    {KTEXT("zh-MO"), 0x1404, KTEXT("Chinese"), KTEXT("Macao"), KTEXT("中文")},
    {KTEXT("zh-Hans"), 0x4, KTEXT("Chinese (Simplified)"), KTEXT(""), KTEXT("中文")},
    {KTEXT("zh-SG"), 0x1004, KTEXT("Chinese"), KTEXT("Singapore"), KTEXT("中文")},
    {KTEXT("zh-TW"), 0x404, KTEXT("Chinese"), KTEXT("Taiwan"), KTEXT("中文")},
    {KTEXT("zh-Hant"), 0x7C04, KTEXT("Chinese (Traditional)"), KTEXT(""), KTEXT("中文")},
    {KTEXT("hr-HR"), 0x41A, KTEXT("Croatian"), KTEXT("Croatia"), KTEXT("Hrvatski")},
    {KTEXT("cs-CZ"), 0x405, KTEXT("Czech"), KTEXT("Czech Republic"), KTEXT("Čeština")},
    {KTEXT("da-DK"), 0x406, KTEXT("Danish"), KTEXT("Denmark"), KTEXT("Dansk")},
    {KTEXT("div-MV"), 0x465, KTEXT("Divehi"), KTEXT("Maldives"), KTEXT("ދިވެހިބަސް")},
    {KTEXT("nl-BE"), 0x813, KTEXT("Dutch"), KTEXT("Belgium"), KTEXT("Nederlands")},
    {KTEXT("nl-NL"), 0x413, KTEXT("Dutch"), KTEXT("Netherlands"), KTEXT("Nederlands")},
    {KTEXT("en-AU"), 0xC09, KTEXT("English"), KTEXT("Australia"), KTEXT("English")},
    {KTEXT("en-BZ"), 0x2809, KTEXT("English"), KTEXT("Belize"), KTEXT("English")},
    {KTEXT("en-CA"), 0x1009, KTEXT("English"), KTEXT("Canada"), KTEXT("English")},
    {KTEXT("en-CB"), 0x2409, KTEXT("English"), KTEXT("Caribbean"), KTEXT("English")},
    {KTEXT("en-IE"), 0x1809, KTEXT("English"), KTEXT("Ireland"), KTEXT("English")},
    {KTEXT("en-JM"), 0x2009, KTEXT("English"), KTEXT("Jamaica"), KTEXT("English")},
    {KTEXT("en-NZ"), 0x1409, KTEXT("English"), KTEXT("New Zealand"), KTEXT("English")},
    {KTEXT("en-PH"), 0x3409, KTEXT("English"), KTEXT("Philippines"), KTEXT("English")},
    {KTEXT("en-ZA"), 0x1C09, KTEXT("English"), KTEXT("South Africa"), KTEXT("English")},
    {KTEXT("en-TT"), 0x2C09, KTEXT("English"), KTEXT("Trinidad and Tobago"), KTEXT("English")},
    {KTEXT("en-GB"), 0x809, KTEXT("English"), KTEXT("United Kingdom"), KTEXT("English")},
    {KTEXT("en-US"), 0x409, KTEXT("English"), KTEXT("United States"), KTEXT("English")},
    {KTEXT("en-ZW"), 0x409, KTEXT("English"), KTEXT("Zimbabwe"), KTEXT("English")},
    {KTEXT("et-EE"), 0x425, KTEXT("Estonian"), KTEXT("Estonia"), KTEXT("Eesti")},
    {KTEXT("fo-FO"), 0x438, KTEXT("Faroese"), KTEXT("Faroe Islands"), KTEXT("Føroyskt")},
    {KTEXT("fa-IR"), 0x429, KTEXT("Farsi"), KTEXT("Iran"), KTEXT("Farsi")},
    {KTEXT("fi-FI"), 0x40B, KTEXT("Finnish"), KTEXT("Finland"), KTEXT("Suomi")},
    {KTEXT("fr-BE"), 0x80C, KTEXT("French"), KTEXT("Belgium"), KTEXT("Français")},
    {KTEXT("fr-CA"), 0xC0C, KTEXT("French"), KTEXT("Canada"), KTEXT("Français")},
    {KTEXT("fr-FR"), 0x40C, KTEXT("French"), KTEXT("France"), KTEXT("Français")},
    {KTEXT("fr-LU"), 0x140C, KTEXT("French"), KTEXT("Luxembourg"), KTEXT("Français")},
    {KTEXT("fr-MC"), 0x180C, KTEXT("French"), KTEXT("Monaco"), KTEXT("Français")},
    {KTEXT("fr-CH"), 0x100C, KTEXT("French"), KTEXT("Switzerland"), KTEXT("Français")},
    {KTEXT("gd-GD"), 0x43C, KTEXT("Gaelic (Scotland)"), KTEXT("United Kingdom"), KTEXT("Gàidhlig")},
    {KTEXT("gd-IE"), 0x83C, KTEXT("Gaelic (Ireland)"), KTEXT("Ireland"), KTEXT("Gaeilge")},
    {KTEXT("gl-ES"), 0x456, KTEXT("Galician"), KTEXT("Spain"), KTEXT("Galego")},
    {KTEXT("ka-GE"), 0x437, KTEXT("Georgian"), KTEXT("Georgia"), KTEXT("ქართული")},
    {KTEXT("de-AT"), 0xC07, KTEXT("German"), KTEXT("Austria"), KTEXT("Deutsch")},
    {KTEXT("de-DE"), 0x407, KTEXT("German"), KTEXT("Germany"), KTEXT("Deutsch")},
    {KTEXT("de-LI"), 0x1407, KTEXT("German"), KTEXT("Liechtenstein"), KTEXT("Deutsch")},
    {KTEXT("de-LU"), 0x1007, KTEXT("German"), KTEXT("Luxembourg"), KTEXT("Deutsch")},
    {KTEXT("de-CH"), 0x807, KTEXT("German"), KTEXT("Switzerland"), KTEXT("Deutsch")},
    {KTEXT("el-GR"), 0x408, KTEXT("Greek"), KTEXT("Greek"), KTEXT("Ελληνικά")},
    {KTEXT("gu-IN"), 0x447, KTEXT("Gujarati"), KTEXT("India"), KTEXT("ગુજરાતી")},
    {KTEXT("he-IL"), 0x40D, KTEXT("Hebrew"), KTEXT("Israel"), KTEXT("עברית")},
    {KTEXT("hi-IN"), 0x439, KTEXT("Hindi"), KTEXT("India"), KTEXT("हिन्दी")},
    {KTEXT("hu-HU"), 0x40E, KTEXT("Hungarian"), KTEXT("Hungary"), KTEXT("Magyar")},
    {KTEXT("is-IS"), 0x40F, KTEXT("Icelandic"), KTEXT("Iceland"), KTEXT("Íslenska")},
    {KTEXT("id-ID"), 0x421, KTEXT("Indonesian"), KTEXT("Indonesia"), KTEXT("Bahasa Indonesia")},
    {KTEXT("xh-ZA"), 0x434, KTEXT("isiXhosa"), KTEXT("isiXhosa"), KTEXT("isiXhosa")},
    {KTEXT("zu-ZA"), 0x435, KTEXT("isiZulu"), KTEXT("South Africa"), KTEXT("isiZulu")},
    {KTEXT("it-IT"), 0x410, KTEXT("Italian"), KTEXT("Italy"), KTEXT("Italiano")},
    {KTEXT("it-CH"), 0x810, KTEXT("Italian"), KTEXT("Switzerland"), KTEXT("Italiano")},
    {KTEXT("ja-JP"), 0x411, KTEXT("Japanese"), KTEXT("Japan"), KTEXT("日本語")},
    {KTEXT("kn-IN"), 0x44B, KTEXT("Kannada"), KTEXT("India"), KTEXT("ಕನ್ನಡ")},
    {KTEXT("kk-KZ"), 0x43F, KTEXT("Kazakh"), KTEXT("Kazakhstan"), KTEXT("Қазақша")},
    {KTEXT("sw-KE"), 0x441, KTEXT("Kiswahili"), KTEXT("Kenya"), KTEXT("Kiswahili")},
    {KTEXT("kok-IN"), 0x457, KTEXT("Konkani"), KTEXT("India"), KTEXT("कोंकणी")},
    {KTEXT("ko-KR"), 0x412, KTEXT("Korean"), KTEXT("South Korea"), KTEXT("한국어")},
    {KTEXT("ky-KZ"), 0x440, KTEXT("Kyrgyz"), KTEXT("Kyrgyzstan"), KTEXT("Кыргызча")},
    {KTEXT("lv-LV"), 0x426, KTEXT("Latvian"), KTEXT("Latvia"), KTEXT("Latviešu")},
    {KTEXT("lt-LT"), 0x427, KTEXT("Lithuanian"), KTEXT("Lithuania"), KTEXT("Lietuvių")},
    {KTEXT("mk-MK"), 0x42F, KTEXT("Macedonian (FYROM)"), KTEXT("Macedonian (FYROM)"),
     KTEXT("Македонски")},
    {KTEXT("ms-BN"), 0x83E, KTEXT("Malay"), KTEXT("Brunei"), KTEXT("Bahasa Melayu")},
    {KTEXT("ms-MY"), 0x43E, KTEXT("Malay"), KTEXT("Malaysia"), KTEXT("Bahasa Melayu")},
    {KTEXT("mt-MT"), 0x43A, KTEXT("Maltese"), KTEXT("Malta"), KTEXT("Malti")},
    {KTEXT("mr-IN"), 0x44E, KTEXT("Marathi"), KTEXT("India"), KTEXT("मराठी")},
    {KTEXT("mn-MN"), 0x44E, KTEXT("Mongolian"), KTEXT("Mongolia"), KTEXT("Монгол хэл")},
    {KTEXT("nb-NO"), 0x414, KTEXT("Norwegian (Bokmal)"), KTEXT("Norway"), KTEXT("Norsk, bokmål")},
    {KTEXT("nn-NO"), 0x814, KTEXT("Norwegian (Nynorsk)"), KTEXT("Norway"), KTEXT("Norsk, nynors")},
    {KTEXT("pl-PL"), 0x415, KTEXT("Polish"), KTEXT("Poland"), KTEXT("Polski")},
    {KTEXT("pt-BR"), 0x416, KTEXT("Portuguese"), KTEXT("Brazil"), KTEXT("Português")},
    {KTEXT("pt-PT"), 0x816, KTEXT("Portuguese"), KTEXT("Portugal"), KTEXT("Português")},
    {KTEXT("pa-IN"), 0x446, KTEXT("Punjabi"), KTEXT("India"), KTEXT("ਪੰਜਾਬੀ")},
    {KTEXT("ro-RO"), 0x418, KTEXT("Romanian"), KTEXT("Romania"), KTEXT("Română")},
    {KTEXT("ro-MO"), 0x818, KTEXT("Romanian"), KTEXT("Moldova"), KTEXT("Română")},
    {KTEXT("ru-RU"), 0x419, KTEXT("Russian"), KTEXT("Russia"), KTEXT("Русский")},
    {KTEXT("ru-MO"), 0x819, KTEXT("Russian"), KTEXT("Moldova"), KTEXT("Русский")},
    {KTEXT("sa-IN"), 0x44F, KTEXT("Sanskrit"), KTEXT("India"), KTEXT("संस्कृतम्")},
    {KTEXT("Cy-sr-SP"), 0xC1A, KTEXT("Serbian (Cyrillic)"), KTEXT("Serbia"), KTEXT("Српски")},
    {KTEXT("Lt-sr-SP"), 0x81A, KTEXT("Serbian (Latin)"), KTEXT("Serbia"), KTEXT("Srpski")},
    {KTEXT("sk-SK"), 0x41B, KTEXT("Slovak"), KTEXT("Slovakia"), KTEXT("Slovenčina")},
    {KTEXT("sl-SI"), 0x424, KTEXT("Slovenian"), KTEXT("Slovenia"), KTEXT("Slovenščina")},
    {KTEXT("tn-ZA"), 0x432, KTEXT("Setswana"), KTEXT("South Africa"), KTEXT("Setswana")},
    {KTEXT("es-AR"), 0x2C0A, KTEXT("Spanish"), KTEXT("Argentina"), KTEXT("Español")},
    {KTEXT("es-BO"), 0x400A, KTEXT("Spanish"), KTEXT("Bolivia"), KTEXT("Español")},
    {KTEXT("es-CL"), 0x340A, KTEXT("Spanish"), KTEXT("Chile"), KTEXT("Español")},
    {KTEXT("es-CO"), 0x240A, KTEXT("Spanish"), KTEXT("Colombia"), KTEXT("Español")},
    {KTEXT("es-CR"), 0x140A, KTEXT("Spanish"), KTEXT("Costa Rica"), KTEXT("Español")},
    {KTEXT("es-DO"), 0x1C0A, KTEXT("Spanish"), KTEXT("Dominican Republic"), KTEXT("Español")},
    {KTEXT("es-EC"), 0x300A, KTEXT("Spanish"), KTEXT("Ecuador"), KTEXT("Español")},
    {KTEXT("es-SV"), 0x440A, KTEXT("Spanish"), KTEXT("El Salvador"), KTEXT("Español")},
    {KTEXT("es-GT"), 0x100A, KTEXT("Spanish"), KTEXT("Guatemala"), KTEXT("Español")},
    {KTEXT("es-HN"), 0x480A, KTEXT("Spanish"), KTEXT("Honduras"), KTEXT("Español")},
    {KTEXT("es-MX"), 0x80A, KTEXT("Spanish"), KTEXT("Mexico"), KTEXT("Español")},
    {KTEXT("es-NI"), 0x4C0A, KTEXT("Spanish"), KTEXT("Nicaragua"), KTEXT("Español")},
    {KTEXT("es-PA"), 0x180A, KTEXT("Spanish"), KTEXT("Panama"), KTEXT("Español")},
    {KTEXT("es-PY"), 0x3C0A, KTEXT("Spanish"), KTEXT("Paraguay"), KTEXT("Español")},
    {KTEXT("es-PE"), 0x280A, KTEXT("Spanish"), KTEXT("Peru"), KTEXT("Español")},
    {KTEXT("es-PR"), 0x500A, KTEXT("Spanish"), KTEXT("Puerto Rico"), KTEXT("Español")},
    {KTEXT("es-ES"), 0xC0A, KTEXT("Spanish"), KTEXT("Spain"), KTEXT("Español")},
    {KTEXT("es-UY"), 0x380A, KTEXT("Spanish"), KTEXT("Uruguay"), KTEXT("Español")},
    {KTEXT("es-VE"), 0x200A, KTEXT("Spanish"), KTEXT("Venezuela"), KTEXT("Español")},
    {KTEXT("sv-FI"), 0x81D, KTEXT("Swedish"), KTEXT("Finland"), KTEXT("Svenska")},
    {KTEXT("sv-SE"), 0x41D, KTEXT("Swedish"), KTEXT("Sweden"), KTEXT("Svenska")},
    {KTEXT("syr-SY"), 0x45A, KTEXT("Syriac"), KTEXT("Syria"), KTEXT("ܣܘܪܝܝܐ")},
    {KTEXT("ta-IN"), 0x449, KTEXT("Tamil"), KTEXT("India"), KTEXT("தமிழ்")},
    {KTEXT("tt-RU"), 0x444, KTEXT("Tatar"), KTEXT("Russia"), KTEXT("Татарча")},
    {KTEXT("te-IN"), 0x44A, KTEXT("Telugu"), KTEXT("India"), KTEXT("తెలుగు")},
    {KTEXT("th-TH"), 0x41E, KTEXT("Thai"), KTEXT("Thailand"), KTEXT("ไทย")},
    {KTEXT("tr-TR"), 0x41F, KTEXT("Turkish"), KTEXT("Turkey"), KTEXT("Türkçe")},
    {KTEXT("uk-UA"), 0x422, KTEXT("Ukrainian"), KTEXT("Ukraine"), KTEXT("Українська")},
    {KTEXT("wen-DE"), 0x42E, KTEXT("Upper Sorbian"), KTEXT("Germany"), KTEXT("Hornjoserbšćina")},
    {KTEXT("ur-PK"), 0x420, KTEXT("Urdu"), KTEXT("Pakistan"), KTEXT("اردو")},
    {KTEXT("Cy-uz-UZ"), 0x843, KTEXT("Uzbek (Cyrillic)"), KTEXT("Uzbekistan"), KTEXT("Ўзбекча")},
    {KTEXT("Lt-uz-UZ"), 0x443, KTEXT("Uzbek (Latin)"), KTEXT("Uzbekistan"), KTEXT("Oʻzbekcha")},
    {KTEXT("vi-VN"), 0x42A, KTEXT("Vietnamese"), KTEXT("Vietnam"), KTEXT("Tiếng Việt")},
};

constexpr int kCount = static_cast<int>(std::size(kCultures));
static_assert(kCount == 145);

constexpr unsigned short kSpanishTraditional = 0x40A;
constexpr unsigned short kSpanishModern = 0xC0A;

// The first row that satisfies the test, or -1.
template <class Test>
int FindRow(Test test) {
  const LanguageInfo* found = std::find_if(std::begin(kCultures), std::end(kCultures), test);
  return found == std::end(kCultures) ? -1 : static_cast<int>(found - kCultures);
}

}  // namespace

int getCulturesCount() {
  return kCount;
}

const LanguageInfo* getCultureInfo(std::size_t index) {
  return index < std::size(kCultures) ? &kCultures[index] : nullptr;
}

int findCultureIndexByCode(unsigned short code) {
  if (code == kSpanishTraditional) code = kSpanishModern;
  return FindRow([code](const LanguageInfo& row) { return row.code == code; });
}

int findCultureIndexByName(const WString& name) {
  return FindRow(
      [&name](const LanguageInfo& row) { return name.CompareIgnoreCase(row.cultureName) == 0; });
}

bool getCultureCodeByName(const WString& name, unsigned short& code) {
  const int index = findCultureIndexByName(name);
  code = index < 0 ? 0 : kCultures[index].code;
  return index >= 0;
}

bool getCultureNameByCode(unsigned short code, WString& name) {
  const int index = findCultureIndexByCode(code);
  if (index < 0) return false;
  name = kCultures[index].cultureName;
  return true;
}

bool getCultureDisplayName(int index, WString& language, WString& nativeName, WString& country) {
  if (index < 0 || index >= kCount) return false;
  const LanguageInfo& row = kCultures[index];
  language = row.language;
  nativeName = row.nativeName;
  country = row.country;
  return true;
}

}  // namespace kelp
