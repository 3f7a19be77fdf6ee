// The unit settings in force, and the two systems that reports use.
//
//   CMeasUnitSystem edited(*CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem());
//   edited.SetNumDistDec(2);
//   CCurrMeasUnitInfo::GetInstance()->CopyFrom(edited);              // listeners hear it, once
//   CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem()->SaveConfig();
//
// The one instance is built at first use, from the settings files in the data folder; that must
// come after FInitializeSpecialFolder and before threads use the unit functions. The
// instance is of one thread, but for GetMeasUnitSystem, whose system says what other threads may
// do.
#pragma once

#include <boost/shared_ptr.hpp>

#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnitSystem.h"
#include "kelp0lang/Singleton.h"

namespace kelp {
class CChangeTransactionManager;
}  // namespace kelp

class KELP0LANG_API CCurrMeasUnitInfo : public kelp::ISingleton {
 public:
  static CCurrMeasUnitInfo* GetInstance();

  // The systems live as long as the instance and are changed in place.
  //
  // The settings in force; file config_measunit.dat. Assigned to as a whole they also take the file
  // names and the context of the source, so that nothing is saved or reported any more where it has
  // none: CopyFrom is the way to change them.
  CMeasUnitSystem* GetMeasUnitSystem() const { return m_current; }
  // A copy of the settings in force, to hand to others: always the same object, brought up to date
  // by each call.
  boost::shared_ptr<CMeasUnitSystem> GetIEMeasUnitSystem() const;
  // The settings of reports, not set where they follow the current ones; file
  // config_raw_report_measunit.dat.
  CMeasUnitSystem* GetReportRawMeasUnitSystem() const { return m_reportRaw; }
  // The same, filled from the current ones.
  CMeasUnitSystem* GetReportConcreteMeasUnitSystem() const { return m_reportConcrete; }
  // The raw system keeps of the concrete one what differs from the current settings.
  void UpdateReportRawMeasUnitSystem();

  // Takes over edited settings. The listeners of the change context hear one event if anything
  // changed, none otherwise.
  void CopyFrom(const CMeasUnitSystem& source);

 private:
  CCurrMeasUnitInfo();
  ~CCurrMeasUnitInfo() override;

  CMeasUnitSystem* m_current;
  boost::shared_ptr<CMeasUnitSystem> m_exchange;
  CMeasUnitSystem* m_reportRaw;
  CMeasUnitSystem* m_reportConcrete;
  kelp::CChangeTransactionManager* m_transactions;
};

namespace kelp::detail {

// The settings in force, to read.
inline const CMeasUnitSystem& CurrentMeasUnits() {
  return *CCurrMeasUnitInfo::GetInstance()->GetMeasUnitSystem();
}

}  // namespace kelp::detail

// The same on the one instance.
KELP0LANG_API boost::shared_ptr<CMeasUnitSystem> GetIEMeasUnitSystem();
KELP0LANG_API CMeasUnitSystem* GetReportConcreteMeasUnitSystem();
KELP0LANG_API void UpdateReportRawMeasUnitSystem();

// Rounded to decimals, or to those of lengths or heights in the current settings if -1
// (ArrotondatoAtDec).
KELP0LANG_API double RoundDist(double value, int decimals);
KELP0LANG_API double RoundQuote(double value, int decimals);
// A default length, metres: the value itself in the metric system, three times as many feet in the
// other two.
KELP0LANG_API double DefaultValueDist(double value);
