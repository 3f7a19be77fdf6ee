#include "kelp0lang/IniFile.h"

#include <share.h>
#include <tchar.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/LegacyPath.h"
#include "kelp0lang/LegacyText.h"
#include "kelp0lang/LocaleFree.h"
#include "kelp0lang/MeasUnitSystem.h"
#include "kelp0lang/SpecialFolder.h"
#include "kelp0lang/WholeFile.h"

using kelp::WString;

namespace {

using WideText = std::basic_string<WChar>;
using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

constexpr const WChar* kExtension = KTEXT(".ket");
constexpr int kLongBuffer = 20;
constexpr int kDoubleBuffer = 30;
constexpr int kColorBuffer = 255;
constexpr int kTextBuffer = 1023;
// The longest double under "%.6f" has 309 digits, a point, the decimals and a sign.
constexpr int kNumberText = 328;
constexpr const WChar* kDoubleFormat = KTEXT("%.6f");
constexpr const WChar* kBigDoubleFormat = KTEXT("%.9e");
constexpr const WChar* kColorFormat = KTEXT("%4d,%4d,%4d");
// Defaults in feet and cubic feet: round numbers, not the exact ones.
constexpr double kDefaultFeet = 3.0;
constexpr double kDefaultCubicFeet = 50.0;

// A number as it is stored.
struct NumberText {
  template <class... Args>
  explicit NumberText(const WChar* format, Args... args) {
    kelp_snwprintf(text, kNumberText, format, args...);
  }
  WChar text[kNumberText];
};

NumberText DoubleText(double value) {
  return NumberText(value < kelp::kNotSetThreshold ? kDoubleFormat : kBigDoubleFormat, value);
}

int Read(const WString& path, const WChar* section, const WChar* key, const WChar* def,
         WChar* buffer, int size) {
  return static_cast<int>(GetPrivateProfileStringW(
      section, key, def, buffer, static_cast<DWORD>(std::max(size, 0)), path.c_str()));
}

bool Write(const WString& path, const WChar* section, const WChar* key, const WChar* value) {
  return WritePrivateProfileStringW(section, key, value, path.c_str()) == 1;
}

long ReadLong(const WString& path, const WChar* section, const WChar* key, const NumberText& def) {
  WChar text[kLongBuffer];
  Read(path, section, key, def.text, text, kLongBuffer);
  return _wtol(text);
}

WString Lower(WString text) {
  StringToLower(text);
  return text;
}

WString InDataFolder(const WString& name) {
  return Lower(kelp::GetProgramDataFolderPath(name + kExtension));
}

// A path of the network whose folder is out of reach. Its last separator is put back after the
// question.
bool IsOutOfReach(WChar* path) {
  constexpr int kServerBegin = 3;
  if (path[0] != '\\' || path[1] != '\\') return false;
  auto* const last = const_cast<WChar*>(wcsrchr(path, WChar('\\')));
  if (last - path < kServerBegin) return true;
  *last = 0;
  const DWORD attributes = GetFileAttributesW(path);
  *last = '\\';
  return attributes == INVALID_FILE_ATTRIBUTES;
}

// A whole number of the text, and the text behind it.
std::optional<unsigned> TakeComponent(const WChar*& text) {
  while (*text == ' ' || (*text >= '\t' && *text <= '\r')) ++text;
  const bool negative = *text == '-';
  if (negative || *text == '+') ++text;
  if (*text < '0' || *text > '9') return std::nullopt;
  unsigned long long value = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    value = std::min(10 * value + static_cast<unsigned>(*text - '0'), 0x80000000ull);
  }
  return static_cast<unsigned>(negative ? 0 - value : value);
}

// The unit in which the entries of a system that isn't metric are stored.
template <class Unit>
Unit EntryUnit(enumUnitSystem system) {
  return static_cast<Unit>(static_cast<int>(system) == 1 ? 1 : 2);
}

bool IsMetric(enumUnitSystem system) {
  return static_cast<int>(system) == 0;
}

// The file that holds off others who make or convert settings files at the same time.
class ConversionFile {
 public:
  ConversionFile() : m_path(kelp::GetTempFolderPath(KTEXT("$$tempket.ket"))) {
    constexpr int kMostTries = 500;
    constexpr DWORD kPauseMs = 10;
    for (int tries = 0; tries < kMostTries && m_file == nullptr; ++tries) {
      if (tries > 0) Sleep(kPauseMs);
      m_file = _wfsopen(m_path.c_str(), KTEXT("wb"), _SH_DENYRW);
      if (m_file == nullptr && errno != EACCES) break;
    }
  }
  // Not every system lets an open file be deleted, and where one does it must still be held.
  ~ConversionFile() {
    if (m_file == nullptr) return;
    const bool deleted = DeleteFileW(m_path.c_str());
    std::fclose(m_file);
    if (!deleted) DeleteFileW(m_path.c_str());
  }
  ConversionFile(const ConversionFile&) = delete;
  ConversionFile& operator=(const ConversionFile&) = delete;
  bool IsOpen() const { return m_file != nullptr; }

 private:
  const WString m_path;
  std::FILE* m_file = nullptr;
};

constexpr WChar kMark = 0xFEFF;

bool IsUnicode(const std::string& bytes) {
  return bytes.starts_with("\xFF\xFE");
}

std::optional<std::string> ReadBytes(const WString& path, std::size_t most) {
  const Stream file(_wfopen(path.c_str(), KTEXT("rb")), std::fclose);
  if (file == nullptr) return std::nullopt;
  std::string bytes;
  char block[4096];
  while (bytes.size() < most) {
    const std::size_t wanted = std::min(sizeof(block), most - bytes.size());
    const std::size_t count = std::fread(block, 1, wanted, file.get());
    bytes.append(block, count);
    if (count < wanted) break;
  }
  if (std::ferror(file.get()) != 0) return std::nullopt;
  return bytes;
}

// One character of the locale off the bytes; a byte that none begins with becomes the unit of its
// number.
void TakeCharacter(const std::string& bytes, std::size_t& at, WideText& text) {
  constexpr std::size_t kMostBytes = 4;
  const char first = bytes[at];
  if (static_cast<unsigned char>(first) >= 0x80) {
    for (std::size_t size = 1; size <= kMostBytes && at + size <= bytes.size(); ++size) {
      WChar units[kMostBytes + 1];
      const std::size_t count = mbstowcs(units, bytes.substr(at, size).c_str(), std::size(units));
      if (count == static_cast<std::size_t>(-1) || count == 0) continue;
      text.append(units, count);
      at += size;
      return;
    }
  }
  text += static_cast<unsigned char>(first);
  ++at;
}

WideText Converted(const std::string& bytes) {
  WideText text(1, kMark);
  for (std::size_t at = 0; at < bytes.size();) {
    if (bytes[at] == '\n' && text.back() != '\r') text += WChar('\r');
    TakeCharacter(bytes, at, text);
  }
  return text;
}

bool WriteUnits(const WString& path, const WideText& text) {
  std::FILE* const file = path.empty() ? nullptr : _wfopen(path.c_str(), KTEXT("wb"));
  if (file == nullptr) return false;
  const bool written = std::fwrite(text.data(), sizeof(WChar), text.size(), file) == text.size();
  return std::fclose(file) == 0 && written;
}

// Whoever is first makes the file; the others leave it.
void MakeEmpty(const WString& path) {
  const kelp::detail::WholeFile whole(path);
  if (!WriteUnits(whole.WrittenPath(), WideText(1, kMark))) return;
  MoveFileExW(whole.WrittenPath().c_str(), path.c_str(), 0);
}

// Another may have converted the file, and written to it, while this one waited.
void Convert(const WString& path) {
  const ConversionFile held;
  if (!held.IsOpen()) return;
  const std::optional<std::string> bytes = ReadBytes(path, std::string::npos);
  if (!bytes || IsUnicode(*bytes)) return;
  kelp::detail::WholeFile whole(path);
  if (WriteUnits(whole.WrittenPath(), Converted(*bytes))) whole.Commit();
}

bool IsMissing(const WString& path) {
  if (GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return false;
  return GetLastError() == ERROR_FILE_NOT_FOUND;
}

}  // namespace

CIniFile::CIniFile() {
  if (!s_sDefaultIniFileName.empty()) {
    m_sPath = s_sDefaultIniFileName;
    return;
  }
  WChar program[1024] = {};
  GetModuleFileNameW(nullptr, program, 1024);
  WString name(program);
  EstraiIlNomeFile(name);
  s_sDefaultIniFileName = InDataFolder(name);
  m_sPath = s_sDefaultIniFileName;
  CheckFileUnicode();
}

CIniFile::CIniFile(const WChar* name) {
  WString folder(name);
  WString file(name);
  EstraiIlPathFile(folder);
  EstraiIlNomeFile(file);
  m_sPath = folder.empty() ? InDataFolder(file) : Lower(folder.Concat(file) + kExtension);
  CheckFileUnicode();
}

CIniFile::~CIniFile() = default;

bool CIniFile::GetBool(const WChar* section, const WChar* key, bool def) const {
  return GetPrivateProfileIntW(section, key, def ? 1 : 0, m_sPath.c_str()) != 0;
}

short CIniFile::GetShort(const WChar* section, const WChar* key, short def) const {
  return static_cast<short>(GetPrivateProfileIntW(section, key, def, m_sPath.c_str()));
}

long CIniFile::GetLong(const WChar* section, const WChar* key, long def) const {
  return ReadLong(m_sPath, section, key, NumberText(KTEXT("%ld"), def));
}

unsigned long CIniFile::GetDWORD(const WChar* section, const WChar* key, unsigned long def) const {
  return static_cast<unsigned int>(ReadLong(m_sPath, section, key, NumberText(KTEXT("%lu"), def)));
}

unsigned int CIniFile::GetUINT32(const WChar* section, const WChar* key, unsigned int def) const {
  return static_cast<unsigned int>(GetDWORD(section, key, def));
}

double CIniFile::GetDouble(const WChar* section, const WChar* key, double def) const {
  WChar text[kDoubleBuffer];
  Read(m_sPath, section, key, DoubleText(def).text, text, kDoubleBuffer);
  return kelp_wtof(text);
}

double CIniFile::GetDistMM(const WChar* section, const WChar* key, double def) const {
  return GetDouble(section, key, def);
}

double CIniFile::GetDist(const WChar* section, const WChar* key, double def) const {
  enumUnitSystem system;
  const WString entry = GetUnitEntryName(key, system);
  if (IsMetric(system)) return GetDouble(section, entry.c_str(), def);
  return ConvertDist(GetDouble(section, entry.c_str(), def * kDefaultFeet),
                     EntryUnit<enumDistUnits>(system), enumDistUnits{});
}

double CIniFile::GetVol(const WChar* section, const WChar* key, double def) const {
  enumUnitSystem system;
  const WString entry = GetUnitEntryName(key, system);
  if (IsMetric(system)) return GetDouble(section, entry.c_str(), def);
  return ConvertVolume(GetDouble(section, entry.c_str(), def * kDefaultCubicFeet),
                       EntryUnit<enumVolumeUnits>(system), enumVolumeUnits{});
}

long CIniFile::GetColor(const WChar* section, const WChar* key, unsigned char red,
                        unsigned char green, unsigned char blue) const {
  WChar buffer[kColorBuffer];
  Read(m_sPath, section, key, NumberText(kColorFormat, red, green, blue).text, buffer,
       kColorBuffer);
  long color = 0;
  const WChar* text = buffer;
  bool readable = true;
  int shift = 0;
  for (const unsigned char def : {red, green, blue}) {
    std::optional<unsigned> component;
    if (readable) component = TakeComponent(text);
    readable = component && *text == ',';
    if (readable) ++text;
    color |= static_cast<long>(component && *component <= 255 ? *component : def) << shift;
    shift += 8;
  }
  return color;
}

int CIniFile::GetString(const WChar* section, const WChar* key, const WChar* def, WChar* buffer,
                        int size) const {
  const int count = Read(m_sPath, section, key, def, buffer, size);
  const bool checked = count > 0 && section != nullptr && m_sPath == s_sDefaultIniFileName &&
                       _wcsicmp(section, KTEXT("PERSIST")) == 0;
  if (!checked || !IsOutOfReach(buffer)) return count;
  buffer[0] = 0;
  return 0;
}

WString CIniFile::GetString(const WChar* section, const WChar* key, const WChar* def) const {
  WChar buffer[kTextBuffer];
  return GetString(section, key, def, buffer, kTextBuffer) > 0 ? WString(buffer) : WString();
}

WString CIniFile::GetKelpString(const WChar* section, const WChar* key, const WChar* def) const {
  WChar buffer[kTextBuffer];
  return Read(m_sPath, section, key, def, buffer, kTextBuffer) > 0 ? WString(buffer) : WString();
}

void CIniFile::GetLastFile(const WChar* section, const WChar* key1, const WChar* key2,
                           const WChar* key3, const WChar* key4, WChar* buffer, int size) const {
  for (const WChar* const key : {key1, key2, key3, key4}) {
    if (GetString(section, key, KTEXT(""), buffer, size) != 0) return;
  }
}

bool CIniFile::WriteBool(const WChar* section, const WChar* key, bool value) const {
  return Write(m_sPath, section, key, NumberText(KTEXT("%hd"), value).text);
}

bool CIniFile::WriteShort(const WChar* section, const WChar* key, short value) const {
  return Write(m_sPath, section, key, NumberText(KTEXT("%hd"), value).text);
}

bool CIniFile::WriteLong(const WChar* section, const WChar* key, long value) const {
  return Write(m_sPath, section, key, NumberText(KTEXT("%ld"), value).text);
}

bool CIniFile::WriteDWORD(const WChar* section, const WChar* key, unsigned long value) const {
  return Write(m_sPath, section, key, NumberText(KTEXT("%lu"), value).text);
}

bool CIniFile::WriteUINT32(const WChar* section, const WChar* key, unsigned int value) const {
  return WriteDWORD(section, key, value);
}

bool CIniFile::WriteDouble(const WChar* section, const WChar* key, double value) const {
  return Write(m_sPath, section, key, DoubleText(value).text);
}

bool CIniFile::WriteDistMM(const WChar* section, const WChar* key, double value) const {
  return WriteDouble(section, key, value);
}

bool CIniFile::WriteDist(const WChar* section, const WChar* key, double value) const {
  enumUnitSystem system;
  const WString entry = GetUnitEntryName(key, system);
  if (!IsMetric(system)) {
    value = ConvertDist(value, enumDistUnits{}, EntryUnit<enumDistUnits>(system));
  }
  return WriteDouble(section, entry.c_str(), value);
}

bool CIniFile::WriteVol(const WChar* section, const WChar* key, double value) const {
  enumUnitSystem system;
  const WString entry = GetUnitEntryName(key, system);
  if (!IsMetric(system)) {
    value = ConvertVolume(value, enumVolumeUnits{}, EntryUnit<enumVolumeUnits>(system));
  }
  return WriteDouble(section, entry.c_str(), value);
}

bool CIniFile::WriteColor(const WChar* section, const WChar* key, long color) const {
  const auto component = [color](int shift) { return static_cast<int>(color >> shift & 0xFF); };
  return Write(m_sPath, section, key,
               NumberText(kColorFormat, component(0), component(8), component(16)).text);
}

bool CIniFile::WriteString(const WChar* section, const WChar* key, const WChar* value) const {
  return Write(m_sPath, section, key, value);
}

bool CIniFile::WriteString(const WChar* section, const WChar* key, const WString& value) const {
  return Write(m_sPath, section, key, value.c_str());
}

bool CIniFile::Erase(const WChar* section, const WChar* key) const {
  return Write(m_sPath, section, key, nullptr);
}

bool CIniFile::Erase(const WChar* section) const {
  return Write(m_sPath, section, nullptr, nullptr);
}

void CIniFile::CheckFileUnicode() {
  const std::optional<std::string> head = ReadBytes(m_sPath, 2);
  if (head) {
    if (!IsUnicode(*head)) Convert(m_sPath);
  } else if (IsMissing(m_sPath)) {
    MakeEmpty(m_sPath);
  }
}

WString CIniFile::GetUnitEntryName(const WChar* key, enumUnitSystem& system) const {
  system = CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem()->GetUnitSystem();
  return WString(key) + (IsMetric(system) ? KTEXT("_mt") : KTEXT("_in"));
}
