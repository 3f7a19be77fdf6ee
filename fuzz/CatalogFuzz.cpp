// Translation catalogues of any content, as .po and as .mo. One that loads leaves a table that
// keeps its rules; one that doesn't leaves none, and says why.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "kelp0lang/Translate.h"
#include "sarnutils/Xlate.h"

using kelp::WString;

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

// A file without a disk.
class CatalogueFile {
 public:
  CatalogueFile() : m_file(memfd_create("catalogue", MFD_CLOEXEC)) { Require(m_file >= 0); }
  ~CatalogueFile() { close(m_file); }
  CatalogueFile(const CatalogueFile&) = delete;
  CatalogueFile& operator=(const CatalogueFile&) = delete;

  void Write(std::string_view bytes) const {
    Require(ftruncate(m_file, 0) == 0);
    Require(pwrite(m_file, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
  }
  WString Path() const { return WString(u"/proc/self/fd/").Concat(WString::ValueOf(m_file)); }

 private:
  const int m_file;
};

std::u16string_view Key(const xlate::XlateEntry& entry) {
  return {entry.key, entry.keyLength};
}

// Sorted with the longer of two keys first where one begins with the other.
bool Precedes(const xlate::XlateEntry& a, const xlate::XlateEntry& b) {
  const std::size_t common = std::min(a.keyLength, b.keyLength);
  const int order = Key(a).substr(0, common).compare(Key(b).substr(0, common));
  return order != 0 ? order < 0 : a.keyLength > b.keyLength;
}

void CheckTable() {
  const xlate::CXlateTable& table = *xlate::GetXlateTable();
  for (const xlate::XlateEntry& entry : table) {
    Require(&entry == table.begin() || Precedes((&entry)[-1], entry));
    const std::u16string key(Key(entry));
    kelp::Xlate(key.c_str());
  }
}

// A .mo file of the bytes: three of them say where one is changed and how, in the others lines are
// in turn a key and its text.
std::string AsMo(std::string_view bytes) {
  if (bytes.size() < 3) return std::string();
  const std::size_t place =
      static_cast<unsigned char>(bytes[0]) << 8 | static_cast<unsigned char>(bytes[1]);
  const char change = bytes[2];
  const std::string_view lines = bytes.substr(3);
  std::vector<std::string_view> texts;
  for (std::size_t begin = 0; begin <= lines.size();) {
    const std::size_t end = std::min(lines.find('\n', begin), lines.size());
    texts.push_back(lines.substr(begin, end - begin));
    begin = end + 1;
  }
  const std::size_t count = texts.size() / 2;
  constexpr std::size_t kHeader = 28;

  std::string file;
  const auto put = [&file](std::size_t number) {
    for (int i = 0; i < 4; ++i) file += static_cast<char>(number >> 8 * i);
  };
  for (const std::size_t number : {std::size_t{0x950412DE}, std::size_t{0}, count, kHeader,
                                   kHeader + 8 * count, std::size_t{0}, std::size_t{0}}) {
    put(number);
  }
  std::string content;
  for (const std::size_t side : {0, 1}) {
    for (std::size_t i = 0; i < count; ++i) {
      const std::string_view text = texts[2 * i + side];
      put(text.size());
      put(kHeader + 16 * count + content.size());
      content.append(text) += '\0';
    }
  }
  file += content;
  file[place % file.size()] ^= change;
  return file;
}

void Load(std::string_view bytes) {
  static const CatalogueFile file;
  file.Write(bytes);
  const bool loaded = kelp::LoadTranslateFile(file.Path());
  Require(loaded == kelp::IsTranslateFileLoaded());
  Require(loaded == kelp::GetTranslateFileError().empty());
  Require(loaded || xlate::GetXlateTable()->begin() == xlate::GetXlateTable()->end());
  CheckTable();
  kelp::UnloadTranslateFile();
  Require(kelp::Xlate(u"E@@East (1 char)") == WString(u"E"));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  Load(bytes);
  Load(AsMo(bytes));
  return 0;
}
