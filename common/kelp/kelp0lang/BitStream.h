// Compact records: values packed bit by bit, and bytes at any bit position.
//
//   kelp::CBitStreamWriter out;
//   out.WriteBit(1);
//   out.WriteInt(37, 7);
//   out.WriteString(KTEXT("P1"));
//   store(out.GetBufferAddress(), out.GetBufferSize());
//
//   kelp::CBitStreamReader in(size, bytes);
//   bool isFixed = in.ReadBool();
//   unsigned code = in.ReadInt(7);
//   kelp::String name = in.ReadString();
//
// Bits fill each byte from its most significant one down, and so do the bits of a byte that stands
// at a bit position other than 0. Numbers of whole bytes are little-endian. An integer of 1 to 31
// bits is its whole bytes, low ones first, and then its remaining bits one by one, the lowest
// first; of 32 bits or more it is four bytes.
//
// A text is a bit and a count, of 4 bits behind a 0, of 16 behind a 1, and as many bytes: Latin-1.
// A unit above U+00FF is written as '?', and what stands behind the 65535th is cut off. The reader
// gives the bytes as they are.
//
// Threads: one at a time for each object.
#pragma once

#include <climits>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp {

// Reads what the writer wrote. It never reads outside its buffer: a bit behind the end is 0 and
// sets the error, bytes that aren't all there are 0, the position stays, and there is no error.
class KELP0LANG_API CBitStreamReader {
 public:
  // The buffer outlives the reader. A null one counts as empty, and of a larger one than an int
  // counts only that many bytes are read.
  CBitStreamReader(unsigned size, const unsigned char* buffer) noexcept;

  int ReadBit() noexcept {
    if (m_bytePosition >= m_size) {
      m_error = true;
      return 0;
    }
    const int bit = m_buffer[m_bytePosition] >> (7 - m_bitPosition) & 1;
    m_bytePosition += (m_bitPosition + 1) >> 3;
    m_bitPosition = (m_bitPosition + 1) & 7;
    return bit;
  }
  bool ReadBool() noexcept { return ReadBit() != 0; }
  // A count below 1 reads nothing.
  void ReadBytes(int count, void* out) noexcept;
  // Numbers of whole bytes, at any bit.
  unsigned char ReadRawByte() noexcept;
  unsigned short ReadRawShort() noexcept;
  unsigned ReadRawInt() noexcept;
  double ReadDouble() noexcept;
  // Of 0 bits or fewer nothing is read, and the result is 0.
  unsigned ReadInt(int bits) noexcept;
  // The bytes of a text, as they are.
  String ReadString();

  // To the begin of a byte. False for a place outside the buffer, which is kept all the same.
  bool Seek(unsigned bytePosition) noexcept;
  // Forward by reading: whole bytes beyond the end aren't skipped. Below 1 nothing happens.
  void SkipBits(int count) noexcept;
  void SkipBytes(int count) noexcept;

  // In bits, INT_MAX where an int can't hold it.
  int GetBitPos() const noexcept;
  // Whether all bytes have been read.
  bool Eof() const noexcept { return m_bytePosition >= m_size; }
  // A bit behind the end was read; that stays so.
  bool IsError() const noexcept { return m_error; }
  // That of the constructor.
  const unsigned char* GetBufferAddress() const noexcept { return m_buffer; }

 private:
  // Whole bytes in front of the end from the present position on.
  int BytesLeft() const noexcept;
  template <class T>
  T ReadNumber() noexcept;
  unsigned ReadIntOfWord(int bits) noexcept;
  unsigned ReadIntByParts(int bits) noexcept;

  const unsigned char* m_buffer;
  int m_size;
  int m_bytePosition = 0;
  int m_bitPosition = 0;
  bool m_error = false;
};

class KELP0LANG_API CBitStreamWriter {
 public:
  CBitStreamWriter();
  CBitStreamWriter(const CBitStreamWriter&) = default;
  CBitStreamWriter& operator=(const CBitStreamWriter&) = default;

  // Bit 0 of the argument.
  void WriteBit(unsigned char bit) {
    m_buffer.back() |= static_cast<unsigned char>((bit & 1) << (7 - m_bitPosition));
    if (++m_bitPosition == 8) AddNewByteInBuffer();
  }
  // The data may be this writer's own. A count below 1 writes nothing.
  void WriteBytes(const void* data, int count);
  // Numbers of whole bytes, at any bit.
  void WriteRawByte(unsigned char value);
  void WriteRawShort(unsigned short value);
  void WriteRawInt(unsigned value);
  void WriteRawDouble(double value);
  // The low bits of the value. Of 0 bits or fewer nothing is written.
  void WriteInt(unsigned value, int bits);
  // Count and bytes of a text, as told above.
  void WriteString(const WString& text);

  // The bytes so far, the last one filled up with zeros; valid until the next write.
  const unsigned char* GetBufferAddress() const noexcept {
    return m_buffer.empty() ? nullptr : m_buffer.data();
  }
  // Bytes in use, and bits; INT_MAX where an int can't hold it.
  int GetBufferSize() const noexcept;
  int GetBufferSizeInBits() const noexcept;

 private:
  void AddNewByteInBuffer() {
    m_bitPosition = 0;
    m_buffer.push_back(0);
  }
  void PutByte(unsigned char byte);
  template <class T>
  void WriteNumber(T value);

  std::vector<unsigned char> m_buffer;  // the last byte is the one being filled
  int m_bitPosition = 0;
};

}  // namespace kelp
