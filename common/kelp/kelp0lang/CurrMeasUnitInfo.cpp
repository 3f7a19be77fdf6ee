#include "kelp0lang/CurrMeasUnitInfo.h"

#include <algorithm>
#include <boost/make_shared.hpp>

#include "kelp0lang/ChangeTransaction.h"
#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/MeasUnitChangeContext.h"

using kelp::WString;
using kelp::detail::CurrentMeasUnits;

namespace {

constexpr const WChar* kConfigFile = KTEXT("config_measunit.dat");
constexpr const WChar* kReportConfigFile = KTEXT("config_raw_report_measunit.dat");

// Length, in feet, that stands for a metre where a program proposes one.
constexpr double kFeetForAMetre = 3.0;

constinit CCurrMeasUnitInfo* instance = nullptr;
// That of the current system at first. A host may take it from there, so its owner knows it too.
constinit CMeasUnitChangeContext* ownContext = nullptr;

}  // namespace

CCurrMeasUnitInfo::CCurrMeasUnitInfo() {
  // Without a settings file a program runs on the defaults.
  m_current = new CMeasUnitSystem(kConfigFile, kConfigFile);
  m_current->LoadConfig();

  m_reportRaw = new CMeasUnitSystem(kReportConfigFile, kReportConfigFile);
  m_reportRaw->SetToNotSet();
  if (!m_reportRaw->LoadConfig()) m_reportRaw->SaveConfig();

  m_reportConcrete = new CMeasUnitSystem;
  m_exchange = boost::make_shared<CMeasUnitSystem>(kConfigFile, kConfigFile);
  m_transactions = new kelp::CChangeTransactionManager;
  ownContext = new CMeasUnitChangeContext(m_transactions);
  m_current->SetContext(ownContext);
}

CCurrMeasUnitInfo::~CCurrMeasUnitInfo() {
  ownContext->SubReference();
  delete m_current;
  delete m_reportRaw;
  delete m_reportConcrete;
  delete m_transactions;
}

CCurrMeasUnitInfo* CCurrMeasUnitInfo::GetInstance() {
  if (instance == nullptr) {
    instance = new CCurrMeasUnitInfo;
    // Reads the current system through this function, so the instance has to be in place.
    instance->m_reportRaw->ToConcrete(*instance->m_reportConcrete);
  }
  return instance;
}

boost::shared_ptr<CMeasUnitSystem> CCurrMeasUnitInfo::GetIEMeasUnitSystem() const {
  m_exchange->CopyFrom(*m_current, false);
  return m_exchange;
}

void CCurrMeasUnitInfo::UpdateReportRawMeasUnitSystem() {
  m_reportRaw->FromConcrete(*m_reportConcrete);
}

void CCurrMeasUnitInfo::CopyFrom(const CMeasUnitSystem& source) {
  m_current->ResetNotify();
  m_current->CopyFrom(source, false);
  m_current->Notify();
}

// What a system has beside the current one stands here, where the current one is known.
void CMeasUnitSystem::FromConcrete(const CMeasUnitSystem& concrete) {
  std::transform(concrete.m_fields.begin(), concrete.m_fields.end(),
                 CurrentMeasUnits().m_fields.begin(), m_fields.begin(),
                 [](std::int32_t value, std::int32_t current) {
                   return value == current ? kNotSetField : value;
                 });
}

void CMeasUnitSystem::ToConcrete(CMeasUnitSystem& out) const {
  std::transform(m_fields.begin(), m_fields.end(), CurrentMeasUnits().m_fields.begin(),
                 out.m_fields.begin(), [](std::int32_t value, std::int32_t current) {
                   return value == kNotSetField ? current : value;
                 });
}

boost::shared_ptr<CMeasUnitSystem> GetIEMeasUnitSystem() {
  return CCurrMeasUnitInfo::GetInstance()->GetIEMeasUnitSystem();
}

CMeasUnitSystem* GetReportConcreteMeasUnitSystem() {
  return CCurrMeasUnitInfo::GetInstance()->GetReportConcreteMeasUnitSystem();
}

void UpdateReportRawMeasUnitSystem() {
  CCurrMeasUnitInfo::GetInstance()->UpdateReportRawMeasUnitSystem();
}

double RoundDist(double value, int decimals) {
  return ArrotondatoAtDec(value, decimals == -1 ? CurrentMeasUnits().GetNumDistDec() : decimals);
}

double RoundQuote(double value, int decimals) {
  return ArrotondatoAtDec(value, decimals == -1 ? CurrentMeasUnits().GetNumQuoteDec() : decimals);
}

double DefaultValueDist(double value) {
  switch (CurrentMeasUnits().GetUnitSystem()) {
    case enumUnitSystem::Imperial:
      return ConvertDist(kFeetForAMetre * value, enumDistUnits::InternationalFoot,
                         enumDistUnits::Metre);
    case enumUnitSystem::USSurvey:
      return ConvertDist(kFeetForAMetre * value, enumDistUnits::USSurveyFoot, enumDistUnits::Metre);
    default:
      return value;
  }
}
