#include "kelp0lang/ValueCheckResult.h"

#include "kelp0lang/Translate.h"

kelp::WString TValueCheck::Reason() const {
  if (IsValue()) return kelp::WString();
  kelp::WString reason = kelp::Xlate(source);
  reason.ReplaceInPlace(KTEXT("{2}"), second.c_str());
  reason.ReplaceInPlace(KTEXT("{1}"), first.c_str());
  return reason;
}
