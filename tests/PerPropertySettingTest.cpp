#include "kelp0lang/PerPropertySetting.h"

#include "tests/TestText.h"

using kelp::CPerPropertySetting;
using kelp::CPolyValue;
using kelp::IPerPropertySetting;
using kelp::WString;

namespace {

// Keeps what it is asked, and answers the same to all.
class Asked : public CPerPropertySetting {
 public:
  int operation = 0;
  unsigned property = 0;
  CPolyValue seen;

 protected:
  void DoPropertyExchange(CPerPropertyExchange* exchange) override {
    operation = exchange->operation;
    property = exchange->property;
    seen = exchange->first;
    exchange->first = KTEXT("12");
    exchange->second = KTEXT("twelve");
    exchange->result += 7;
  }
};

// Asks for everything; what the answers were, result after result.
struct Answers {
  explicit Answers(IPerPropertySetting& setting) {
    EXPECT_EQ(setting.EnumProperties(), nullptr);
    results[0] = setting.GetProperty(11, value);
    results[1] = setting.GetPropertyName(13, name);
    results[2] = setting.GetPropertyType(14, type);
    results[3] = setting.GetPredefinedValues(15, values, labels);
  }
  CPolyValue value = 1, values = 2, labels = 3;
  WString name = KTEXT("old");
  unsigned type = 9;
  unsigned results[4];
};

TEST(PerPropertySetting, UnansweredRequestsGiveEmptyResults) {
  CPerPropertySetting plain;
  const Answers got(plain);
  EXPECT_TRUE(got.value.IsEmpty() && got.values.IsEmpty() && got.labels.IsEmpty());
  EXPECT_TRUE(got.name.empty());
  EXPECT_EQ(got.type, 0u);
  EXPECT_EQ(plain.SetProperty(1, 5), 0u);
  for (const unsigned result : got.results) EXPECT_EQ(result, 0u);
}

TEST(PerPropertySetting, EachRequestIsOneExchange) {
  Asked asked;
  const Answers got(asked);
  EXPECT_TRUE(got.value == KTEXT("12") && got.values == KTEXT("12") &&
              got.labels == KTEXT("twelve"));
  EXPECT_EQ(got.name, WString(KTEXT("12")));
  EXPECT_EQ(got.type, 12u);
  for (const unsigned result : got.results) EXPECT_EQ(result, 7u);

  CPolyValue value(KTEXT("given"));
  EXPECT_EQ(asked.SetProperty(12, value), 7u);
  EXPECT_EQ(asked.operation * 100 + asked.property, 212u);
  EXPECT_TRUE(asked.seen == KTEXT("given") && value == KTEXT("given"));
  asked.GetProperty(11, value);
  EXPECT_EQ(asked.operation * 100 + asked.property, 111u);
  WString name;
  asked.GetPropertyName(13, name);
  EXPECT_EQ(asked.operation * 100 + asked.property, 313u);
  unsigned type;
  asked.GetPropertyType(14, type);
  EXPECT_EQ(asked.operation * 100 + asked.property, 414u);
  asked.GetPredefinedValues(15, value, value);
  EXPECT_EQ(asked.operation * 100 + asked.property, 515u);
}

}  // namespace
