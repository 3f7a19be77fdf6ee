// Properties of an object by number, for a host that shows and sets them generically, as a property
// grid does. A class answers all requests in one place:
//
//   enum { kHeight = 1 };
//   class Mark : public kelp::CPerPropertySetting {
//    protected:
//     void DoPropertyExchange(CPerPropertyExchange* exchange) override {
//       if (exchange->property != kHeight) return;
//       if (exchange->operation == pxGetValue) exchange->first = m_height;
//       if (exchange->operation == pxSetValue) m_height = exchange->first.GetDoubleValue();
//       if (exchange->operation == pxGetName) exchange->first = KTEXT("Height");
//       if (exchange->operation == pxGetType) exchange->first = int{kelp::pvDouble};
//     }
//     double m_height = 0;
//   };
//
//   Mark mark;
//   kelp::CPolyValue height;
//   mark.SetProperty(kHeight, 512.25);
//   mark.GetProperty(kHeight, height);
//
// The result of every operation is what the class says, 0 where it says nothing; its meaning
// belongs to the class. Nothing is shared between calls.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/PolyValue.h"
#include "kelp0lang/String.h"

namespace kelp {

// Walks over the properties of an object. Its operations are between a class that has properties
// and its host, who define it; the library doesn't use it.
class IPerPropertySettingIterator;

class KELP0LANG_API IPerPropertySetting {
 public:
  IPerPropertySetting() = default;
  IPerPropertySetting(const IPerPropertySetting&) = default;
  IPerPropertySetting& operator=(const IPerPropertySetting&) = default;
  virtual ~IPerPropertySetting();

  // Null where the class doesn't list its properties.
  virtual IPerPropertySettingIterator* EnumProperties() = 0;
  // The value of a property, and a new one for it.
  virtual unsigned GetProperty(unsigned id, CPolyValue& value) = 0;
  virtual unsigned SetProperty(unsigned id, const CPolyValue& value) = 0;
  // For the user to read.
  virtual unsigned GetPropertyName(unsigned id, WString& name) = 0;
  // One of enumPolyValueType, as far as the class keeps to it.
  virtual unsigned GetPropertyType(unsigned id, unsigned& type) = 0;
  // The values to choose from, and how the user reads each of them.
  virtual unsigned GetPredefinedValues(unsigned id, CPolyValue& values, CPolyValue& labels) = 0;
};

// Turns each operation into one exchange. What a class leaves unanswered gives an empty value, an
// empty name and the type 0; the out arguments don't keep what they held.
class KELP0LANG_API CPerPropertySetting : public IPerPropertySetting {
 public:
  // What an exchange asks for.
  enum enumOperation : int {
    pxGetValue = 1,             // first becomes the value
    pxSetValue = 2,             // first is a copy of the new value
    pxGetName = 3,              // first becomes the name
    pxGetType = 4,              // first becomes the type
    pxGetPredefinedValues = 5,  // first becomes the values, second their labels
  };

  struct CPerPropertyExchange {
    int operation;
    unsigned property;
    unsigned result = 0;
    CPolyValue first;
    CPolyValue second;
  };

  IPerPropertySettingIterator* EnumProperties() override;
  unsigned GetProperty(unsigned id, CPolyValue& value) override;
  unsigned SetProperty(unsigned id, const CPolyValue& value) override;
  unsigned GetPropertyName(unsigned id, WString& name) override;
  unsigned GetPropertyType(unsigned id, unsigned& type) override;
  unsigned GetPredefinedValues(unsigned id, CPolyValue& values, CPolyValue& labels) override;

 protected:
  // Answers, or does nothing; the exchange lives for the call.
  virtual void DoPropertyExchange(CPerPropertyExchange* exchange);

 private:
  CPerPropertyExchange Ask(enumOperation operation, unsigned id,
                           const CPolyValue& first = CPolyValue());
};

}  // namespace kelp
