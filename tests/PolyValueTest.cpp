#include "kelp0lang/PolyValue.h"

#include <tchar.h>

#include <bit>
#include <cmath>
#include <ctime>
#include <limits>
#include <string>
#include <type_traits>
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
  const CPolyValue number(2.5), text(KTEXT("P1"));
  EXPECT_EQ(*static_cast<double*>(number.GetPointerValue()), 2.5);
  EXPECT_EQ(*static_cast<WString*>(text.GetPointerValue()), WString(KTEXT("P1")));
  EXPECT_EQ(CPolyValue(&target).GetPointerValue(), &target);
  EXPECT_EQ(CPolyValue().GetPointerValue(), nullptr);
  EXPECT_EQ(Array(kelp::pvPointer).GetPointerValue(), nullptr);
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
  value = static_cast<WString*>(value.GetPointerValue())->c_str() + 2;
  value = *static_cast<WString*>(value.GetPointerValue());
  EXPECT_EQ(value.GetStringValue(), WString(KTEXT("part of itself")));
  value = static_cast<const WChar*>(nullptr);
  EXPECT_EQ(value.GetType(), kelp::pvString);
  const CPolyValue taken(std::move(value));
  EXPECT_TRUE(value == CPolyValue());
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
  texts.SetStringValue(1, KTEXT("one"));
  const CPolyValue copy(texts);
  for (int i = 0; i < 40; ++i) texts.AppendStringValue(WString::ValueOf(i));
  texts.SetStringValue(1, KTEXT("other"));
  EXPECT_EQ(copy.GetStringValue(1), WString(KTEXT("one")));
  EXPECT_EQ(texts.GetStringValue(41), WString(KTEXT("39")));
  CPolyValue scalar(5);
  scalar.SetStringValue(3, KTEXT("x"));
  EXPECT_EQ(scalar.GetStringValue(8), WString(KTEXT("x")));

  CPolyValue sizeless = Array(kelp::pvDate32, 3);
  sizeless.AppendDateValue(1);
  EXPECT_EQ(sizeless.GetNoArrayElements(), 3u);
  CPolyValue flag = Array(kelp::pvBool, 1);
  flag.SetBoolValue(0, true);
  EXPECT_EQ(flag.GetInt64Value(), 1u) << "nothing is read behind the data";
}

TEST(PolyValue, OleDatesBreakDownIntoFields) {
  const struct {
    double date;
    int year, month, day, second, weekday, dayOfYear;
  } cases[] = {
      {0, 1899, 12, 30, 0, 7, 364},
      {-657434, 100, 1, 1, 0, 6, 1},
      {2958465, 9999, 12, 31, 0, 6, 365},
      {36585.75, 2000, 2, 29, 64800, 3, 60},
      {61.25, 1900, 3, 1, 21600, 5, 60},
      {-1.25, 1899, 12, 29, 21600, 6, 363},
      {-0.5, 1899, 12, 30, 43200, 7, 364},
      {1 - 1e-9, 1899, 12, 31, 0, 1, 365},
      {-1.25 - 29.6 / 86400, 1899, 12, 29, 21630, 6, 363},
      {36526 + 59.4 / 86400, 2000, 1, 1, 59, 7, 1},
  };
  std::tm fields = {};
  fields.tm_isdst = 42;
  for (const auto& test : cases) {
    SCOPED_TRACE(test.date);
    ASSERT_EQ(CPolyValue::ConvertOleData2tm(test.date, fields), 1);
    EXPECT_EQ(fields.tm_year, test.year);
    EXPECT_EQ(fields.tm_mon, test.month);
    EXPECT_EQ(fields.tm_mday, test.day);
    EXPECT_EQ(fields.tm_hour * 3600 + fields.tm_min * 60 + fields.tm_sec, test.second);
    EXPECT_EQ(fields.tm_wday, test.weekday);
    EXPECT_EQ(fields.tm_yday, test.dayOfYear);
    EXPECT_EQ(fields.tm_isdst, 42);
  }
  for (const double date : {2958465.5, -657434.5, double{NAN}}) {
    EXPECT_EQ(CPolyValue::ConvertOleData2tm(date, fields), 0);
  }
  EXPECT_EQ(fields.tm_mday, 1) << "no fields";
}

TEST(PolyValue, ADateOutOfATextIsLocalNoon) {
  for (const WChar* text : {KTEXT("1/31/2000 23:59"), KTEXT("31 Jul 2000")}) {
    const __time64_t date = CPolyValue(text).GetDateValue();
    const std::tm local = *_localtime64(&date);
    EXPECT_EQ(local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec, 43200);
    EXPECT_EQ(local.tm_year * 100 + local.tm_mday, 10031);
  }
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

template <class T>
CPolyValue ArrayOf(unsigned type, void (CPolyValue::*append)(T), std::type_identity_t<T> element) {
  CPolyValue array = Array(type);
  (array.*append)(element);
  return array;
}

TEST(PolyValue, FilesHoldTheKindAndTheContent) {
  using V = CPolyValue;
  const TestFile file;
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
      {ArrayOf(1, &V::AppendBoolValue, true), Bytes({5, 1, 1, 1})},
      {ArrayOf(2, &V::AppendInt32Value, -2), Bytes({5, 2, 1, 0xFFFFFFFE})},
      {ArrayOf(7, &V::AppendDateValue, kNoDate), Bytes({5, 7, 1, 0xFFFFFFFF, 0x7FFFFFFF})},
      {ArrayOf(8, &V::AppendInt64Value, 12884901888u), Bytes({5, 8, 1, 0, 3})},
      {ArrayOf(9, &V::AppendPointerValue, reinterpret_cast<void*>(0x500000004)),
       Bytes({5, 9, 1, 4, 5})},
      {Array(kelp::pvDouble), Bytes({5, 3, 0})},
      {Array(77, 0x7FFFFFFF), Bytes({5, 77, 0x7FFFFFFF})},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    EXPECT_EQ(file.Saved(test.value), test.bytes);
    CPolyValue loaded(KTEXT("old"));
    EXPECT_EQ(file.Load(test.bytes, loaded), 0);
    EXPECT_TRUE(loaded == test.value);
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

}  // namespace
