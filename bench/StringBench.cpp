// Strings beside QString, ICU's UnicodeString and std::u16string.
#include <unicode/unistr.h>
#include <unicode/ustring.h>

#include <QByteArray>
#include <QString>
#include <algorithm>
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

// Most letters take two bytes.
const Words kGreek = {u"σταθμός", u"του", u"ύψος",   u"όριο",   u"και",   u"512",
                      u"χάρτης",  u"το",  u"σημείο", u"γραμμή", u"P1024", u"υψόμετρο"};

// Texts of random words, each as long as fits into a number of bytes of UTF-8 and filled up to it
// with spaces. A branch predictor learns 32 KiB of them, and so sees what no conversion of a text
// meets that is new to it; 256 KiB it doesn't learn.
std::vector<std::u16string> TextsOfBytes(const Words& words, int bytes, int count) {
  std::mt19937 random(2024);
  std::vector<std::u16string> texts(count);
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
  const auto texts = TextsOfBytes(words, 1024, 512);
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
  auto texts = TextsOfBytes(kAscii, 2048, 32);
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

// Texts of 64 KiB are too long for any store on the stack. ICU writes into a buffer with room
// enough that is there beforehand, and we make a text.
void AddLongUtf8(const std::string& kind, const Words& words) {
  const auto texts = TextsOfBytes(words, 64 * 1024, 4);
  const auto ours = OfOurs(texts);
  const auto ourBytes = Each<kelp::String>(ours, [](const auto& text) { return text.ToUtf8(); });
  Compare("ToUtf8 64 KiB " + kind, Over(ours, [](const auto& text) { return text.ToUtf8(); }),
          {{"u_strToUTF8", 0.6, Over(texts, [](const auto& text) {
              static std::vector<char> bytes(256 * 1024);
              UErrorCode error = U_ZERO_ERROR;
              u_strToUTF8(bytes.data(), static_cast<int>(bytes.size()), nullptr, text.data(),
                          static_cast<int>(text.size()), &error);
              return bytes[0];
            })}});
  Compare("FromUtf8 64 KiB " + kind,
          Over(ourBytes, [](const auto& bytes) { return bytes.FromUtf8(); }),
          {{"u_strFromUTF8", 0.6, Over(ourBytes, [](const auto& bytes) {
              static std::vector<char16_t> units(64 * 1024);
              UErrorCode error = U_ZERO_ERROR;
              u_strFromUTF8(units.data(), static_cast<int>(units.size()), nullptr, bytes.c_str(),
                            bytes.Length(), &error);
              return units[0];
            })}});
}

// One text out of many, each side in the room that it has asked for before.
constexpr int kAppended = 30;
constexpr int kRoom = kAppended * 32;

template <class Text, class Reserve>
Measure Appending(const std::vector<Text>& parts, Reserve reserve) {
  return [=](benchmark::State& state) {
    for (auto _ : state) {
      Text row;
      reserve(row, kRoom);
      for (int i = 0; i < kAppended; ++i) row += parts[static_cast<std::size_t>(i)];
      benchmark::DoNotOptimize(row);
    }
    state.SetItemsProcessed(state.iterations() * kAppended);
  };
}

template <class Text, class Unit, class Reserve>
Measure Building(Unit unit, Reserve reserve) {
  return [=](benchmark::State& state) {
    constexpr int kUnits = 1 << 20;
    for (auto _ : state) {
      Text text;
      reserve(text, kUnits);
      for (int i = 0; i < kUnits; ++i) text += unit;
      benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations() * kUnits);
  };
}

void AddGrowth() {
  const auto reserveOurs = [](kelp::WString& text, int room) { text.GetBufferAsCString(room); };
  const auto reserve = [](auto& text, int room) { text.reserve(room); };
  const auto parts = ShortTexts(4, 27);
  Compare("append 30 texts into a reserve", Appending(OfOurs(parts), reserveOurs),
          {{"std::u16string", 1.2, Appending(parts, reserve)},
           {"QString", 1.2, Appending(OfQt(parts), reserve)}});
  Compare("build 1 MB unit by unit after a reserve", Building<kelp::WString>(u'a', reserveOurs),
          {{"std::u16string", 1.2, Building<std::u16string>(u'a', reserve)},
           {"QString", 1.2, Building<QString>(QChar(u'a'), reserve)}});
}

template <class Text>
Measure Sorting(const std::vector<Text>& texts) {
  return [=](benchmark::State& state) {
    for (auto _ : state) {
      state.PauseTiming();
      auto sorted = texts;
      state.ResumeTiming();
      std::sort(sorted.begin(), sorted.end());
      benchmark::DoNotOptimize(sorted.data());
      state.PauseTiming();
      sorted = {};
      state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(texts.size()));
  };
}

// Names of points and descriptions, many with the same beginning.
void AddSorting() {
  constexpr std::size_t kSorted = 100'000;
  std::mt19937 random(99);
  std::vector<std::u16string> texts(kSorted);
  for (std::u16string& text : texts) {
    text = kItalian[random() % kItalian.size()];
    text.append(u" ").append(kItalian[random() % kItalian.size()]).append(u" ");
    for (const char digit : std::to_string(random() % 1'000'000))
      text += static_cast<char16_t>(digit);
  }
  Compare("sort 100,000 texts", Sorting(OfOurs(texts)), {{"QString", 1.0, Sorting(OfQt(texts))}});
}

// A keyword of a file against those that a field may be, as a reader looks for its own.
void AddLiterals() {
  const auto isStation = [](const auto& text) { return text == u"stazione totale"; };
  for (const std::string kind : {"equal", "another"}) {
    std::vector<std::u16string> texts(64, u"stazione totale");
    if (kind == "another") texts = ShortTexts(8, 27);
    Compare("compare with a literal, " + kind, Over(OfOurs(texts), isStation),
            {{"std::u16string", 1.2, Over(texts, isStation)}});
  }
}

}  // namespace

void AddStringWorks() {
  // ICU keeps text of up to 27 units within the object and shares a buffer from there on.
  AddCopies("4-27 units", ShortTexts(4, 27));
  AddCopies("28-60 units", ShortTexts(28, 60));
  AddUtf8("ASCII", kAscii);
  AddUtf8("Italian", kItalian);
  AddUtf8("emoji", kEmoji);
  AddLongUtf8("ASCII", kAscii);
  AddLongUtf8("Italian", kItalian);
  AddLongUtf8("emoji", kEmoji);
  AddLongUtf8("Greek", kGreek);
  AddSearches();
  AddGrowth();
  AddSorting();
  AddLiterals();
}

}  // namespace bench
