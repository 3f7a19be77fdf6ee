#include "kelp0lang/PerPropertySetting.h"

#include <memory>

#include "tests/TestText.h"

using kelp::CPerPropertySetting;
using kelp::CPolyValue;
using kelp::IPerPropertySetting;
using kelp::WString;

namespace {

// Keeps what it is asked, and answers what the test sets.
class Asked : public CPerPropertySetting {
 public:
  int operation = 0;
  unsigned property = 0;
  CPolyValue seen;
  CPolyValue first;
  CPolyValue second;

 protected:
  void DoPropertyExchange(CPerPropertyExchange* exchange) override {
    operation = exchange->operation;
    property = exchange->property;
    seen = exchange->first;
    EXPECT_TRUE(exchange->second.IsEmpty());
    EXPECT_EQ(exchange->result, 0u);
    exchange->first = first;
    exchange->second = second;
    exchange->result = 7;
  }
};

TEST(PerPropertySetting, UnansweredRequestsGiveEmptyResults) {
  const std::unique_ptr<IPerPropertySetting> plain = std::make_unique<CPerPropertySetting>();
  CPolyValue value(1), labels(2);
  WString name(KTEXT("old"));
  unsigned type = 9;
  EXPECT_EQ(plain->EnumProperties(), nullptr);
  EXPECT_EQ(plain->GetProperty(1, value), 0u);
  EXPECT_TRUE(value.IsEmpty());
  EXPECT_EQ(plain->SetProperty(1, 5), 0u);
  EXPECT_EQ(plain->GetPropertyName(1, name), 0u);
  EXPECT_TRUE(name.empty());
  EXPECT_EQ(plain->GetPropertyType(1, type), 0u);
  EXPECT_EQ(type, 0u);
  value = 1;
  EXPECT_EQ(plain->GetPredefinedValues(1, value, labels), 0u);
  EXPECT_TRUE(value.IsEmpty() && labels.IsEmpty());
}

TEST(PerPropertySetting, EachRequestIsOneExchange) {
  Asked asked;
  asked.first = KTEXT("12");
  asked.second = KTEXT("twelve");
  CPolyValue value, labels;
  WString name;
  unsigned type = 0;
  const auto expect = [&asked](unsigned result, int operation, unsigned property) {
    EXPECT_EQ(result, 7u);
    EXPECT_EQ(asked.operation, operation);
    EXPECT_EQ(asked.property, property);
  };
  expect(asked.GetProperty(11, value), 1, 11);
  EXPECT_TRUE(asked.seen.IsEmpty());
  EXPECT_TRUE(value == CPolyValue(KTEXT("12")));
  const CPolyValue given(KTEXT("given"));
  expect(asked.SetProperty(12, given), 2, 12);
  EXPECT_TRUE(asked.seen == given);
  EXPECT_EQ(CPolyValue(given).GetStringValue(), WString(KTEXT("given"))) << "a copy was changed";
  expect(asked.GetPropertyName(13, name), 3, 13);
  EXPECT_EQ(name, WString(KTEXT("12")));
  expect(asked.GetPropertyType(14, type), 4, 14);
  EXPECT_EQ(type, 12u);
  expect(asked.GetPredefinedValues(15, value, labels), 5, 15);
  EXPECT_TRUE(value == CPolyValue(KTEXT("12")));
  EXPECT_TRUE(labels == CPolyValue(KTEXT("twelve")));
}

}  // namespace
