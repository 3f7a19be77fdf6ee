// The bit reader on any bytes beside a model that takes them bit by bit, and the bit writer on what
// the reader gave. The reader's buffer is a block of its own, so that nothing is read outside it.
#include "kelp0lang/BitStream.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using kelp::CBitStreamReader;
using kelp::CBitStreamWriter;
using kelp::String;
using kelp::WString;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// Bits by their place.
class Model {
 public:
  Model(const std::uint8_t* bytes, std::size_t size) : m_bytes(bytes, bytes + size) {}

  bool error = false;
  std::int64_t position = 0;

  std::int64_t Size() const { return static_cast<std::int64_t>(m_bytes.size()) * 8; }
  int Bit() {
    if (position >= Size()) {
      error = true;
      return 0;
    }
    const int bit = m_bytes[static_cast<std::size_t>(position / 8)] >> (7 - position % 8) & 1;
    ++position;
    return bit;
  }
  std::string Bytes(std::int64_t count) {
    std::string bytes(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)), 0);
    if (count < 1 || position + count * 8 > Size()) return bytes;
    for (char& byte : bytes) {
      for (int i = 7; i >= 0; --i) byte = static_cast<char>(byte | Bit() << i);
    }
    return bytes;
  }
  std::uint64_t Number(int size) {
    std::uint64_t number = 0;
    const std::string bytes = Bytes(size);
    for (std::size_t i = bytes.size(); i-- > 0;) {
      number = number << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return number;
  }
  unsigned Int(int bits) {
    if (bits < 1) return 0;
    if (bits >= 32) return static_cast<unsigned>(Number(4));
    auto value = static_cast<unsigned>(Number(bits / 8));
    for (int i = bits / 8 * 8; i < bits; ++i) value |= static_cast<unsigned>(Bit()) << i;
    return value;
  }

 private:
  std::vector<std::uint8_t> m_bytes;
};

void Step(int kind, int argument, CBitStreamReader& in, Model& model, CBitStreamWriter& out) {
  switch (kind) {
    case 0: {
      const int bit = in.ReadBit();
      Require(bit == model.Bit());
      out.WriteBit(static_cast<unsigned char>(bit));
      break;
    }
    case 1: {
      std::string bytes(static_cast<std::size_t>(std::max(argument, 0)), 'Z');
      in.ReadBytes(argument, bytes.data());
      Require(bytes == model.Bytes(argument));
      out.WriteBytes(bytes.data(), argument);
      break;
    }
    case 2: {
      const unsigned short value = in.ReadRawShort();
      Require(value == model.Number(2));
      out.WriteRawShort(value);
      break;
    }
    case 3: {
      const double value = in.ReadDouble();
      const std::uint64_t expected = model.Number(8);
      Require(std::memcmp(&value, &expected, sizeof value) == 0);
      out.WriteRawDouble(value);
      break;
    }
    case 4: {
      const unsigned value = in.ReadInt(argument % 40);
      Require(value == model.Int(argument % 40));
      out.WriteInt(value, argument % 40);
      break;
    }
    case 5: {
      const String text = in.ReadString();
      const std::string expected =
          model.Bytes(model.Bit() != 0 ? static_cast<int>(model.Number(2)) : model.Int(4));
      Require(std::string(text.c_str(), text.length()) == expected);
      WString wide;
      wide.resize(text.Length());
      for (int i = 0; i < text.Length(); ++i) {
        wide.SetChar(i, static_cast<unsigned char>(text.GetChar(i)));
      }
      out.WriteString(wide);
      break;
    }
    case 6: {
      const auto place = static_cast<unsigned>(argument < 0 ? argument * 0x01000000 : argument);
      model.position = std::int64_t{std::min<unsigned>(place, INT_MAX)} * 8;
      Require(in.Seek(place) == (model.position < model.Size()));
      break;
    }
    default: {
      in.SkipBits(argument);
      for (int i = 0; i < argument / 8; ++i) model.Bytes(1);
      for (int i = 0; i < argument % 8; ++i) model.Bit();
    }
  }
  Require(in.GetBitPos() == std::min<std::int64_t>(model.position, INT_MAX));
  Require(in.Eof() == (model.position >= model.Size()));
  Require(in.IsError() == model.error);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // The first 32 bytes are steps and their arguments, the rest is the buffer.
  constexpr std::size_t kSteps = 16;
  if (size < 2 * kSteps) return 0;
  const std::vector<std::uint8_t> buffer(data + 2 * kSteps, data + size);
  CBitStreamReader in(static_cast<unsigned>(buffer.size()), buffer.data());
  Model model(buffer.data(), buffer.size());
  CBitStreamWriter out;
  bool isStraight = true;  // all that was read was written again
  for (std::size_t i = 0; i < kSteps; ++i) {
    const int kind = data[2 * i] % 8;
    const std::int64_t before = model.position;
    const int written = out.GetBufferSizeInBits();
    Step(kind, static_cast<signed char>(data[2 * i + 1]), in, model, out);
    // A text may be written in another form than it was read from.
    isStraight =
        isStraight && kind < 5 && model.position - before == out.GetBufferSizeInBits() - written;
    if (!isStraight) continue;
    Model again(out.GetBufferAddress(), static_cast<std::size_t>(out.GetBufferSize()));
    Model source(buffer.data(), buffer.size());
    for (std::int64_t bit = 0; bit < model.position; ++bit) Require(again.Bit() == source.Bit());
  }
  return 0;
}
