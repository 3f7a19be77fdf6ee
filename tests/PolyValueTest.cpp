#include "kelp0lang/PolyValue.h"

#include <tchar.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <ctime>
#include <limits>
#include <map>
#include <string>
#include <vector>

#include "kelp0lang/FileStream.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::CPolyValue;
using kelp::ifpstream;
using kelp::kNoDate;
using kelp::ofpstream;
using kelp::WString;

namespace {

using namespace std::string_literals;

constexpr std::int64_t kNewYear2000 = 946684800;

CPolyValue Date(std::int64_t date) {
  CPolyValue value;
  value.SetDateValue(date);
  return value;
}

CPolyValue Array(unsigned type, unsigned count = 0) {
  CPolyValue value;
  value.CreateArray(type, count);
  return value;
}

CPolyValue Texts(std::initializer_list<const WChar*> texts) {
  CPolyValue value = Array(kelp::pvString);
  for (const WChar* text : texts) value.AppendStringValue(text);
  return value;
}

CPolyValue Doubles(std::initializer_list<double> numbers) {
  CPolyValue value = Array(kelp::pvDouble);
  for (const double number : numbers) value.AppendDoubleValue(number);
  return value;
}

double target = 6.5;  // for a pointer to point to

TEST(PolyValue, EveryGetterAnswersForEveryKind) {
  const auto address = std::bit_cast<std::uint64_t>(&target);
  const auto low = static_cast<std::int32_t>(address);
  const CPolyValue big(std::uint64_t{0x1FFFFFFFE});
  const struct {
    CPolyValue value;
    int type;
    bool boolean;
    std::int32_t int32;
    std::int64_t int64;
    double real;
    std::int64_t date;
    WString text;
  } cases[] = {
      {CPolyValue(), 0, false, 0, 0, 0, 0, KTEXT("")},
      {true, 1, true, 1, 1, 1, 1, KTEXT("true")},
      {false, 1, false, 0, 0, 0, 0, KTEXT("false")},
      {-5, 2, true, -5, -5, -5, -5, KTEXT("-5")},
      {0, 2, false, 0, 0, 0, 0, KTEXT("0")},
      {2.5, 3, true, 2, 2, 2.5, 2, KTEXT("2.500000")},
      {-0.75, 3, true, 0, 0, -0.75, 0, KTEXT("-0.750000")},
      {0.0, 3, false, 0, 0, 0, 0, KTEXT("0.000000")},
      {2147483647.9, 3, true, INT_MAX, INT_MAX, 2147483647.9, INT_MAX, KTEXT("2147483647.900000")},
      {-2147483648.9, 3, true, INT_MIN, INT_MIN, -2147483648.9, INT_MIN,
       KTEXT("-2147483648.900000")},
      {2147483648.0, 3, true, INT_MIN, INT_MIN, 2147483648.0, INT_MIN, KTEXT("2147483648.000000")},
      {KTEXT("12"), 4, true, 12, 12, 12, 0, KTEXT("12")},
      {KTEXT("-2.5x"), 4, true, -2, -2, -2.5, 0, KTEXT("-2.5x")},
      {KTEXT("abc"), 4, true, 0, 0, 0, 0, KTEXT("abc")},
      {WString(), 4, false, 0, 0, 0, 0, KTEXT("")},
      {Date(0xFFFFFFFF), 7, true, -1, -1, 4294967295.0, 0xFFFFFFFF, KTEXT("2106")},
      {Date(-7), 7, true, -7, -7, -7, -7, KTEXT("")},
      {Date(0), 7, false, 0, 0, 0, 0, KTEXT("19")},
      {Date(kNoDate), 7, true, -1, -1, 9223372036854775807.0, kNoDate, KTEXT("")},
      {big, 8, true, -2, 0x1FFFFFFFE, 8589934590.0, 0x1FFFFFFFE, KTEXT("8589934590")},
      {~std::uint64_t{0}, 8, true, -1, -1, 18446744073709551615.0, -1,
       KTEXT("18446744073709551615")},
      {&target, 9, true, low, std::bit_cast<std::int64_t>(address), 6.5,
       std::bit_cast<std::int64_t>(address), WString::ValueOf(address)},
      {Doubles({3.5, 1}), 5, false, 0, 0x400C000000000000, 3.5, 0x400C000000000000, KTEXT("")},
      {Texts({}), 5, false, 0, 0, 0, 0, KTEXT("")},
      {Array(77, 3), 5, false, 0, 0, 0, 0, KTEXT("")},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    const CPolyValue& value = test.value;
    EXPECT_EQ(value.GetType(), test.type);
    EXPECT_EQ(value.IsEmpty(), test.type == 0);
    EXPECT_EQ(value.GetBoolValue(), test.boolean);
    EXPECT_EQ(value.GetInt32Value(), test.int32);
    EXPECT_EQ(value.GetInt64Value(), static_cast<std::uint64_t>(test.int64));
    EXPECT_EQ(value.GetDoubleValue(), test.real);
    EXPECT_EQ(value.GetDateValue(), test.date);
    const bool isDate = test.type == kelp::pvDate && !test.text.empty();
    const WString text = value.GetStringValue();
    if (isDate) {
      EXPECT_EQ(text.Length(), 24) << "no line end";
      EXPECT_NE(text.IndexOf(test.text), -1);
    } else {
      EXPECT_EQ(text, test.text);
    }
    if (test.type == kelp::pvArray) continue;
    EXPECT_EQ(value.GetArrayElementType(), static_cast<unsigned>(test.type));
    EXPECT_EQ(value.GetNoArrayElements(), 1u);
    EXPECT_EQ(value.GetBoolValue(9), test.boolean) << "the index doesn't count";
    EXPECT_EQ(value.GetInt32Value(9), test.int32);
    EXPECT_EQ(value.GetInt64Value(9), static_cast<std::uint64_t>(test.int64));
    EXPECT_EQ(value.GetDoubleValue(9), test.real);
    EXPECT_EQ(value.GetDateValue(9), test.date);
    EXPECT_EQ(value.GetPointerValue(9), value.GetPointerValue());
    EXPECT_EQ(value.GetStringValue(9), text);
  }
  EXPECT_EQ(CPolyValue(NAN).GetInt32Value(), INT_MIN);
  EXPECT_EQ(Texts({KTEXT("a"), KTEXT("b")}).GetStringValue(), WString(KTEXT("a")));
}

TEST(PolyValue, PointersLeadToWhatIsHeld) {
  EXPECT_EQ(CPolyValue().GetPointerValue(), nullptr);
  EXPECT_EQ(CPolyValue(&target).GetPointerValue(), &target);
  EXPECT_EQ(Array(kelp::pvPointer).GetPointerValue(), nullptr);
  const CPolyValue number(2.5), text(KTEXT("P1")), whole(7), yes(true), big(std::uint64_t{8});
  EXPECT_EQ(*static_cast<double*>(number.GetPointerValue()), 2.5);
  EXPECT_EQ(*static_cast<int*>(whole.GetPointerValue()), 7);
  EXPECT_TRUE(*static_cast<bool*>(yes.GetPointerValue()));
  EXPECT_EQ(*static_cast<std::uint64_t*>(big.GetPointerValue()), 8u);
  EXPECT_EQ(*static_cast<WString*>(text.GetPointerValue()), WString(KTEXT("P1")));
  const CPolyValue date = Date(-9);
  EXPECT_EQ(*static_cast<std::int64_t*>(date.GetPointerValue()), -9);
}

// From one kind to every other; the address sanitizer sees what isn't given back.
TEST(PolyValue, AssignmentsChangeTheKind) {
  const CPolyValue values[] = {CPolyValue(),
                               true,
                               7,
                               2.5,
                               KTEXT("text"),
                               Date(5),
                               std::uint64_t{8},
                               &target,
                               Texts({KTEXT("a")}),
                               Doubles({1, 2, 3})};
  for (const CPolyValue& old : values) {
    for (const CPolyValue& fresh : values) {
      CPolyValue value(old), moved(old);
      value = fresh;
      EXPECT_TRUE(value == fresh);
      EXPECT_EQ(value == old, &old == &fresh);
      EXPECT_EQ(value != old, &old != &fresh);
      moved = CPolyValue(fresh);
      EXPECT_TRUE(moved == fresh);
      value.SetToEmpty();
      EXPECT_TRUE(value.IsEmpty());
    }
  }
  CPolyValue value(KTEXT("a part of itself"));
  value = *&value;
  EXPECT_EQ(value.GetStringValue(), WString(KTEXT("a part of itself")));
  value = static_cast<WString*>(value.GetPointerValue())->c_str() + 2;
  EXPECT_EQ(value.GetStringValue(), WString(KTEXT("part of itself")));
  value = *static_cast<WString*>(value.GetPointerValue());
  EXPECT_EQ(value.GetStringValue(), WString(KTEXT("part of itself")));
  value = static_cast<const WChar*>(nullptr);
  EXPECT_EQ(value.GetType(), kelp::pvString);
  value = true;
  EXPECT_EQ(value.GetType(), kelp::pvBool);
  value = 3;
  EXPECT_EQ(value.GetInt32Value(), 3);
  value = WString(KTEXT("w"));
  value = static_cast<void*>(&target);
  EXPECT_EQ(value.GetPointerValue(), &target);
  const CPolyValue taken(std::move(value));
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_EQ(taken.GetType(), kelp::pvPointer);
}

TEST(PolyValue, Equality) {
  EXPECT_FALSE(CPolyValue(1) == CPolyValue(1.0)) << "of different kinds";
  EXPECT_TRUE(CPolyValue(-0.0) == CPolyValue(0.0));
  EXPECT_FALSE(CPolyValue(NAN) == CPolyValue(NAN));
  EXPECT_FALSE(Doubles({1, NAN}) == Doubles({1, NAN}));
  EXPECT_TRUE(Doubles({1, -0.0}) == Doubles({1, 0.0}));
  EXPECT_TRUE(CPolyValue(WString(KTEXT("same"))) == CPolyValue(KTEXT("same")));
  EXPECT_FALSE(CPolyValue(KTEXT("same")) == CPolyValue(KTEXT("Same")));
  EXPECT_FALSE(Doubles({1}) == Doubles({1, 2}));
  EXPECT_FALSE(Texts({KTEXT("a"), KTEXT("b")}) == Texts({KTEXT("a"), KTEXT("c")}));
  EXPECT_FALSE(Array(kelp::pvDate, 1) == Array(kelp::pvInt64, 1)) << "of other elements";
  CPolyValue a = Array(kelp::pvDate, 2), b = a;
  b.SetDateValue(1, std::int64_t{1} << 40);
  EXPECT_FALSE(a == b) << "every bit of every element";
  a.SetDateValue(1, std::int64_t{1} << 40);
  EXPECT_TRUE(a == b);
  EXPECT_TRUE(Array(77, 3) == Array(77, 3));
}

// Sets, appends and reads elements of one kind, beside a vector; and on a value that is no array.
template <class T>
void CheckArray(unsigned type, const std::vector<T>& some, T (CPolyValue::*get)(unsigned) const,
                void (CPolyValue::*set)(unsigned, T), void (CPolyValue::*append)(T)) {
  SCOPED_TRACE(type);
  CPolyValue array = Array(type, 2);
  std::vector<T> expected = {T{}, some[0]};
  EXPECT_EQ((array.*get)(0), T{});
  (array.*set)(1, some[0]);
  const CPolyValue before(array);
  for (int i = 0; i < 70; ++i) {
    (array.*append)(some[i % some.size()]);
    expected.push_back(some[i % some.size()]);
  }
  EXPECT_EQ(array.GetArrayElementType(), type);
  ASSERT_EQ(array.GetNoArrayElements(), expected.size());
  const CPolyValue copy(array);
  (array.*set)(3, T{});
  for (unsigned i = 0; i < expected.size(); ++i) EXPECT_EQ((copy.*get)(i), expected[i]) << i;
  EXPECT_EQ((array.*get)(3), T{});
  EXPECT_EQ(before.GetNoArrayElements(), 2u);
  EXPECT_EQ((before.*get)(1), some[0]);

  CPolyValue scalar;
  (scalar.*append)(some[0]);
  EXPECT_TRUE(scalar.IsEmpty());
  (scalar.*set)(17, some[0]);
  EXPECT_EQ(scalar.GetType(), static_cast<int>(type));
  EXPECT_EQ((scalar.*get)(0), some[0]);
}

TEST(PolyValue, ArraysHoldElementsOfOneKind) {
  using V = CPolyValue;
  CheckArray<bool>(kelp::pvBool, {true, false, true}, &V::GetBoolValue, &V::SetBoolValue,
                   &V::AppendBoolValue);
  CheckArray<std::int32_t>(kelp::pvInt32, {-1, INT_MIN}, &V::GetInt32Value, &V::SetInt32Value,
                           &V::AppendInt32Value);
  CheckArray<std::uint64_t>(kelp::pvInt64, {~std::uint64_t{0}, 1}, &V::GetInt64Value,
                            &V::SetInt64Value, &V::AppendInt64Value);
  CheckArray<double>(kelp::pvDouble, {0.5, -1e300}, &V::GetDoubleValue, &V::SetDoubleValue,
                     &V::AppendDoubleValue);
  CheckArray<std::int64_t>(kelp::pvDate, {kNoDate, -1}, &V::GetDateValue, &V::SetDateValue,
                           &V::AppendDateValue);
  CheckArray<void*>(kelp::pvPointer, {&target}, &V::GetPointerValue, &V::SetPointerValue,
                    &V::AppendPointerValue);

  CPolyValue texts = Array(kelp::pvString, 2);
  EXPECT_EQ(texts.GetStringValue(1), WString());
  texts.SetStringValue(1, KTEXT("one"));
  const CPolyValue copy(texts);
  for (int i = 0; i < 40; ++i) texts.AppendStringValue(WString::ValueOf(i));
  texts.SetStringValue(1, KTEXT("other"));
  EXPECT_EQ(copy.GetStringValue(1), WString(KTEXT("one")));
  ASSERT_EQ(texts.GetNoArrayElements(), 42u);
  EXPECT_EQ(texts.GetStringValue(41), WString(KTEXT("39")));
  CPolyValue scalar(5);
  scalar.AppendStringValue(KTEXT("x"));
  EXPECT_EQ(scalar.GetInt32Value(), 5);
  scalar.SetStringValue(3, KTEXT("x"));
  EXPECT_EQ(scalar.GetStringValue(8), WString(KTEXT("x")));

  CPolyValue sizeless = Array(kelp::pvDate32, 3);
  sizeless.AppendDateValue(1);
  EXPECT_EQ(sizeless.GetNoArrayElements(), 3u);
  const CPolyValue flag = [] {
    CPolyValue value = Array(kelp::pvBool);
    value.AppendBoolValue(true);
    return value;
  }();
  EXPECT_EQ(flag.GetInt64Value(), 1u) << "nothing is read behind the data";
}

// Day by day over all that can be broken down, beside a calendar that counts on.
TEST(PolyValue, OleDatesBreakDownIntoFields) {
  int year = 100, month = 1, day = 1, dayOfYear = 1, weekday = 6;
  for (int date = -657434; date <= 2958465; ++date) {
    std::tm fields = {};
    fields.tm_isdst = 42;
    // A quarter past three, which counts forward also before day zero.
    const double time = date == 2958465 ? 0 : 11700 / 86400.0;
    ASSERT_EQ(CPolyValue::ConvertOleData2tm(date < 0 ? date - time : date + time, fields),
              date == -657434 ? 0 : 1);
    if (date > -657434) {
      ASSERT_EQ(fields.tm_year, year) << date;
      ASSERT_EQ(fields.tm_mon, month) << date;
      ASSERT_EQ(fields.tm_mday, day) << date;
      ASSERT_EQ(fields.tm_yday, dayOfYear) << date;
      ASSERT_EQ(fields.tm_wday, weekday) << date;
      ASSERT_EQ(fields.tm_hour * 60 + fields.tm_min, time == 0 ? 0 : 195) << date;
      ASSERT_EQ(fields.tm_sec, 0) << date;
      ASSERT_EQ(fields.tm_isdst, 42);
    }
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    const int length = month == 2                                              ? (leap ? 29 : 28)
                       : month == 4 || month == 6 || month == 9 || month == 11 ? 30
                                                                               : 31;
    weekday = weekday % 7 + 1;
    ++dayOfYear;
    if (++day <= length) continue;
    day = 1;
    if (++month <= 12) continue;
    month = dayOfYear = 1;
    ++year;
  }
  std::tm fields = {};
  EXPECT_EQ(CPolyValue::ConvertOleData2tm(2958466.0, fields), 0);
  EXPECT_EQ(CPolyValue::ConvertOleData2tm(2958465.5, fields), 0);
  EXPECT_EQ(CPolyValue::ConvertOleData2tm(NAN, fields), 0);
  EXPECT_EQ(fields.tm_year, 0);
  EXPECT_EQ(CPolyValue::ConvertOleData2tm(-657434.0, fields), 1);
  EXPECT_EQ(fields.tm_year * 10000 + fields.tm_mon * 100 + fields.tm_mday, 1000101);
  EXPECT_EQ(CPolyValue::ConvertOleData2tm(0.0, fields), 1);
  EXPECT_EQ(fields.tm_wday, 7);
  EXPECT_EQ(CPolyValue::ConvertOleData2tm(1 - 1e-9, fields), 1);
  EXPECT_EQ(fields.tm_mday, 31) << "rounded to the second";
  EXPECT_EQ(CPolyValue::ConvertOleData2tm(-1.25 - 29.6 / 86400, fields), 1);
  EXPECT_EQ(fields.tm_hour * 3600 + fields.tm_min * 60 + fields.tm_sec, 21630);
}

TEST(PolyValue, ADateOutOfATextIsLocalNoon) {
  for (const WChar* text : {KTEXT("1/31/2000"), KTEXT("31 Jan 2000 23:59"), KTEXT("2000-07-01")}) {
    const __time64_t date = CPolyValue(text).GetDateValue();
    const std::tm local = *_localtime64(&date);
    EXPECT_EQ(local.tm_hour, 12);
    EXPECT_EQ(local.tm_min + local.tm_sec, 0);
    EXPECT_EQ(local.tm_year, 100);
    EXPECT_EQ(local.tm_mon == 0 ? local.tm_mday : local.tm_mon * 31 + local.tm_mday - 156, 31);
  }
  EXPECT_EQ(CPolyValue(KTEXT("no date")).GetDateValue(), 0);
  EXPECT_EQ(CPolyValue(KTEXT("5/6/1965")).GetDateValue(), -1);
  EXPECT_EQ(CPolyValue(KTEXT("31 Dec 9999 12:00")).GetDateValue(), 0) << "behind the last date";
}

class TestFile : public TempFolder {
 public:
  WString Name() const { return WString::ConvertFromUtf8((Path() / "f").string().c_str()); }
  // What a value takes behind the header.
  std::string Saved(const CPolyValue& value, unsigned flags = 0) const {
    ofpstream out(Name().c_str(), 1, WString(), 0, 34);
    SaveToFile(out, value, flags);
    out.Close();
    EXPECT_EQ(out.GetState(), 0);
    return Read("f").substr(5);
  }
  // The state of the stream.
  int Load(const std::string& bytes, CPolyValue& value) const {
    Write("f", ":\0\1\0\0"s + bytes);
    ifpstream in(Name().c_str(), 33);
    LoadFromFile(in, value);
    return in.GetState();
  }
};

std::string Bytes(std::initializer_list<std::uint32_t> words) {
  std::string bytes;
  for (const std::uint32_t word : words) {
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(word >> 8 * i);
  }
  return bytes;
}

TEST(PolyValue, FilesHoldTheKindAndTheContent) {
  const TestFile file;
  CPolyValue flags = Array(kelp::pvBool, 2), wholes = Array(kelp::pvInt32, 1),
             dates = Array(kelp::pvDate, 1), bigs = Array(kelp::pvInt64, 1),
             pointers = Array(kelp::pvPointer, 1);
  flags.SetBoolValue(1, true);
  wholes.SetInt32Value(0, -2);
  dates.SetDateValue(0, kNoDate);
  bigs.SetInt64Value(0, std::uint64_t{3} << 32);
  pointers.SetPointerValue(0, reinterpret_cast<void*>(0x500000004));
  const struct {
    CPolyValue value;
    std::string bytes;
  } cases[] = {
      {CPolyValue(), Bytes({0})},
      {true, Bytes({1, 1})},
      {false, Bytes({1, 0})},
      {-2, Bytes({2, 0xFFFFFFFE})},
      {-0.5, Bytes({3, 0, 0xBFE00000})},
      {KTEXT("ab"), Bytes({4, 2, 'b' << 16 | 'a'})},
      {Date(kNewYear2000), Bytes({7, 946684800, 0})},
      {std::uint64_t{5} << 32, Bytes({8, 0, 5})},
      {reinterpret_cast<void*>(0x500000004), Bytes({9, 4, 5})},
      {Texts({KTEXT("ab"), KTEXT("")}), Bytes({5, 4, 2, 2, 'b' << 16 | 'a', 0})},
      {Doubles({-0.5}), Bytes({5, 3, 1, 0, 0xBFE00000})},
      {flags, Bytes({5, 1, 2, 0, 1})},
      {wholes, Bytes({5, 2, 1, 0xFFFFFFFE})},
      {dates, Bytes({5, 7, 1, 0xFFFFFFFF, 0x7FFFFFFF})},
      {bigs, Bytes({5, 8, 1, 0, 3})},
      {pointers, Bytes({5, 9, 1, 4, 5})},
      {Array(kelp::pvDouble), Bytes({5, 3, 0})},
      {Array(77, 0x7FFFFFFF), Bytes({5, 77, 0x7FFFFFFF})},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    EXPECT_EQ(file.Saved(test.value), test.bytes);
    CPolyValue loaded(KTEXT("old"));
    EXPECT_EQ(file.Load(test.bytes, loaded), 0);
    EXPECT_TRUE(loaded == test.value);
    EXPECT_EQ(loaded.GetType(), test.value.GetType());
    // Cut short anywhere, it ends in state 2 and holds what came whole.
    for (std::size_t size = 0; size < test.bytes.size(); ++size) {
      EXPECT_EQ(file.Load(test.bytes.substr(0, size), loaded), 2) << size;
      if (loaded.GetType() != kelp::pvArray) continue;
      EXPECT_LE(loaded.GetNoArrayElements(), test.value.GetNoArrayElements());
    }
  }
}

TEST(PolyValue, DatesOfFourBytes) {
  const TestFile file;
  const struct {
    std::int64_t date;
    std::uint32_t stored;
    std::int64_t loaded;
  } cases[] = {{kNewYear2000, 946684800, kNewYear2000},
               {0, 0, 0},
               {0x7FFFFFFF, 0x7FFFFFFF, 0x7FFFFFFF},
               {0x80000000, 0xFFFFFFFF, kNoDate},
               {-1, 0xFFFFFFFF, kNoDate},
               {kNoDate, 0xFFFFFFFF, kNoDate}};
  for (const auto& test : cases) {
    EXPECT_EQ(file.Saved(Date(test.date), 1), Bytes({6, test.stored}));
    CPolyValue loaded;
    EXPECT_EQ(file.Load(Bytes({6, test.stored}), loaded), 0);
    EXPECT_EQ(loaded.GetType(), kelp::pvDate);
    EXPECT_EQ(loaded.GetDateValue(), test.loaded);
  }
  EXPECT_EQ(file.Saved(Date(1), 2), Bytes({7, 1, 0})) << "bit 0 alone";
  EXPECT_EQ(file.Saved(CPolyValue(1), 1), Bytes({2, 1}));
  EXPECT_EQ(file.Saved(Array(kelp::pvDate, 1), 1), Bytes({5, 7, 1, 0, 0}));
  CPolyValue loaded;
  EXPECT_EQ(file.Load(Bytes({6, 0xFFFFFFFE}), loaded), 0);
  EXPECT_EQ(loaded.GetDateValue(), 0xFFFFFFFE) << "unsigned";
  EXPECT_EQ(file.Load(Bytes({5, 6, 3, 9, 0x80000000, 0xFFFFFFFF}), loaded), 0);
  EXPECT_EQ(loaded.GetArrayElementType(), unsigned{kelp::pvDate});
  ASSERT_EQ(loaded.GetNoArrayElements(), 3u);
  EXPECT_EQ(loaded.GetDateValue(0), 9);
  EXPECT_EQ(loaded.GetDateValue(1), 0x80000000);
  EXPECT_EQ(loaded.GetDateValue(2), kNoDate);
}

TEST(PolyValue, FilesAreNotTrusted) {
  const TestFile file;
  CPolyValue value(KTEXT("old"));
  EXPECT_EQ(file.Load(Bytes({99, 1, 2}), value), 0);
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_EQ(file.Load(Bytes({1, 2}), value), 0);
  EXPECT_FALSE(value.GetBoolValue()) << "only 1 is true";
  EXPECT_EQ(file.Load(Bytes({5, 3, 0xFFFFFFFF, 1, 2}), value), 0);
  EXPECT_EQ(value.GetNoArrayElements(), 0u) << "a negative count";
  EXPECT_EQ(file.Load(Bytes({5, 2, 0x7FFFFFFF, 1, 2, 3}), value), 2);
  ASSERT_EQ(value.GetNoArrayElements(), 3u);
  EXPECT_EQ(value.GetInt32Value(2), 3);
  EXPECT_EQ(file.Load(Bytes({4, 0x7FFFFFFF, 1}), value), 2);
  EXPECT_EQ(value.GetStringValue(), WString());
}

#ifndef NDEBUG
TEST(PolyValueDeathTest, IndexedAccessIsTheCallersContract) {
  const CPolyValue array = Doubles({1, 2});
  EXPECT_DEATH(array.GetDoubleValue(2), "outside");
  EXPECT_DEATH(array.GetInt32Value(0), "another kind");
}
#endif

}  // namespace
