#include "kelp0lang/BitStream.h"

#include <climits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/TestText.h"

using kelp::CBitStreamReader;
using kelp::CBitStreamWriter;
using kelp::String;
using kelp::WString;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes Written(const CBitStreamWriter& out) {
  return Bytes(out.GetBufferAddress(), out.GetBufferAddress() + out.GetBufferSize());
}

CBitStreamReader Reader(const Bytes& bytes) {
  return CBitStreamReader(static_cast<unsigned>(bytes.size()), bytes.data());
}

TEST(BitStream, ANewWriterIsEmpty) {
  const CBitStreamWriter out;
  EXPECT_EQ(out.GetBufferSize(), 0);
  EXPECT_EQ(out.GetBufferSizeInBits(), 0);
  EXPECT_NE(out.GetBufferAddress(), nullptr);
}

// What each of a few writes leaves in the buffer, by its bits.
TEST(BitStream, BitsFillBytesFromTheTop) {
  const struct {
    void (*write)(CBitStreamWriter&);
    Bytes bytes;
    int bits;
  } cases[] = {
      {[](auto& out) {
         for (const int bit : {1, 2, 3}) out.WriteBit(static_cast<unsigned char>(bit));
       },
       {0xA0},
       3},
      {[](auto& out) {
         for (int i = 0; i < 8; ++i) out.WriteBit(1);
       },
       {0xFF},
       8},
      {[](auto& out) { out.WriteBit(1), out.WriteBytes("\xFF", 1); }, {0xFF, 0x80}, 9},
      {[](auto& out) { out.WriteInt(5, 3); }, {0xA0}, 3},
      {[](auto& out) { out.WriteInt(0x1234, 12); }, {0x34, 0x40}, 12},
      {[](auto& out) { out.WriteInt(0x89ABCDEF, 32); }, {0xEF, 0xCD, 0xAB, 0x89}, 32},
      {[](auto& out) { out.WriteInt(0xFFFFFFFF, 31); }, {0xFF, 0xFF, 0xFF, 0xFE}, 31},
      {[](auto& out) { out.WriteInt(1, 0), out.WriteInt(1, -5), out.WriteBytes("a", -1); }, {}, 0},
      {[](auto& out) { out.WriteInt(0, 5), out.WriteInt(0x7F, 7); }, {0x07, 0xF0}, 12},
      {[](auto& out) { out.WriteInt(0, 5), out.WriteInt(3, 3), out.WriteBit(1); }, {0x06, 0x80}, 9},
      {[](auto& out) { out.WriteRawByte(0x12), out.WriteRawShort(0x3456); },
       {0x12, 0x56, 0x34},
       24},
      {[](auto& out) { out.WriteBit(0), out.WriteRawInt(0x01020304); },
       {0x02, 0x01, 0x81, 0x00, 0x80},
       33},
      {[](auto& out) { out.WriteRawDouble(-0.5); }, {0, 0, 0, 0, 0, 0, 0xE0, 0xBF}, 64},
      {[](auto& out) { out.WriteString(KTEXT("")); }, {0}, 5},
      {[](auto& out) { out.WriteString(KTEXT("A\u00E9\u0100")); }, {0x62, 0x0F, 0x49, 0xF8}, 29},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(&test - cases);
    CBitStreamWriter out;
    test.write(out);
    EXPECT_EQ(Written(out), test.bytes);
    EXPECT_EQ(out.GetBufferSizeInBits(), test.bits);
  }
}

TEST(BitStream, TextsOfEveryLength) {
  for (const int length : {1, 15, 16, 17, 300, 65535, 65536, 70000}) {
    SCOPED_TRACE(length);
    WString text;
    text.resize(length, KTEXT('\u00FF'));
    const int count = std::min(length, 65535);
    CBitStreamWriter out;
    out.WriteString(text);
    EXPECT_EQ(out.GetBufferSizeInBits(), (length < 16 ? 5 : 17) + 8 * count);
    const Bytes bytes = Written(out);
    CBitStreamReader in = Reader(bytes);
    const String back = in.ReadString();
    ASSERT_EQ(back.Length(), count);
    EXPECT_EQ(std::string(back.c_str()), std::string(static_cast<std::size_t>(count), '\xFF'));
    EXPECT_EQ(in.GetBitPos(), out.GetBufferSizeInBits());
  }
  const Bytes cut = {0xFF, 0xFF, 0x80};
  CBitStreamReader in = Reader(cut);
  EXPECT_EQ(in.ReadString().Length(), 0xFFFF) << "zeros, where the bytes aren't there";
  EXPECT_EQ(in.GetBitPos(), 17);
}

// Integers and runs of bytes of random sizes, one behind the other.
TEST(BitStream, RandomRecordsComeBack) {
  for (unsigned seed = 0; seed < 50; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::vector<std::pair<unsigned, int>> integers(200);
    std::vector<Bytes> runs(200);
    CBitStreamWriter out;
    for (int i = 0; i < 200; ++i) {
      const int bits = static_cast<int>(random() % 40);
      const auto value = static_cast<unsigned>(random());
      integers[i] = {bits < 32 ? value & ((1u << bits) - 1) : value, bits};
      runs[i].resize(random() % 40);
      for (auto& byte : runs[i]) byte = static_cast<unsigned char>(random());
      out.WriteInt(value, bits);
      out.WriteBytes(runs[i].data(), static_cast<int>(runs[i].size()));
    }
    CBitStreamWriter assigned;
    assigned = out;
    out.WriteBit(1);
    const Bytes bytes = Written(CBitStreamWriter(assigned));
    CBitStreamReader in = Reader(bytes);
    for (int i = 0; i < 200; ++i) {
      ASSERT_EQ(in.ReadInt(integers[i].second), integers[i].first) << i;
      Bytes run(runs[i].size());
      in.ReadBytes(static_cast<int>(run.size()), run.data());
      ASSERT_EQ(run, runs[i]) << i;
    }
    EXPECT_EQ(in.GetBitPos(), assigned.GetBufferSizeInBits());
    EXPECT_FALSE(in.IsError());
  }
}

TEST(BitStream, NumbersOfWholeBytesAtAnyBit) {
  for (int start = 0; start < 8; ++start) {
    CBitStreamWriter out;
    out.WriteInt(0, start);
    out.WriteRawByte(0x81);
    out.WriteRawShort(0x8283);
    out.WriteRawInt(0x84858687);
    out.WriteRawDouble(-2.5e-3);
    const Bytes bytes = Written(out);
    CBitStreamReader in = Reader(bytes);
    in.SkipBits(start);
    EXPECT_EQ(in.ReadRawByte(), 0x81);
    EXPECT_EQ(in.ReadRawShort(), 0x8283);
    EXPECT_EQ(in.ReadRawInt(), 0x84858687);
    EXPECT_EQ(in.ReadDouble(), -2.5e-3);
    EXPECT_EQ(in.GetBufferAddress(), bytes.data());
  }
}

// A reader that may see only what it is given: the sanitizers guard both ends.
TEST(BitStream, NothingIsReadOutsideTheBuffer) {
  for (int size = 0; size < 12; ++size) {
    const auto block = std::make_unique<unsigned char[]>(static_cast<std::size_t>(size));
    std::fill_n(block.get(), size, 0xFF);
    for (int start = 0; start <= 8 * size; ++start) {
      for (int count = 0; count <= size + 2; ++count) {
        CBitStreamReader in(static_cast<unsigned>(size), block.get());
        in.SkipBits(start);
        ASSERT_EQ(in.GetBitPos(), start);
        Bytes read(static_cast<std::size_t>(count), 0xAA);
        const bool fits = start + 8 * count <= 8 * size;
        in.ReadBytes(count, read.data());
        EXPECT_EQ(read, Bytes(static_cast<std::size_t>(count), fits ? 0xFF : 0));
        EXPECT_EQ(in.GetBitPos(), fits ? start + 8 * count : start);
        EXPECT_FALSE(in.IsError());
      }
    }
  }
}

TEST(BitStream, TheEnd) {
  const Bytes one = {0xC3};
  CBitStreamReader in = Reader(one);
  EXPECT_TRUE(in.ReadBool());
  EXPECT_EQ(in.ReadRawByte(), 0);
  EXPECT_EQ(in.ReadInt(0), 0u);
  EXPECT_EQ(in.ReadInt(-1), 0u);
  EXPECT_EQ(in.GetBitPos(), 1);
  EXPECT_EQ(in.ReadInt(9), 256u) << "no byte, but the bit behind it";
  EXPECT_EQ(in.GetBitPos(), 2);
  in.SkipBytes(5);
  EXPECT_EQ(in.GetBitPos(), 2);
  in.SkipBits(6);
  EXPECT_TRUE(in.Eof());
  EXPECT_FALSE(in.IsError());
  EXPECT_EQ(in.ReadBit(), 0);
  EXPECT_TRUE(in.IsError());
  EXPECT_TRUE(in.Seek(0));
  EXPECT_EQ(in.ReadInt(8), 0xC3u);
  EXPECT_TRUE(in.IsError()) << "it stays";
  in.SkipBits(-8);
  in.SkipBytes(-1);
  in.ReadBytes(-1, nullptr);
  EXPECT_EQ(in.GetBitPos(), 8);

  CBitStreamReader fresh = Reader(one);
  for (const unsigned place : {1u, 2u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    EXPECT_FALSE(fresh.Seek(place));
    EXPECT_TRUE(fresh.Eof());
    EXPECT_EQ(fresh.GetBitPos(), place > INT_MAX / 8 ? INT_MAX : static_cast<int>(place * 8));
    fresh.SkipBytes(3);
    EXPECT_EQ(fresh.ReadRawInt(), 0u);
    EXPECT_FALSE(fresh.IsError());
  }
  EXPECT_EQ(fresh.ReadBit(), 0);
  EXPECT_TRUE(fresh.IsError());
  EXPECT_TRUE(fresh.Seek(0)) << "a bit position is left";
  EXPECT_EQ(fresh.ReadRawByte(), 0xC3);
  const Bytes zeros(9);
  CBitStreamReader last = Reader(zeros);
  last.Seek(8);
  EXPECT_EQ(last.ReadInt(3), 0u);
  last.Seek(9);
  EXPECT_EQ(last.ReadInt(9), 0u);
  EXPECT_TRUE(last.IsError());
  CBitStreamReader none(9, nullptr);
  EXPECT_TRUE(none.Eof());
}

TEST(BitStream, AWriterTakesItsOwnBytes) {
  for (const int start : {0, 3}) {
    CBitStreamWriter out;
    out.WriteInt(0, start);
    for (unsigned char i = 0; i < 99; ++i) out.WriteRawByte(i);
    Bytes expected = Written(out);
    CBitStreamWriter other(out);
    other.WriteBytes(expected.data(), 90);
    out.WriteBytes(out.GetBufferAddress(), 90);
    EXPECT_EQ(Written(out), Written(other));
  }
}

}  // namespace
