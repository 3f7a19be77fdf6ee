#include "kelp0lang/MeasUnitSystem.h"

#include <algorithm>
#include <iterator>

#include "kelp0lang/FileStream.h"
#include "kelp0lang/MeasUnitChangeContext.h"
#include "kelp0lang/SpecialFolder.h"
#include "kelp0lang/WholeFile.h"

using kelp::WString;

namespace {

constexpr short kFileVersion = 1702;

template <class E>
std::vector<E> Options(std::initializer_list<int> values) {
  std::vector<E> options;
  options.reserve(values.size());
  for (int value : values) options.push_back(static_cast<E>(value));
  return options;
}

// The choices of a kind under a unit system, by the values of the kind's enumeration.
template <class E>
std::vector<E> OptionsOf(enumUnitSystem system, std::initializer_list<int> metric,
                         std::initializer_list<int> imperial, std::initializer_list<int> usSurvey) {
  switch (system) {
    case enumUnitSystem::Metric:
      return Options<E>(metric);
    case enumUnitSystem::Imperial:
      return Options<E>(imperial);
    case enumUnitSystem::USSurvey:
      return Options<E>(usSurvey);
  }
  return {};
}

template <class E, class Value>
bool Contains(const std::vector<E>& options, Value value) {
  return std::find(options.begin(), options.end(), static_cast<E>(value)) != options.end();
}

}  // namespace

constexpr CMeasUnitSystem::Fields CMeasUnitSystem::kDefaults = {
    0,                             // unit system
    0, 0, 0, 0, 0,                 // units of length, total-station length, area, volume, speed
    0,                             // coordinate display mode
    1, 1, 2,                       // total-station angle, angle, latitude and longitude
    0, 2,                          // temperature, pressure
    0, 0, 0, 0,                    // horizontal start, vertical angle, direction, date format
    3, 3, 2, 2, 1, 3, 3, 4, 4, 5,  // decimals, in the order of the fields
    1, 1, 0, 0, 1, 1,              // fractions of an inch, likewise
};

CMeasUnitSystem::CMeasUnitSystem(const WString& defaultFile, const WString& configFile)
    : m_defaultFile(defaultFile), m_configFile(configFile), m_fields(kDefaults) {}

CMeasUnitSystem::CMeasUnitSystem() : CMeasUnitSystem(WString(), WString()) {}

void CMeasUnitSystem::SetField(Field field, std::int32_t value) {
  Shared<std::int32_t>& stored = m_fields[static_cast<std::size_t>(field)];
  if (stored == value) return;
  stored = value;
  m_changed = true;
}

void CMeasUnitSystem::SetToNotSet() {
  m_fields.fill(kNotSetField);
}

void CMeasUnitSystem::SetUnitSystem(enumUnitSystem system, bool applyUnits) {
  m_fields[static_cast<std::size_t>(Field::UnitSystem)] = static_cast<std::int32_t>(system);
  if (!applyUnits) return;
  switch (system) {
    case enumUnitSystem::Metric:
    case enumUnitSystem::Imperial:
    case enumUnitSystem::USSurvey:
      break;
    default:
      return;
  }
  // The first unit of each kind has the number of its system; both foot systems share a speed.
  for (Field field : {Field::DistUnits, Field::TSDistUnits, Field::AreaUnits, Field::VolumeUnits}) {
    Set(field, system);
  }
  SetSpeedUnits(system == enumUnitSystem::Metric ? enumSpeedUnits::Metric
                                                 : enumSpeedUnits::Imperial);
}

std::vector<enumDisplayDistUnits> CMeasUnitSystem::GetAllDistOptions() {
  return Options<enumDisplayDistUnits>({0, 1, 2, 3, 4, 5, 6});
}

std::vector<enumDisplayDistUnits> CMeasUnitSystem::GetAllTSDistOptions() {
  return GetAllDistOptions();
}

std::vector<enumDisplayAreaUnits> CMeasUnitSystem::GetAllAreaOptions() {
  return Options<enumDisplayAreaUnits>({0, 1, 2, 3, 4});
}

std::vector<enumDisplayVolumeUnits> CMeasUnitSystem::GetAllVolumeOptions() {
  return Options<enumDisplayVolumeUnits>({0, 1, 2, 3, 4, 5, 6});
}

std::vector<enumSpeedUnits> CMeasUnitSystem::GetAllSpeedOptions() {
  return Options<enumSpeedUnits>({0, 1});
}

std::vector<enumDisplayAngleUnits> CMeasUnitSystem::GetAllAngleOptions() {
  return Options<enumDisplayAngleUnits>({0, 1, 2, 3, 4, 5, 6});
}

std::vector<enumDisplayAngleUnits> CMeasUnitSystem::GetAllTSAngleOptions() {
  return Options<enumDisplayAngleUnits>({0, 1, 2, 3, 4});
}

std::vector<enumDisplayAngleUnits> CMeasUnitSystem::GetAllLatLonAngleOptions() {
  return Options<enumDisplayAngleUnits>({2, 3, 4});
}

std::vector<enumDisplayDistUnits> CMeasUnitSystem::GetDefaultDistOptions() const {
  return OptionsOf<enumDisplayDistUnits>(GetUnitSystem(), {0}, {1, 3, 5}, {2, 4, 6});
}

std::vector<enumDisplayDistUnits> CMeasUnitSystem::GetDefaultTSDistOptions() const {
  return GetDefaultDistOptions();
}

std::vector<enumDisplayAreaUnits> CMeasUnitSystem::GetDefaultAreaOptions() const {
  return OptionsOf<enumDisplayAreaUnits>(GetUnitSystem(), {0}, {1, 3}, {2, 4});
}

std::vector<enumDisplayVolumeUnits> CMeasUnitSystem::GetDefaultVolumeOptions() const {
  return OptionsOf<enumDisplayVolumeUnits>(GetUnitSystem(), {0}, {1, 3, 5}, {2, 4, 6});
}

std::vector<enumSpeedUnits> CMeasUnitSystem::GetDefaultSpeedOptions() const {
  return OptionsOf<enumSpeedUnits>(GetUnitSystem(), {0}, {1}, {1});
}

bool CMeasUnitSystem::IsCustom() const {
  const auto lengths = GetDefaultDistOptions();
  return !Contains(lengths, GetDistUnits()) || !Contains(lengths, GetTSDistUnits()) ||
         !Contains(GetDefaultAreaOptions(), GetAreaUnits()) ||
         !Contains(lengths, GetVolumeUnits()) ||
         !Contains(GetDefaultSpeedOptions(), GetSpeedUnits());
}

void CMeasUnitSystem::CopyFrom(const CMeasUnitSystem& other, bool copyFileNames) {
  const auto copyRange = [this, &other](Field first, Field last) {
    for (auto i = static_cast<std::size_t>(first); i <= static_cast<std::size_t>(last); ++i) {
      SetField(static_cast<Field>(i), other.m_fields[i]);
    }
  };
  SetUnitSystem(other.GetUnitSystem(), false);
  copyRange(Field::DistUnits, Field::LatLonAngleUnits);
  copyRange(Field::NumDistDec, Field::QuoteInchDecPrec);
  if (copyFileNames) {
    m_defaultFile = other.m_defaultFile;
    m_configFile = other.m_configFile;
  }
}

void CMeasUnitSystem::Notify() {
  if (!m_changed) return;
  m_changed = false;
  if (m_context != nullptr) m_context->Notify_Changed();
}

int CMeasUnitSystem::GetDistNumDec(enumDistType type) const {
  switch (type) {
    case enumDistType::Distance:
      return GetNumDistDec();
    case enumDistType::Coordinate:
      return GetNumCoordDec();
    case enumDistType::Quote:
      return GetNumQuoteDec();
  }
  return 0;
}

enumInchDecPrec CMeasUnitSystem::GetDistInchDecPrec(enumDistType type) const {
  switch (type) {
    case enumDistType::Distance:
      return GetDistInchDecPrec();
    case enumDistType::Coordinate:
      return GetCoordInchDecPrec();
    case enumDistType::Quote:
      return GetQuoteInchDecPrec();
  }
  return enumInchDecPrec::SixtyFourths;
}

bool CMeasUnitSystem::LoadConfig() {
  return m_configFile.empty() || Load(kelp::GetProgramDataSupportFolderPath(m_configFile));
}

bool CMeasUnitSystem::SaveConfig() {
  return m_configFile.empty() || Save(kelp::GetProgramDataSupportFolderPath(m_configFile));
}

bool CMeasUnitSystem::LoadDefault() {
  return m_defaultFile.empty() || Load(kelp::GetProgramSupportFolderPath(m_defaultFile));
}

bool CMeasUnitSystem::Load(const WString& path) {
  kelp::ifpstream file(path.c_str(), kelp::kReadBinary);
  if (file.GetState() == kelp::kStreamError) return false;
  short version = 0;
  file >> version;
  ReadFromFile(file, version);
  return true;
}

bool CMeasUnitSystem::Save(const WString& path) const {
  kelp::detail::WholeFile whole(path);
  if (whole.WrittenPath().empty()) return false;
  kelp::ofpstream file(whole.WrittenPath().c_str(), kFileVersion, WString(), 0, kelp::kWriteBinary);
  if (file.GetState() != kelp::kStreamGood) return false;
  WriteToFile(file);
  file.Close();
  return file.GetState() == kelp::kStreamGood && whole.Commit();
}

// Every version so far has the same fields.
void CMeasUnitSystem::ReadFromFile(kelp::ifpstream& file, short) {
  std::array<std::int32_t, kFields> numbers;
  std::copy(m_fields.begin(), m_fields.end(), numbers.begin());
  file.ReadNumbers(numbers.data(), numbers.size());
  std::copy(numbers.begin(), numbers.end(), m_fields.begin());
}

void CMeasUnitSystem::WriteToFile(kelp::ofpstream& file) const {
  file << kFileVersion;
  std::array<std::int32_t, kFields> numbers;
  std::copy(m_fields.begin(), m_fields.end(), numbers.begin());
  file.WriteNumbers(numbers.data(), numbers.size());
}
