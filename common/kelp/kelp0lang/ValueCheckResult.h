// What the strict reading of a text (ValueCheck.h) gives: the value, or what is wrong and where.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/String.h"

// What a text was found to be.
struct KELP0LANG_API TValueCheck {
  bool IsValue() const { return source == nullptr; }
  // Why it isn't a value, in the user's language, with what stands for {1} and {2} in place; empty
  // for a value.
  kelp::WString Reason() const;

  double value = kelp::kNotSet;
  // Of a text that isn't a value: the place where it stops being one, 0 to the text's length.
  int position = 0;
  // The English source text of the reason (Translate.h), null for a value. {1} and {2} in it are
  // the two meanings, or the two letters, that it names.
  const WChar* source = nullptr;
  kelp::WString first;
  kelp::WString second;
};
