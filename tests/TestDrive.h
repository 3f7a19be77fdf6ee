// Drive D: as an empty folder that goes with its scope.
#pragma once

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>

#include "tests/TempFolder.h"
#include "tests/winapi/UnderWine.h"
#include "tests/winapi/WideText.h"

// Wine doesn't look files up by a drive that a program defines: there D: must be one of its own, as
// test.sh makes it. Where there is none Ok() is false.
class TestDrive {
 public:
  TestDrive() {
    if (!UnderWine()) DefineDosDeviceW(0, WTEXT("D:"), m_folder.Wide().c_str());
    m_ok = GetFileAttributesW(WTEXT("D:\\")) != INVALID_FILE_ATTRIBUTES;
    if (m_ok && UnderWine()) RemoveReport();
  }
  ~TestDrive() {
    if (!UnderWine()) DefineDosDeviceW(DDD_REMOVE_DEFINITION, WTEXT("D:"), nullptr);
    if (m_ok && UnderWine()) RemoveReport();
  }
  TestDrive(const TestDrive&) = delete;
  TestDrive& operator=(const TestDrive&) = delete;

  bool Ok() const { return m_ok; }
  std::string Read(const char* name) const {
    std::ifstream file(Root() / name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::filesystem::path Root() const { return UnderWine() ? "D:\\" : m_folder.Path(); }

 private:
  void RemoveReport() const {
    std::error_code ignored;
    std::filesystem::remove_all(Root() / "profile_times.txt", ignored);
  }

  TempFolder m_folder;
  bool m_ok;
};
