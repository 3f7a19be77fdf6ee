#include "bench/SurveyValues.h"

#include <algorithm>
#include <random>

namespace bench {

std::vector<double> SurveyValues(int count) {
  std::mt19937 random(42);
  const auto between = [&random](double low, double high) {
    return std::uniform_real_distribution<>(low, high)(random);
  };
  std::vector<double> values;
  for (int i = 0; i < count / 5; ++i) {
    values.push_back(between(4000000, 5300000));
    values.push_back(between(250000, 850000));
    values.push_back(between(-5, 4000));
    values.push_back(between(0, 900));
    values.push_back(between(-2, 2));
  }
  std::shuffle(values.begin(), values.end(), random);
  return values;
}

}  // namespace bench
