// What a survey has: northings and eastings, heights, distances, small differences of either sign,
// with all the digits that a computation leaves; in metres.
#pragma once

#include <vector>

namespace bench {

// As many as a multiple of 5 says; the same at each call.
std::vector<double> SurveyValues(int count);

}  // namespace bench
