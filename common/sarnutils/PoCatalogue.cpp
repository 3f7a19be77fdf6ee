// The text form: comments, keywords and quoted texts in a row.
//
//   # A translator's comment.
//   #, fuzzy
//   msgctxt "menu"
//   msgid "%d point"
//   msgid_plural "%d points"
//   msgstr[0] "%d punto"
//   msgstr[1] "%d punti"
#include <algorithm>
#include <array>
#include <utility>

#include "sarnutils/Catalogue.h"
#include "sarnutils/Charset.h"

namespace xlate::detail {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kBlanks = " \t\r\n\v\f";
constexpr std::string_view kKeywordUnits =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
// What can end a run of plain bytes in a text.
constexpr std::string_view kTextEnds = "\"\\\n";
constexpr unsigned kMaxByte = 0xFF;

// The escapes of one letter.
constexpr std::array<std::pair<char, char>, 11> kEscapes = {{{'n', '\n'},
                                                             {'t', '\t'},
                                                             {'r', '\r'},
                                                             {'"', '"'},
                                                             {'\\', '\\'},
                                                             {'a', '\a'},
                                                             {'b', '\b'},
                                                             {'f', '\f'},
                                                             {'v', '\v'},
                                                             {'\'', '\''},
                                                             {'?', '?'}}};

// The value of a digit; 16 for what is none.
unsigned DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return static_cast<unsigned>(digit - '0');
  if (digit >= 'a' && digit <= 'f') return static_cast<unsigned>(digit - 'a' + 10);
  if (digit >= 'A' && digit <= 'F') return static_cast<unsigned>(digit - 'A' + 10);
  return 16;
}

class PoReader {
 public:
  explicit PoReader(std::string_view bytes) : m_rest(bytes) {
    if (m_rest.starts_with(kByteOrderMark)) m_rest.remove_prefix(kByteOrderMark.size());
  }

  std::vector<CatalogueEntry> Read() {
    std::vector<CatalogueEntry> entries;
    for (;;) {
      const bool fuzzy = SkipComments();
      if (m_rest.empty()) break;
      CatalogueEntry entry = ReadEntry();
      // From here on, what the texts behind the header are read by.
      if (entry.key.empty()) m_charset = FindCharset(CharsetName(entry.text)).value_or(Charset());
      // The header entry of a fresh catalogue is fuzzy and counts all the same.
      if (!fuzzy || entry.key.empty()) entries.push_back(std::move(entry));
      m_anyEntry = true;
    }
    if (!m_anyEntry) Fail("the file holds no entry");
    return entries;
  }

 private:
  [[noreturn]] void Fail(std::string what) const { throw CatalogueError{m_line, std::move(what)}; }

  char Take() {
    const char byte = m_rest.front();
    m_rest.remove_prefix(1);
    return byte;
  }

  // Blanks and the ends of lines.
  void SkipBlanks() {
    while (!m_rest.empty() && kBlanks.find(m_rest.front()) != std::string_view::npos) {
      if (Take() == '\n') ++m_line;
    }
  }

  // All comments up to an entry, obsolete entries among them; whether they call it fuzzy.
  bool SkipComments() {
    bool fuzzy = false;
    for (SkipBlanks(); m_rest.starts_with('#'); SkipBlanks()) {
      const std::string_view line = m_rest.substr(0, m_rest.find('\n'));
      m_rest.remove_prefix(line.size());
      if (line.starts_with("#~")) fuzzy = false;
      if (line.starts_with("#,")) fuzzy |= HasFlag(line.substr(2), "fuzzy");
    }
    return fuzzy;
  }

  static bool HasFlag(std::string_view flags, std::string_view wanted) {
    while (!flags.empty()) {
      const std::size_t comma = std::min(flags.find(','), flags.size());
      std::string_view flag = flags.substr(0, comma);
      flag.remove_prefix(std::min(flag.find_first_not_of(kBlanks), flag.size()));
      flag = flag.substr(0, flag.find_last_not_of(kBlanks) + 1);
      if (flag == wanted) return true;
      flags.remove_prefix(std::min(comma + 1, flags.size()));
    }
    return false;
  }

  // Whether the keyword comes next; takes it.
  bool TakeKeyword(std::string_view keyword) {
    SkipBlanks();
    const std::string_view word =
        m_rest.substr(0, std::min(m_rest.find_first_not_of(kKeywordUnits), m_rest.size()));
    if (word != keyword) return false;
    m_rest.remove_prefix(word.size());
    return true;
  }

  CatalogueEntry ReadEntry() {
    CatalogueEntry entry{{}, {}, m_line};
    if (TakeKeyword("msgctxt")) entry.key = ReadTexts("msgctxt") + kContextEnd;
    if (!TakeKeyword("msgid")) Fail("\"msgid\" expected");
    entry.key += ReadTexts("msgid");
    if (!TakeKeyword("msgid_plural")) {
      if (!TakeKeyword("msgstr")) Fail("\"msgstr\" expected");
      entry.text = ReadTexts("msgstr");
      return entry;
    }
    ReadTexts("msgid_plural");
    if (!TakeKeyword("msgstr")) Fail("\"msgstr[0]\" expected");
    for (std::size_t form = 0; form == 0 || TakeKeyword("msgstr"); ++form) {
      const std::string text = ReadPluralForm(form);
      if (form == 0) entry.text = text;
    }
    return entry;
  }

  std::string ReadPluralForm(std::size_t form) {
    const std::string keyword = std::string("msgstr[").append(std::to_string(form)).append("]");
    const std::string_view index = std::string_view(keyword).substr(keyword.find('['));
    if (!m_rest.starts_with(index)) Fail("\"" + keyword + "\" expected");
    m_rest.remove_prefix(index.size());
    return ReadTexts(keyword);
  }

  // The quoted texts behind a keyword, joined.
  std::string ReadTexts(const std::string& keyword) {
    SkipBlanks();
    if (!m_rest.starts_with('"')) Fail("no text behind \"" + keyword + "\"");
    std::string text;
    for (; m_rest.starts_with('"'); SkipBlanks()) {
      Take();
      ReadText(text);
    }
    return text;
  }

  // The bytes of the character at a place; what can't be the second of two stands alone.
  std::size_t CharacterSize(std::size_t at) const {
    constexpr unsigned char kFirstTrail = 0x40;
    if (!m_charset.IsLead(m_rest[at]) || at + 1 == m_rest.size()) return 1;
    return static_cast<unsigned char>(m_rest[at + 1]) >= kFirstTrail ? 2 : 1;
  }

  // How many bytes come before a quote, a backslash or the end of the line.
  std::size_t PlainSize() const {
    std::size_t at = 0;
    while (at < m_rest.size() && kTextEnds.find(m_rest[at]) == std::string_view::npos) {
      at += CharacterSize(at);
    }
    return at;
  }

  // Appends a text up to its closing quote.
  void ReadText(std::string& text) {
    for (;;) {
      const std::size_t plain = PlainSize();
      text += m_rest.substr(0, plain);
      if (text.find('\0', text.size() - plain) != std::string::npos) Fail("a zero byte in a text");
      m_rest.remove_prefix(plain);
      if (m_rest.empty() || m_rest.front() == '\n') Fail("a text has no closing quote");
      if (Take() == '"') return;
      text += ReadEscape();
    }
  }

  // The byte that an escape stands for, behind its backslash.
  char ReadEscape() {
    if (m_rest.empty()) Fail("a text has no closing quote");
    if (DigitValue(m_rest.front()) < 8) return ReadNumber(8, 3);
    const char letter = Take();
    if (letter == 'x') return ReadNumber(16, std::string_view::npos);
    const auto* escape = std::find_if(kEscapes.begin(), kEscapes.end(),
                                      [letter](const auto& e) { return e.first == letter; });
    if (escape == kEscapes.end()) Fail("unknown escape in a text");
    return escape->second;
  }

  char ReadNumber(unsigned base, std::size_t maxDigits) {
    unsigned value = 0;
    std::size_t digits = 0;
    for (; digits < maxDigits && !m_rest.empty() && DigitValue(m_rest.front()) < base; ++digits) {
      value = value * base + DigitValue(Take());
      if (value > kMaxByte) Fail("an escape stands for no byte");
    }
    if (digits == 0 || value == 0) Fail("an escape stands for no byte");
    return static_cast<char>(value);
  }

  std::string_view m_rest;
  std::size_t m_line = 1;
  Charset m_charset;
  bool m_anyEntry = false;
};

}  // namespace

std::vector<CatalogueEntry> ReadPoCatalogue(std::string_view bytes) {
  return PoReader(bytes).Read();
}

}  // namespace xlate::detail
