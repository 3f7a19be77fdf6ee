// Profile files of any content, in bytes and in UTF-16: what is listed can be read, a key that is
// set reads back, and everything else stays.
#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "tests/TempFolder.h"

namespace {

void Require(bool holds) {
  if (!holds) std::abort();
}

using Names = std::vector<std::u16string>;

class ProfileFile {
 public:
  void Write(const std::string& bytes) const { m_folder.Write("s.ini", bytes); }
  std::string Bytes() const { return m_folder.Read("s.ini"); }
  std::u16string Get(const char16_t* section, const char16_t* key, DWORD size = 8192) const {
    std::u16string buffer(size + 1, u'#');
    const DWORD count =
        GetPrivateProfileStringW(section, key, u"", buffer.data(), size, m_path.c_str());
    Require(count < size || count == 0);
    Require(size == 0 || buffer[count] == 0);
    Require(buffer[size] == u'#');
    return buffer.substr(0, count);
  }
  bool Set(const char16_t* key, const char16_t* value) const {
    return WritePrivateProfileStringW(u"Fuzz", key, value, m_path.c_str()) != 0;
  }
  Names List(const char16_t* section) const {
    Names names;
    std::u16string_view rest;
    const std::u16string list = Get(section, section == nullptr ? u"" : nullptr);
    rest = list;
    while (!rest.empty()) {
      const std::size_t end = std::min(rest.find(u'\0'), rest.size());
      names.emplace_back(rest.substr(0, end));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return names;
  }

 private:
  TempFolder m_folder;
  const std::u16string m_path = m_folder.Wide(u"s.ini");
};

void Check(const std::string& bytes) {
  static const ProfileFile file;
  file.Write(bytes);
  for (const std::u16string& section : file.List(nullptr)) {
    for (const std::u16string& key : file.List(section.c_str())) {
      const std::u16string value = file.Get(section.c_str(), key.c_str());
      Require(value.starts_with(file.Get(section.c_str(), key.c_str(), 3)));
    }
    file.Get(section.c_str(), nullptr, 4);
  }
  const bool had = !file.List(u"Fuzz").empty();
  Require(file.Set(u"Key", u"value"));
  Require(file.Get(u"FUZZ", u"key") == u"value");
  if (had) return;
  Require(file.Bytes().starts_with(bytes.substr(0, bytes.size() / 2 * 2)) ||
          bytes.find("uzz") != bytes.npos || bytes.find("UZZ") != bytes.npos ||
          bytes.find(std::string("z\0z", 3)) != bytes.npos);
  Require(file.Set(u"Key", nullptr));
  Require(file.Get(u"Fuzz", u"Key").empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  Check(bytes);
  Check("\xFF\xFE" + bytes);
  std::string wide = "\xFF\xFE";
  for (const char byte : bytes) (wide += byte) += '\0';
  Check(wide);
  return 0;
}
