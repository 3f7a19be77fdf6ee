#include "kelp0lang/BitStream.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <functional>
#include <limits>

#include "kelp0lang/FileStream.h"
#include "kelptext/Compiler.h"

namespace kelp {
namespace {

using Byte = unsigned char;

constexpr std::size_t kFirstRoom = 100;
constexpr int kShortText = 16;  // texts from here on have a count of 16 bits
constexpr int kLongestText = 65535;
constexpr int kWord = 8;

// The byte with its bits in the reverse order.
constexpr std::array<Byte, 256> kReversed = [] {
  std::array<Byte, 256> reversed{};
  for (int byte = 0; byte < 256; ++byte) {
    for (int bit = 0; bit < 8; ++bit) {
      if ((byte >> bit & 1) != 0) reversed[byte] |= static_cast<Byte>(0x80 >> bit);
    }
  }
  return reversed;
}();

int ToInt(std::int64_t value) noexcept {
  return static_cast<int>(std::min<std::int64_t>(value, INT_MAX));
}

std::uint64_t Word(const Byte* bytes) noexcept {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// Between the order of the machine and that with the first byte on top.
std::uint64_t BigEndian(std::uint64_t word) noexcept {
  return detail::ReversedBytes(detail::LittleEndian(word));
}

constexpr std::uint64_t InEachByte(unsigned bits) noexcept {
  return 0x0101010101010101u * (bits & 0xFF);
}

// count bytes, each of the low 8 - shift bits of a byte of the source and the high shift bits of
// the next; so it reads count + 1 bytes. Eight bytes go at a time, side by side in a word, whatever
// their order in it.
void ShiftBytes(const Byte* source, Byte* target, std::size_t count, int shift) noexcept {
  const std::uint64_t high = InEachByte(0xFFu << shift);
  const std::uint64_t low = InEachByte(0xFFu >> (8 - shift));
  std::size_t i = 0;
  for (; i + 8 <= count; i += 8) {
    const std::uint64_t word =
        (Word(source + i) << shift & high) | (Word(source + i + 1) >> (8 - shift) & low);
    std::memcpy(target + i, &word, sizeof word);
  }
  for (; i < count; ++i) {
    target[i] = static_cast<Byte>(source[i] << shift | source[i + 1] >> (8 - shift));
  }
}

}  // namespace

CBitStreamReader::CBitStreamReader(unsigned size, const unsigned char* buffer) noexcept
    : m_buffer(buffer), m_size(buffer == nullptr ? 0 : ToInt(size)) {}

int CBitStreamReader::BytesLeft() const noexcept {
  return m_size - std::min(m_size, m_bytePosition) - (m_bitPosition != 0 && !Eof() ? 1 : 0);
}

void CBitStreamReader::ReadBytes(int count, void* out) noexcept {
  if (count < 1) return;
  const auto size = static_cast<std::size_t>(count);
  if (count > BytesLeft()) {
    std::memset(out, 0, size);
    return;
  }
  const Byte* const source = m_buffer + m_bytePosition;
  if (m_bitPosition == 0) {
    std::memcpy(out, source, size);
  } else {
    ShiftBytes(source, static_cast<Byte*>(out), size, m_bitPosition);
  }
  m_bytePosition += count;
}

template <class T>
T CBitStreamReader::ReadNumber() noexcept {
  T value;
  ReadBytes(sizeof value, &value);
  return detail::LittleEndian(value);
}

unsigned char CBitStreamReader::ReadRawByte() noexcept {
  return ReadNumber<unsigned char>();
}
unsigned short CBitStreamReader::ReadRawShort() noexcept {
  return ReadNumber<unsigned short>();
}
unsigned CBitStreamReader::ReadRawInt() noexcept {
  return ReadNumber<unsigned>();
}
double CBitStreamReader::ReadDouble() noexcept {
  return ReadNumber<double>();
}

unsigned CBitStreamReader::ReadInt(int bits) noexcept {
  if (bits < 1) return 0;
  if (bits >= 32) return ReadRawInt();
  return m_size - m_bytePosition >= kWord ? ReadIntOfWord(bits) : ReadIntByParts(bits);
}

// All bits of an integer stand in the eight bytes from here on.
unsigned CBitStreamReader::ReadIntOfWord(int bits) noexcept {
  const std::uint64_t fromTop = BigEndian(Word(m_buffer + m_bytePosition)) << m_bitPosition;
  const int wholeBits = bits & ~7;
  const auto lowFirst = static_cast<unsigned>(detail::ReversedBytes(fromTop));
  const Byte rest = kReversed[fromTop << wholeBits >> 56];
  const int end = m_bitPosition + bits;
  m_bytePosition += end >> 3;
  m_bitPosition = end & 7;
  const unsigned value = (lowFirst & ((1u << wholeBits) - 1)) | unsigned{rest} << wholeBits;
  return value & ((1u << bits) - 1);
}

unsigned CBitStreamReader::ReadIntByParts(int bits) noexcept {
  unsigned value = 0;
  ReadBytes(bits / 8, &value);
  value = detail::LittleEndian(value);
  for (int i = bits & ~7; i < bits; ++i) value |= static_cast<unsigned>(ReadBit()) << i;
  return value;
}

String CBitStreamReader::ReadString() {
  const int count = ReadBool() ? ReadRawShort() : static_cast<int>(ReadInt(4));
  String text;
  if (count > 0) ReadBytes(count, text.GetBufferSetLength(count));
  return text;
}

bool CBitStreamReader::Seek(unsigned bytePosition) noexcept {
  m_bytePosition = ToInt(bytePosition);
  m_bitPosition = 0;
  return !Eof();
}

void CBitStreamReader::SkipBits(int count) noexcept {
  if (count < 1) return;
  SkipBytes(count / 8);
  for (int i = 0; i < count % 8; ++i) ReadBit();
}

void CBitStreamReader::SkipBytes(int count) noexcept {
  m_bytePosition += std::clamp(count, 0, BytesLeft());
}

int CBitStreamReader::GetBitPos() const noexcept {
  return ToInt(std::int64_t{m_bytePosition} * 8 + m_bitPosition);
}

CBitStreamWriter::CBitStreamWriter() {
  m_buffer.reserve(kFirstRoom);
  m_buffer.push_back(0);
}

void CBitStreamWriter::PutByte(unsigned char byte) {
  m_buffer.back() |= static_cast<Byte>(byte >> m_bitPosition);
  m_buffer.push_back(static_cast<Byte>(byte << (8 - m_bitPosition)));
}

void CBitStreamWriter::WriteBytes(const void* data, int count) {
  if (count < 1) return;
  const auto* source = static_cast<const Byte*>(data);
  const auto size = static_cast<std::size_t>(count);
  const std::size_t last = m_buffer.size() - 1;
  // Growing moves the buffer, and with it data that lie in there.
  const bool isOwn = !std::less<>()(source, m_buffer.data()) &&
                     std::less<>()(source, m_buffer.data() + m_buffer.size());
  const std::vector<Byte> copy(source, isOwn ? source + size : source);
  if (isOwn) source = copy.data();

  if (m_bitPosition == 0) {
    m_buffer.insert(m_buffer.end() - 1, source, source + size);
    return;
  }
  m_buffer.resize(last + 1 + size);
  Byte* const target = m_buffer.data() + last;
  *target |= static_cast<Byte>(*source >> m_bitPosition);
  ShiftBytes(source, target + 1, size - 1, 8 - m_bitPosition);
  target[size] = static_cast<Byte>(source[size - 1] << (8 - m_bitPosition));
}

template <class T>
void CBitStreamWriter::WriteNumber(T value) {
  const T stored = detail::LittleEndian(value);
  WriteBytes(&stored, sizeof stored);
}

void CBitStreamWriter::WriteRawByte(unsigned char value) {
  PutByte(value);
}
void CBitStreamWriter::WriteRawShort(unsigned short value) {
  WriteNumber(value);
}
void CBitStreamWriter::WriteRawInt(unsigned value) {
  WriteNumber(value);
}
void CBitStreamWriter::WriteRawDouble(double value) {
  WriteNumber(value);
}

void CBitStreamWriter::WriteInt(unsigned value, int bits) {
  if (bits < 1) return;
  const int wholeBytes = bits < 32 ? bits / 8 : 4;
  for (int i = 0; i < wholeBytes; ++i, value >>= 8) PutByte(static_cast<Byte>(value));
  const int rest = bits < 32 ? bits % 8 : 0;
  if (rest == 0) return;
  // The lowest bit first, from the top of a byte on.
  const Byte first = kReversed[value & ((1u << rest) - 1)];
  m_buffer.back() |= static_cast<Byte>(first >> m_bitPosition);
  const int room = 8 - m_bitPosition;
  m_bitPosition += rest;
  if (rest < room) return;
  AddNewByteInBuffer();
  m_bitPosition = rest - room;
  m_buffer.back() = static_cast<Byte>(first << room);
}

void CBitStreamWriter::WriteString(const WString& text) {
  const int count = std::min(text.Length(), kLongestText);
  const bool isLong = count >= kShortText;
  WriteBit(isLong ? 1 : 0);
  if (isLong) {
    WriteRawShort(static_cast<unsigned short>(count));
  } else {
    WriteInt(static_cast<unsigned>(count), 4);
  }
  for (int i = 0; i < count; ++i) {
    const WChar unit = text.GetChar(i);
    PutByte(unit > 0xFF ? Byte{'?'} : static_cast<Byte>(unit));
  }
}

int CBitStreamWriter::GetBufferSize() const noexcept {
  return ToInt(static_cast<std::int64_t>(m_buffer.size()) - (m_bitPosition == 0 ? 1 : 0));
}

int CBitStreamWriter::GetBufferSizeInBits() const noexcept {
  return ToInt(m_bitPosition + (static_cast<std::int64_t>(m_buffer.size()) - 1) * 8);
}

}  // namespace kelp
