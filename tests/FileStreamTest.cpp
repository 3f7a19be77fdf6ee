#include "kelp0lang/FileStream.h"

#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <variant>
#include <vector>

#include "kelp0lang/LibGen.h"
#include "kelp0lang/PointRecords.h"
#include "kelp0lang/Ptr64Mapper.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::ifpstream;
using kelp::kReadBinary;
using kelp::kStreamEnd;
using kelp::kStreamError;
using kelp::kStreamGood;
using kelp::kUpdateBinary;
using kelp::kWriteBinary;
using kelp::ofpstream;
using kelp::WString;

namespace {

using namespace std::string_literals;

const std::string kWideHeader = ":\0\1\0\0"s;
const std::string kNarrowHeader = ":\1\1\0\0"s;

class TestFolder : public TempFolder {
 public:
  WString File(const char* name) const {
    return WString::ConvertFromUtf8((Path() / name).string().c_str());
  }
};

// A little-endian number, as a file holds it.
std::string Number(std::uint64_t value, int size) {
  std::string bytes;
  for (int i = 0; i < size; ++i) bytes += static_cast<char>(value >> 8 * i);
  return bytes;
}

TEST(FileStream, StoresLittleEndianValuesBehindItsHeader) {
  const TestFolder folder;
  const WString path = folder.File("f");
  {
    ofpstream out(path.c_str(), 1909, KTEXT("label"), 0, kWriteBinary);
    EXPECT_EQ(out.Tell(), 5);
    EXPECT_EQ(out.GetVersion(), 1909);
    EXPECT_EQ(out.GetName(), WString(KTEXT("label")));
    out << short{-2} << 0x01020304 << 0xF0000000u << std::int64_t{-3} << -0.5 << true << false
        << WString(KTEXT("a\u20AC")) << WString();
    out.WriteBytes("xyz", 3);
    out.Close();
    out.Close();
    EXPECT_EQ(out.GetState(), kStreamGood);
    out << 1;
    EXPECT_EQ(out.GetState(), kStreamError) << "closed";
  }
  EXPECT_EQ(folder.Read("f"), kWideHeader + "\xFE\xFF\x04\x03\x02\x01" + "\0\0\0\xF0"s +
                                  "\xFD\xFF\xFF\xFF" + "\xFF\xFF\xFF\xFF" +
                                  "\0\0\0\0\0\0\xE0\xBF"s + "\1\0\0\0\0\0\0\0"s +
                                  "\2\0\0\0a\0\xAC\x20"s + "\0\0\0\0"s + "xyz");

  ofpstream(path.c_str(), 1, WString(), 1, kWriteBinary) << WString(KTEXT("ab"));
  EXPECT_EQ(folder.Read("f"), kNarrowHeader + "\2\0\0\0ab"s);
}

// mode 3 keeps what stands behind the header; modes without a file for them make none.
TEST(FileStream, ModesOpenAsStdioDoes) {
  const TestFolder folder;
  const struct {
    int mode;
    bool opensMissing, opensExisting;
    const char* result;  // after 'x' was written to a file of a header and "old"
  } cases[] = {
      {0x21, false, true, "old"},  {0x22, true, true, "x"},     {0x23, false, true, "xld"},
      {0x29, false, true, "old"},  {0x2A, true, true, "oldx"},  {0x2B, true, true, "oldx"},
      {0x20, false, false, "old"}, {0x28, false, false, "old"}, {0x22 | 0x54, true, true, "x"},
      {3, false, true, "xld"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.mode);
    const WString missing = folder.File("missing");
    EXPECT_EQ(ofpstream(missing.c_str(), 1, WString(), 0, test.mode).GetState() == kStreamGood,
              test.opensMissing);
    EXPECT_EQ(std::filesystem::exists(folder.Path() / "missing"), test.opensMissing);
    std::filesystem::remove(folder.Path() / "missing");

    folder.Write("old", kWideHeader + "old");
    ofpstream out(folder.File("old").c_str(), 1, WString(), 0, test.mode);
    EXPECT_EQ(out.GetState() == kStreamGood, test.opensExisting);
    out.Seek(5, SEEK_SET);
    out.WriteBytes("x", 1);
    out.Close();
    EXPECT_EQ(folder.Read("old"), kWideHeader + test.result);
  }
}

TEST(FileStream, WriterKeepsAnExistingHeaderAndItsPosition) {
  const TestFolder folder;
  const std::string old = kNarrowHeader + std::string(35, 'o');
  folder.Write("f", old);
  ofpstream out(folder.File("f").c_str(), 1, WString(), 0, kUpdateBinary);
  EXPECT_EQ(out.Tell(), 0);
  out.Close();
  EXPECT_EQ(folder.Read("f"), old);

  folder.Write("short", "abcd");
  ofpstream(folder.File("short").c_str(), 1, WString(), 0, kUpdateBinary) << 7;
  EXPECT_EQ(folder.Read("short"), kWideHeader + "\7\0\0\0"s);
}

TEST(FileStream, ReaderJudgesTheHeaderAndReadsOn) {
  const TestFolder folder;
  const struct {
    std::string header;
    bool markerMissing, known;
    int narrow;
  } cases[] = {
      {kWideHeader, false, true, 0},   {kNarrowHeader, false, true, 1},
      {"\0\0\1\0\0"s, true, true, 0},  {":\2\1\0\0"s, false, false, 0},
      {":\0\0\0\0"s, false, false, 0}, {":\0\2\0\0"s, false, false, 0},
      {":\1\1\1\0"s, false, false, 1}, {":\0\1\0\1"s, false, false, 0},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(testing::PrintToString(test.header));
    folder.Write("f", test.header + Number(77, 4));
    const WString path = folder.File("f");
    ifpstream in(path.c_str(), kReadBinary);
    EXPECT_EQ(in.IsMarkerMissing(), test.markerMissing);
    EXPECT_EQ(in.IsHeaderKnown(), test.known);
    EXPECT_EQ(in.GetNarrowText(), test.narrow);
    EXPECT_EQ(in.GetPath(), path);
    EXPECT_EQ(in.Tell(), 5);
    int number = 0;
    in >> number;
    EXPECT_EQ(number, 77);
    EXPECT_EQ(in.GetState(), kStreamGood);
  }
}

TEST(FileStream, FailureIsStickyAndTouchesNothing) {
  const TestFolder folder;
  folder.Write("f", kWideHeader + "1234567");
  ifpstream in(folder.File("f").c_str(), kReadBinary);
  double number = 1.5;
  in >> number;
  EXPECT_EQ(in.GetState(), kStreamEnd);
  EXPECT_EQ(number, 1.5);
  EXPECT_EQ(in.Tell(), -1);
  in.Seek(5, SEEK_SET);
  char bytes[4] = "abc";
  in.ReadBytes(bytes, 1);
  WString text(KTEXT("old"));
  in >> text;
  EXPECT_STREQ(bytes, "abc");
  EXPECT_EQ(text, WString(KTEXT("old")));
  EXPECT_EQ(kelp::LoadPointerFromFile(in), 0);

  std::string large(1000, 'o');
  ifpstream again(folder.File("f").c_str(), kReadBinary);
  again.ReadBytes(large.data(), large.size());
  EXPECT_EQ(again.GetState(), kStreamEnd);
  EXPECT_EQ(large, std::string(1000, 'o'));

  ifpstream badSeek(folder.File("f").c_str(), kReadBinary);
  badSeek.Seek(-100, SEEK_CUR);
  EXPECT_EQ(badSeek.GetState(), kStreamError);

  ofpstream readOnly(folder.File("f").c_str(), 1, WString(), 0, kReadBinary);
  readOnly << 1;
  EXPECT_EQ(readOnly.GetState(), kStreamError);
  EXPECT_EQ(ifpstream(folder.File("missing").c_str(), kReadBinary).GetState(), kStreamError);
  const ifpstream none(nullptr, kReadBinary);
  EXPECT_EQ(none.GetState(), 1) << "hosts have the numbers of old";
  EXPECT_FALSE(none.IsMarkerMissing() || none.IsHeaderKnown());
  EXPECT_EQ(again.GetState(), 2);
}

// Texts by their bytes on disk. Memory for a text comes only with its characters.
TEST(FileStream, ReadsTextsByTheirCount) {
  const TestFolder folder;
  const struct {
    std::string bytes;
    WString text;
    int state;
  } cases[] = {
      {kWideHeader + Number(2, 4) + "a\0b\0"s, KTEXT("ab"), 0},
      {kWideHeader + Number(3, 4) + "a\0b\0\0\0"s, KTEXT("ab"), 0},
      {kWideHeader + Number(1, 4) + "\0\0"s, KTEXT(""), 0},
      {kWideHeader + Number(0, 4), KTEXT(""), 0},
      {kWideHeader + Number(0x80000000, 4) + "a\0"s, KTEXT(""), 0},
      {kWideHeader + Number(0x7FFFFFFF, 4) + "a\0"s, KTEXT("old"), 2},
      {kNarrowHeader + Number(2, 4) + "ab", KTEXT("ab"), 0},
      {kNarrowHeader + Number(3, 4) + "ab\0"s, KTEXT("ab"), 0},
      {kNarrowHeader + Number(0x7FFFFFFF, 4) + std::string(100000, 'a'), KTEXT("old"), 2},
      {kNarrowHeader + "\1\0"s, KTEXT("old"), 2},
  };
  for (const auto& c : cases) {
    folder.Write("f", c.bytes);
    ifpstream in(folder.File("f").c_str(), kReadBinary);
    WString text(KTEXT("old"));
    in >> text;
    EXPECT_EQ(text, c.text) << testing::PrintToString(c.bytes.substr(0, 20));
    EXPECT_EQ(in.GetState(), c.state) << testing::PrintToString(c.bytes.substr(0, 20));
  }

  WString inner(KTEXT("a?b"));
  inner.SetChar(1, 0);
  ofpstream(folder.File("f").c_str(), 1, WString(), 0, kWriteBinary) << inner;
  WString back;
  ifpstream(folder.File("f").c_str(), kReadBinary) >> back;
  EXPECT_EQ(back, inner) << "zero units inside the text stay";
}

TEST(FileStream, NarrowTextsFollowTheLocale) {
  const TestFolder folder;
  const LocaleScope german(LC_CTYPE, kGermanLocale);
  if (!german.Ok()) GTEST_SKIP() << "no German locale";
  const WString text(KTEXT("Vermessung \u00E4\u00F6\u00FC \u20AC"));
  ofpstream(folder.File("f").c_str(), 1, WString(), 1, kWriteBinary) << text << WString(KTEXT("z"));
  WString back, behind;
  ifpstream(folder.File("f").c_str(), kReadBinary) >> back >> behind;
  EXPECT_EQ(back, text);
  EXPECT_EQ(behind, WString(KTEXT("z")));
}

using Value = std::variant<short, int, unsigned int, std::int64_t, double, bool, WString>;

Value RandomValue(std::mt19937_64& random) {
  const std::uint64_t bits = random();
  const auto number = static_cast<std::int64_t>(random());
  WString text;
  const int length = static_cast<int>(random() % ((bits >> 8) % 64 == 0 ? 40000 : 20));
  WChar* unit = text.GetBufferSetLength(length);
  for (int i = 0; i < length; ++i) unit[i] = static_cast<WChar>(random() % 0xFFFF + 1);
  const Value values[] = {
      static_cast<short>(number),
      static_cast<int>(number),
      static_cast<unsigned int>(number),
      number,
      std::ldexp(static_cast<double>(number), static_cast<int>(bits >> 8 & 0x3FF) - 512),
      number > 0,
      text};
  return values[bits % std::size(values)];
}

TEST(FileStream, RandomValuesComeBackInTheirOrder) {
  const TestFolder folder;
  for (unsigned seed = 0; seed < 20; ++seed) {
    std::mt19937_64 random(seed);
    std::vector<Value> values;
    for (int i = 0; i < 200; ++i) values.push_back(RandomValue(random));
    ofpstream out(folder.File("f").c_str(), 1, WString(), 0, kWriteBinary);
    for (const Value& value : values) std::visit([&out](const auto& v) { out << v; }, value);
    out.Close();
    ASSERT_EQ(out.GetState(), kStreamGood);

    ifpstream in(folder.File("f").c_str(), kReadBinary);
    for (const Value& value : values) {
      Value back = value;
      std::visit(
          [&in](auto& v) {
            v = std::decay_t<decltype(v)>();
            in >> v;
          },
          back);
      ASSERT_EQ(back, value) << seed;
    }
    EXPECT_EQ(in.GetState(), kStreamGood);
    char past = 0;
    in.ReadBytes(&past, 1);
    EXPECT_EQ(in.GetState(), kStreamEnd) << "nothing is left";
  }
}

// Whatever a file loses at its end, what stands before reads right and the rest stays as it was.
TEST(FileStream, FilesCutShortAtEveryLength) {
  const TestFolder folder;
  ofpstream(folder.File("f").c_str(), 1, WString(), 0, kWriteBinary)
      << 11 << WString(KTEXT("abc")) << short{22} << 3.25;
  const std::string whole = folder.Read("f");
  ASSERT_EQ(whole.size(), 5u + 4 + 10 + 2 + 8);
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    folder.Write("f", whole.substr(0, size));
    ifpstream in(folder.File("f").c_str(), kReadBinary);
    int first = -1;
    WString text(KTEXT("old"));
    short second = -1;
    double third = -1;
    in >> first >> text >> second >> third;
    EXPECT_EQ(in.GetState(), size == whole.size() ? kStreamGood : kStreamEnd);
    EXPECT_EQ(first, size < 9 ? -1 : 11);
    EXPECT_EQ(text, WString(size < 19 ? KTEXT("old") : KTEXT("abc")));
    EXPECT_EQ(second, size < 21 ? -1 : 22);
    EXPECT_EQ(third, size < 29 ? -1 : 3.25);
  }
}

// Many numbers at once are the same in the file, and of a file cut short the same come back.
TEST(FileStream, NumbersInARowAreAsOneByOne) {
  const TestFolder folder;
  constexpr int kCount = 33;
  std::vector<int> numbers(kCount);
  for (int i = 0; i < kCount; ++i) numbers[i] = i * 0x01010101 - 5;
  {
    ofpstream alone(folder.File("alone").c_str(), 1, WString(), 0, kWriteBinary);
    for (const int number : numbers) alone << number;
    ofpstream together(folder.File("together").c_str(), 1, WString(), 0, kWriteBinary);
    together.WriteNumbers(numbers.data(), numbers.size());
  }
  const std::string whole = folder.Read("alone");
  ASSERT_EQ(folder.Read("together"), whole);
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    folder.Write("f", whole.substr(0, size));
    std::vector<int> one(kCount, -1), all(kCount, -1);
    ifpstream alone(folder.File("f").c_str(), kReadBinary),
        together(folder.File("f").c_str(), kReadBinary);
    for (int& number : one) alone >> number;
    together.ReadNumbers(all.data(), all.size());
    ASSERT_EQ(all, one);
    ASSERT_EQ(together.GetState(), alone.GetState());
  }
}

TEST(FileStream, PointersAreStoredAsSmallNumbers) {
  const TestFolder folder;
  kelp::CPtr64Mapper mapper;
  ofpstream out(folder.File("f").c_str(), 1, WString(), 0, kWriteBinary);
  for (const std::int64_t pointer : {0x123456789ABCLL, 0LL, 0x123456789ABCLL}) {
    kelp::SavePointerToFile(out, pointer, &mapper);
  }
  out << -5;
  out.Close();
  EXPECT_EQ(folder.Read("f").size(), 5u + 4 * 4);
  ifpstream in(folder.File("f").c_str(), kReadBinary);
  for (const std::int64_t number : {1, 2, 1, -5}) {
    EXPECT_EQ(kelp::LoadPointerFromFile(in), number);
  }
}

class Station : public kelp::CLibGen {
 public:
  using CLibGen::CloseFileOutTmp;
  using CLibGen::GetFileOutTmp;
};

TEST(LibGen, AppendsRecordsToAFile) {
  const TestFolder folder;
  folder.Write("f", kWideHeader + Number(0, 4));
  Station station;
  EXPECT_EQ(station.GetFileOutTmp(folder.File("missing").c_str(), 3), nullptr);
  std::string records;
  for (const int type : {3, 9}) {
    ofpstream* file = station.GetFileOutTmp(folder.File("f").c_str(), type);
    ASSERT_NE(file, nullptr);
    *file << WString(KTEXT("P"));
    station.CloseFileOutTmp(file);
    records += Number(1, 4) + Number(static_cast<unsigned>(type), 4) + Number(1909, 2) +
               Number(1, 4) + "P\0"s;
    EXPECT_EQ(folder.Read("f"), "\0\0\1\0\0"s + records + Number(0, 4));
  }
  station.CloseFileOutTmp(nullptr);

  ofpstream* failed = station.GetFileOutTmp(folder.File("f").c_str(), 4);
  ASSERT_NE(failed, nullptr);
  failed->Seek(-100000, SEEK_SET);
  ASSERT_EQ(failed->GetState(), kStreamError);
  station.CloseFileOutTmp(failed);
  EXPECT_EQ(folder.Read("f"),
            "\0\0\1\0\0"s + records + Number(1, 4) + Number(4, 4) + Number(1909, 2))
      << "a failed stream gets no closing 0";
}

// What is too short to hold a closing 0 loses nothing of the header.
TEST(LibGen, TheFirstRecordStandsBehindTheHeader) {
  const TestFolder folder;
  const std::string record = Number(1, 4) + Number(3, 4) + Number(1909, 2) + Number(0, 4);
  for (const std::string& old : {""s, ":\0"s, kWideHeader, kNarrowHeader + "\0\0\0"s}) {
    folder.Write("f", old);
    Station station;
    station.CloseFileOutTmp(station.GetFileOutTmp(folder.File("f").c_str(), 3));
    const std::string header = old.size() < 5 ? kWideHeader : old.substr(0, 5);
    EXPECT_EQ(folder.Read("f"), "\0"s + header.substr(1) + record);
  }
}

TEST(LibGen, AModificationOutdatesTheAutomaticSave) {
  Station station;
  EXPECT_FALSE(station.IsModified());
  EXPECT_FALSE(station.IsAutoSaved());
  station.SetModifiedFlag(true);
  station.SetAutoSaved();
  EXPECT_TRUE(station.IsModified());
  station.SetModifiedFlag(false);
  EXPECT_TRUE(Station(station).IsAutoSaved());
  station.SetModifiedFlag(true);
  EXPECT_FALSE(station.IsAutoSaved());
}

TEST(PointRecords, HoldCopiesAndGuardTheirIndex) {
  kelp::CPoint3dVector points;
  EXPECT_THROW(points.GetZcoordAt(0), std::out_of_range);
  points.AddPoint(1, 2, 3, KTEXT("P1"), KTEXT("trig"));
  for (int i = 0; i < 100; ++i) {
    points.AddPoint(4, 5, i, points.GetNameAt(0), points.GetCodeAt(0));
  }
  points.AddPointUnnamed(7, 8, 9);
  const kelp::CPoint3dVector copy(points);
  points.DeleteAllPoints();
  EXPECT_EQ(points.GetNoPoints(), 0u);
  ASSERT_EQ(copy.GetNoPoints(), 102u);
  EXPECT_EQ(copy.GetZcoordAt(100), 99);
  EXPECT_EQ(copy.GetNameAt(100), WString(KTEXT("P1")));
  EXPECT_EQ(copy.GetCodeAt(100), WString(KTEXT("trig")));
  EXPECT_EQ(copy.GetXcoordAt(101) + copy.GetYcoordAt(101), 15);
  EXPECT_TRUE(copy.GetNameAt(101).empty());
  for (const int index : {-1, 102}) {
    EXPECT_THROW(copy.GetXcoordAt(index), std::out_of_range);
    EXPECT_THROW(copy.GetCodeAt(index), std::out_of_range);
  }

  kelp::CPointerRef references;
  references.AddPtRef(std::numeric_limits<std::int64_t>::min());
  kelp::CPointerRef other;
  other = references;
  references.DeleteAllPtRef();
  EXPECT_EQ(references.GetNoPtRef(), 0u);
  ASSERT_EQ(other.GetNoPtRef(), 1u);
  EXPECT_EQ(other.GetPtRefAt(0), std::numeric_limits<std::int64_t>::min());
  try {
    other.GetPtRefAt(1);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::out_of_range& error) {
    EXPECT_STREQ(error.what(), "invalid vector<T> subscript");
  }
}

}  // namespace
