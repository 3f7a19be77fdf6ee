// Strings beside QString, ICU's UnicodeString and std::u16string.
#include <unicode/unistr.h>

#include <QByteArray>
#include <QString>
#include <random>
#include <string_view>

#include "bench/BenchTable.h"
#include "kelp0lang/String.h"

namespace bench {
namespace {

using Words = std::vector<std::u16string_view>;

const Words kAscii = {u"station",  u"P1024", u"north", u"5034125.482", u"prism", u"height",
                      u"traverse", u"the",   u"of",    u"and",         u"level", u"boundary",
                      u"parcel",   u"512",   u"is",    u"instrument",  u"at",    u"benchmark"};

// About one accented letter in twenty bytes, as in Italian prose.
const Words kItalian = {u"perché",   u"è",         u"stazione", u"città",      u"del",
                        u"rilievo",  u"confine",   u"quota",    u"proprietà",  u"il",
                        u"vertice",  u"altezza",   u"più",      u"particella", u"catastale",
                        u"distanza", u"orizzonte", u"della",    u"strumento",  u"prisma"};

const Words kEmoji = {
    u"perché",  u"stazione", u"📐",        u"città",      u"rilievo", u"🏔️",
    u"confine", u"quota",    u"📍",        u"proprietà",  u"il",      u"vertice",
    u"altezza", u"🇮🇹",       u"distanza", u"particella", u"prisma",  u"👷‍♀️"};

constexpr int kTexts = 32;

// Texts of random words, each as long as fits into a number of bytes of UTF-8 and filled up to it
// with spaces. There are so many that no branch predictor learns them.
std::vector<std::u16string> TextsOfBytes(const Words& words, int bytes) {
  std::mt19937 random(2024);
  std::vector<std::u16string> texts(kTexts);
  for (std::u16string& text : texts) {
    int size = 0;
    for (;;) {
      const std::u16string_view word = words[random() % words.size()];
      const int more =
          QString::fromUtf16(word.data(), static_cast<int>(word.size())).toUtf8().size();
      if (size + more + 1 > bytes) break;
      size += more + 1;
      text.append(word).append(u" ");
    }
    text.append(static_cast<std::size_t>(bytes - size), u' ');
  }
  return texts;
}

QString ToQt(const std::u16string& text) {
  return QString::fromUtf16(text.data(), static_cast<int>(text.size()));
}

template <class T, class Text, class Make>
std::vector<T> Each(const std::vector<Text>& texts, Make make) {
  std::vector<T> made;
  for (const Text& text : texts) made.push_back(make(text));
  return made;
}

std::vector<kelp::WString> OfOurs(const std::vector<std::u16string>& texts) {
  return Each<kelp::WString>(texts, [](const auto& text) { return kelp::WString(text.c_str()); });
}

std::vector<QString> OfQt(const std::vector<std::u16string>& texts) {
  return Each<QString>(texts, ToQt);
}

std::vector<icu::UnicodeString> OfIcu(const std::vector<std::u16string>& texts) {
  return Each<icu::UnicodeString>(texts, [](const auto& text) {
    return icu::UnicodeString(text.data(), static_cast<int>(text.size()));
  });
}

// Names of points and descriptions, with lengths from least to most.
std::vector<std::u16string> ShortTexts(std::size_t least, std::size_t most) {
  std::mt19937 random(7);
  std::vector<std::u16string> texts(64);
  for (std::u16string& text : texts) {
    const std::size_t length = least + random() % (most - least + 1);
    while (text.size() < length) text.append(kItalian[random() % kItalian.size()]).append(u" ");
    text.resize(length);
  }
  return texts;
}

constexpr auto kCopy = [](const auto& text) {
  auto copy(text);
  benchmark::DoNotOptimize(copy);
  return 0;
};

// What a call by value costs: the function knows nothing of its caller, nor the caller of it.
template <class Text>
[[gnu::noipa]] int TakeByValue(Text text) {
  benchmark::DoNotOptimize(text);
  return 0;
}

void AddCopies(const std::string& kind, const std::vector<std::u16string>& texts) {
  const auto ours = OfOurs(texts);
  const auto qt = OfQt(texts);
  const auto icu = OfIcu(texts);
  Compare("copy WString, " + kind, Over(ours, kCopy),
          {{"QString", 1.0, Over(qt, kCopy)}, {"UnicodeString", 1.0, Over(icu, kCopy)}});
  Compare("pass WString by value, " + kind, Over(ours, TakeByValue<kelp::WString>),
          {{"QString", 1.0, Over(qt, TakeByValue<QString>)},
           {"UnicodeString", 1.0, Over(icu, TakeByValue<icu::UnicodeString>)}});
}

void AddUtf8(const std::string& kind, const Words& words) {
  const auto texts = TextsOfBytes(words, 1024);
  const auto ours = OfOurs(texts);
  const auto qt = OfQt(texts);
  Compare("ToUtf8 1 KiB " + kind, Over(ours, [](const auto& text) { return text.ToUtf8(); }),
          {{"QString", 1.0, Over(qt, [](const auto& text) { return text.toUtf8(); })}});

  const auto ourBytes = Each<kelp::String>(ours, [](const auto& text) { return text.ToUtf8(); });
  const auto qtBytes = Each<QByteArray>(qt, [](const auto& text) { return text.toUtf8(); });
  Compare("FromUtf8 1 KiB " + kind,
          Over(ourBytes, [](const auto& bytes) { return bytes.FromUtf8(); }),
          {{"QString", 1.0,
            Over(qtBytes, [](const auto& bytes) { return QString::fromUtf8(bytes); })}});
}

// 4 KiB are 2048 units. What is sought stands once, near the end, and begins and ends as many other
// words do.
void AddSearches() {
  auto texts = TextsOfBytes(kAscii, 2048);
  const std::u16string wanted = u"stazione";
  const char16_t unit = u'Z';
  for (std::u16string& text : texts) text.replace(1980, wanted.size() + 1, wanted + unit);
  const auto ours = OfOurs(texts);
  const auto qt = OfQt(texts);

  const kelp::WString ourWanted(wanted.c_str());
  const QString qtWanted = ToQt(wanted);
  Compare(
      "IndexOf text in 4 KiB",
      Over(ours, [=](const auto& text) { return text.IndexOf(ourWanted); }),
      {{"QString", 1.0, Over(qt, [=](const auto& text) { return text.indexOf(qtWanted); })},
       {"std::u16string", 1.0, Over(texts, [=](const auto& text) { return text.find(wanted); })}});
  Compare(
      "IndexOf unit in 4 KiB", Over(ours, [=](const auto& text) { return text.IndexOf(unit); }),
      {{"QString", 1.0, Over(qt, [=](const auto& text) { return text.indexOf(QChar(unit)); })},
       {"std::u16string", 1.0, Over(texts, [=](const auto& text) { return text.find(unit); })}});
}

}  // namespace

void AddStringWorks() {
  // ICU keeps text of up to 27 units within the object and shares a buffer from there on.
  AddCopies("4-27 units", ShortTexts(4, 27));
  AddCopies("28-60 units", ShortTexts(28, 60));
  AddUtf8("ASCII", kAscii);
  AddUtf8("Italian", kItalian);
  AddUtf8("emoji", kEmoji);
  AddSearches();
}

}  // namespace bench
