#include "kelp0lang/IniFile.h"

#include <windows.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/SpecialFolder.h"
#include "tests/MeasureTestFolders.h"
#include "tests/TestText.h"
#include "tests/winapi/UnderWine.h"

using kelp::WString;

namespace {

namespace fs = std::filesystem;

constexpr const WChar* kSection = KTEXT("S");

std::string Utf16(const std::string& text) {
  std::string bytes = "\xFF\xFE";
  for (const char byte : text) (bytes += byte) += '\0';
  return bytes;
}

// What a protected part of the class says.
class OpenIniFile : public CIniFile {
 public:
  using CIniFile::CIniFile;
  using CIniFile::GetUnitEntryName;
};

class IniFile : public testing::Test {
 protected:
  IniFile() : m_ini(m_folder.Wide(KTEXT("My.Settings.ini")).c_str()) {}
  ~IniFile() override { SetSystem(enumUnitSystem::Metric); }

  static void SetSystem(enumUnitSystem system) {
    CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem()->SetUnitSystem(system, true);
  }
  WString Stored(const WChar* key) const { return m_ini.GetKelpString(kSection, key, KTEXT("-")); }
  void Store(const WChar* key, const WChar* text) const {
    ASSERT_TRUE(m_ini.WriteString(kSection, key, text));
  }
  WString PathOf(const WChar* name) const { return m_folder.Wide(name).c_str(); }

  const TempFolder m_folder;
  const OpenIniFile m_ini;
};

TEST_F(IniFile, TheNameGivesThePathAndAnEmptyUnicodeFile) {
  const WString path = m_ini.GetIniFilePath();
  EXPECT_TRUE(path.EndsWith(KTEXT("my.settings.ket")));
  EXPECT_EQ(m_folder.Read("my.settings.ket"), "\xFF\xFE");
  EXPECT_EQ(CIniFile(m_ini).GetIniFilePath(), path);

  const CIniFile plain(KTEXT("Plain"));
  EXPECT_TRUE(plain.GetIniFilePath().EndsWith(KTEXT("/plain.ket")));
  EXPECT_TRUE(fs::exists(Folders().Path() / "data" / "plain.ket"));
}

TEST_F(IniFile, ValuesAreStoredAsTexts) {
  constexpr double kNone = 1.7e200;
  EXPECT_TRUE(m_ini.WriteBool(kSection, KTEXT("bool"), true));
  EXPECT_TRUE(m_ini.WriteShort(kSection, KTEXT("short"), -32768));
  EXPECT_TRUE(m_ini.WriteLong(kSection, KTEXT("long"), -2147483647L - 1));
  EXPECT_TRUE(m_ini.WriteDWORD(kSection, KTEXT("dword"), 4294967295UL));
  EXPECT_TRUE(m_ini.WriteUINT32(kSection, KTEXT("uint"), 7));
  EXPECT_TRUE(m_ini.WriteDouble(kSection, KTEXT("double"), 1.5));
  EXPECT_TRUE(m_ini.WriteDistMM(kSection, KTEXT("mm"), -0.0000004));
  EXPECT_TRUE(m_ini.WriteDouble(kSection, KTEXT("none"), kNone));
  EXPECT_TRUE(m_ini.WriteDouble(kSection, KTEXT("limit"), 8.5e199));
  EXPECT_TRUE(m_ini.WriteDouble(kSection, KTEXT("nan"), std::nan("")));
  EXPECT_TRUE(m_ini.WriteDouble(kSection, KTEXT("low"), -kNone));
  EXPECT_TRUE(m_ini.WriteDouble(kSection, KTEXT("least"), std::numeric_limits<double>::lowest()));
  EXPECT_TRUE(m_ini.WriteColor(kSection, KTEXT("color"), 0x7FFF1401));
  EXPECT_TRUE(m_ini.WriteString(kSection, KTEXT("text"), WString(KTEXT("\x4E2D=;"))));
  const std::pair<const WChar*, const WChar*> kStored[] = {
      {KTEXT("bool"), KTEXT("1")},
      {KTEXT("short"), KTEXT("-32768")},
      {KTEXT("long"), KTEXT("-2147483648")},
      {KTEXT("dword"), KTEXT("4294967295")},
      {KTEXT("uint"), KTEXT("7")},
      {KTEXT("double"), KTEXT("1.500000")},
      {KTEXT("mm"), KTEXT("-0.000000")},
      {KTEXT("none"), KTEXT("1.700000000e+200")},
      {KTEXT("limit"), KTEXT("8.500000000e+199")},
      {KTEXT("nan"), KTEXT("nan")},
      {KTEXT("color"), KTEXT("1,  20, 255")},
      {KTEXT("text"), KTEXT("\x4E2D=;")},
  };
  for (const auto& [key, text] : kStored) EXPECT_EQ(Stored(key), WString(text));
  EXPECT_EQ(Stored(KTEXT("low")).Length(), 209);
  EXPECT_EQ(Stored(KTEXT("least")).Length(), 317);
  EXPECT_EQ(m_ini.GetDouble(kSection, KTEXT("none"), 0), kNone);
  EXPECT_EQ(m_ini.GetColor(kSection, KTEXT("color"), 9, 9, 9), 0xFF1401);
  // Wine takes the blanks off what it writes.
  const std::string file = m_folder.Read("my.settings.ket");
  if (!UnderWine()) {
    EXPECT_NE(file.find(Utf16("=   1,  20").substr(2)), std::string::npos);
  }
}

TEST_F(IniFile, NumbersAreReadWithinTheirLimits) {
  Store(KTEXT("n"), KTEXT("70000"));
  EXPECT_EQ(m_ini.GetShort(kSection, KTEXT("n"), 1), static_cast<short>(70000));
  EXPECT_EQ(m_ini.GetLong(kSection, KTEXT("n"), 1), 70000);
  EXPECT_TRUE(m_ini.GetBool(kSection, KTEXT("n"), false));
  Store(KTEXT("n"), KTEXT("3000000000"));
  EXPECT_EQ(m_ini.GetDWORD(kSection, KTEXT("n"), 1), 2147483647u);
  EXPECT_EQ(m_ini.GetUINT32(kSection, KTEXT("n"), 1), 2147483647u);
  Store(KTEXT("n"), KTEXT("00000000000000000001234"));
  EXPECT_EQ(m_ini.GetLong(kSection, KTEXT("n"), 1), 0) << "19 characters are read";
  Store(KTEXT("n"), KTEXT("1234567890123456789012345678901.5"));
  EXPECT_EQ(m_ini.GetDistMM(kSection, KTEXT("n"), 1), 12345678901234567890123456789.0);

  EXPECT_EQ(m_ini.GetShort(kSection, KTEXT("x"), -3), -3);
  EXPECT_EQ(m_ini.GetLong(kSection, KTEXT("x"), -4), -4);
  EXPECT_EQ(m_ini.GetDWORD(kSection, KTEXT("x"), 5), 5u);
  EXPECT_EQ(m_ini.GetDWORD(kSection, KTEXT("x"), 4000000000u), 2147483647u);
  EXPECT_TRUE(m_ini.GetBool(kSection, KTEXT("x"), true));
  EXPECT_FALSE(m_ini.GetBool(kSection, KTEXT("x"), false));
  EXPECT_EQ(m_ini.GetDouble(kSection, KTEXT("x"), 0.12345678), 0.123457) << "as it is stored";
  EXPECT_EQ(m_ini.GetDouble(kSection, KTEXT("x"), 1e40), 1e28) << "29 characters are read";
}

TEST_F(IniFile, MissingComponentsOfAColorAreTheDefaults) {
  const std::pair<const WChar*, long> kCases[] = {
      {KTEXT("300,0,0"), 0x000007}, {KTEXT("1, -1, 255"), 0xFF0801},
      {KTEXT("1,2"), 0x090201},     {KTEXT("12"), 0x09080C},
      {KTEXT("x,1,2"), 0x090807},   {KTEXT("1;2,3"), 0x090801},
      {KTEXT("1 ,2,3"), 0x090801},  {KTEXT("+1,\t2,3x"), 0x030201},
      {KTEXT(""), 0x090807},        {KTEXT("4294967297,255,256"), 0x09FF07}};
  for (const auto& [text, color] : kCases) {
    Store(KTEXT("c"), text);
    EXPECT_EQ(m_ini.GetColor(kSection, KTEXT("c"), 7, 8, 9), color)
        << WString(text).ToUtf8().c_str();
  }
  EXPECT_EQ(m_ini.GetColor(kSection, KTEXT("none"), 7, 8, 9), 0x090807);
}

TEST_F(IniFile, TextsAreCutAndErased) {
  Store(KTEXT("a"), KTEXT("text"));
  Store(KTEXT("b"), std::basic_string<WChar>(3000, KTEXT('x')).c_str());
  WChar buffer[8];
  EXPECT_EQ(m_ini.GetString(kSection, KTEXT("a"), KTEXT("d"), buffer, 3), 2);
  EXPECT_EQ(WString(buffer), WString(KTEXT("te")));
  EXPECT_EQ(m_ini.GetString(kSection, KTEXT("b"), KTEXT("d")).Length(), 1022);
  EXPECT_EQ(m_ini.GetString(kSection, KTEXT("none"), KTEXT("d")), WString(KTEXT("d")));
  EXPECT_TRUE(m_ini.Erase(kSection, KTEXT("A")));
  EXPECT_EQ(Stored(KTEXT("a")), WString(KTEXT("-")));
  EXPECT_EQ(Stored(KTEXT("b")).Length(), 1022);
  EXPECT_TRUE(m_ini.Erase(kSection));
  EXPECT_EQ(Stored(KTEXT("b")), WString(KTEXT("-")));

  Store(KTEXT("k3"), KTEXT("third"));
  m_ini.GetLastFile(kSection, KTEXT("k1"), KTEXT("k2"), KTEXT("k3"), KTEXT("b"), buffer, 8);
  EXPECT_EQ(WString(buffer), WString(KTEXT("third")));
  m_ini.GetLastFile(kSection, KTEXT("k1"), KTEXT("k2"), KTEXT("k4"), KTEXT("b"), buffer, 8);
  EXPECT_EQ(WString(buffer), WString());
}

TEST_F(IniFile, LengthsAndVolumesAreKeptForEachSystem) {
  const struct {
    enumUnitSystem system;
    const WChar* entry;
    enumDistUnits dist;
    enumVolumeUnits volume;
  } kCases[] = {
      {enumUnitSystem::Metric, KTEXT("k_mt"), enumDistUnits{0}, enumVolumeUnits{0}},
      {static_cast<enumUnitSystem>(1), KTEXT("k_in"), enumDistUnits{1}, enumVolumeUnits{1}},
      {static_cast<enumUnitSystem>(2), KTEXT("k_in"), enumDistUnits{2}, enumVolumeUnits{2}},
  };
  for (const auto& c : kCases) {
    SetSystem(c.system);
    m_ini.Erase(kSection);
    enumUnitSystem system{};
    EXPECT_EQ(m_ini.GetUnitEntryName(KTEXT("k"), system), WString(c.entry));
    EXPECT_EQ(system, c.system);
    const bool metric = c.dist == enumDistUnits{0};
    EXPECT_EQ(m_ini.GetDist(kSection, KTEXT("k"), 10),
              ConvertDist(metric ? 10 : 30, c.dist, enumDistUnits{0}));
    EXPECT_EQ(m_ini.GetVol(kSection, KTEXT("k"), 2),
              ConvertVolume(metric ? 2 : 100, c.volume, enumVolumeUnits{0}));
    EXPECT_TRUE(m_ini.WriteDist(kSection, KTEXT("k"), 100));
    EXPECT_NEAR(m_ini.GetDouble(kSection, c.entry, 0), ConvertDist(100, enumDistUnits{0}, c.dist),
                1e-6);
    EXPECT_NEAR(m_ini.GetDist(kSection, KTEXT("k"), 0), 100, 1e-6);
    EXPECT_TRUE(m_ini.WriteVol(kSection, KTEXT("k"), 100));
    EXPECT_NEAR(m_ini.GetDouble(kSection, c.entry, 0),
                ConvertVolume(100, enumVolumeUnits{0}, c.volume), 1e-6);
    EXPECT_NEAR(m_ini.GetVol(kSection, KTEXT("k"), 0), 100, 1e-6);
  }
}

TEST_F(IniFile, ARememberedNetworkPathOutOfReachReadsAsEmpty) {
  const CIniFile own;
  EXPECT_TRUE(own.GetIniFilePath().EndsWith(KTEXT("/files_test.ket")));
  EXPECT_EQ(CIniFile().GetIniFilePath(), own.GetIniFilePath());
  const WString named = own.GetIniFilePath();
  const WChar* const kPath = KTEXT("\\\\no-server-here\\share\\points.csv");
  const auto read = [](const CIniFile& file, const WChar* section, const WChar* text) {
    file.WriteString(section, KTEXT("f"), text);
    return file.GetString(section, KTEXT("f"), KTEXT(""));
  };
  EXPECT_EQ(read(own, KTEXT("persist"), kPath), WString());
  EXPECT_EQ(own.GetKelpString(KTEXT("PERSIST"), KTEXT("f"), KTEXT("")), WString(kPath));
  EXPECT_EQ(read(own, KTEXT("PERSIST"), KTEXT("\\\\x")), WString());
  EXPECT_EQ(read(own, KTEXT("PERSIST"), KTEXT("\\\\\\x")), WString());
  EXPECT_EQ(read(own, KTEXT("PERSIST"), KTEXT("\\x\\none")), WString(KTEXT("\\x\\none")));
  EXPECT_EQ(read(own, KTEXT("Other"), kPath), WString(kPath));
  EXPECT_EQ(read(m_ini, KTEXT("PERSIST"), kPath), WString(kPath));
  WChar folder[MAX_PATH];
  ASSERT_NE(GetFullPathNameW(PathOf(KTEXT("a")).c_str(), MAX_PATH, folder, nullptr), 0u);
  const WString reachable = WString(KTEXT("\\\\?\\")).Concat(WString(folder));
  EXPECT_EQ(read(own, KTEXT("PERSIST"), reachable.c_str()), reachable);
}

TEST_F(IniFile, AnEightBitFileIsConvertedOnceAndLosesNothing) {
  std::string bytes = "[S]\r\na=1\nb=\xE9\x1A\x80\r\n";
  bytes += std::string("\0\xFF", 2);
  m_folder.Write("old.ket", bytes);
  const CIniFile old(PathOf(KTEXT("old")).c_str());
  const std::string converted = m_folder.Read("old.ket");
  EXPECT_EQ(old.GetLong(KTEXT("s"), KTEXT("a"), 0), 1);
  EXPECT_EQ(converted, Utf16(std::string("[S]\r\na=1\r\nb=\xE9\x1A\x80\r\n\0\xFF", 19)));
  const fs::file_time_type written = fs::last_write_time(m_folder.Path() / "old.ket");
  const CIniFile again(PathOf(KTEXT("old")).c_str());
  EXPECT_EQ(fs::last_write_time(m_folder.Path() / "old.ket"), written);

  for (const std::string& text : {std::string(), std::string("\xFF"), std::string("x")}) {
    m_folder.Write("short.ket", text);
    const CIniFile made(PathOf(KTEXT("short")).c_str());
    EXPECT_EQ(m_folder.Read("short.ket"), Utf16(text));
  }
#ifndef _WIN32
  const LocaleScope locale(LC_CTYPE, kGermanLocale);
  if (!locale.Ok()) return;
  m_folder.Write("utf8.ket", "[S]\na=\xE2\x82\xAC\xF0\x9F\x98\x80\xE2\x82\n");
  const CIniFile utf8(PathOf(KTEXT("utf8")).c_str());
  EXPECT_EQ(utf8.GetKelpString(KTEXT("S"), KTEXT("a"), KTEXT("")),
            WString(KTEXT("\x20AC\xD83D\xDE00\xE2\x82")));
  m_folder.Write("end.ket", "[S]\na=\xE2\x82\xAC");
  const CIniFile end(PathOf(KTEXT("end")).c_str());
  EXPECT_EQ(end.GetKelpString(KTEXT("S"), KTEXT("a"), KTEXT("")), WString(KTEXT("\x20AC")));
#endif
}

TEST_F(IniFile, CharactersOfOneByteAreConvertedByTheLocale) {
  const LocaleScope locale(LC_CTYPE, kOneByteLocale);
  if (!locale.Ok()) GTEST_SKIP() << "no locale of one byte";
  m_folder.Write("one.ket", std::string("[S]\na=") + kOneByteEuro + "\nb=" + kOneByteEuro);
  const CIniFile one(PathOf(KTEXT("one")).c_str());
  for (const WChar* const key : {KTEXT("a"), KTEXT("b")}) {
    EXPECT_EQ(one.GetKelpString(kSection, key, KTEXT("")), WString(KTEXT("\x20AC")));
  }
}

// Of another program, and then of one that reads the file and lets nobody replace it.
TEST_F(IniFile, AConversionWaitsForOthers) {
  const WString path = PathOf(KTEXT("old"));
  const WString holders[] = {kelp::GetTempFolderPath(KTEXT("$$tempket.ket")), path + KTEXT(".ket")};
  for (const WString& holder : holders) {
    m_folder.Write("old.ket", "[S]\na=1\n");
    const bool makes = holder == holders[0];
    const HANDLE held =
        makes ? CreateFileW(holder.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr)
              : CreateFileW(holder.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                            0, nullptr);
    ASSERT_NE(held, INVALID_HANDLE_VALUE);
    std::thread others([held] {
      Sleep(50);
      CloseHandle(held);
    });
    const CIniFile old(path.c_str());
    others.join();
    EXPECT_EQ(m_folder.Read("old.ket"), Utf16("[S]\r\na=1\r\n"));
  }
}

// The temporary file can't be opened there.
TEST_F(IniFile, WhatCanNotBeConvertedOrMadeStays) {
  const WString program = kelp::GetProgramFolderPath(WString());
  const WString data = kelp::GetProgramDataFolderPath(WString());
  const WString temp = kelp::GetTempFolderPath(WString());
  kelp::FInitializeSpecialFolder(program.c_str(), -1, data.c_str(), PathOf(KTEXT("none")).c_str());
  m_folder.Write("old.ket", "[S]\na=1\n");
  const CIniFile old(PathOf(KTEXT("old")).c_str());
  kelp::FInitializeSpecialFolder(program.c_str(), -1, data.c_str(), temp.c_str());
  EXPECT_EQ(m_folder.Read("old.ket"), "[S]\na=1\n");
  EXPECT_EQ(old.GetLong(KTEXT("S"), KTEXT("a"), 0), 1);

  const HANDLE held = CreateFileW(PathOf(KTEXT("old.ket")).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  const CIniFile busy(PathOf(KTEXT("old")).c_str());
  CloseHandle(held);
  EXPECT_EQ(m_folder.Read("old.ket"), "[S]\na=1\n");
  const auto files = std::distance(fs::directory_iterator(m_folder.Path()), {});
  EXPECT_EQ(files, 2) << "nothing unfinished beside it";

  const CIniFile nowhere(PathOf(KTEXT("none\\x")).c_str());
  EXPECT_FALSE(fs::exists(m_folder.Path() / "none"));
  EXPECT_FALSE(nowhere.WriteBool(KTEXT("S"), KTEXT("a"), true));
  fs::create_directory(m_folder.Path() / "dir.ket");
  const CIniFile folder(PathOf(KTEXT("dir")).c_str());
  EXPECT_FALSE(folder.WriteBool(KTEXT("S"), KTEXT("a"), true));
  EXPECT_TRUE(folder.GetBool(KTEXT("S"), KTEXT("a"), true));
}

TEST_F(IniFile, SeveralThatMakeOrConvertAFileLoseNothing) {
  if (UnderWine()) GTEST_SKIP() << "Wine empties a settings file before it writes it";
  constexpr int kThreads = 4;
  for (const bool exists : {false, true}) {
    const WString path = PathOf(exists ? KTEXT("conv") : KTEXT("made"));
    if (exists) m_folder.Write("conv.ket", "[S]\nold=1\n");
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&path, i] {
        const CIniFile file(path.c_str());
        EXPECT_TRUE(file.WriteLong(kSection, WString::ValueOf(i).c_str(), i + 1));
      });
    }
    for (std::thread& thread : threads) thread.join();
    const CIniFile file(path.c_str());
    for (int i = 0; i < kThreads; ++i) {
      EXPECT_EQ(file.GetLong(kSection, WString::ValueOf(i).c_str(), 0), i + 1);
    }
    EXPECT_EQ(file.GetLong(kSection, KTEXT("old"), 0), exists ? 1 : 0);
  }
  EXPECT_FALSE(fs::exists(Folders().Path() / "$$tempket.ket"));
}

}  // namespace
