#include "kelp0lang/Translate.h"

#include <cstring>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "sarnutils/Xlate.h"
#include "tests/TempFolder.h"
#include "tests/TestText.h"

using kelp::WString;
using kelp::Xlate;

namespace {

const std::string kHeader =
    "msgid \"\"\nmsgstr \"Language: it\\nContent-Type: text/plain; charset=UTF-8\\n\"\n";

// Loads bytes as a catalogue, from a file of its own.
class Translate : public testing::Test {
 protected:
  ~Translate() override { kelp::UnloadTranslateFile(); }

  WString Path() const { return WString(m_folder.Wide(kName).c_str()); }
  bool Load(const std::string& bytes) {
    // A new file each time: some file systems flush one that is cut and written again.
    std::filesystem::remove(m_folder.Path() / kName);
    m_folder.Write(kName, bytes);
    return kelp::LoadTranslateFile(Path());
  }
  // What the failed load of bytes says behind the file's name; empty if it didn't fail.
  WString ErrorOf(const std::string& bytes) {
    if (Load(bytes)) return WString();
    EXPECT_FALSE(kelp::IsTranslateFileLoaded());
    EXPECT_EQ(Xlate(KTEXT("a\\n@@note")), WString(KTEXT("a\\n"))) << "no table";
    EXPECT_EQ(xlate::GetXlateTable()->begin(), xlate::GetXlateTable()->end());
    const WString error = kelp::GetTranslateFileError();
    EXPECT_TRUE(error.StartsWith(Path())) << error.ToUtf8().c_str();
    return error.Substring(Path().Length());
  }

  static constexpr const WChar* kName = KTEXT("citt\x00E0.po");

  TempFolder m_folder;
};

using Entries = std::vector<std::pair<std::string, std::string>>;

// The binary form of a catalogue: header, both tables, texts.
std::string Mo(const Entries& entries, bool bigEndian = false) {
  std::string bytes;
  const auto put = [&bytes, bigEndian](std::size_t number) {
    for (int i = 0; i < 4; ++i) {
      bytes += static_cast<char>(number >> 8 * (bigEndian ? 3 - i : i) & 0xFF);
    }
  };
  constexpr std::size_t kHeaderSize = 28;
  const std::size_t tables = kHeaderSize + 16 * entries.size();
  for (const std::size_t number :
       std::initializer_list<std::size_t>{0x950412DE, 0, entries.size(), kHeaderSize,
                                          kHeaderSize + 8 * entries.size(), 0, tables}) {
    put(number);
  }
  std::string texts;
  const auto place = [&](const std::string& text) {
    put(text.size());
    put(tables + texts.size());
    texts.append(text.c_str(), text.size() + 1);
  };
  for (const auto& entry : entries) place(entry.first);
  for (const auto& entry : entries) place(entry.second);
  return bytes + texts;
}

// Quoted as a .po file has it.
std::string Quote(const std::string& text) {
  std::string quoted = "\"";
  for (const char byte : text) {
    if (byte == '"' || byte == '\\') quoted += '\\';
    quoted += byte == '\n' ? std::string("\\n") : std::string(1, byte);
  }
  return quoted + "\"";
}

std::string Po(const Entries& entries) {
  std::string bytes;
  for (const auto& [key, text] : entries) {
    bytes += "msgid " + Quote(key) + "\nmsgstr " + Quote(text) + "\n\n";
  }
  return bytes;
}

const Entries kSurvey = {
    {"", "Content-Type: text/plain; charset=UTF-8\n"},
    {"abc", "corto"},
    {"abcd", "lungo"},
    {"E@@East (1 char)", "O"},
    {"E@@Elevation", "Q"},
    {"line\nend", "riga\nfine"},
    {"C:\\dir", "D:\\Dati"},
    {"quoted \"text\"", "testo \"citato\""},
    {"untranslated@@note", ""},
    {"smile", "\xF0\x9F\x98\x80 \xC3\xA8"},
};

std::vector<WString> Keys() {
  std::vector<WString> keys;
  for (const xlate::XlateEntry& entry : *xlate::GetXlateTable()) {
    WString& key = keys.emplace_back();
    std::copy_n(entry.key, entry.keyLength, key.GetBufferSetLength(entry.keyLength));
  }
  return keys;
}

TEST_F(Translate, WithoutATableOnlyTheNoteGoes) {
  const WChar* const cases[][2] = {
      {KTEXT("E@@East (1 char)"), KTEXT("E")},
      {KTEXT("a@b"), KTEXT("a@b")},
      {KTEXT("@@x"), KTEXT("")},
      {KTEXT("@"), KTEXT("@")},
      {KTEXT("x@@"), KTEXT("x")},
      {KTEXT("a@@@b"), KTEXT("a@")},
      {KTEXT("a@@b@@c"), KTEXT("a@@b")},
      {KTEXT("a@@b@c"), KTEXT("a@@b@c")},
      {KTEXT("a\\nb\\\\"), KTEXT("a\\nb\\\\")},
      {KTEXT(""), KTEXT("")},
      {nullptr, KTEXT("")},
  };
  for (const auto& [source, shown] : cases) EXPECT_EQ(Xlate(source), WString(shown));
}

TEST_F(Translate, FindsTextsInEveryFormOfACatalogue) {
  const WChar* const cases[][2] = {
      {KTEXT("abc"), KTEXT("corto")},
      {KTEXT("abcd"), KTEXT("lungo")},
      {KTEXT("abcde"), KTEXT("abcde")},
      {KTEXT("E@@East (1 char)"), KTEXT("O")},
      {KTEXT("E@@Elevation"), KTEXT("Q")},
      {KTEXT("E@@Edge"), KTEXT("E")},
      {KTEXT("line\nend"), KTEXT("riga\nfine")},
      {KTEXT("C:\\dir"), KTEXT("D:\\Dati")},
      {KTEXT("quoted \"text\""), KTEXT("testo \"citato\"")},
      {KTEXT("untranslated@@note"), KTEXT("untranslated")},
      {KTEXT("smile"), KTEXT("\xD83D\xDE00 \xE8")},
      // A table unescapes what it doesn't have, and a backslash joins the letter behind it.
      {KTEXT("a\\nb"), KTEXT("a\nb")},
      {KTEXT("a\\\\rb"), KTEXT("a\rb")},
      {KTEXT("a\\\\\\z"), KTEXT("a\\\\z")},
      {KTEXT(""), KTEXT("")},
  };
  for (const std::string& bytes : {Po(kSurvey), Mo(kSurvey), Mo(kSurvey, true)}) {
    ASSERT_TRUE(Load(bytes)) << kelp::GetTranslateFileError().ToUtf8().c_str();
    EXPECT_TRUE(kelp::IsTranslateFileLoaded());
    EXPECT_TRUE(kelp::GetTranslateFileError().empty());
    for (const auto& [source, shown] : cases) EXPECT_EQ(Xlate(source), WString(shown));
  }
  using namespace std::string_literals;
  ASSERT_TRUE(Load(Mo({{"%d point\0%d points"s, "%d punto\0%d punti"s}})));
  EXPECT_EQ(Xlate(KTEXT("%d point")), WString(KTEXT("%d punto")));
}

TEST_F(Translate, SentencesAreFilledInTheirLanguage) {
  ASSERT_TRUE(Load(Po({{"{1} of {2}@@pages", "{2}, {1}"}, {"{1} m", "{2} m"}})));
  EXPECT_EQ(kelp::XlateFilled(KTEXT("{1} of {2}@@pages"), {KTEXT("a"), KTEXT("b")}), KTEXT("b, a"));
  EXPECT_EQ(kelp::XlateFilled(KTEXT("{1} m"), {KTEXT("5")}), KTEXT("5 m"))
      << "a translation that asks for too much is passed over";
  EXPECT_EQ(kelp::XlateFilled(KTEXT("{1} km@@unit"), {KTEXT("5")}), KTEXT("5 km"));
  EXPECT_EQ(kelp::XlateFilled(KTEXT("{2}@@unit"), {KTEXT("5")}), KTEXT(""));
  EXPECT_EQ(kelp::XlateFilled(nullptr, {}), KTEXT(""));
}

TEST_F(Translate, TheLongerOfTwoKeysStandsFirst) {
  Entries entries;
  for (const char* key :
       {"b", "a", "abc", "ab", "ab\n", "aa", "\xEF\xBF\xBD", "\xF0\x9F\x98\x80"}) {
    entries.push_back({key, "1"});
  }
  ASSERT_TRUE(Load(Po(entries)));
  const std::vector<WString> sorted = {KTEXT("aa"),           KTEXT("ab\\n"), KTEXT("abc"),
                                       KTEXT("ab"),           KTEXT("a"),     KTEXT("b"),
                                       KTEXT("\xD83D\xDE00"), KTEXT("\xFFFD")};
  EXPECT_EQ(Keys(), sorted);
  for (const auto& [key, text] : entries) {
    EXPECT_EQ(Xlate(WString::ConvertFromUtf8(key.c_str()).c_str()), WString(KTEXT("1")));
  }
}

TEST_F(Translate, ReadsThePoForm) {
  const std::string catalogue =
      "\xEF\xBB\xBF# Traduzione\n"
      "#, fuzzy\n" +
      kHeader +
      "#. extracted\n#: source.cpp:12\n#, c-format, no-wrap\n#| msgid \"old\"\n"
      "msgctxt \"menu\"\nmsgid \"Open\"\nmsgstr \"Apri\"\n"
      "msgid \"%d point\"\nmsgid_plural \"%d points\"\n"
      "msgstr[0] \"%d punto\"\nmsgstr[1] \"%d \"\n\"punti\"\n"
      "msgid\"\"  \"two \" \"parts\"\n\t\"!\"\n  msgstr \"\"\n\"due \"\n\"\"\n\"parti\"\n"
      "#, c-format , fuzzy\nmsgid \"guess\"\nmsgstr \"forse\"\n"
      "#, fuzzy\n#~ msgid \"gone\"\n#~ msgstr \"andato\"\n"
      "msgid \"escapes\"\nmsgstr \"\\t\\\"\\a\\b\\f\\v\\'\\?\\101\\7z\\x41 \\303\\xA8\"\n"
      "msgid \"last\"\nmsgstr \"ultimo\"";
  const WChar* const cases[][2] = {
      {KTEXT("menu\x4"
             "Open"),
       KTEXT("Apri")},
      {KTEXT("Open"), KTEXT("Open")},
      {KTEXT("%d point"), KTEXT("%d punto")},
      {KTEXT("two parts!"), KTEXT("due parti")},
      {KTEXT("guess"), KTEXT("guess")},
      {KTEXT("gone"), KTEXT("gone")},
      {KTEXT("escapes"), KTEXT("\t\"\a\b\f\v'?A\az"
                               "A \xE8")},
      {KTEXT("last"), KTEXT("ultimo")},
  };
  std::string withReturns;
  for (const char byte : catalogue) {
    withReturns += byte == '\n' ? std::string("\r\n") : std::string(1, byte);
  }
  for (const std::string& bytes : {catalogue, withReturns}) {
    ASSERT_TRUE(Load(bytes)) << kelp::GetTranslateFileError().ToUtf8().c_str();
    for (const auto& [source, shown] : cases) EXPECT_EQ(Xlate(source), WString(shown));
  }
}

TEST_F(Translate, HonoursTheCharset) {
  const auto encoded = [](const std::string& charset, const std::string& text) {
    return Entries{{"", "Content-Type: text/plain; charset=" + charset + "\n"}, {"a", text}};
  };
  // Null: refused.
  const std::pair<Entries, const WChar*> cases[] = {
      {encoded("UTF-8", "\xC3\xA8"), KTEXT("\xE8")},
      {encoded("utf8", "\xC3\xA8"), KTEXT("\xE8")},
      {encoded("CHARSET", "\xC3\xA8"), KTEXT("\xE8")},
      {encoded("ISO-8859-1", "\xC3\xA8"), KTEXT("\xC3\xA8")},
      {encoded("US-ASCII", "z"), KTEXT("z")},
      {{{"", "Language: it\n"}, {"a", "\xC3\xA8"}}, KTEXT("\xE8")},
      {encoded("UTF-8", "\xE8"), nullptr},
      {encoded("ASCII", "\xC3\xA8"), nullptr},
      {encoded("KOI8-R", "z"), nullptr},
      {encoded("ISO-8859-17", "z"), nullptr},
      {encoded("cp437x", "z"), nullptr},
      {encoded("cp28591", "z"), nullptr},
      {encoded("windows-1249", "z"), nullptr},
      {encoded("", "z"), nullptr},
  };
  for (const auto& [entries, shown] : cases) {
    // A header that is fuzzy, as a new one is, names the charset too.
    for (const std::string& bytes : {Po(entries), "#, fuzzy\n" + Po(entries), Mo(entries)}) {
      ASSERT_EQ(Load(bytes), shown != nullptr) << bytes;
      EXPECT_EQ(Xlate(KTEXT("a")), WString(shown != nullptr ? shown : KTEXT("a"))) << bytes;
    }
  }
}

// Each name with a text in it; in those of two bytes the second looks like a backslash.
TEST_F(Translate, KnowsTheCodePagesOfTranslators) {
  const struct {
    UINT codePage;
    std::vector<const char*> names;
    const char* bytes;
    const WChar* text;
  } cases[] = {
      {28592, {"ISO-8859-2", "latin2"}, "\xB1", KTEXT("\x0105")},
      {28595, {"iso_8859-5"}, "\xB6", KTEXT("\x0416")},
      {28599, {"ISO-8859-9", "Latin5"}, "\xFD", KTEXT("\x0131")},
      {28605, {"ISO-8859-15", "latin-9"}, "\xA4", KTEXT("\x20AC")},
      {1250, {"windows-1250", "CP1250"}, "\xB9", KTEXT("\x0105")},
      {1251, {"windows-1251", "cp-1251"}, "\xC6", KTEXT("\x0416")},
      {1252, {"CP1252"}, "\x80", KTEXT("\x20AC")},
      {1253, {"windows-1253"}, "\xE1", KTEXT("\x03B1")},
      {1258, {"windows-1258"}, "\xFE", KTEXT("\x20AB")},
      {932, {"Shift_JIS", "SJIS", "CP932"}, "\x95\x5C\xB1\x83\x5C", KTEXT("\x8868\xFF71\x30BD")},
      {936, {"GB2312", "GBK", "CP936", "EUC-CN"}, "\x81\x5C\xB5\xE3", KTEXT("\x4E57\x70B9")},
      {949, {"EUC-KR", "UHC", "cp949"}, "\xC1\xA1", KTEXT("\xC810")},
      {950, {"Big5", "cp950"}, "\xA5\x5C\xC2\x49", KTEXT("\x529F\x9EDE")},
      {437, {"IBM437", "cp437"}, "\x82", KTEXT("\xE9")},
      {850, {"IBM850", "CP850"}, "\xD5", KTEXT("\x0131")},
  };
  for (const auto& c : cases) {
    const bool onMachine = MultiByteToWideChar(c.codePage, 0, "a", 1, nullptr, 0) != 0;
    for (const std::string name : c.names) {
      const std::string bytes = c.bytes;
      const Entries entries = {{"", "Content-Type: text/plain; charset=" + name + "\n"},
                               {"a", bytes}};
      const std::string po = Po({entries[0]}) + "msgid \"a\"\nmsgstr \"" + bytes + "\"\n";
      for (const std::string& file : {po, Mo(entries)}) {
        ASSERT_EQ(Load(file), onMachine) << name << kelp::GetTranslateFileError().ToUtf8().c_str();
        EXPECT_EQ(Xlate(KTEXT("a")), WString(onMachine ? c.text : KTEXT("a"))) << name;
      }
    }
  }
}

TEST_F(Translate, OfEqualKeysTheLastCountsOrIsAnError) {
  Entries often;
  for (int i = 0; i < 100; ++i) often.push_back({i % 2 == 0 ? "a" : "ab", std::to_string(i)});
  ASSERT_TRUE(Load(Po(often)));
  EXPECT_EQ(Keys(), (std::vector<WString>{KTEXT("ab"), KTEXT("a")}));
  EXPECT_EQ(Xlate(KTEXT("a")), WString(KTEXT("98")));
  EXPECT_EQ(Xlate(KTEXT("ab")), WString(KTEXT("99")));

  Load(Po({{"a", "1"}, {"b", "2"}, {"a", "3"}}));
  const sarn_text::CSarnStringT<WChar> path(Path().c_str());
  EXPECT_FALSE(xlate::LoadTranslateFile(path, xlate::eDetectDuplicates));
  EXPECT_TRUE(
      WString(xlate::GetLoadError()).EndsWith(KTEXT(":7: the source text has an entry already")));
  Load(Po({{"a", "1"}, {"b", "2"}}));
  EXPECT_TRUE(xlate::LoadTranslateFile(path, xlate::eDetectDuplicates));
}

TEST_F(Translate, LengthsEndAt65535UnitsOfEscapedText) {
  const std::string longest(65535, 'k');
  const WString key = WString::ConvertFromUtf8(longest.c_str());
  ASSERT_TRUE(Load(Po({{longest, longest}, {"k", "short"}})));
  EXPECT_EQ(Xlate(key.c_str()), key);
  EXPECT_EQ(Xlate(KTEXT("k")), WString(KTEXT("short")));

  for (const std::string& text : {longest + "k", std::string(32768, '\\')}) {
    EXPECT_EQ(ErrorOf(Po({{"a", "b"}, {"c", text}})), WString(KTEXT(":4: a text is too long")));
    EXPECT_EQ(ErrorOf(Mo({{"a", "b"}, {text, "c"}})),
              WString(KTEXT(": entry 2: a text is too long")));
  }
}

TEST_F(Translate, RefusesMalformedPoFiles) {
  using namespace std::string_literals;
  const std::pair<std::string, const WChar*> cases[] = {
      {"", KTEXT(":1: the file holds no entry")},
      {"# only\n#~ msgid \"gone\"\n", KTEXT(":3: the file holds no entry")},
      {"\xFF\xFEm\0s\0"s, KTEXT(":1: \"msgid\" expected")},
      {"\xDE\x12\x04", KTEXT(":1: \"msgid\" expected")},
      {"msgid a\n", KTEXT(":1: no text behind \"msgid\"")},
      {"\n\nmsgid \"a\"\n", KTEXT(":4: \"msgstr\" expected")},
      {"msgid \"a\"\nmsgstr\n", KTEXT(":3: no text behind \"msgstr\"")},
      {"msgid \"a\"\nmsgstr \"b", KTEXT(":2: a text has no closing quote")},
      {"msgid \"a\"\nmsgstr \"b\nc\"\n", KTEXT(":2: a text has no closing quote")},
      {"msgid \"a\"\nmsgstr \"b\\", KTEXT(":2: a text has no closing quote")},
      {"msgid \"a\"\nmsgstr \"\\q\"", KTEXT(":2: unknown escape in a text")},
      {"msgid \"a\"\nmsgstr \"\\xG\"", KTEXT(":2: an escape stands for no byte")},
      {"msgid \"a\"\nmsgstr \"\\xg\"", KTEXT(":2: an escape stands for no byte")},
      {"msgid \"a\"\nmsgstr \"\\x100\"", KTEXT(":2: an escape stands for no byte")},
      {"msgid \"a\"\nmsgstr \"\\400\"", KTEXT(":2: an escape stands for no byte")},
      {"msgid \"a\"\nmsgstr \"\\0\"", KTEXT(":2: an escape stands for no byte")},
      {"msgid \"a\"\nmsgstr \"b\0\""s, KTEXT(":2: a zero byte in a text")},
      {"msgid \"a\"\nmsgstr[0] \"b\"\n", KTEXT(":2: no text behind \"msgstr\"")},
      {"msgid \"a\"\nmsgid_plural \"b\"\nmsgstr \"c\"\n", KTEXT(":3: \"msgstr[0]\" expected")},
      {"msgid \"a\"\nmsgid_plural \"b\"\nmsgstr[0] \"c\"\nmsgstr[2] \"d\"\n",
       KTEXT(":4: \"msgstr[1]\" expected")},
      {"msgid \"a\"\nmsgstr \"b\"\n\nmsgid \"c\"\nmsgstr \"\xC3\"\n",
       KTEXT(":4: a text isn't in the charset of the catalogue")},
      {"msgid \"\"\nmsgstr \"charset=ISO-8859-12\"\n",
       KTEXT(":1: unknown charset \"ISO-8859-12\"")},
      {"\nmsgid \"\"\nmsgstr \"charset=UTF-7\"\n", KTEXT(":2: unknown charset \"UTF-7\"")},
      {"msgid \"a\"\nmsgstr \"b\"\ndomain \"c\"\n", KTEXT(":3: \"msgid\" expected")},
  };
  for (const auto& [bytes, error] : cases) EXPECT_EQ(ErrorOf(bytes), WString(error)) << bytes;
}

TEST_F(Translate, RefusesMalformedMoFiles) {
  EXPECT_TRUE(Load(Mo({}))) << "nothing at all is well-formed";
  std::string second = Mo({{"a", "b"}});
  second[6] = 1;
  EXPECT_TRUE(Load(second)) << "so is the second revision";
  const std::string good = Mo({{"a", "bc"}, {"d", "ef"}});
  ASSERT_TRUE(Load(good));
  const std::tuple<std::size_t, std::uint32_t, const WChar*> cases[] = {
      {4, 0x20000, KTEXT(": unknown revision of the form")},
      {8, 0xFFFFFFFF, KTEXT(": the table of texts reaches beyond the file")},
      {8, 8, KTEXT(": the table of texts reaches beyond the file")},
      {12, 0xFFFFFFFC, KTEXT(": the table of texts reaches beyond the file")},
      {16, 60, KTEXT(": the table of texts reaches beyond the file")},
      {28, 0xFFFFFFFF, KTEXT(": entry 1: a text reaches beyond the file")},
      {32, 0xFFFFFFFF, KTEXT(": entry 1: a text reaches beyond the file")},
      {32, 69, KTEXT(": entry 1: a text reaches beyond the file")},
      {36, 0, KTEXT(": entry 2: a text has no end")},
      {52, 1, KTEXT(": entry 2: a text has no end")},
  };
  for (const auto& [offset, number, error] : cases) {
    std::string bytes = good;
    std::memcpy(bytes.data() + offset, &number, sizeof(number));
    EXPECT_EQ(ErrorOf(bytes), WString(error)) << "offset " << offset;
  }

  // A hundred entries that all lie on one long text.
  std::string overlaid = Mo(Entries(100, {"", std::string(1000, 'x')}));
  for (std::size_t i = 1; i < 100; ++i) {
    std::memcpy(overlaid.data() + 28 + 8 * i, overlaid.data() + 28 + 8 * 100, 8);
  }
  EXPECT_EQ(ErrorOf(overlaid), WString(KTEXT(": entry 52: texts lie over each other")));
}

TEST_F(Translate, ACatalogueCutShortGivesNothingOrWhatIsWhole) {
  const std::string mo = Mo(kSurvey);
  for (std::size_t size = 0; size < mo.size(); ++size) {
    ASSERT_FALSE(ErrorOf(mo.substr(0, size)).empty()) << size;
  }

  const auto shown = [] {
    std::vector<WString> texts;
    for (const auto& entry : kSurvey) {
      texts.push_back(Xlate(WString::ConvertFromUtf8(entry.first.c_str()).c_str()));
    }
    return texts;
  };
  const std::string po = Po(kSurvey);
  ASSERT_TRUE(Load(kHeader));
  const std::vector<WString> none = shown();
  ASSERT_TRUE(Load(po));
  const std::vector<WString> all = shown();
  for (std::size_t size = 0; size < po.size(); ++size) {
    if (!ErrorOf(po.substr(0, size)).empty()) continue;
    const std::vector<WString> some = shown();
    const std::size_t whole = xlate::GetXlateTable()->end() - xlate::GetXlateTable()->begin();
    for (std::size_t i = 0; i < some.size(); ++i) {
      ASSERT_EQ(some[i], i <= whole ? all[i] : none[i]) << size;
    }
  }
}

// Of the header and the tables.
TEST_F(Translate, NoChangedNumberDoesHarm) {
  const std::size_t numbers = 28 + 16 * kSurvey.size();
  for (const std::string& good : {Mo(kSurvey), Mo(kSurvey, true)}) {
    for (std::size_t i = 0; i < numbers; ++i) {
      for (const char byte : {'\x01', '\xFF'}) {
        std::string bytes = good;
        bytes[i] = byte;
        if (!ErrorOf(bytes).empty()) continue;
        for (const xlate::XlateEntry& entry : *xlate::GetXlateTable()) {
          ASSERT_LE(entry.keyLength + entry.textLength, 2 * good.size());
        }
        Xlate(KTEXT("abc"));
      }
    }
  }
}

TEST_F(Translate, AFailedLoadAndAnUnloadLeaveNoTable) {
  EXPECT_FALSE(kelp::IsTranslateFileLoaded());
  ASSERT_TRUE(Load(Po({{"a", "1"}})));
  EXPECT_FALSE(kelp::LoadTranslateFile(Path() + KTEXT(".none")));
  EXPECT_TRUE(kelp::GetTranslateFileError().EndsWith(KTEXT(".none: the file can't be opened")));
  EXPECT_FALSE(kelp::IsTranslateFileLoaded());
  EXPECT_EQ(Xlate(KTEXT("a")), WString(KTEXT("a")));

  ASSERT_TRUE(Load(Po({{"a", "1"}})));
  kelp::UnloadTranslateFile();
  EXPECT_FALSE(kelp::IsTranslateFileLoaded());
  EXPECT_EQ(Xlate(KTEXT("a\\n")), WString(KTEXT("a\\n")));

  // The table's owner may empty it on its own: it stays a table, without hits.
  ASSERT_TRUE(Load(Po({{"a", "1"}})));
  xlate::UnloadTranslateFile();
  EXPECT_FALSE(kelp::IsTranslateFileLoaded());
  EXPECT_EQ(Xlate(KTEXT("a")), WString(KTEXT("a")));
  EXPECT_EQ(Xlate(KTEXT("a\\n@@x")), WString(KTEXT("a\n")));
}

}  // namespace
