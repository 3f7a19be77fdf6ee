#include "kelp0lang/CultureTable.h"

#include <set>
#include <string>
#include <utility>

#include "tests/TestText.h"

using kelp::WString;

namespace {

// Rows where the order, a twin, or the text of the source file could go wrong.
const std::pair<std::size_t, kelp::LanguageInfo> kSamples[] = {
    {0, {KTEXT("af-ZA"), 0x436, KTEXT("Afrikaans"), KTEXT("South Africa"), KTEXT("Afrikaans")}},
    {19,
     {KTEXT("Cy-az-AZ"), 0x82C, KTEXT("Azeri (Cyrillic)"), KTEXT("Azerbaijan"),
      KTEXT("\u0410\u0437\u04D9\u0440\u0431\u0430\u0458\u04B9\u0430\u043D")}},
    {28, {KTEXT("zh-Hans"), 0x4, KTEXT("Chinese (Simplified)"), KTEXT(""), KTEXT("\u4E2D\u6587")}},
    {50, {KTEXT("en-ZW"), 0x409, KTEXT("English"), KTEXT("Zimbabwe"), KTEXT("English")}},
    {95,
     {KTEXT("mn-MN"), 0x44E, KTEXT("Mongolian"), KTEXT("Mongolia"),
      KTEXT("\u041C\u043E\u043D\u0433\u043E\u043B \u0445\u044D\u043B")}},
    {128, {KTEXT("es-ES"), 0xC0A, KTEXT("Spanish"), KTEXT("Spain"), KTEXT("Espa\u00F1ol")}},
    {144,
     {KTEXT("vi-VN"), 0x42A, KTEXT("Vietnamese"), KTEXT("Vietnam"), KTEXT("Ti\u1EBFng Vi\u1EC7t")}},
};

TEST(CultureTable, HoldsItsRowsInTheirOrder) {
  ASSERT_EQ(kelp::getCulturesCount(), 145);
  EXPECT_EQ(kelp::getCultureInfo(145), nullptr);
  EXPECT_EQ(kelp::getCultureInfo(~std::size_t{0}), nullptr);
  for (const auto& [index, sample] : kSamples) {
    const kelp::LanguageInfo* row = kelp::getCultureInfo(index);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(WString(row->cultureName), WString(sample.cultureName));
    EXPECT_EQ(row->code, sample.code) << index;
    EXPECT_EQ(WString(row->language), WString(sample.language));
    EXPECT_EQ(WString(row->country), WString(sample.country));
    EXPECT_EQ(WString(row->nativeName), WString(sample.nativeName));
  }
}

TEST(CultureTable, EveryRowIsFoundByNameAndItsCode) {
  const std::set<int> secondOfTwins = {50, 95};
  for (int i = 0; i < kelp::getCulturesCount(); ++i) {
    const kelp::LanguageInfo& row = *kelp::getCultureInfo(static_cast<std::size_t>(i));
    const WString name(row.cultureName);
    EXPECT_EQ(kelp::findCultureIndexByName(name), i) << i;
    EXPECT_EQ(kelp::findCultureIndexByName(name.ToUpperCase()), i) << i;
    EXPECT_EQ(kelp::findCultureIndexByCode(row.code) == i, !secondOfTwins.contains(i)) << i;
    EXPECT_FALSE(WString(row.language).empty());
    EXPECT_FALSE(WString(row.nativeName).empty());
    EXPECT_EQ(WString(row.country).empty(), name.StartsWith(KTEXT("zh-Han"))) << i;
  }
}

TEST(CultureTable, ReplacesTheTraditionalSortOfSpanishAndLeavesWhatItDoesNotKnow) {
  unsigned short code = 7;
  EXPECT_TRUE(kelp::getCultureCodeByName(KTEXT("EN-us"), code));
  EXPECT_EQ(code, 0x409);
  EXPECT_FALSE(kelp::getCultureCodeByName(KTEXT("en"), code));
  EXPECT_EQ(code, 0);
  EXPECT_EQ(kelp::findCultureIndexByName(WString()), -1);

  WString name;
  EXPECT_TRUE(kelp::getCultureNameByCode(1034, name));
  EXPECT_FALSE(kelp::getCultureNameByCode(0, name));
  EXPECT_EQ(name, WString(KTEXT("es-ES")));

  WString language(KTEXT("a")), native(KTEXT("b")), country(KTEXT("c"));
  for (const int index : {-1, 145}) {
    EXPECT_FALSE(kelp::getCultureDisplayName(index, language, native, country));
    EXPECT_EQ(language.Concat(native).Concat(country), WString(KTEXT("abc")));
  }
  EXPECT_TRUE(kelp::getCultureDisplayName(0, language, native, country));
  EXPECT_EQ(country, WString(KTEXT("South Africa")));
  EXPECT_TRUE(kelp::getCultureDisplayName(66, language, native, country));
  EXPECT_EQ(language, WString(KTEXT("German")));
  EXPECT_EQ(native, WString(KTEXT("Deutsch")));
  EXPECT_EQ(country, WString(KTEXT("Germany")));
}

}  // namespace
