// Files of a fuzzer's own, in memory where the machine has a folder for that.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "kelp0lang/String.h"

inline void Require(bool holds) {
  if (!holds) std::abort();
}

class XmlFuzzFiles {
 public:
  XmlFuzzFiles() {
    const std::filesystem::path memory = "/dev/shm";
    const auto root =
        std::filesystem::is_directory(memory) ? memory : std::filesystem::temp_directory_path();
    std::string name = (root / "kelp-fuzz-XXXXXX").string();
    Require(mkdtemp(name.data()) != nullptr);
    m_folder = name;
  }
  ~XmlFuzzFiles() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }
  XmlFuzzFiles(const XmlFuzzFiles&) = delete;
  XmlFuzzFiles& operator=(const XmlFuzzFiles&) = delete;

  std::string Name(std::string_view name) const { return (m_folder / name).string(); }
  kelp::WString Path(std::string_view name) const {
    return kelp::WString::ConvertFromUtf8(Name(name).c_str());
  }
  void Write(std::string_view name, std::string_view bytes) const {
    std::ofstream(Name(name), std::ios::binary) << bytes;
  }
  std::string Read(std::string_view name) const {
    std::ifstream file(Name(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path m_folder;
};
