// The C runtime's locale objects, and its wide output.
#include <gtest/gtest.h>
#include <tchar.h>
#include <windows.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#ifdef _WIN32
#define WTEXT(text) L##text
static constexpr const char* kGerman = "German_Germany.1252";
#else
#define WTEXT(text) u##text
static constexpr const char* kGerman = "de_DE.UTF-8";
#endif

namespace {

struct FreeLocale {
  void operator()(_locale_t locale) const { _free_locale(locale); }
};
using Locale = std::unique_ptr<std::remove_pointer_t<_locale_t>, FreeLocale>;

TEST(CrtLocale, ReadsNumbersUnderALocaleObject) {
  const Locale c(_create_locale(LC_ALL, "C"));
  const Locale german(_create_locale(LC_NUMERIC, kGerman));
  ASSERT_NE(c, nullptr);
  ASSERT_NE(german, nullptr);
  EXPECT_EQ(_atof_l(" -1.5x", c.get()), -1.5);
  EXPECT_EQ(_atof_l("1,5", c.get()), 1);
  EXPECT_EQ(_wtof_l(WTEXT("2.5e2"), c.get()), 250);
  EXPECT_EQ(_wtof_l(WTEXT(".5\x20AC"), c.get()), 0.5);
  EXPECT_EQ(_wtof_l(WTEXT("x"), c.get()), 0);
  EXPECT_EQ(_atof_l("1,5", german.get()), 1.5);
  EXPECT_EQ(_wtof_l(WTEXT("-2,25e1"), german.get()), -22.5);
  EXPECT_EQ(_wtof_l(WTEXT("1.5"), german.get()), 1);
  EXPECT_STREQ(localeconv()->decimal_point, ".") << "the process keeps its locale";
}

TEST(CrtLocale, CopiesTheCurrentLocaleAndRefusesUnknownNames) {
  ASSERT_NE(setlocale(LC_NUMERIC, kGerman), nullptr);
  const Locale current(_get_current_locale());
  setlocale(LC_NUMERIC, "C");
  ASSERT_NE(current, nullptr);
  EXPECT_EQ(_atof_l("1,5", current.get()), 1.5);
  EXPECT_EQ(_create_locale(LC_ALL, "no_such_locale"), nullptr);
  _free_locale(nullptr);
}

// A file of its own in text mode, where wide output is converted; binary streams on Windows take
// the units as they are.
class TextFile {
 public:
  TextFile()
      : m_path(std::filesystem::temp_directory_path() /
               ("crt_stream_" + std::to_string(std::random_device()()) + ".txt")),
        m_file(fopen(m_path.string().c_str(), "w+")) {}
  ~TextFile() {
    if (m_file != nullptr) fclose(m_file);
    std::filesystem::remove(m_path);
  }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  FILE* Get() const { return m_file; }

 private:
  std::filesystem::path m_path;
  FILE* m_file;
};

TEST(CrtStream, WritesWideTextAsBytesOfTheLocale) {
  const TextFile file;
  ASSERT_NE(file.Get(), nullptr);
  _lock_file(file.Get());
  EXPECT_NE(fputws(WTEXT("a\x00E0"), file.Get()), static_cast<int>(WEOF));
  _unlock_file(file.Get());
  EXPECT_EQ(fputwc(WCHAR{0}, file.Get()), 0);
  EXPECT_EQ(fputwc(WTEXT('z'), file.Get()), wint_t{'z'});
  errno = 0;
  EXPECT_EQ(static_cast<wint_t>(fputws(WTEXT("\x20AC"), file.Get())), static_cast<wint_t>(WEOF));
  EXPECT_EQ(errno, EILSEQ);

  rewind(file.Get());
  char bytes[8] = {};
  EXPECT_EQ(fread(bytes, 1, sizeof(bytes), file.Get()), 4u);
  EXPECT_EQ(std::string(bytes, 4), std::string("a\xE0\0z", 4));
}

}  // namespace
