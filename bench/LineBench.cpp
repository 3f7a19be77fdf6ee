// The rows of a text file, beside the C library's wide lines.
#include <tchar.h>

#include <clocale>
#include <cstdio>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>

#include "bench/BenchTable.h"
#include "kelp0lang/LegacyText.h"
#include "kelp0lang/String.h"

namespace bench {
namespace {

constexpr int kRows = 300000;
constexpr int kRowSize = 256;

// Points as a program exports them; place is what the description of every eighth point names.
std::string WriteRows(const std::filesystem::path& path, const char* place) {
  std::ofstream file(path, std::ios::binary);
  for (int i = 0; i < kRows; ++i) {
    file << 'P' << i << ';' << 512345 + i % 997 << ".125;" << 4649776 + i % 991 << ".250;"
         << i % 2000 << ".5;" << (i % 8 == 0 ? place : "spigolo") << '\n';
  }
  return path.string();
}

// Reads the whole file under a locale of characters. read gives the number of rows.
template <class Read>
Measure Reading(const std::string& path, const char* locale, Read read) {
  return [=](benchmark::State& state) {
    const std::string before = std::setlocale(LC_CTYPE, nullptr);
    const bool known = std::setlocale(LC_CTYPE, locale) != nullptr;
    for (auto _ : state) {
      if (known && read(path) == kRows) continue;
      state.SkipWithError("the rows weren't read");
      break;
    }
    std::setlocale(LC_CTYPE, before.c_str());
    state.SetItemsProcessed(state.iterations() * kRows);
  };
}

int OurRows(const std::string& path) {
  const kelp::WString name = kelp::WString::ConvertFromUtf8(path.c_str());
  std::FILE* const file = _wfopen(name.c_str(), KTEXT("rt"));
  if (file == nullptr) return 0;
  WChar row[kRowSize];
  int rows = 0;
  while (_fgettline(row, kRowSize, file) != 0) ++rows;
  std::fclose(file);
  return rows;
}

int TheirRows(const std::string& path) {
  std::FILE* const file = std::fopen(path.c_str(), "r");
  if (file == nullptr) return 0;
  wchar_t row[kRowSize];
  int rows = 0;
  while (std::fgetws(row, kRowSize, file) != nullptr) ++rows;
  std::fclose(file);
  return rows;
}

}  // namespace

void AddLineWorks(const std::filesystem::path& folder) {
  const auto compare = [](const std::string& work, const std::string& path, const char* locale,
                          double asked) {
    Compare(work, Reading(path, locale, OurRows),
            {{"fgetws", asked, Reading(path, locale, TheirRows)}});
  };
  compare("read rows, C locale", WriteRows(folder / "rows.txt", "pozzetto"), "C", 1.0);
  compare("read rows, UTF-8 locale", WriteRows(folder / "accents.txt", "città è più"), "C.UTF-8",
          2.0);
}

}  // namespace bench
