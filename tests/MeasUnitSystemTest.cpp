#include "kelp0lang/MeasUnitSystem.h"

#include <atomic>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kelp0lang/ChangeTransaction.h"
#include "kelp0lang/CurrMeasUnitInfo.h"
#include "kelp0lang/MeasUnitChangeContext.h"
#include "kelp0lang/MeasUnitText.h"
#include "kelp0lang/SpecialFolder.h"
#include "tests/MeasureTestFolders.h"
#include "tests/TestText.h"

namespace fs = std::filesystem;
using kelp::WString;

namespace {

constexpr std::size_t kFileSize = 135;

std::string HeaderAndVersion() {
  return std::string("\x3A\0\x01\0\0\xA6\x06", 7);
}

// A file whose field i holds i + first.
std::string NumberedFile(int first) {
  std::string bytes = HeaderAndVersion();
  for (int i = 0; i < 32; ++i) {
    bytes += static_cast<char>(first + i);
    bytes += std::string(3, '\0');
  }
  return bytes;
}

constexpr fs::perms kWriteAll =
    fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;

std::size_t CountEntries() {
  return static_cast<std::size_t>(
      std::distance(fs::directory_iterator(DataSupportFolder()), fs::directory_iterator()));
}

// The fields in the order of the file, but for the first, which has a setter of its own.
struct FieldAccess {
  int (*get)(const CMeasUnitSystem&);
  void (*set)(CMeasUnitSystem&, int);
};

#define FIELD(Getter, Setter)                                                        \
  {                                                                                  \
    [](const CMeasUnitSystem& system) { return static_cast<int>(system.Getter()); }, \
        [](CMeasUnitSystem& system, int value) {                                     \
          system.Setter(static_cast<decltype(system.Getter())>(value));              \
        }                                                                            \
  }

constexpr FieldAccess kFields[] = {
    {[](const CMeasUnitSystem& system) { return static_cast<int>(system.GetUnitSystem()); },
     [](CMeasUnitSystem& system, int value) {
       system.SetUnitSystem(static_cast<enumUnitSystem>(value), false);
     }},
    FIELD(GetDistUnits, SetDistUnits),
    FIELD(GetTSDistUnits, SetTSDistUnits),
    FIELD(GetAreaUnits, SetAreaUnits),
    FIELD(GetVolumeUnits, SetVolumeUnits),
    FIELD(GetSpeedUnits, SetSpeedUnits),
    FIELD(GetCoordDisplayMode, SetCoordDisplayMode),
    FIELD(GetTSAngleUnits, SetTSAngleUnits),
    FIELD(GetAngleUnits, SetAngleUnits),
    FIELD(GetLatLonAngleUnits, SetLatLonAngleUnits),
    FIELD(GetTemperatureUnits, SetTemperatureUnits),
    FIELD(GetPressureUnits, SetPressureUnits),
    FIELD(GetHorizStartAngle, SetHorizStartAngle),
    FIELD(GetVertAngle, SetVertAngle),
    FIELD(GetAngleDir, SetAngleDir),
    FIELD(GetDateFormatW, SetDateFormat),
    FIELD(GetNumDistDec, SetNumDistDec),
    FIELD(GetNumTSDistDec, SetNumTSDistDec),
    FIELD(GetNumAreaDec, SetNumAreaDec),
    FIELD(GetNumVolDec, SetNumVolDec),
    FIELD(GetNumSpeedDec, SetNumSpeedDec),
    FIELD(GetNumCoordDec, SetNumCoordDec),
    FIELD(GetNumQuoteDec, SetNumQuoteDec),
    FIELD(GetNumTSAngleDec, SetNumTSAngleDec),
    FIELD(GetNumAngleDec, SetNumAngleDec),
    FIELD(GetNumLatLonAngleDec, SetNumLatLonAngleDec),
    FIELD(GetDistInchDecPrec, SetDistInchDecPrec),
    FIELD(GetTSDistInchDecPrec, SetTSDistInchDecPrec),
    FIELD(GetAreaInchDecPrec, SetAreaInchDecPrec),
    FIELD(GetVolInchDecPrec, SetVolInchDecPrec),
    FIELD(GetCoordInchDecPrec, SetCoordInchDecPrec),
    FIELD(GetQuoteInchDecPrec, SetQuoteInchDecPrec),
};
static_assert(std::size(kFields) == 32);

CMeasUnitSystem& Current() {
  return *CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem();
}

// Puts the current settings back when a test is done with them.
class CurrentSettings : public testing::Test {
 protected:
  void TearDown() override {
    Current().CopyFrom(CMeasUnitSystem(), false);
    Current().ResetNotify();
  }
};

class CountingListener : public kelp::CSourceEvent::IEvent {
 public:
  explicit CountingListener(CMeasUnitChangeContext* context) : m_context(context) {
    m_context->Register(this);
  }
  ~CountingListener() { m_context->Unregister(this); }

  void OnBeginEvent(kelp::CSourceEvent*) override {
    log += m_context->IsMeasUnitSystemChanged() ? "B" : "b";
  }
  void OnBeforeEndEvent(kelp::CSourceEvent*) override {
    log += m_context->IsMeasUnitSystemChanged() ? "C" : "c";
  }
  void OnEndEvent(kelp::CSourceEvent*) override {
    log += m_context->IsMeasUnitSystemChanged() ? "E" : "e";
    redrawn = DistToString(12.3456);
  }

  std::string log;
  WString redrawn;

 private:
  CMeasUnitChangeContext* m_context;
};

TEST(MeasUnitSystem, DefaultsAreMetric) {
  CMeasUnitSystem system;
  constexpr int kDefaults[32] = {0, 0, 0, 0, 0, 0, 0, 1, 1, 2, 0, 2, 0, 0, 0, 0,
                                 3, 3, 2, 2, 1, 3, 3, 4, 4, 5, 1, 1, 0, 0, 1, 1};
  for (int i = 0; i < 32; ++i) EXPECT_EQ(kFields[i].get(system), kDefaults[i]) << i;
  EXPECT_EQ(system.GetNumScaleDec(), 8);
  EXPECT_TRUE(system.LoadConfig());
  EXPECT_TRUE(system.SaveConfig());
  EXPECT_TRUE(system.LoadDefault());
}

TEST(MeasUnitSystem, UnitSystemBringsItsUnits) {
  CMeasUnitSystem system;
  system.SetUnitSystem(enumUnitSystem::USSurvey, true);
  EXPECT_EQ(system.GetDistUnits(), enumDisplayDistUnits::USSurveyFoot);
  EXPECT_EQ(system.GetAreaUnits(), enumDisplayAreaUnits::SquareUSSurveyFoot);
  EXPECT_EQ(system.GetVolumeUnits(), enumDisplayVolumeUnits::CubicUSSurveyFoot);
  EXPECT_EQ(system.GetSpeedUnits(), enumSpeedUnits::Imperial);
  EXPECT_FALSE(system.IsCustom());
  // Volume is tested against the choices of length.
  system.SetVolumeUnits(enumDisplayVolumeUnits::CubicUSSurveyYard);
  EXPECT_FALSE(system.IsCustom());
  system.SetVolumeUnits(enumDisplayVolumeUnits::CubicInternationalYard);
  EXPECT_TRUE(system.IsCustom());

  CMeasUnitSystem imperial;
  imperial.SetUnitSystem(enumUnitSystem::Imperial, false);
  EXPECT_EQ(imperial.GetDistUnits(), enumDisplayDistUnits::Metre);
  EXPECT_TRUE(imperial.IsCustom());
  CMeasUnitSystem unknown;
  unknown.SetUnitSystem(static_cast<enumUnitSystem>(9), true);
  EXPECT_EQ(static_cast<int>(unknown.GetUnitSystem()), 9);
  EXPECT_EQ(unknown.GetDistUnits(), enumDisplayDistUnits::Metre);
}

// The values of a list, as digits.
template <class E>
std::string Digits(const std::vector<E>& choices) {
  std::string digits;
  for (const E choice : choices) digits += static_cast<char>('0' + static_cast<int>(choice));
  return digits;
}

TEST(MeasUnitSystem, ListsEveryChoiceInOrder) {
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllDistOptions()), "0123456");
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllTSDistOptions()), "0123456");
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllAreaOptions()), "01234");
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllVolumeOptions()), "0123456");
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllSpeedOptions()), "01");
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllAngleOptions()), "0123456");
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllTSAngleOptions()), "01234");
  EXPECT_EQ(Digits(CMeasUnitSystem::GetAllLatLonAngleOptions()), "234");
  const char* const lengths[] = {"0", "135", "246", ""};
  const char* const areas[] = {"0", "13", "24", ""};
  const char* const speeds[] = {"0", "1", "1", ""};
  for (int i = 0; i < 4; ++i) {
    CMeasUnitSystem system;
    system.SetUnitSystem(static_cast<enumUnitSystem>(i), true);
    EXPECT_EQ(Digits(system.GetDefaultDistOptions()), lengths[i]);
    EXPECT_EQ(Digits(system.GetDefaultTSDistOptions()), lengths[i]);
    EXPECT_EQ(Digits(system.GetDefaultVolumeOptions()), lengths[i]);
    EXPECT_EQ(Digits(system.GetDefaultAreaOptions()), areas[i]);
    EXPECT_EQ(Digits(system.GetDefaultSpeedOptions()), speeds[i]);
  }
}

TEST_F(CurrentSettings, OneChangeIsReportedOnce) {
  CountingListener listener(Current().GetContext());
  Current().SetDistUnits(Current().GetDistUnits());
  Current().Notify();
  EXPECT_EQ(listener.log, "");

  Current().SetDistUnits(enumDisplayDistUnits::InternationalFoot);
  Current().Notify();
  Current().Notify();
  EXPECT_EQ(listener.log, "bCE");
  EXPECT_FALSE(Current().GetContext()->IsMeasUnitSystemChanged());
  EXPECT_EQ(listener.redrawn, WString(KTEXT("40.504")));

  Current().SetUnitSystem(enumUnitSystem::Imperial, false);
  Current().Notify();
  EXPECT_EQ(listener.log, "bCE") << "the unit system alone raises no flag";
}

TEST_F(CurrentSettings, CopyFromCarriesTheSettingsOver) {
  CountingListener listener(Current().GetContext());
  CMeasUnitSystem edited(Current());
  edited.SetDateFormat(static_cast<enumDateFormat>(3));
  edited.SetAngleDir(enumAngleDir::CounterClockwise);
  CCurrMeasUnitInfo::GetInstance()->CopyFrom(edited);
  EXPECT_EQ(listener.log, "");
  EXPECT_EQ(static_cast<int>(Current().GetDateFormatW()), 0);
  EXPECT_EQ(Current().GetAngleDir(), enumAngleDir::Clockwise);

  edited.SetNumDistDec(1);
  edited.SetNumAngleDec(2);
  edited.SetUnitSystem(enumUnitSystem::USSurvey, false);
  CCurrMeasUnitInfo::GetInstance()->CopyFrom(edited);
  EXPECT_EQ(listener.log, "bCE");
  EXPECT_EQ(listener.redrawn, WString(KTEXT("12.3")));
  EXPECT_EQ(Current().GetUnitSystem(), enumUnitSystem::USSurvey);
}

// Each field by itself: whether CopyFrom carries it over, and whether that is reported.
TEST_F(CurrentSettings, CopyFromKnowsEachField) {
  for (int i = 0; i < 32; ++i) {
    CMeasUnitSystem edited(Current());
    kFields[i].set(edited, 3);
    const bool differs = kFields[i].get(Current()) != 3;
    const bool carried = i <= 9 || i >= 16;
    CountingListener listener(Current().GetContext());
    CCurrMeasUnitInfo::GetInstance()->CopyFrom(edited);
    EXPECT_EQ(kFields[i].get(Current()), carried ? 3 : kFields[i].get(CMeasUnitSystem())) << i;
    EXPECT_EQ(listener.log, carried && i > 0 && differs ? "bCE" : "") << i;
  }
}

TEST_F(CurrentSettings, ReportsFollowTheCurrentSettings) {
  CCurrMeasUnitInfo* info = CCurrMeasUnitInfo::GetInstance();
  EXPECT_EQ(Folders().Read(DataSupportFolder() / "config_raw_report_measunit.dat"),
            HeaderAndVersion() + std::string(32 * 4, '\xFF'));

  CMeasUnitSystem* concrete = GetReportConcreteMeasUnitSystem();
  EXPECT_EQ(concrete->GetNumDistDec(), Current().GetNumDistDec());
  concrete->SetNumDistDec(6);
  concrete->SetNumAreaDec(Current().GetNumAreaDec());
  UpdateReportRawMeasUnitSystem();
  const CMeasUnitSystem* raw = info->GetReportRawMeasUnitSystem();
  EXPECT_EQ(raw->GetNumDistDec(), 6);
  EXPECT_EQ(raw->GetNumAreaDec(), -1);

  Current().SetNumAreaDec(5);
  CMeasUnitSystem filled;
  raw->ToConcrete(filled);
  for (const FieldAccess& field : kFields) {
    const int own = field.get(*raw);
    EXPECT_EQ(field.get(filled), own == -1 ? field.get(Current()) : own);
  }
  EXPECT_EQ(filled.GetNumAreaDec(), 5);
  EXPECT_EQ(filled.GetNumDistDec(), 6);
  concrete->SetNumDistDec(Current().GetNumDistDec());
  UpdateReportRawMeasUnitSystem();
}

// For the thread sanitizer; a field never reads as anything but what was set.
TEST_F(CurrentSettings, OneThreadSetsWhileOthersRead) {
  CMeasUnitSystem metric(Current());
  CMeasUnitSystem other(Current());
  other.SetNumDistDec(5);
  other.SetNumAreaDec(6);
  std::atomic<bool> stop{false};
  std::thread reader([&stop] {
    while (!stop) {
      const WString text = DistToString(1.0);
      EXPECT_TRUE(text == KTEXT("1.000") || text == KTEXT("1.00000")) << text.ToUtf8().c_str();
      const CMeasUnitSystem copy(Current());
      EXPECT_TRUE(copy.GetNumAreaDec() == 2 || copy.GetNumAreaDec() == 6);
    }
  });
  for (int round = 0; round < 2000; ++round) {
    CCurrMeasUnitInfo::GetInstance()->CopyFrom(round % 2 == 0 ? other : metric);
  }
  stop = true;
  reader.join();
}

TEST_F(CurrentSettings, ExchangeSystemIsOneObjectBroughtUpToDate) {
  const auto first = GetIEMeasUnitSystem();
  Current().SetNumDistDec(7);
  const auto second = GetIEMeasUnitSystem();
  EXPECT_EQ(first.get(), second.get());
  EXPECT_EQ(first->GetNumDistDec(), 7);
  EXPECT_GE(first.use_count(), 3);
}

TEST_F(CurrentSettings, RoundsAndProposesByTheSettings) {
  EXPECT_EQ(RoundDist(1.23456, -1), 1.235);
  EXPECT_EQ(RoundDist(1.23456, 1), 1.2);
  Current().SetNumQuoteDec(2);
  EXPECT_EQ(RoundQuote(1.23456, -1), 1.23);
  EXPECT_EQ(DefaultValueDist(10.0), 10.0);
  Current().SetUnitSystem(enumUnitSystem::Imperial, false);
  EXPECT_DOUBLE_EQ(DefaultValueDist(10.0), 9.144);
  Current().SetUnitSystem(enumUnitSystem::USSurvey, false);
  EXPECT_DOUBLE_EQ(DefaultValueDist(10.0), 30 * 1200.0 / 3937);
  Current().SetUnitSystem(enumUnitSystem::Metric, false);
}

// The whole road of a change: edited settings, one event, a redraw, the file, and a later start.
TEST_F(CurrentSettings, AChangeReachesListenersAndTheFile) {
  CountingListener listener(Current().GetContext());
  CMeasUnitSystem edited(Current());
  edited.SetUnitSystem(enumUnitSystem::USSurvey, true);
  edited.SetNumDistDec(2);
  CCurrMeasUnitInfo::GetInstance()->CopyFrom(edited);
  EXPECT_EQ(listener.log, "bCE");
  EXPECT_EQ(listener.redrawn, WString(KTEXT("40.50")));
  ASSERT_TRUE(Current().SaveConfig());

  const std::string bytes = Folders().Read(DataSupportFolder() / "config_measunit.dat");
  EXPECT_EQ(bytes.size(), kFileSize);
  EXPECT_EQ(bytes.substr(0, 7), HeaderAndVersion());
  EXPECT_EQ(bytes[7], 2);
  EXPECT_EQ(bytes[11], 2);
  EXPECT_EQ(bytes[71], 2);

  CMeasUnitSystem later(KTEXT("config_measunit.dat"), KTEXT("config_measunit.dat"));
  ASSERT_TRUE(later.LoadConfig());
  EXPECT_EQ(later.FromDistToString(12.3456), WString(KTEXT("40.50")));
  EXPECT_FALSE(later.LoadDefault()) << "no shipped defaults here";
  fs::remove(DataSupportFolder() / "config_measunit.dat");
}

TEST(MeasUnitFile, EveryFieldHasItsPlace) {
  Folders().Write(DataSupportFolder() / "numbered.dat", NumberedFile(40));
  CMeasUnitSystem system(WString(), KTEXT("numbered.dat"));
  ASSERT_TRUE(system.LoadConfig());
  for (int i = 0; i < 32; ++i) {
    EXPECT_EQ(kFields[i].get(system), 40 + i);
    kFields[i].set(system, 80 + i);
    EXPECT_EQ(kFields[i].get(system), 80 + i);
  }
  ASSERT_TRUE(system.SaveConfig());
  EXPECT_EQ(Folders().Read(DataSupportFolder() / "numbered.dat"), NumberedFile(80));
  fs::remove(DataSupportFolder() / "numbered.dat");
}

// A file cut anywhere loads: what it holds applies, what it lacks stays.
TEST(MeasUnitFile, LoadsEveryLength) {
  const fs::path path = DataSupportFolder() / "short.dat";
  const std::string whole = NumberedFile(40);
  for (std::size_t size = 0; size <= kFileSize; ++size) {
    Folders().Write(path, whole.substr(0, size));
    CMeasUnitSystem system(WString(), KTEXT("short.dat"));
    ASSERT_TRUE(system.LoadConfig()) << size;
    for (std::size_t i = 0; i < 32; ++i) {
      const int kept = kFields[i].get(CMeasUnitSystem());
      ASSERT_EQ(kFields[i].get(system), size >= 11 + 4 * i ? 40 + static_cast<int>(i) : kept);
    }
  }
  fs::remove(path);
}

// Whatever the settings hold, values print and read without harm.
TEST(MeasUnitFile, RandomContentLeavesTheProgramUsable) {
  const fs::path path = DataSupportFolder() / "random.dat";
  std::mt19937 random(4);
  for (int round = 0; round < 300; ++round) {
    std::string bytes = HeaderAndVersion();
    bytes.resize(kFileSize);
    // Small values reach the units, large ones the limits of decimals.
    for (std::size_t i = 7; i < kFileSize; ++i) {
      bytes[i] = static_cast<char>(i % 4 == 3 || round % 3 == 0 ? random() % 256 : 0);
    }
    if (round % 5 == 0) bytes[random() % 5] = static_cast<char>(random());
    Folders().Write(path, bytes);
    CMeasUnitSystem system(WString(), KTEXT("random.dat"));
    ASSERT_TRUE(system.LoadConfig());
    for (int kind = -1; kind < 24; ++kind) {
      for (int size = -1; size < 5; ++size) {
        const auto value = static_cast<enumMeasUnitValue>(kind);
        const auto unitSize = static_cast<enumMeasUnitSize>(size);
        const WString text = system.FromValueToString(123.456, value, -1, unitSize, unitSize);
        system.FromStringToValue(text, value, unitSize, unitSize);
        ASSERT_TRUE(system.FromValueToString(kelp::kNotSet, value, -1, unitSize, unitSize).empty());
      }
    }
    if (round % 20 == 0) {
      ASSERT_TRUE(system.SaveConfig());
    }
  }
  fs::remove(path);
}

TEST(MeasUnitFile, AFailedSaveLeavesTheOldFile) {
  CMeasUnitSystem missing(WString(), KTEXT("no/such/folder.dat"));
  EXPECT_FALSE(missing.SaveConfig());
  EXPECT_FALSE(missing.LoadConfig());

  // What can't be replaced stays, and nothing is left beside it.
  fs::create_directories(DataSupportFolder() / "folder.dat");
  Folders().Write(DataSupportFolder() / "protected.dat", "old");
  fs::permissions(DataSupportFolder() / "protected.dat", kWriteAll, fs::perm_options::remove);
  const std::size_t entries = CountEntries();
  for (const WChar* name : {KTEXT("folder.dat"), KTEXT("protected.dat")}) {
    EXPECT_FALSE(CMeasUnitSystem(WString(), name).SaveConfig());
  }
  EXPECT_EQ(Folders().Read(DataSupportFolder() / "protected.dat"), "old");
  EXPECT_EQ(CountEntries(), entries);
  fs::permissions(DataSupportFolder() / "protected.dat", kWriteAll, fs::perm_options::add);
  EXPECT_TRUE(CMeasUnitSystem(WString(), KTEXT("protected.dat")).SaveConfig());
  EXPECT_EQ(CountEntries(), entries);

  // Nor what another program keeps open for longer than a save waits.
  Folders().Write(DataSupportFolder() / "protected.dat", "old");
  const WString path = kelp::GetProgramDataSupportFolderPath(KTEXT("protected.dat"));
  const HANDLE held =
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_FALSE(CMeasUnitSystem(WString(), KTEXT("protected.dat")).SaveConfig());
  CloseHandle(held);
  EXPECT_EQ(Folders().Read(DataSupportFolder() / "protected.dat"), "old");
  EXPECT_EQ(CountEntries(), entries);
  fs::remove(DataSupportFolder() / "folder.dat");
  fs::remove(DataSupportFolder() / "protected.dat");
}

TEST(MeasUnitFile, ASaveKeepsPermissionsAndLinks) {
  const fs::path file = DataSupportFolder() / "file.dat";
  const fs::path link = DataSupportFolder() / "link.dat";
  fs::create_directories(DataSupportFolder() / "elsewhere");
  Folders().Write(DataSupportFolder() / "elsewhere" / "real.dat", "old");
  std::error_code error;
  fs::create_symlink(fs::path("elsewhere") / "real.dat", link, error);
  if (!error) {
    EXPECT_TRUE(CMeasUnitSystem(WString(), KTEXT("link.dat")).SaveConfig());
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(fs::file_size(DataSupportFolder() / "elsewhere" / "real.dat"), kFileSize);
  }
  Folders().Write(file, "old");
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  const fs::perms before = fs::status(file).permissions();
  EXPECT_TRUE(CMeasUnitSystem(WString(), KTEXT("file.dat")).SaveConfig());
  EXPECT_EQ(fs::status(file).permissions(), before);
  EXPECT_EQ(fs::file_size(file), kFileSize);
  fs::remove(link);
  fs::remove(file);
  fs::remove_all(DataSupportFolder() / "elsewhere");
}

// Every save ends well, and whoever looks finds one of them whole.
TEST(MeasUnitFile, SeveralSaveAtOnce) {
  const fs::path path = DataSupportFolder() / "shared.dat";
  const std::string texts[] = {NumberedFile(1), NumberedFile(40)};
  Folders().Write(path, texts[0]);
  std::vector<std::thread> savers;
  std::atomic<int> running{2};
  for (const std::string& text : texts) {
    const WString own = &text == texts ? KTEXT("own0.dat") : KTEXT("own1.dat");
    Folders().Write(DataSupportFolder() / own.ToUtf8().c_str(), text);
    savers.emplace_back([own, &running] {
      CMeasUnitSystem filled(WString(), own);
      filled.LoadConfig();
      CMeasUnitSystem system(WString(), KTEXT("shared.dat"));
      system.CopyFrom(filled, false);
      for (int i = 0; i < 50; ++i) EXPECT_TRUE(system.SaveConfig());
      --running;
    });
  }
  while (running > 0) {
    const std::string seen = Folders().Read(path);
    EXPECT_TRUE(seen.empty() || seen.size() == kFileSize) << "empty: it couldn't be opened";
  }
  for (std::thread& saver : savers) saver.join();
  EXPECT_EQ(Folders().Read(path).size(), kFileSize);
  for (const char* name : {"own0.dat", "own1.dat", "shared.dat"}) {
    fs::remove(DataSupportFolder() / name);
  }
}

}  // namespace
