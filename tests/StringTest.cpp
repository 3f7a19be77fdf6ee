#include "kelp0lang/String.h"

#include <algorithm>
#include <climits>
#include <functional>
#include <iomanip>
#include <new>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_set>
#include <utility>
#include <vector>

#include "kelp0lang/NaturalOrder.h"
#include "tests/TestText.h"

using kelp::ConvertString;
using kelp::String;
using kelp::WString;

namespace {

constexpr std::uint64_t kAll = ~std::uint64_t{0};

TEST(StringBuffer, EmptyTextIsOneSharedBufferThatIsNeverWritten) {
  WString a;
  WString b(a);
  EXPECT_EQ(a.c_str(), b.c_str());
  EXPECT_EQ(a.c_str(), WString(static_cast<const WChar*>(nullptr)).c_str());

  WChar* text = a.GetBufferSetLength(3);
  text[0] = text[1] = text[2] = KTEXT('x');
  EXPECT_EQ(a, KTEXT("xxx"));
  EXPECT_TRUE(b.empty());
  EXPECT_EQ(b.c_str()[0], 0);
  EXPECT_NE(a.c_str(), b.c_str());
}

TEST(StringBuffer, CopiesShareUntilOneIsWritten) {
  const String b("text");
  String a;
  a = b;
  EXPECT_EQ(a.c_str(), b.c_str());
  a.SetChar(0, 'x');
  EXPECT_STREQ(a.c_str(), "xext");
  EXPECT_STREQ(b.c_str(), "text");

  String c(b);
  c.ReleaseBuffer(2);
  EXPECT_STREQ(c.c_str(), "te");
  EXPECT_STREQ(b.c_str(), "text");
  c = *&c;
  EXPECT_STREQ(c.c_str(), "te");
  c.ReleaseBuffer(0);
  EXPECT_TRUE(c.empty());
}

TEST(StringBuffer, CapacityIsExactAndKept) {
  String a("abc");
  EXPECT_EQ(a.Capacity(), 3);
  a += "de";
  EXPECT_EQ(a.Capacity(), 5);
  const char* before = a.c_str();
  a.GetBufferAsCString(2);
  EXPECT_EQ(a.c_str(), before);
  EXPECT_EQ(a.Length(), 5);
  char* room = a.GetBufferAsCString(10);
  EXPECT_EQ(a.Capacity(), 10);
  EXPECT_STREQ(room, "abcde");
  room[2] = 0;
  a.ReleaseBuffer(-1);
  EXPECT_EQ(a.Length(), 2);

  a.resize(4, 'z');
  EXPECT_STREQ(a.c_str(), "abzz");
  a.resize(1, 'q');
  EXPECT_STREQ(a.c_str(), "a");
  EXPECT_EQ(a.Capacity(), 10);
  a.resize(0);
  a.Empty();
  EXPECT_EQ(a.Capacity(), 10) << "a string without text keeps its buffer";
}

TEST(StringBuffer, RangesReachNoFurtherThanTheText) {
  const String abcdef("abcdef");
  EXPECT_EQ(String(abcdef, 1, 3), "bcd");
  EXPECT_EQ(String(abcdef, 4, 100), "ef");
  EXPECT_EQ(String(abcdef, 9, 2), String());
  EXPECT_EQ(String("abcdef", 2, 3), "cde");
  EXPECT_EQ(String("abcdef", 4, INT_MAX), "ef");
  EXPECT_EQ(WString(KTEXT("abc"), 0, -1), WString());
  EXPECT_EQ(abcdef.Substring(3, 100), "def");
}

TEST(StringBuffer, UnitsAreReadWrittenAndCopiedOut) {
  WString a(KTEXT("abcdef"));
  const WString b(a);
  a.WriteChar(1, KTEXT('X'));
  EXPECT_EQ(a.ReadChar(1), KTEXT('X'));
  EXPECT_EQ(b.at(1), KTEXT('b'));
  WChar target[] = KTEXT("------");
  b.GetChars(1, 4, target, 2);
  EXPECT_EQ(WString(target), KTEXT("--bcd-")) << "without a terminator";
  EXPECT_EQ(b.sizeInBytes(), 12u);
  EXPECT_EQ(String("abc").sizeInBytes(), 3u);
}

TEST(StringConcat, AppendsInPlaceAlsoItself) {
  WString a(KTEXT("ab"));
  a += a;
  EXPECT_EQ(a, KTEXT("abab"));
  a += a.c_str() + 1;
  EXPECT_EQ(a, KTEXT("ababbab"));
  a = a.c_str() + 4;
  EXPECT_EQ(a, KTEXT("bab"));
  a += static_cast<const WChar*>(nullptr);
  EXPECT_EQ(a.Length(), 3);

  const WString result = a.append(WString(KTEXT("!")));
  EXPECT_EQ(result.c_str(), a.c_str()) << "append gives a shared copy";

  a += WChar{0};
  EXPECT_EQ(a.Length(), 5);
  a.append(WChar{0});
  EXPECT_EQ(a.Length(), 5);
  a = WChar{0};
  EXPECT_EQ(a.Length(), 1);
}

TEST(StringConcat, FillsItsReserve) {
  String s("abc");
  const char* const room = s.GetBufferAsCString(10);
  s += "defg";
  s += String("h");
  s += s.c_str() + 7;
  s += 'i';
  EXPECT_EQ(s, "abcdefghhi");
  EXPECT_EQ(s.c_str(), room);
  EXPECT_EQ(s.Capacity(), 10);
  const String full(s);
  s += 'j';
  EXPECT_EQ(s, "abcdefghhij");
  EXPECT_EQ(s.Capacity(), 11);

  s.GetBufferAsCString(22);
  const String copy(s);
  s += 'k';
  EXPECT_NE(s.c_str(), copy.c_str());
  EXPECT_EQ(copy, "abcdefghhij") << "room that another sees isn't written";
  EXPECT_EQ(full, "abcdefghhi");
}

// The gigabyte is never touched.
TEST(StringConcat, RefusesLengthsBeyondAnInt) {
  WString text;
  text.resize(70000, KTEXT('a'));
  const WString replacement(text);
  EXPECT_THROW(text.ReplaceInPlace(KTEXT("a"), replacement.c_str()), std::bad_alloc);
  EXPECT_EQ(text.c_str(), replacement.c_str());

  String half;
  half.GetBufferSetLength(1 << 30);
  const char* const buffer = half.c_str();
  const std::function<void()> works[] = {
      [&] { half += half; },
      [&] { half.append(half); },
      [&] { (void)half.Concat(half); },
      [&] { (void)String("abc").Insert(1, "x", INT_MAX); },
      [&] { half.assign(String("x"), 0, 1 << 30); },
  };
  for (const auto& work : works) EXPECT_THROW(work(), std::bad_alloc);
  EXPECT_EQ(half.c_str(), buffer);
  EXPECT_EQ(half.Length(), 1 << 30);
}

TEST(StringBuffer, MovesTakeTheBufferAlong) {
  WString a(KTEXT("one"));
  WString b(KTEXT("two"));
  const WChar* const one = a.c_str();
  const WChar* const two = b.c_str();
  a = std::move(b);
  EXPECT_EQ(a.c_str(), two);
  EXPECT_EQ(b.c_str(), one) << "assignment swaps";
  swap(a, b);
  EXPECT_EQ(a.c_str(), one);
  const WString c(std::move(a));
  EXPECT_EQ(c.c_str(), one);
  EXPECT_EQ(a.c_str(), WString().c_str());  // NOLINT: what a move leaves is told
}

TEST(StringSearch, EqualsAPointerAndHashesByItsUnits) {
  String zero("ab?");
  zero.SetChar(2, 0);
  const struct {
    String text;
    const char* other;
    bool equal;
  } kRows[] = {
      {"ab", "ab", true}, {"ab", "abc", false}, {"ab", "a", false},    {"ab", "aB", false},
      {"", "", true},     {"", nullptr, true},  {"a", nullptr, false}, {zero, "ab", false},
  };
  for (const auto& row : kRows) EXPECT_EQ(row.text == row.other, row.equal) << row.text.c_str();
  EXPECT_NE(zero, "ab");

  const std::unordered_set<WString> names = {KTEXT("P1"), KTEXT("P2"), KTEXT("P1")};
  EXPECT_EQ(names.size(), 2u);
  EXPECT_TRUE(names.contains(WString(KTEXT("P2"))));
  EXPECT_NE(std::hash<String>()(zero), std::hash<String>()("ab"));
}

TEST(StringConcat, JoinsIntoNewText) {
  const String a("ab");
  EXPECT_EQ(a + 'c', "abc");
  EXPECT_EQ(a + "cd", "abcd");
  EXPECT_EQ('x' + a, "xab");
  EXPECT_EQ("xy" + a, "xyab");
  EXPECT_EQ(a.Concat(String("!")), "ab!");
  EXPECT_EQ(String().Concat(String()).c_str(), String().c_str());
  EXPECT_EQ((WString(KTEXT("a")) + KTEXT("b")).Capacity(), 2);
}

TEST(StringSearch, FindsTextAndUnitsFromAPosition) {
  const String abc("abc");
  EXPECT_EQ(abc.IndexOf(String(""), 3), -1);
  EXPECT_EQ(abc.IndexOf(String(""), 2), 2);
  EXPECT_EQ(String().IndexOf(String(), 0), -1);
  EXPECT_EQ(abc.IndexOf(String("bc"), -7), 1);
  EXPECT_EQ(abc.IndexOf('c', 0), 2);
  EXPECT_EQ(abc.find('\0', 0), -1) << "never the terminator";

  EXPECT_EQ(abc.LastIndexOf(String(""), 10), 3);
  EXPECT_EQ(abc.LastIndexOf(String("bc"), 1), 1);
  EXPECT_EQ(abc.LastIndexOf(String("bc"), 0), -1);
  EXPECT_EQ(abc.LastIndexOf('a', -5), 0);
  EXPECT_EQ(abc.LastIndexOf('b', -5), -1);
  EXPECT_EQ(abc.LastIndexOf(String("a"), -5), -1);
  EXPECT_EQ(abc.LastIndexOf('c', 99), 2);
  EXPECT_EQ(abc.rfind(String("")), 2);
  EXPECT_EQ(String().rfind(String("")), -1);
  EXPECT_EQ(abc.rfind('a'), 0);

  WString zero(KTEXT("ab?ab"));
  zero.SetChar(2, 0);
  EXPECT_EQ(zero.IndexOf(WChar{0}), 2);
  EXPECT_EQ(zero.IndexOf(WString(KTEXT("ab")), 1), -1) << "a text search stops at a zero unit";
  EXPECT_EQ(zero.IndexOf(WString(KTEXT("ab")), 3), 3);
}

// Every length and place around the width of a block, against a plain search.
TEST(StringSearch, AgreesWithAPlainSearchAtEveryLength) {
  for (int length = 1; length <= 70; ++length) {
    WString text;
    text.resize(length, KTEXT('a'));
    for (int place = 0; place < length; ++place) {
      WString marked(text);
      marked.SetChar(place, KTEXT('b'));
      ASSERT_LT(text, marked);
      ASSERT_GT(marked, text.Substring(0, place + 1));
      marked.SetChar(place, 0xFFFF);
      ASSERT_GT(marked, text) << "units are unsigned";
      marked.SetChar(place, KTEXT('b'));
      ASSERT_EQ(marked.IndexOf(KTEXT('b')), place);
      ASSERT_EQ(marked.IndexOf(KTEXT('b'), place + 1), -1);
      ASSERT_EQ(marked.IndexOf(WString(KTEXT("ab"))), place == 0 ? -1 : place - 1);
      ASSERT_EQ(marked.IndexOf(WString(KTEXT("ba"))), place == length - 1 ? -1 : place);
      ASSERT_EQ(marked.LastIndexOf(WString(KTEXT("ab")), length), place == 0 ? -1 : place - 1);
    }
  }
}

// Few kinds of unit, zero among them, so that places which fit in part are many.
TEST(StringSearch, FindsTheFirstWholeTextBeforeAZero) {
  std::mt19937 random(11);
  for (int round = 0; round < 20000; ++round) {
    std::u16string text(1 + random() % 80, u'a');
    std::u16string wanted(1 + random() % 5, u'a');
    for (char16_t& unit : text) unit = random() % 100 == 0 ? u'\0' : u"aab"[random() % 3];
    for (char16_t& unit : wanted) unit = u"aab"[random() % 3];
    WString searched;
    std::copy(text.begin(), text.end(), searched.GetBufferSetLength(static_cast<int>(text.size())));
    const WString sought(reinterpret_cast<const WChar*>(wanted.c_str()));

    const std::size_t found = text.substr(0, text.find(u'\0')).find(wanted);
    ASSERT_EQ(searched.IndexOf(sought),
              found == std::u16string::npos ? -1 : static_cast<int>(found));
  }
}

TEST(StringSearch, PrefixSuffixAndRegion) {
  const String abc("abc");
  EXPECT_TRUE(abc.StartsWith(String(""), 0));
  EXPECT_FALSE(String("").StartsWith(String(""), 0));
  EXPECT_TRUE(abc.StartsWith(String("bc"), 1));
  EXPECT_FALSE(abc.StartsWith(String("bc"), -1));
  EXPECT_FALSE(abc.StartsWith(String(""), 3));
  EXPECT_FALSE(abc.EndsWith(String("")));
  EXPECT_FALSE(abc.EndsWith(String("abcd")));
  EXPECT_TRUE(abc.EndsWith(String("bc")));

  EXPECT_TRUE(abc.RegionMatches(1, String("xBC"), 1, 2, true));
  EXPECT_FALSE(abc.RegionMatches(1, String("xBC"), 1, 2, false));
  EXPECT_FALSE(abc.RegionMatches(2, String("xBC"), 1, 2, true));
  EXPECT_FALSE(abc.RegionMatches(-1, String("xBC"), 1, 2, true));
  EXPECT_TRUE(abc.RegionMatches(3, String("x"), 1, 0, false));
  EXPECT_TRUE(abc.RegionMatches(1, "xbcd", 1, 2, false));
  EXPECT_TRUE(abc.RegionMatches(1, "bc", 0, 99, false)) << "the terminators end it";
  EXPECT_TRUE(abc.RegionMatches(0, "x", 0, 0, false));
  EXPECT_FALSE(abc.RegionMatches(-1, "a", 0, 1, false));
  EXPECT_FALSE(abc.RegionMatches(0, "a", -1, 1, false));
}

TEST(StringSearch, ComparesUnitsAsUnsigned) {
  EXPECT_EQ(String("\x80").Compare("a"), 1);
  EXPECT_EQ(String("ab").Compare("abc"), -1);
  EXPECT_EQ(WString(KTEXT("\xFFFF")).Compare(KTEXT("a")), 1);
  EXPECT_EQ(WString(KTEXT("a")).Compare(KTEXT("a")), 0);
  EXPECT_EQ(WString(KTEXT("AbC")).CompareIgnoreCase(KTEXT("aBc")), 0);
  EXPECT_LT(WString(KTEXT("a")).CompareIgnoreCase(KTEXT("B")), 0);
  EXPECT_EQ(String("AbC").CompareIgnoreCase("aBc"), 0);
  EXPECT_GT(String("c").CompareIgnoreCase("B"), 0);
  EXPECT_TRUE(WString(KTEXT("xAb")).RegionMatches(1, WString(KTEXT("aB")), 0, 2, true));
  EXPECT_LT(String("a"), String("\x80"));
  EXPECT_LT(WString(KTEXT("a")), WString(KTEXT("ab")));
}

template <class Text, class Number>
concept TakesNumber = requires(Text text, Number number) {
  text += number;
  text + number;
}
|| requires(Text text, Number number) {
  text = number;
};

TEST(StringStandard, IsARangeAViewAndPrints) {
  const WString text(std::basic_string_view<WChar>(KTEXT("a\0\x00E8"), 3));
  EXPECT_EQ(text.Length(), 3);
  EXPECT_EQ(std::vector<WChar>(text.begin(), text.end()),
            (std::vector<WChar>{KTEXT('a'), 0, 0xE8}));
  const std::basic_string_view<WChar> view = text;
  EXPECT_EQ(view.data(), text.c_str());
  EXPECT_EQ(WString(view), text);
  EXPECT_EQ(WString(view.substr(0, 0)), WString());
  EXPECT_THROW(String(std::string_view("", std::size_t{1} << 31)), std::bad_alloc);

  std::ostringstream stream;
  stream << String("P") << text << std::setw(3) << String("x");
  EXPECT_EQ(stream.str(), std::string("Pa\0\xC3\xA8  x", 8));

  static_assert(!TakesNumber<String, int> && !TakesNumber<WString, bool>);
  static_assert(!TakesNumber<WString, char> && !TakesNumber<String, double>);
  static_assert(TakesNumber<WString, WChar> && TakesNumber<String, char>);
}

TEST(StringStandard, NaturalOrderCountsNumbersByTheirValue) {
  const std::vector<const WChar*> sorted = {KTEXT(""),
                                            KTEXT("007"),
                                            KTEXT("7"),
                                            KTEXT("7a"),
                                            KTEXT("8"),
                                            KTEXT("99999999999999999998"),
                                            KTEXT("99999999999999999999"),
                                            KTEXT("A2"),
                                            KTEXT("a02b"),
                                            KTEXT("a10"),
                                            KTEXT("B1"),
                                            KTEXT("p_1"),
                                            KTEXT("\x00E8")};
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t k = 0; k < sorted.size(); ++k) {
      const WString a(sorted[i]), b(sorted[k]);
      const int order = kelp::CompareNaturally(a, b);
      EXPECT_EQ((order > 0) - (order < 0), (i > k) - (i < k)) << a << " and " << b;
      const String x = a.ToUtf8(), y = b.ToUtf8();
      EXPECT_EQ(kelp::NaturalLess()(x, y), i < k) << a << " and " << b;
    }
  }
}

TEST(StringDerive, EraseInsertAndParts) {
  const String abcdef("abcdef");
  EXPECT_EQ(abcdef.Erase(2, -1), "ab");
  EXPECT_EQ(abcdef.Erase(2, 100), "ab");
  EXPECT_EQ(abcdef.Erase(2, INT_MAX), "ab");
  EXPECT_EQ(abcdef.Erase(1, 2), "adef");
  EXPECT_EQ(abcdef.Erase(5, 1), "abcde");
  EXPECT_EQ(abcdef.Erase(3, 0).c_str(), abcdef.c_str());
  EXPECT_EQ(abcdef.Erase(7, 1).c_str(), abcdef.c_str());

  const String abc("abc");
  EXPECT_EQ(abc.Insert(1, "xy", -1), "axybc");
  EXPECT_EQ(abc.Insert(-3, "xy", 1), "xabc");
  EXPECT_EQ(abc.insert(3, '!'), "abc!");
  EXPECT_EQ(String().insert(0, "x", 1), "x");
  const String padded = abc.Insert(1, "x", 3);
  EXPECT_EQ(padded.Length(), 6);
  EXPECT_EQ(std::string(padded.c_str(), 6), std::string("ax\0\0bc", 6));
  String target(abc);
  EXPECT_EQ(target.assign(String("xy"), 1, kAll), "axybc");
  EXPECT_EQ(target, "axybc");
  EXPECT_EQ(target.assign(String("xy"), 0, 1), "xaxybc");

  EXPECT_EQ(abc.substr(1, -1), "bc");
  EXPECT_EQ(abc.substr(1, 100), "bc");
  EXPECT_EQ(abc.substr(5), String());
  EXPECT_EQ(abc.Substring(-1, 2), String());
  EXPECT_EQ(abc.Substring(0, 3).c_str(), abc.c_str());
}

TEST(StringDerive, ReplaceTrimAndCase) {
  EXPECT_EQ(String("a.b.a").Replace('a', 'c'), "c.b.c");
  EXPECT_EQ(WString(KTEXT("MiXed")).ToLowerCase(), KTEXT("mixed"));
  EXPECT_EQ(String("MiXed").ToUpperCase(), "MIXED");
  EXPECT_EQ(String("MiXed").ToLowerCase(), "mixed");
  EXPECT_EQ(String("\t ab \n").Trim(), "ab");

  const WString padded(KTEXT(" \t ab \n"));
  EXPECT_EQ(padded.TrimLeft(), KTEXT("ab \n"));
  EXPECT_EQ(padded.TrimRight(), KTEXT(" \t ab"));
  EXPECT_EQ(padded.Trim(), KTEXT("ab"));
  EXPECT_EQ(WString(KTEXT(" \n ")).Trim(), WString());
  EXPECT_EQ(String("--a--").TrimLeft('-').TrimRight('-'), "a");
  const WString plain(KTEXT("ab"));
  EXPECT_EQ(plain.TrimLeft().c_str(), plain.c_str());
}

TEST(StringDerive, ReplacesInPlace) {
  struct {
    const WChar* text;
    const WChar* from;
    const WChar* to;
    int count;
    const WChar* result;
  } cases[] = {
      {KTEXT("a.b.a"), KTEXT("a"), KTEXT("xyz"), 2, KTEXT("xyz.b.xyz")},
      {KTEXT("a.b.a"), KTEXT("a"), nullptr, 2, KTEXT(".b.")},
      {KTEXT("a.b.a"), KTEXT(""), KTEXT("x"), 0, KTEXT("a.b.a")},
      {KTEXT("a.b.a"), nullptr, KTEXT("x"), 0, KTEXT("a.b.a")},
      {KTEXT("aaaa"), KTEXT("aa"), KTEXT("aaa"), 2, KTEXT("aaaaaa")},
      {KTEXT("aXbX"), KTEXT("X"), KTEXT("Y"), 2, KTEXT("aYbY")},
      {KTEXT(""), KTEXT("X"), KTEXT("Y"), 0, KTEXT("")},
  };
  for (const auto& c : cases) {
    WString text(c.text);
    const WString other(text);
    EXPECT_EQ(text.ReplaceInPlace(c.from, c.to), c.count);
    EXPECT_EQ(text, c.result);
    EXPECT_EQ(other, c.text);
  }

  WString zero(KTEXT("a?a?"));
  zero.SetChar(1, 0);
  zero.SetChar(3, 0);
  EXPECT_EQ(zero.ReplaceInPlace(KTEXT("a"), KTEXT("bc")), 2);
  EXPECT_EQ(zero.Length(), 6);
  EXPECT_EQ(zero.GetChar(2), 0);
  EXPECT_EQ(zero.GetChar(4), KTEXT('c'));

  WString own(KTEXT("ab"));
  EXPECT_EQ(own.ReplaceInPlace(own.c_str() + 1, own.c_str()), 1);
  EXPECT_EQ(own, KTEXT("aab"));
}

TEST(StringUtf8, DecodesEveryKindOfSequence) {
  struct {
    const char* bytes;
    const WChar* units;
  } cases[] = {
      {"", KTEXT("")},
      {"plain", KTEXT("plain")},
      {"citt\xC3\xA0", KTEXT("citt\x00E0")},
      {"\xE2\x82\xAC", KTEXT("\x20AC")},
      {"\xF0\x9F\x98\x80", KTEXT("\xD83D\xDE00")},
      {"\x85", KTEXT("\x0085")},
      {"\xFF", KTEXT("\x00FF")},
      {"\xC1\x81", KTEXT("A")},           // overlong
      {"\xED\xA0\xBD", KTEXT("\xD83D")},  // a surrogate value
      {"\xC3"
       "A",
       KTEXT("\x00C1")},                  // continuation bytes are only masked
      {"ab\xE2\x82", KTEXT("ab\x2080")},  // cut short: zero bits follow
  };
  for (const auto& c : cases) {
    EXPECT_EQ(String(c.bytes).FromUtf8(), c.units) << c.bytes;
    EXPECT_EQ(WString::ConvertFromUtf8(c.bytes), c.units) << c.bytes;
  }
  EXPECT_EQ(WString::ConvertFromUtf8(nullptr), WString());
}

TEST(StringUtf8, EncodesPairsAndLoneSurrogates) {
  EXPECT_EQ(WString(KTEXT("\xD83D\xDE00")).ToUtf8(), "\xF0\x9F\x98\x80");
  EXPECT_EQ(WString(KTEXT("\xDE00")).ToUtf8(), "\xED\xB8\x80");
  EXPECT_EQ(WString(KTEXT("x\xD83D")).ToUtf8(), "x\xED\xA0\xBD");
  // A high surrogate is joined with whatever follows: (0xD83D << 10) + 'A' - 0x035FDC00.
  EXPECT_EQ(String::ConvertToUtf8(KTEXT("\xD83D"
                                        "A")),
            "\xF0\x91\xA1\x81");
  EXPECT_EQ(String::ConvertToUtf8(nullptr), String());

  // In text that is measured before, at every place of a block; a low one stands near.
  for (std::size_t place = 0; place < 64; ++place) {
    std::basic_string<WChar> units(3000, KTEXT('a'));
    units[place] = 0xD83D;
    units[place + 2] = 0xDE00;
    std::string bytes(2999, 'a');
    bytes.replace(place, 2, "\xF0\x91\xA1\xA1\xED\xB8\x80");
    ASSERT_EQ(WString(units.c_str()).ToUtf8(), bytes.c_str()) << place;
  }
}

// All code points, alone and in text long enough for blocks and for two passes.
TEST(StringUtf8, RoundTripsAllCodePoints) {
  WString all;
  WChar* unit = all.GetBufferSetLength(0x10000 + 0x100000 * 2);
  const WChar* begin = unit;
  for (unsigned value = 1; value < 0x110000; ++value) {
    if (value >= 0xD800 && value < 0xE000) continue;
    if (value < 0x10000) {
      *unit++ = static_cast<WChar>(value);
    } else {
      *unit++ = static_cast<WChar>(0xD7C0 + (value >> 10));
      *unit++ = static_cast<WChar>(0xDC00 + (value & 0x3FF));
    }
  }
  all.ReleaseBuffer(static_cast<int>(unit - begin));
  EXPECT_EQ(all.ToUtf8().FromUtf8(), all);

  std::mt19937 random(5);
  for (int round = 0; round < 2000; ++round) {
    const int start = static_cast<int>(random() % 0x10000);
    WString part = all.Substring(start, 1 + static_cast<int>(random() % 200));
    // A pair that is cut in two would be joined with the unit that follows.
    const WChar last = part.GetChar(part.Length() - 1);
    if (last >= 0xD800 && last <= 0xDBFF) part.resize(part.Length() - 1);
    const WString mixed = WString(KTEXT("0123456789abcdefghi")).Concat(part) + KTEXT("0123456789");
    const String bytes = mixed.ToUtf8();
    EXPECT_EQ(bytes.Capacity(), bytes.Length());
    ASSERT_EQ(bytes.FromUtf8(), mixed);
  }
}

// Other characters here and there in ASCII or side by side, in half of the rounds with lone
// surrogates too, where a block meets them at every place; the parts are too short for blocks.
TEST(StringUtf8, EncodesAsItsPartsDo) {
  const WString others[] = {KTEXT("\x80"),   KTEXT("\xE8"),         KTEXT("\x7FF"),
                            KTEXT("\x800"),  KTEXT("\x8001"),       KTEXT("\xFFFF"),
                            KTEXT("\xD7FF"), KTEXT("\xD800\xDC00"), KTEXT("\xDBFF\xDFFF"),
                            KTEXT("\xD83D"), KTEXT("\xDE00")};
  std::mt19937 random(13);
  for (int round = 0; round < 3000; ++round) {
    const unsigned rarity = 1 + random() % 60;
    const std::size_t kinds = std::size(others) - (round % 2 == 0 ? 2 : 0);
    const int size = static_cast<int>(random() % 300) + (round % 20 == 0 ? 2048 : 0);
    WString text;
    while (text.Length() < size) {
      if (random() % rarity == 0) {
        text += others[random() % kinds];
      } else {
        text += static_cast<WChar>(KTEXT('a') + random() % 26);
      }
    }
    String parts;
    for (int i = 0; i < text.Length();) {
      const WChar unit = text.GetChar(i);
      const int count = unit >= 0xD800 && unit <= 0xDBFF ? 2 : 1;
      parts += text.substr(i, count).ToUtf8();
      i += count;
    }
    ASSERT_EQ(text.ToUtf8(), parts);
  }
}

// What one step takes, from the table of lead bytes.
std::u16string DecodedByHand(const std::string& bytes) {
  std::u16string units;
  for (std::size_t at = 0; at < bytes.size();) {
    const auto byte = [&](std::size_t i) {
      return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0u;
    };
    const unsigned lead = byte(at++);
    const int behind = lead < 0xC0 || lead >= 0xF8 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    unsigned value = behind == 0 ? lead : lead & (0x3F >> behind);
    for (int i = 0; i < behind; ++i) value = value << 6 | (byte(at++) & 0x3F);
    if (value >= 0x10000) units += static_cast<char16_t>((value >> 10) + 0xD7C0);
    units += static_cast<char16_t>(value >= 0x10000 ? (value & 0x3FF) + 0xDC00 : value);
  }
  return units;
}

// Sequences whole, cut short and overlong, and stray bytes, in text of one pass and of two.
TEST(StringUtf8, DecodesByItsStepsWhateverTheBytes) {
  const std::string pieces[] = {
      "plain text",   "\xC3\xA0",         "\xDF\xBF",         "\xE0\xA0\x80",     "\xE2\x82\xAC",
      "\xEF\xBF\xBF", "\xF0\x9F\x98\x80", "\xF0\x90\x80\x80", "\xF0\x8F\xBF\xBF", "\x80",
      "\xC3",         "\xE2\x82",         "\xF0\x9F",         "\xF8\x88",         "\xFF",
      "\xC0\xC3"};
  std::mt19937 random(17);
  for (int round = 0; round < 6000; ++round) {
    const std::size_t size = round % 3 == 0 ? 2049 + random() % 80 : random() % 120;
    // Mostly well-formed text, which is counted in blocks, and text of all kinds.
    const std::size_t kinds = round % 2 == 0 ? 8 : std::size(pieces);
    std::string bytes;
    while (bytes.size() < size) bytes += pieces[random() % kinds];
    if (round % 4 == 0) bytes.resize(size);
    const std::u16string units = DecodedByHand(bytes);
    String text;
    std::copy(bytes.begin(), bytes.end(), text.GetBufferSetLength(static_cast<int>(bytes.size())));
    const WString decoded = text.FromUtf8();
    ASSERT_EQ(decoded.length(), units.size());
    ASSERT_TRUE(std::equal(units.begin(), units.end(), decoded.c_str()));
  }
}

TEST(StringLocale, ConvertsByTheProcessLocale) {
  EXPECT_EQ(ConvertString(KTEXT("plain"), 0), "plain");
  EXPECT_EQ(ConvertString("plain", 2, 0), KTEXT("ain"));
  EXPECT_EQ(ConvertString(static_cast<const char*>(nullptr), 0), WString());
  EXPECT_EQ(String::AcceptString(KTEXT("a\x20AC")), String()) << "no partial text";
  EXPECT_EQ(String::AcceptString(KTEXT("abc")), "abc");
  EXPECT_EQ(WString::AcceptString("abc"), KTEXT("abc"));
  EXPECT_EQ(WString::AcceptString("caff\xE8", 99), KTEXT("caff\x00E8"));

  LocaleScope german(LC_ALL, kGermanLocale);
  ASSERT_TRUE(german.Ok());
  const WString umlaut(
      KTEXT("Gr\x00FC\x00DF"
            "e"));
  EXPECT_EQ(WString::AcceptString(String::AcceptString(umlaut.c_str()).c_str()), umlaut);
}

// Under the thread sanitizer this shows that handles of one buffer can be copied, changed and
// destroyed from many threads.
TEST(StringThreads, HandlesOnOneBufferAreIndependent) {
  const WString shared(KTEXT("shared text"));
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([shared, t] {
      for (int i = 0; i < 2000; ++i) {
        WString own(shared);
        const WString empty;
        own.SetChar(0, static_cast<WChar>('a' + t));
        own += own;
        ASSERT_EQ(own.GetChar(shared.Length()), 'a' + t);
        ASSERT_EQ(shared.GetChar(0), 's');
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(shared, KTEXT("shared text"));
}

}  // namespace
