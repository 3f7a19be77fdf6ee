#include "fieldbook/commands/SettingsFile.h"

#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/IniFile.h"
#include "kelp0lang/LegacyPath.h"
#include "kelp0lang/SpecialFolder.h"

namespace fieldbook {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kUtf16Mark = "\xFF\xFE";

// The units of a settings file: of UTF-16, or of one with 8 bits, which the library converts.
std::basic_string<WChar> UnitsOf(std::string_view bytes) {
  const bool isWide = bytes.starts_with(kUtf16Mark);
  if (isWide) bytes.remove_prefix(kUtf16Mark.size());
  const std::size_t size = isWide ? 2 : 1;
  std::basic_string<WChar> units;
  for (std::size_t at = 0; at + size <= bytes.size(); at += size) {
    unsigned unit = static_cast<unsigned char>(bytes[at]);
    if (isWide) unit += 256U * static_cast<unsigned char>(bytes[at + 1]);
    units += static_cast<WChar>(unit);
  }
  return units;
}

bool IsLineOfProfile(WideView line) {
  line = Trimmed(line);
  if (line.empty() || line.front() == KTEXT(';')) return true;
  if (line.front() == KTEXT('[')) return line.back() == KTEXT(']');
  return line.find(KTEXT('=')) != WideView::npos;
}

// A file that was cut has no bytes, half a unit, half a line or no line end; the last can't be let
// pass, since "us-ft" may have been "us-ft-in".
bool IsWholeProfile(std::string_view bytes) {
  if (bytes.empty()) return false;
  if (bytes.starts_with(kUtf16Mark) && bytes.size() % 2 != 0) return false;
  const std::basic_string<WChar> units = UnitsOf(bytes);
  WideView rest = units;
  if (rest.find(WChar{0}) != WideView::npos) return false;
  while (!rest.empty()) {
    const std::size_t end = rest.find(KTEXT('\n'));
    if (end == WideView::npos || !IsLineOfProfile(rest.substr(0, end))) return false;
    rest.remove_prefix(end + 1);
  }
  return true;
}

// The text of a unit-aware entry, for a look at what it holds.
class UnitEntries : public CIniFile {
 public:
  using CIniFile::CIniFile;
  WString TextOf(const WChar* section, const WChar* key) const {
    enumUnitSystem ignored;
    return GetKelpString(section, GetUnitEntryName(key, ignored).c_str(), KTEXT(""));
  }
};

}  // namespace

void FailOnSaving() {
  throw Failure({KTEXT("the settings can't be saved in {1}"),
                 {Shown(SystemPath(kelp::GetProgramDataSupportFolderPath(WString())))}});
}

WString NotWhole(const WString& shownPath) {
  return Message{KTEXT("{1} isn't a whole settings file"), {shownPath}}.Text();
}

Argument ToArgument(const WString& libraryPath) {
  const WString path = SystemPath(libraryPath);
  return {path, fs::path(path.c_str())};
}

SettingsFile::SettingsFile()
    : m_path(kelp::GetProgramDataSupportFolderPath(KTEXT("fieldbook.ket"))),
      m_file(ToArgument(m_path)) {
  std::error_code error;
  m_isThere = fs::status(m_file.path, error).type() != fs::file_type::not_found;
  if (!m_isThere) return;
  try {
    m_isBroken = !IsWholeProfile(ReadAll(m_file));
    if (m_isBroken) m_damage = NotWhole(Shown(m_file.text));
  } catch (const Failure& failure) {
    m_damage = failure.GetMsg();
  }
}

bool SettingsFile::IsReadable() const {
  return m_isThere && m_damage.empty();
}

WString SettingsFile::ReadText(const WChar* section, const WChar* key) const {
  return IsReadable() ? CIniFile(m_path.c_str()).GetKelpString(section, key, KTEXT("")) : WString();
}

Reading SettingsFile::ReadLength(const WChar* section, const WChar* key, double preset) const {
  if (!IsReadable()) return {DefaultValueDist(preset), {}};
  const UnitEntries entries(m_path.c_str());
  const WString text = entries.TextOf(section, key);
  if (text.empty()) return {DefaultValueDist(preset), {}};
  const Reading number = ReadNumber(text, DecimalMark::Point);
  if (number.fault || number.value < 0) return {DefaultValueDist(preset), NotANumber()};
  return {entries.GetDist(section, key, preset), {}};
}

void SettingsFile::WriteText(const WChar* section, const WChar* key, const WString& text) {
  Prepare();
  if (!CIniFile(m_path.c_str()).WriteString(section, key, text)) FailOnSaving();
  m_isThere = true;
}

void SettingsFile::WriteLength(const WChar* section, const WChar* key, double metres) {
  Prepare();
  if (!CIniFile(m_path.c_str()).WriteDist(section, key, metres)) FailOnSaving();
  m_isThere = true;
}

void SettingsFile::Prepare() {
  if (!CheckSeDirExist(kelp::GetProgramDataSupportFolderPath(WString()))) FailOnSaving();
  if (!m_isBroken) return;
  fs::path aside = m_file.path;
  aside += ".bak";
  std::error_code error;
  fs::rename(m_file.path, aside, error);
  if (error) FailOnSaving();
  m_isBroken = false;
  m_damage = WString();
}

}  // namespace fieldbook
