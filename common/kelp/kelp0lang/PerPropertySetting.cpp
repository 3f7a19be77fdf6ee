#include "kelp0lang/PerPropertySetting.h"

#include <utility>

namespace kelp {

IPerPropertySetting::~IPerPropertySetting() = default;

IPerPropertySettingIterator* CPerPropertySetting::EnumProperties() {
  return nullptr;
}

unsigned CPerPropertySetting::GetProperty(unsigned id, CPolyValue& value) {
  CPerPropertyExchange exchange = Ask(pxGetValue, id);
  value = std::move(exchange.first);
  return exchange.result;
}

unsigned CPerPropertySetting::SetProperty(unsigned id, const CPolyValue& value) {
  return Ask(pxSetValue, id, value).result;
}

unsigned CPerPropertySetting::GetPropertyName(unsigned id, WString& name) {
  const CPerPropertyExchange exchange = Ask(pxGetName, id);
  name = exchange.first.GetStringValue();
  return exchange.result;
}

unsigned CPerPropertySetting::GetPropertyType(unsigned id, unsigned& type) {
  const CPerPropertyExchange exchange = Ask(pxGetType, id);
  type = static_cast<unsigned>(exchange.first.GetInt32Value());
  return exchange.result;
}

unsigned CPerPropertySetting::GetPredefinedValues(unsigned id, CPolyValue& values,
                                                  CPolyValue& labels) {
  CPerPropertyExchange exchange = Ask(pxGetPredefinedValues, id);
  values = std::move(exchange.first);
  labels = std::move(exchange.second);
  return exchange.result;
}

void CPerPropertySetting::DoPropertyExchange(CPerPropertyExchange*) {}

CPerPropertySetting::CPerPropertyExchange CPerPropertySetting::Ask(enumOperation operation,
                                                                   unsigned id,
                                                                   const CPolyValue& first) {
  CPerPropertyExchange exchange{operation, id, 0, first, CPolyValue()};
  DoPropertyExchange(&exchange);
  return exchange;
}

}  // namespace kelp
