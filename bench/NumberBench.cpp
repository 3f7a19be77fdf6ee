// Number text beside QString, fmt and the C library.
#include <fast_float/fast_float.h>
#include <fmt/compile.h>
#include <fmt/format.h>

#include <QLocale>
#include <QString>
#include <cwchar>

#include "bench/BenchTable.h"
#include "bench/SurveyValues.h"
#include "kelp0lang/LegacyNumber.h"
#include "kelp0lang/LocaleFree.h"

namespace bench {
namespace {

constexpr int kValues = 2000;

void AddPrinting() {
  const auto values = SurveyValues(kValues);
  Compare("StringDaDouble(v, 0, 3)",
          Over(values, [](double value) { return StringDaDouble(value, 0, 3); }),
          {{"QString::number", 0.5,
            Over(values, [](double value) { return QString::number(value, 'f', 3); })},
           {"fmt::format", 1.0,
            Over(values, [](double value) { return fmt::format("{:.3f}", value); })},
           {"fmt::format_to, compiled", 0.6, Over(values, [](double value) {
              char text[64];
              return fmt::format_to(text, FMT_COMPILE("{:.3f}"), value) - text;
            })}});
}

// Coordinates to the millimetre.
void AddParsing() {
  std::vector<kelp::WString> ours;
  std::vector<std::wstring> wide;
  std::vector<QString> qt;
  std::vector<std::string> bytes;
  for (const double value : SurveyValues(kValues)) {
    const std::string text = fmt::format("{:.3f}", value);
    ours.push_back(kelp::WString::ConvertFromUtf8(text.c_str()));
    wide.emplace_back(text.begin(), text.end());
    qt.push_back(QString::fromStdString(text));
    bytes.push_back(text);
  }
  Compare(
      "kelp_wtof of a coordinate",
      Over(ours, [](const kelp::WString& text) { return kelp_wtof(text.c_str()); }),
      {{"wcstod", 0.3,
        Over(wide, [](const std::wstring& text) { return std::wcstod(text.c_str(), nullptr); })},
       {"QLocale::c().toDouble", 0.3,
        Over(qt, [locale = QLocale::c()](const QString& text) { return locale.toDouble(text); })},
       {"fast_float", 1.3, Over(bytes, [](const std::string& text) {
          double value = 0;
          fast_float::from_chars(text.data(), text.data() + text.size(), value);
          return value;
        })}});
}

}  // namespace

void AddNumberWorks() {
  AddPrinting();
  AddParsing();
}

}  // namespace bench
