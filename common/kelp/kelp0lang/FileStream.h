// Binary files of this library: a 5-byte header, then numbers and texts in whatever order the
// writer calls; the reader repeats that order.
//
//   kelp::ofpstream out(path, 1909, KTEXT("points"), 0, kelp::kWriteBinary);
//   out << 3 << 12.5 << kelp::WString(KTEXT("P1"));
//   out.Close();
//   if (out.GetState() != kelp::kStreamGood) report(path);
//
//   kelp::ifpstream in(path, kelp::kReadBinary);
//   int count; double height; kelp::WString name;
//   in >> count >> height >> name;
//
// The state is sticky: a stream that isn't good reads and writes nothing more and leaves the
// targets of its reads alone, so a caller goes on and looks at the state once at the end. Nothing
// sets it back; a new stream is the way to try again.
//
// The header: ':' (0 where a writer hasn't finished), text form (0 16-bit, 1 narrow), format level
// 1, and two reserved zeros. On disk, on every machine: numbers are little-endian without padding
// (short 2 bytes, int, unsigned and bool 4, 64-bit numbers and double 8); a text is a signed 4-byte
// count of its characters, then the characters without a terminator, UTF-16 little-endian or narrow
// in the LC_CTYPE locale of the process (ConvertString).
//
// A stream belongs to one thread at a time, and to the modules that share its C runtime. Order and
// sizes of the members are part of the interface: modules hand streams to each other.
#pragma once

#include <tchar.h>

#include <algorithm>
#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <memory>

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

namespace kelp {

class CPtr64Mapper;

// The states of a stream.
inline constexpr int kStreamGood = 0;
inline constexpr int kStreamError = 1;
inline constexpr int kStreamEnd = 2;  // fewer bytes were there than a read asked for

// The bits of a mode. Input, with or without append, reads an existing file; output makes an empty
// one; input and output update an existing one; append and output append, and with input read too.
// Other sets can't be opened. Without the binary bit the file is one of text.
inline constexpr int kStreamInput = 1;
inline constexpr int kStreamOutput = 2;
inline constexpr int kStreamAppend = 8;
inline constexpr int kStreamBinary = 0x20;

// The modes of this library's own files.
inline constexpr int kReadBinary = kStreamInput | kStreamBinary;
inline constexpr int kWriteBinary = kStreamOutput | kStreamBinary;
inline constexpr int kUpdateBinary = kStreamInput | kStreamOutput | kStreamBinary;

// What the streams store as a number; bool is stored as an int.
template <class T>
concept StreamNumber = std::same_as<T, short> || std::same_as<T, int> ||
    std::same_as<T, unsigned int> || std::same_as<T, std::int64_t> || std::same_as<T, double>;

namespace detail {

inline constexpr std::size_t kStreamHeaderSize = 5;
inline constexpr unsigned char kCleanFileMarker = ':';
inline constexpr unsigned char kStreamFormatLevel = 1;
inline constexpr std::size_t kNumbersAtOnce = 32;

// Between the machine's order of bytes and that of the file.
template <class T>
T LittleEndian(T value) noexcept {
  if constexpr (std::endian::native == std::endian::big) {
    auto bytes = std::bit_cast<std::array<unsigned char, sizeof(T)>>(value);
    std::reverse(bytes.begin(), bytes.end());
    value = std::bit_cast<T>(bytes);
  }
  return value;
}

constexpr bool IsBinary(int mode) noexcept {
  return (mode & kStreamBinary) != 0;
}

// The bits that choose how a file is opened.
constexpr int Access(int mode) noexcept {
  return mode & (kStreamInput | kStreamOutput | kStreamAppend);
}

// Every mode but those that append.
constexpr bool OpensAtStart(int mode) noexcept {
  constexpr int kAppends = kStreamOutput | kStreamAppend;
  return (mode & kAppends) != kAppends;
}

// Makes an empty file, also of one that was there.
constexpr bool OpensEmpty(int mode) noexcept {
  return Access(mode) == kStreamOutput;
}

// The mode of the C library; null where the mode bits have none.
inline const WChar* StdioMode(int mode) noexcept {
  const bool binary = IsBinary(mode);
  switch (Access(mode)) {
    case kStreamInput:
    case kStreamInput | kStreamAppend:
      return binary ? KTEXT("rb") : KTEXT("rt");
    case kStreamOutput:
      return binary ? KTEXT("wb") : KTEXT("wt");
    case kStreamInput | kStreamOutput:
      return binary ? KTEXT("r+b") : KTEXT("r+t");
    case kStreamOutput | kStreamAppend:
      return binary ? KTEXT("ab") : KTEXT("at");
    case kStreamInput | kStreamOutput | kStreamAppend:
      return binary ? KTEXT("a+b") : KTEXT("a+t");
    default:
      return nullptr;
  }
}

// What the two streams have in common.
class FileStreamBase {
 public:
  FileStreamBase(const FileStreamBase&) = delete;
  FileStreamBase& operator=(const FileStreamBase&) = delete;

  // kStreamGood, kStreamError or kStreamEnd.
  int GetState() const noexcept { return m_state; }
  // What the writer was made with, or the reader has set.
  short GetVersion() const noexcept { return m_version; }
  const WString& GetName() const noexcept { return m_name; }

  // The position, or -1.
  long Tell() {
    if (!IsUsable()) return -1;
    const long position = std::ftell(m_file);
    if (position >= 0) return position;
    m_state = kStreamError;
    return -1;
  }

  // As fseek; failure is an error.
  void Seek(long offset, int origin) {
    if (IsUsable() && std::fseek(m_file, offset, origin) != 0) m_state = kStreamError;
  }

  // Closes the file if it is open. Data that can't be brought to the disk is an error. Every later
  // use of the stream, but for a second call, is an error.
  void Close() {
    if (m_file == nullptr) return;
    if (std::fclose(m_file) != 0 && m_state == kStreamGood) m_state = kStreamError;
    m_file = nullptr;
  }

 protected:
  FileStreamBase(const WChar* path, int mode, short version, const WString& name)
      : m_version(version), m_name(name) {
    const WChar* stdioMode = StdioMode(mode);
    if (path != nullptr && stdioMode != nullptr) m_file = _wfopen(path, stdioMode);
    if (m_file == nullptr) m_state = kStreamError;
  }
  ~FileStreamBase() { Close(); }

  // True for a good stream with an open file; without one that is an error.
  bool IsUsable() noexcept {
    if (m_file == nullptr && m_state == kStreamGood) m_state = kStreamError;
    return m_state == kStreamGood;
  }

  // Fewer bytes than asked for were transferred.
  void FailTransfer() noexcept { m_state = std::feof(m_file) != 0 ? kStreamEnd : kStreamError; }

  std::FILE* m_file = nullptr;
  int m_state = kStreamGood;
  short m_version;
  WString m_name;
};

}  // namespace detail

class ifpstream : public detail::FileStreamBase {
 public:
  // Opens the file and reads its header; reading goes on behind it whatever it says, and it is the
  // caller who looks at IsMarkerMissing and IsHeaderKnown. A file shorter than the header ends in
  // kStreamEnd.
  ifpstream(const WChar* path, int mode) : FileStreamBase(path, mode, 0, WString()) {
    if (m_state != kStreamGood) return;
    if (!detail::OpensAtStart(mode)) {
      if (Tell() >= static_cast<long>(detail::kStreamHeaderSize)) return;
      Seek(0, SEEK_SET);
    }
    ReadHeader();
    // Bytes that read as text can be fewer than they are in the file.
    if (!detail::IsBinary(mode)) Seek(static_cast<long>(detail::kStreamHeaderSize), SEEK_SET);
    m_path = path;
  }

  // Where a reader keeps the version and the label of what it reads.
  void SetVersion(short version) noexcept { m_version = version; }
  void SetName(const WString& name) { m_name = name; }
  // The file's path, empty where no header was read.
  const WString& GetPath() const noexcept { return m_path; }
  // The file doesn't begin with the marker of a file that was finished.
  bool IsMarkerMissing() const noexcept { return m_markerMissing; }
  // The rest of the header is one that this library writes.
  bool IsHeaderKnown() const noexcept { return m_headerKnown; }
  // 1 where the texts of the file are narrow, else 0.
  int GetNarrowText() const noexcept { return m_narrowText; }

  // Fills the buffer, or leaves it alone where the file has fewer bytes: kStreamEnd at the end of
  // the file, else kStreamError.
  void ReadBytes(void* buffer, std::size_t count) {
    std::array<unsigned char, 64> small;
    if (count <= small.size()) {
      if (Fetch(small.data(), count)) std::copy_n(small.data(), count, Bytes(buffer));
      return;
    }
    const auto large = std::make_unique_for_overwrite<unsigned char[]>(count);
    if (Fetch(large.get(), count)) std::copy_n(large.get(), count, Bytes(buffer));
  }

  template <StreamNumber T>
  ifpstream& operator>>(T& number) {
    T stored;
    if (Fetch(&stored, sizeof stored)) number = detail::LittleEndian(stored);
    return *this;
  }
  // The same for each of several numbers, in fewer calls.
  template <StreamNumber T>
  void ReadNumbers(T* numbers, std::size_t count) {
    std::array<T, detail::kNumbersAtOnce> stored;
    while (count > 0 && IsUsable()) {
      const std::size_t wanted = std::min(count, stored.size());
      const std::size_t got = std::fread(stored.data(), sizeof(T), wanted, m_file);
      numbers =
          std::transform(stored.data(), stored.data() + got, numbers, detail::LittleEndian<T>);
      if (got < wanted) FailTransfer();
      count -= got;
    }
  }
  // Any number but 0 is true.
  ifpstream& operator>>(bool& value) {
    int stored = value;
    *this >> stored;
    value = stored != 0;
    return *this;
  }
  // A count below 1 gives the empty text; one terminator within the count is cut off. A count is
  // not trusted: memory grows only with what the file really holds, and one that goes beyond the
  // end gives kStreamEnd and leaves the text as it was.
  ifpstream& operator>>(WString& text) {
    std::int32_t count = 0;
    if (!(*this >> count).IsUsable()) return *this;
    if (m_narrowText == 0) {
      const WString wide = ReadUnits<WString, WChar>(count);
      if (m_state == kStreamGood) text = wide;
    } else {
      const String narrow = ReadUnits<String, char>(count);
      if (m_state == kStreamGood) text = ConvertString(narrow.c_str(), narrow.Length());
    }
    return *this;
  }

 private:
  static constexpr std::int32_t kPiece = 16384;

  static unsigned char* Bytes(void* buffer) { return static_cast<unsigned char*>(buffer); }

  // False where the bytes didn't come; the target then holds what did.
  bool Fetch(void* target, std::size_t count) {
    if (!IsUsable()) return false;
    if (std::fread(target, 1, count, m_file) < count) FailTransfer();
    return m_state == kStreamGood;
  }

  void ReadHeader() {
    std::array<unsigned char, detail::kStreamHeaderSize> header{};
    if (!Fetch(header.data(), header.size())) return;
    m_markerMissing = header[0] != detail::kCleanFileMarker;
    m_headerKnown = header[1] < 2 && header[2] == detail::kStreamFormatLevel && header[3] == 0 &&
                    header[4] == 0;
    m_narrowText = header[1] == 1 ? 1 : 0;
  }

  // Piece by piece, each no longer than a fixed size or than what has come so far.
  template <class S, class C>
  S ReadUnits(std::int32_t count) {
    S text;
    for (std::int32_t have = 0; have < count;) {
      const std::int32_t piece = std::min(count - have, std::max(have, kPiece));
      C* units = text.GetBufferSetLength(have + piece) + have;
      if (!Fetch(units, static_cast<std::size_t>(piece) * sizeof(C))) return S();
      std::transform(units, units + piece, units, detail::LittleEndian<C>);
      have += piece;
    }
    if (count > 0 && text.GetChar(count - 1) == 0) text.ReleaseBuffer(count - 1);
    return text;
  }

  // Directly behind those of the base.
  WString m_path;
  bool m_markerMissing = false;
  bool m_headerKnown = false;
  int m_narrowText = 0;
};

class ofpstream : public detail::FileStreamBase {
 public:
  // Opens the file and writes the header if it has none. A file of 5 bytes or more keeps its header
  // and its text form, which narrowText isn't compared with, and the position that opening gave.
  // Version and name are kept for the writer and not stored by themselves.
  ofpstream(const WChar* path, short version, WString name, int narrowText, int mode)
      : FileStreamBase(path, mode, version, name), m_narrowText(narrowText) {
    if (m_state != kStreamGood) return;
    if (detail::OpensEmpty(mode)) {
      WriteHeader();
      return;
    }
    const long position = Tell();
    Seek(0, SEEK_END);
    const long size = Tell();
    Seek(0, SEEK_SET);
    if (size < static_cast<long>(detail::kStreamHeaderSize)) {
      WriteHeader();
    } else {
      Seek(position, SEEK_SET);
    }
  }

  void WriteBytes(const void* buffer, std::size_t count) {
    if (IsUsable() && std::fwrite(buffer, 1, count, m_file) < count) FailTransfer();
  }

  template <StreamNumber T>
  ofpstream& operator<<(T number) {
    const T stored = detail::LittleEndian(number);
    WriteBytes(&stored, sizeof stored);
    return *this;
  }
  // The same for each of several numbers, in fewer calls.
  template <StreamNumber T>
  void WriteNumbers(const T* numbers, std::size_t count) {
    std::array<T, detail::kNumbersAtOnce> stored;
    while (count > 0 && IsUsable()) {
      const std::size_t piece = std::min(count, stored.size());
      std::transform(numbers, numbers + piece, stored.data(), detail::LittleEndian<T>);
      WriteBytes(stored.data(), piece * sizeof(T));
      numbers += piece;
      count -= piece;
    }
  }
  ofpstream& operator<<(std::same_as<bool> auto value) { return *this << (value ? 1 : 0); }
  // A narrow text that the locale can't express is stored empty.
  ofpstream& operator<<(const WString& text) {
    if (m_narrowText == 0) return WriteUnits<WChar>(text.c_str(), text.Length());
    const String narrow = ConvertString(text.c_str(), text.Length());
    return WriteUnits<char>(narrow.c_str(), narrow.Length());
  }

 private:
  void WriteHeader() {
    const unsigned char textForm = m_narrowText != 0 ? 1 : 0;
    const std::array<unsigned char, detail::kStreamHeaderSize> header = {
        detail::kCleanFileMarker, textForm, detail::kStreamFormatLevel, 0, 0};
    WriteBytes(header.data(), header.size());
  }

  template <class C>
  ofpstream& WriteUnits(const C* units, int count) {
    *this << count;
    if constexpr (sizeof(C) == 1 || std::endian::native == std::endian::little) {
      WriteBytes(units, static_cast<std::size_t>(count) * sizeof(C));
    } else {
      for (const C* unit = units; unit < units + count; ++unit) {
        const C stored = detail::LittleEndian(*unit);
        WriteBytes(&stored, sizeof stored);
      }
    }
    return *this;
  }

  int m_narrowText;
};

static_assert(sizeof(detail::FileStreamBase) == 24);
static_assert(sizeof(ifpstream) == 40);
static_assert(sizeof(ofpstream) == 32);

// Stores a pointer as the 4-byte number that the mapper gives it, so that files are alike whatever
// the width of a pointer. The mapper isn't null.
KELP0LANG_API void SavePointerToFile(ofpstream& file, std::int64_t pointer, CPtr64Mapper* mapper);
// The stored number, not an address: the reader resolves it through a table of its own. A failed
// read gives 0, which is no pointer's number.
KELP0LANG_API std::int64_t LoadPointerFromFile(ifpstream& file);

}  // namespace kelp
