#include "fieldbook/commands/Settings.h"

#include <windows.h>
// Needs windows.h before it.
#include <shlobj.h>

#include <algorithm>
#include <array>

#include "fieldbook/commands/Commands.h"
#include "fieldbook/commands/SettingsFile.h"
#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/LegacyPath.h"
#include "kelp0lang/SpecialFolder.h"

namespace fieldbook {
namespace {

constexpr const WChar* kDataFolder = KTEXT("fieldbook");
constexpr int kFolderAsItStands = -1;
constexpr const WChar* kFilesSection = KTEXT("Files");
constexpr const WChar* kUnitsKey = KTEXT("Units");

template <class Entry, std::size_t N>
constexpr std::array<const WChar*, N> NamesIn(const Entry (&entries)[N]) {
  std::array<const WChar*, N> names{};
  for (std::size_t i = 0; i < N; ++i) names[i] = entries[i].name;
  return names;
}

// Each in the order of its enumeration.
constexpr auto kDistNames = NamesIn(kLengthUnits);
constexpr auto kFractionNames = NamesIn(kFractions);
constexpr std::array kSystemNames = {KTEXT("metric"), KTEXT("imperial"), KTEXT("us-survey")};
constexpr std::array kAreaNames = {KTEXT("m2"), KTEXT("ft2"), KTEXT("us-ft2"), KTEXT("ft-in2"),
                                   KTEXT("us-ft-in2")};
constexpr std::array kVolumeNames = {KTEXT("m3"),     KTEXT("ft3"),       KTEXT("us-ft3"),
                                     KTEXT("ft-in3"), KTEXT("us-ft-in3"), KTEXT("yd3"),
                                     KTEXT("us-yd3")};
constexpr std::array kSpeedNames = {KTEXT("metric"), KTEXT("imperial")};
constexpr std::array kOrderNames = {KTEXT("east-north"), KTEXT("north-east")};
constexpr std::array kAngleNames = {KTEXT("deg"),       KTEXT("gon"),        KTEXT("dms"),
                                    KTEXT("dms-blank"), KTEXT("dms-packed"), KTEXT("rad"),
                                    KTEXT("mil")};
constexpr std::array kTemperatureNames = {KTEXT("celsius")};
constexpr std::array kPressureNames = {KTEXT("mmhg")};
constexpr std::array kStartNames = {KTEXT("north"), KTEXT("east")};
constexpr std::array kDirectionNames = {KTEXT("clockwise"), KTEXT("counter-clockwise")};
constexpr std::array kDefaultName = {KTEXT("default")};

template <class Names>
constexpr Choices All(const Names& names, int first = 0) {
  return {names.data(), first, static_cast<int>(names.size())};
}

constexpr Choices kTSAngles = {kAngleNames.data(), 0, 5};
constexpr Choices kLatLonAngles = {kAngleNames.data() + 2, 2, 3};  // the forms in parts
constexpr Choices kPressures =
    All(kPressureNames, static_cast<int>(enumPressureUnits::MillimetreOfMercury));
constexpr Choices kDecimals = {nullptr, 0, kMostDecimals + 1};

// For its type alone.
template <class Value>
Value ValueOf(void (CMeasUnitSystem::*set)(Value));

template <auto kGet, auto kSet>
Setting Make(const WChar* key, const WChar* title, const Choices& choices) {
  return {key, title, choices,
          [](const Settings& settings) { return static_cast<int>((settings.units.*kGet)()); },
          [](Settings& settings, int value) {
            (settings.units.*kSet)(static_cast<decltype(ValueOf(kSet))>(value));
          }};
}

Setting MakeUnitSystem() {
  return {KTEXT("unit-system"), KTEXT("unit system"), All(kSystemNames),
          [](const Settings& settings) { return static_cast<int>(settings.units.GetUnitSystem()); },
          [](Settings& settings, int value) {
            settings.units.SetUnitSystem(static_cast<enumUnitSystem>(value), true);
          }};
}

Setting MakeFileUnits() {
  return {KTEXT("file-units"), KTEXT("units of files"), All(kDistNames),
          [](const Settings& settings) { return static_cast<int>(settings.fileUnits); },
          [](Settings& settings, int value) {
            settings.fileUnits = static_cast<enumDisplayDistUnits>(value);
          }};
}

bool IsChoice(const Setting& setting, int value) {
  return value >= setting.choices.first && value < setting.choices.first + setting.choices.count;
}

WString JoinNames(const Choices& choices) {
  WString names;
  for (int i = 0; i < choices.count; ++i) {
    if (i > 0) names += KTEXT(", ");
    names += choices.names[i];
  }
  return names;
}

// The value of this name; one that is no choice where there is none.
int ValueNamed(const WString& name, const Choices& choices) {
  const WChar* const* end = choices.names + choices.count;
  const auto* found =
      std::find_if(choices.names, end, [&name](const WChar* n) { return name.Compare(n) == 0; });
  return choices.first + static_cast<int>(found - choices.names);
}

// A separator at the end would keep the library from making the folder.
WString WithoutSeparatorAtEnd(const WString& folder) {
  WideView view = ViewOf(folder);
  while (view.size() > 1 && (view.back() == KTEXT('/') || view.back() == KTEXT('\\'))) {
    view.remove_suffix(1);
  }
  return ToWString(view);
}

void SetUpFolder(const CommandLine& line) {
  const Argument* given = line.Value(Option::Data);
  if (given != nullptr) {
    const WString folder = WithoutSeparatorAtEnd(given->text);
    kelp::FInitializeSpecialFolder(nullptr, kFolderAsItStands, folder.c_str(), nullptr);
  } else {
    // A new user of Linux may have no such folder yet, and the library makes none.
    WChar made[MAX_PATH];
    SHGetSpecialFolderPathW(nullptr, made, CSIDL_APPDATA, TRUE);
    kelp::FInitializeSpecialFolder(nullptr, CSIDL_APPDATA, kDataFolder, nullptr);
  }
  if (!kelp::GetProgramDataFolderPath(WString()).empty()) return;
  throw Failure({KTEXT("there is no folder for the settings; name one with {1}"),
                 {WString(NameOf(Option::Data)) + KTEXT(" DIR")}});
}

// Every known value goes through a system of defaults, so that what is left there stands for the
// unknown ones. Gives the keys of these.
WString ReplaceUnknown(Settings& settings) {
  Settings known;
  WString unknown;
  for (const Setting& setting : AllSettings()) {
    const int value = setting.get(settings);
    if (IsChoice(setting, value)) {
      setting.set(known, value);
    } else {
      if (!unknown.empty()) unknown += KTEXT(", ");
      unknown += setting.key;
    }
  }
  for (const Setting& setting : AllSettings()) setting.set(settings, setting.get(known));
  return unknown;
}

// What is wrong with the file of the units as a whole. One that isn't there is none.
WString DamageOfUnits() {
  const Argument file =
      ToArgument(kelp::GetProgramDataSupportFolderPath(KTEXT("config_measunit.dat")));
  std::error_code error;
  if (std::filesystem::status(file.path, error).type() == std::filesystem::file_type::not_found) {
    return {};
  }
  std::string bytes;
  try {
    bytes = ReadAll(file);
  } catch (const Failure& failure) {
    return failure.GetMsg();
  }
  constexpr std::size_t kSize = 135;
  constexpr std::string_view kHeader("\x3A\0\1\0\0", 5);
  if (bytes.size() == kSize && bytes.starts_with(kHeader)) return {};
  return NotWhole(Shown(file.text));
}

void ReadUnits(Settings& settings, Console& console) {
  settings.units = *CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem();
  const WString damage = DamageOfUnits();
  if (damage.empty()) return;
  settings.units.CopyFrom(CMeasUnitSystem(), false);
  console.Complain(Message{KTEXT("{1}; the defaults stand for all settings"), {damage}}.Text());
}

void ReadOthers(Settings& settings, Console& console) {
  const SettingsFile file;
  if (!file.Damage().empty()) {
    console.Complain(Message{KTEXT("{1}; the defaults stand for {2}"),
                             {file.Damage(), KTEXT("file-units, tolerance")}}
                         .Text());
  }
  const WString unit = file.ReadText(kFilesSection, kUnitsKey);
  if (unit.empty()) return;
  const Setting fileUnits = MakeFileUnits();
  fileUnits.set(settings, ValueNamed(unit, fileUnits.choices));
}

void SaveUnits(const Settings& settings) {
  const WString folder = kelp::GetProgramDataSupportFolderPath(WString());
  CMeasUnitSystem units = settings.units;
  if (!CheckSeDirExist(folder) || !units.SaveConfig()) FailOnSaving();
}

}  // namespace

const std::vector<Setting>& AllSettings() {
  using System = CMeasUnitSystem;
  static const std::vector<Setting> settings = {
      MakeUnitSystem(),
      MakeFileUnits(),
      Make<&System::GetDistUnits, &System::SetDistUnits>(KTEXT("dist-units"),
                                                         KTEXT("distance units"), All(kDistNames)),
      Make<&System::GetTSDistUnits, &System::SetTSDistUnits>(
          KTEXT("ts-dist-units"), KTEXT("distance units, total station"), All(kDistNames)),
      Make<&System::GetAreaUnits, &System::SetAreaUnits>(KTEXT("area-units"), KTEXT("area units"),
                                                         All(kAreaNames)),
      Make<&System::GetVolumeUnits, &System::SetVolumeUnits>(
          KTEXT("volume-units"), KTEXT("volume units"), All(kVolumeNames)),
      Make<&System::GetSpeedUnits, &System::SetSpeedUnits>(KTEXT("speed-units"),
                                                           KTEXT("speed units"), All(kSpeedNames)),
      Make<&System::GetCoordDisplayMode, &System::SetCoordDisplayMode>(
          KTEXT("coord-display-mode"), KTEXT("order of coordinates"), All(kOrderNames)),
      Make<&System::GetTSAngleUnits, &System::SetTSAngleUnits>(
          KTEXT("ts-angle-units"), KTEXT("angle units, total station"), kTSAngles),
      Make<&System::GetAngleUnits, &System::SetAngleUnits>(KTEXT("angle-units"),
                                                           KTEXT("angle units"), All(kAngleNames)),
      Make<&System::GetLatLonAngleUnits, &System::SetLatLonAngleUnits>(
          KTEXT("lat-lon-angle-units"), KTEXT("latitude and longitude units"), kLatLonAngles),
      Make<&System::GetTemperatureUnits, &System::SetTemperatureUnits>(
          KTEXT("temperature-units"), KTEXT("temperature units"), All(kTemperatureNames)),
      Make<&System::GetPressureUnits, &System::SetPressureUnits>(
          KTEXT("pressure-units"), KTEXT("pressure units"), kPressures),
      Make<&System::GetHorizStartAngle, &System::SetHorizStartAngle>(
          KTEXT("horiz-start-angle"), KTEXT("start of horizontal angles"), All(kStartNames)),
      Make<&System::GetVertAngle, &System::SetVertAngle>(
          KTEXT("vert-angle"), KTEXT("vertical angles"), All(kDefaultName)),
      Make<&System::GetAngleDir, &System::SetAngleDir>(
          KTEXT("angle-dir"), KTEXT("direction of angles"), All(kDirectionNames)),
      Make<&System::GetDateFormatW, &System::SetDateFormat>(
          KTEXT("date-format"), KTEXT("date format"), All(kDefaultName)),
      Make<&System::GetNumDistDec, &System::SetNumDistDec>(
          KTEXT("num-dist-dec"), KTEXT("decimals of distances"), kDecimals),
      Make<&System::GetNumTSDistDec, &System::SetNumTSDistDec>(
          KTEXT("num-ts-dist-dec"), KTEXT("decimals of distances, total station"), kDecimals),
      Make<&System::GetNumAreaDec, &System::SetNumAreaDec>(KTEXT("num-area-dec"),
                                                           KTEXT("decimals of areas"), kDecimals),
      Make<&System::GetNumVolDec, &System::SetNumVolDec>(KTEXT("num-vol-dec"),
                                                         KTEXT("decimals of volumes"), kDecimals),
      Make<&System::GetNumSpeedDec, &System::SetNumSpeedDec>(
          KTEXT("num-speed-dec"), KTEXT("decimals of speeds"), kDecimals),
      Make<&System::GetNumCoordDec, &System::SetNumCoordDec>(
          KTEXT("num-coord-dec"), KTEXT("decimals of coordinates"), kDecimals),
      Make<&System::GetNumQuoteDec, &System::SetNumQuoteDec>(
          KTEXT("num-quote-dec"), KTEXT("decimals of elevations"), kDecimals),
      Make<&System::GetNumTSAngleDec, &System::SetNumTSAngleDec>(
          KTEXT("num-ts-angle-dec"), KTEXT("decimals of angles, total station"), kDecimals),
      Make<&System::GetNumAngleDec, &System::SetNumAngleDec>(
          KTEXT("num-angle-dec"), KTEXT("decimals of angles"), kDecimals),
      Make<&System::GetNumLatLonAngleDec, &System::SetNumLatLonAngleDec>(
          KTEXT("num-lat-lon-angle-dec"), KTEXT("decimals of latitude and longitude"), kDecimals),
      Make<static_cast<enumInchDecPrec (System::*)() const>(&System::GetDistInchDecPrec),
           &System::SetDistInchDecPrec>(KTEXT("dist-inch-dec-prec"),
                                        KTEXT("fraction of an inch, distances"),
                                        All(kFractionNames)),
      Make<&System::GetTSDistInchDecPrec, &System::SetTSDistInchDecPrec>(
          KTEXT("ts-dist-inch-dec-prec"), KTEXT("fraction of an inch, total station"),
          All(kFractionNames)),
      Make<&System::GetAreaInchDecPrec, &System::SetAreaInchDecPrec>(
          KTEXT("area-inch-dec-prec"), KTEXT("fraction of an inch, areas"), All(kFractionNames)),
      Make<&System::GetVolInchDecPrec, &System::SetVolInchDecPrec>(
          KTEXT("vol-inch-dec-prec"), KTEXT("fraction of an inch, volumes"), All(kFractionNames)),
      Make<&System::GetCoordInchDecPrec, &System::SetCoordInchDecPrec>(
          KTEXT("coord-inch-dec-prec"), KTEXT("fraction of an inch, coordinates"),
          All(kFractionNames)),
      Make<&System::GetQuoteInchDecPrec, &System::SetQuoteInchDecPrec>(
          KTEXT("quote-inch-dec-prec"), KTEXT("fraction of an inch, elevations"),
          All(kFractionNames)),
  };
  return settings;
}

const Setting& RequireSetting(const WString& key) {
  WString keys;
  for (const Setting& setting : AllSettings()) {
    if (key.Compare(setting.key) == 0) return setting;
    if (!keys.empty()) keys += KTEXT(", ");
    keys += setting.key;
  }
  throw UsageFailure({KTEXT("there is no setting \"{1}\", only {2}"), {Quoted(key), keys}});
}

int ReadSetting(const Setting& setting, const WString& text) {
  const Choices& choices = setting.choices;
  if (choices.names == nullptr) return ReadDecimals(setting.key, text);
  const int value = ValueNamed(text, choices);
  if (!IsChoice(setting, value)) FailOnChoice(setting.key, text, JoinNames(choices));
  return value;
}

WString SettingText(const Setting& setting, const Settings& settings) {
  const int value = setting.get(settings);
  const bool isWord = setting.choices.names != nullptr && IsChoice(setting, value);
  return isWord ? setting.choices.names[value - setting.choices.first] : WString::ValueOf(value);
}

WString UnknownSettings(const WString& keys) {
  return Message{KTEXT("the settings have values that aren't known; the defaults stand for {1}"),
                 {keys}}
      .Text();
}

Settings OpenSettings(const CommandLine& line, Console& console) {
  SetUpFolder(line);
  Settings settings;
  ReadUnits(settings, console);
  ReadOthers(settings, console);
  const WString unknown = ReplaceUnknown(settings);
  if (!unknown.empty()) console.Complain(UnknownSettings(unknown));
  settings.units.ResetNotify();
  *CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem() = settings.units;
  return settings;
}

void SaveSettings(const Settings& edited, const Settings& before) {
  SaveUnits(edited);
  SettingsFile file;
  const WString text = SettingText(MakeFileUnits(), edited);
  const WString stored = file.ReadText(kFilesSection, kUnitsKey);
  const bool isDefault = edited.fileUnits == Settings().fileUnits && !file.IsBroken();
  if (stored == text || (stored.empty() && isDefault)) return;
  try {
    file.WriteText(kFilesSection, kUnitsKey, text);
  } catch (const Failure&) {
    SaveUnits(before);
    throw;
  }
}

LayoutWishes ChooseLayout(const CommandLine& line, const Settings& settings) {
  LayoutWishes wishes;
  wishes.from = FindChoice(line, Option::From, kLengthUnits);
  wishes.fileUnit = &UnitOf(settings.fileUnits);
  wishes.isEastFirst = settings.units.GetCoordDisplayMode() == enumCoordDisplayMode::EastNorth;
  const Argument* columns = line.Value(Option::Columns);
  if (columns == nullptr) return wishes;
  wishes.columns = ReadColumns(columns->text);
  if (wishes.columns) return wishes;
  throw UsageFailure({KTEXT("{1}: \"{2}\" isn't an order of P, E, N, Z and D with commas between "
                            "them, such as P,E,N,Z,D; P, E and N are needed, - is a field that "
                            "isn't read"),
                      {NameOf(Option::Columns), Quoted(columns->text)}});
}

}  // namespace fieldbook
