// Values beside QVariant.
#include <QString>
#include <QVariant>
#include <random>

#include "bench/BenchTable.h"
#include "kelp0lang/PolyValue.h"

namespace bench {
namespace {

constexpr int kValues = 1024;

// The same values for both sides.
struct Values {
  std::vector<kelp::CPolyValue> ours;
  std::vector<QVariant> theirs;
};

// Coordinates and codes.
Values Numbers() {
  std::mt19937 random(12);
  Values values;
  for (int i = 0; i < kValues; ++i) {
    const int code = static_cast<int>(random());
    if (random() % 2 == 0) {
      values.ours.emplace_back(code);
      values.theirs.emplace_back(code);
    } else {
      values.ours.emplace_back(code * 0.001);
      values.theirs.emplace_back(code * 0.001);
    }
  }
  return values;
}

Values Texts() {
  std::mt19937 random(13);
  Values values;
  for (int i = 0; i < kValues; ++i) {
    std::u16string text = u"station ";
    text.append(random() % 20, u'x').append({static_cast<char16_t>(u'a' + random() % 26)});
    values.ours.emplace_back(text.c_str());
    values.theirs.emplace_back(QString::fromStdU16String(text));
  }
  return values;
}

// A record of a point: three numbers to a text.
Values Records() {
  Values values = Numbers();
  const Values texts = Texts();
  for (int i = 0; i < kValues; i += 4) {
    values.ours[i] = texts.ours[i];
    values.theirs[i] = texts.theirs[i];
  }
  return values;
}

// Each with an equal value of its own.
template <class Value>
std::vector<std::pair<Value, Value>> Pairs(const std::vector<Value>& values) {
  std::vector<std::pair<Value, Value>> pairs;
  for (const Value& value : values) pairs.emplace_back(value, value);
  return pairs;
}

constexpr auto kCopy = [](const auto& value) { return value; };
constexpr auto kEqual = [](const auto& pair) { return pair.first == pair.second; };

void AddCopyAndCompare(const std::string& what, const Values& values) {
  Compare("copy CPolyValue, " + what, Over(values.ours, kCopy),
          {{"QVariant", 0.7, Over(values.theirs, kCopy)}});
  Compare("compare CPolyValue, " + what, Over(Pairs(values.ours), kEqual),
          {{"QVariant", 0.7, Over(Pairs(values.theirs), kEqual)}});
}

}  // namespace

void AddValueWorks() {
  AddCopyAndCompare("numbers", Numbers());
  AddCopyAndCompare("texts", Texts());
  AddCopyAndCompare("records", Records());

  std::mt19937 random(14);
  Values codes;
  for (int i = 0; i < kValues; ++i) {
    const int code = static_cast<int>(random() >> random() % 32);
    codes.ours.emplace_back(code);
    codes.theirs.emplace_back(code);
  }
  Compare("CPolyValue, int to text",
          Over(codes.ours, [](const kelp::CPolyValue& value) { return value.GetStringValue(); }),
          {{"QVariant", 0.7, Over(codes.theirs, [](const QVariant& v) { return v.toString(); })}});
}

}  // namespace bench
