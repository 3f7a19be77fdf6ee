#include <gtest/gtest.h>

#include <clocale>
#include <cstdarg>
#include <string>
#include <utility>
#include <vector>

#include "sarnutils/CharacterWidth.h"
#include "sarnutils/FileNames.h"
#include "sarnutils/SarnString.h"
#include "tests/winapi/WideText.h"

using sarn::file_names::extractFileNameWithoutExtFromPathName;
using Text = sarn_text::CSarnStringT<WChar>;

namespace {

std::vector<std::basic_string<WChar>> Tokens(const WChar* text, const WChar* delimiters,
                                             bool keepEmpty) {
  const Text tokenized(text);
  std::vector<std::basic_string<WChar>> tokens;
  int position = 0;
  for (Text token = tokenized.Tokenize(delimiters, position, keepEmpty); position != -1;
       token = tokenized.Tokenize(delimiters, position, keepEmpty)) {
    tokens.emplace_back(token.c_str());
  }
  EXPECT_TRUE(tokenized.Tokenize(delimiters, position, keepEmpty).IsEmpty());
  EXPECT_EQ(position, -1);
  return tokens;
}

TEST(SarnString, OwnsItsCharactersBehindItsFirstMember) {
  Text a(KTEXT("abc"));
  const WChar* first = *reinterpret_cast<const WChar* const*>(&a);
  EXPECT_EQ(first, a.c_str());

  Text b(a);
  EXPECT_NE(b.c_str(), a.c_str());
  a = Text();
  EXPECT_TRUE(a.IsEmpty());
  EXPECT_EQ(a.Compare(Text(nullptr).c_str()), 0);
  b = *&b;
  EXPECT_EQ(b.Compare(KTEXT("abc")), 0);
  const WChar* characters = b.c_str();
  const Text c(std::move(b));
  EXPECT_EQ(c.c_str(), characters);
  EXPECT_EQ(b.Compare(KTEXT("")), 0);
}

TEST(SarnString, ComparesByUnit) {
  const Text text(KTEXT("ab"));
  EXPECT_LT(text.Compare(KTEXT("abc")), 0);
  EXPECT_GT(text.Compare(KTEXT("a")), 0);
  EXPECT_LT(text.Compare(KTEXT("a\xFFFF")), 0);
}

Text Printed(const WChar* format, ...) {
  Text text(KTEXT("old"));
  std::va_list args;
  va_start(args, format);
  text.FormatV(format, args);
  va_end(args);
  return text;
}

TEST(SarnString, PrintsByTemplate) {
  const WChar* const word = KTEXT("Tab");
  EXPECT_EQ(Printed(KTEXT("%s[%d] %.2f|%600s"), word, 12, 0.125, word).GetLength(), 613);
  EXPECT_EQ(Printed(KTEXT("%s[%d] %.2f"), word, 12, 0.125).Compare(KTEXT("Tab[12] 0.12")), 0);
  EXPECT_TRUE(Printed(KTEXT("%s %"), word).IsEmpty());
}

TEST(SarnString, Tokenizes) {
  using Words = std::vector<std::basic_string<WChar>>;
  const WChar* const text = KTEXT("  Tab 12,Group  ");
  EXPECT_EQ(Tokens(text, KTEXT(" ,"), false), (Words{KTEXT("Tab"), KTEXT("12"), KTEXT("Group")}));
  EXPECT_EQ(Tokens(text, KTEXT(" "), true),
            (Words{KTEXT(""), KTEXT(""), KTEXT("Tab"), KTEXT("12,Group"), KTEXT(""), KTEXT("")}));
  EXPECT_EQ(Tokens(KTEXT("Tab"), KTEXT(""), false), Words{KTEXT("Tab")});
  EXPECT_EQ(Tokens(KTEXT(""), KTEXT(" "), false), Words{});
  EXPECT_EQ(Tokens(KTEXT(""), KTEXT(" "), true), Words{KTEXT("")});
  EXPECT_EQ(Tokens(KTEXT("   "), KTEXT(" "), false), Words{});
}

// What a text becomes character by character, "|" between; "!" ends it where one has no other form.
template <class To, class From>
std::basic_string<To> Converted(const From* text) {
  std::basic_string<To> out;
  while (*text != 0) {
    To units[16];
    const int count = sarn_text::ConvertCharacter(text, units);
    if (count < 0) return out + To{'!'};
    out.append(units, static_cast<std::size_t>(count)) += To{'|'};
  }
  return out;
}

TEST(CharacterWidth, TakesOneCharacterAtATime) {
  EXPECT_EQ(Converted<char>(KTEXT("a\x80\xE0\x20ACz")), "a|\x80|\xE0|!");
  EXPECT_EQ(Converted<WChar>("a\x7F\xE0z"), KTEXT("a|\x7F|\xE0|z|"));
  if (std::setlocale(LC_CTYPE, kGermanLocale) == nullptr) GTEST_SKIP() << "no German locale";
  const std::string euro = Converted<char>(KTEXT("\x20AC"));
  EXPECT_EQ(Converted<WChar>(euro.c_str()), KTEXT("\x20AC|||")) << "its bytes and the bar";
#ifndef _WIN32
  EXPECT_EQ(Converted<char>(u"\U0001F600\xE0z"), "\xF0\x9F\x98\x80|\xC3\xA0|z|");
  EXPECT_EQ(Converted<WChar>("\xF0\x9F\x98\x80\xC3\xA0z"), u"\U0001F600|\xE0|z|");
  EXPECT_EQ(Converted<char>(u"\xD83Dz"), "!") << "half a pair";
  EXPECT_EQ(Converted<WChar>("a\x9F\x98"), u"a|!");
#endif
  std::setlocale(LC_CTYPE, "C");
}

TEST(FileNames, TakesFolderAndExtensionOff) {
  const WChar* const cases[][2] = {
      {KTEXT("C:\\Ribbon/layout.old.xml"), KTEXT("layout.old")},
      {KTEXT("C:/v1.2/layout"), KTEXT("layout")},
      {KTEXT("C:layout.xml"), KTEXT("layout")},
      {KTEXT("layout."), KTEXT("layout")},
      {KTEXT("/home/.ket"), KTEXT("")},
      {KTEXT("C:\\Ribbon\\"), KTEXT("")},
      {KTEXT(""), KTEXT("")},
  };
  for (const auto& [path, name] : cases) {
    EXPECT_EQ(extractFileNameWithoutExtFromPathName(path).Compare(name), 0);
  }
}

}  // namespace
