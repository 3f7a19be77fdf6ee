// A folder of a test's own, which goes with its scope.
#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <string>

class TempFolder {
 public:
  TempFolder() : m_path(std::filesystem::temp_directory_path() / NewName()) {
    std::filesystem::create_directories(m_path);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& Path() const { return m_path; }
  // The path of the folder, or of what it holds, as the Windows API takes it.
  std::basic_string<WCHAR> Wide(const WCHAR* relative = nullptr) const {
    const auto path = relative == nullptr ? m_path : m_path / std::basic_string<WCHAR>(relative);
    return path.string<WCHAR>();
  }
  void Write(const std::filesystem::path& name, const std::string& bytes) const {
    std::ofstream(m_path / name, std::ios::binary) << bytes;
  }
  std::string Read(const std::filesystem::path& name) const {
    std::ifstream file(m_path / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  static std::string NewName() {
    std::random_device random;
    return "kelp-test-" + std::to_string(random()) + std::to_string(random());
  }

  std::filesystem::path m_path;
};
