// Plain numbers, read strictly and written plainly.
#pragma once

#include "fieldbook/values/Text.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/ValueCheck.h"

namespace fieldbook {

// A value that was read, or what is wrong with its text.
struct Reading {
  double value = kelp::kNotSet;
  Message fault;
};

enum class DecimalMark { Point, PointOrComma };

// What the library's strict reading says of a text.
Reading ToReading(const TValueCheck& check);

// In a comma file no number has a decimal comma, quoted or not.
bool HasForbiddenComma(const WString& text, DecimalMark mark);

// The whole text must be one number or fraction.
Reading ReadNumber(const WString& text, DecimalMark mark);

// Whether a word may be the part of a number that follows a whole one: 1/2, or a sign for it.
bool IsFraction(const WString& word);

// As many decimals as it takes to read the same value back, and no fewer than asked for.
WString WriteExactly(double value, int leastDecimals);
void AppendExactly(std::string& bytes, double value, int leastDecimals);

// With decimals, and without the sign of a value that is shown as zero; no text for a value that
// isn't set.
WString WriteNumber(double value, int decimals);
void AppendNumber(std::string& bytes, double value, int decimals);

Message NotANumber();
Message OutOfRange();

}  // namespace fieldbook
