#include "sarnutils/Xlate.h"

#include <tchar.h>
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kelptext/Compiler.h"
#include "sarnutils/Catalogue.h"
#include "sarnutils/Charset.h"

KELP_BUILDS_FIRST

namespace xlate {

using detail::Charset;
using sarn_text::CSarnStringT;
using WideText = std::basic_string<WChar>;
using WideView = std::basic_string_view<WChar>;

namespace {

KELP_BUILT_FIRST constinit CXlateTable table;
KELP_BUILT_FIRST constinit CSarnStringT<WChar> loadError;

constexpr std::size_t kMaxLength = UINT16_MAX;
// No unit takes more bytes in any charset.
constexpr std::size_t kMaxBytes = 3 * kMaxLength;

std::string ReadFile(const WChar* path) {
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(_wfopen(path, KTEXT("rb")),
                                                             std::fclose);
  if (file == nullptr) throw detail::CatalogueError{0, "the file can't be opened"};
  std::string bytes;
  char block[16384];
  while (const std::size_t size = std::fread(block, 1, sizeof(block), file.get())) {
    bytes.append(block, size);
  }
  if (std::ferror(file.get()) != 0) throw detail::CatalogueError{0, "the file can't be read"};
  return bytes;
}

Charset CharsetOf(const std::vector<detail::CatalogueEntry>& entries) {
  const auto header = std::find_if(entries.begin(), entries.end(),
                                   [](const auto& entry) { return entry.key.empty(); });
  if (header == entries.end()) return {};
  const std::string_view name = detail::CharsetName(header->text);
  if (const auto charset = detail::FindCharset(name)) return *charset;
  throw detail::CatalogueError{header->place,
                               std::string("unknown charset \"").append(name).append("\"")};
}

WideText Decode(std::string_view bytes, const Charset& charset, std::size_t place) {
  if (bytes.empty()) return {};
  if (bytes.size() > kMaxBytes) throw detail::CatalogueError{place, "a text is too long"};
  const auto inCharset = [&charset](char byte) {
    return static_cast<unsigned char>(byte) <= charset.lastByte;
  };
  WideText text(bytes.size(), 0);
  const int size = static_cast<int>(bytes.size());
  const int count = MultiByteToWideChar(charset.codePage, MB_ERR_INVALID_CHARS, bytes.data(), size,
                                        text.data(), size);
  if (count == 0 || !std::all_of(bytes.begin(), bytes.end(), inCharset)) {
    throw detail::CatalogueError{place, "a text isn't in the charset of the catalogue"};
  }
  text.resize(static_cast<std::size_t>(count));
  return text;
}

WideText Escape(const WideText& text) {
  WideText escaped;
  escaped.reserve(text.size());
  for (const WChar unit : text) {
    if (unit == '\\' || unit == '\r' || unit == '\n') escaped += KTEXT('\\');
    escaped += unit == '\r' ? KTEXT('r') : unit == '\n' ? KTEXT('n') : unit;
  }
  return escaped;
}

// The order of the table.
bool StandsBefore(WideView a, WideView b) {
  const int common = wcsncmp(a.data(), b.data(), std::min(a.size(), b.size()));
  return common != 0 ? common < 0 : a.size() > b.size();
}

WideText Widen(std::string_view ascii) {
  return WideText(ascii.begin(), ascii.end());
}

}  // namespace

namespace detail {

// Brings the entries of a catalogue into their final form and hands them to the table in one step.
class TableBuilder {
 public:
  explicit TableBuilder(EDetectErrorFlags flags) : m_flags(flags) {}

  void Add(const std::vector<CatalogueEntry>& entries) {
    const Charset charset = CharsetOf(entries);
    for (const CatalogueEntry& entry : entries) {
      if (entry.key.empty()) continue;
      const Part key = AddText(entry.key, charset, entry.place);
      m_places.push_back({key, AddText(entry.text, charset, entry.place), entry.place});
    }
    std::stable_sort(m_places.begin(), m_places.end(), [this](const Place& a, const Place& b) {
      return StandsBefore(View(a.key), View(b.key));
    });
    RemoveDuplicates();
  }

  void Fill(CXlateTable& target) const {
    auto units = std::make_unique<WChar[]>(m_units.size());
    auto entries = std::make_unique<XlateEntry[]>(m_places.size());
    std::copy(m_units.begin(), m_units.end(), units.get());
    std::transform(m_places.begin(), m_places.end(), entries.get(), [&units](const Place& place) {
      return XlateEntry{units.get() + place.key.begin, place.key.length,
                        units.get() + place.text.begin, place.text.length};
    });
    target.Clear();
    target.m_unitCount = m_units.size();
    target.m_units = units.release();
    target.m_first = entries.release();
    target.m_last = target.m_first + m_places.size();
    target.m_flags = m_flags;
    target.m_loaded = 1;
  }

  static void Clear(CXlateTable& target) { target.Clear(); }

 private:
  // A text within m_units.
  struct Part {
    std::size_t begin;
    std::uint16_t length;
  };
  struct Place {
    Part key;
    Part text;
    std::size_t inFile;
  };

  WideView View(const Part& part) const {
    return WideView(m_units).substr(part.begin, part.length);
  }

  Part AddText(std::string_view bytes, const Charset& charset, std::size_t place) {
    const WideText text = Escape(Decode(bytes, charset, place));
    if (text.size() > kMaxLength) throw CatalogueError{place, "a text is too long"};
    m_units += text;
    return {m_units.size() - text.size(), static_cast<std::uint16_t>(text.size())};
  }

  // The last of equal keys stays; the sort has kept them in the order of the file.
  void RemoveDuplicates() {
    const auto sameKey = [this](const Place& a, const Place& b) {
      return View(a.key) == View(b.key);
    };
    if ((m_flags & eDetectDuplicates) != 0) {
      const auto twice = std::adjacent_find(m_places.begin(), m_places.end(), sameKey);
      if (twice == m_places.end()) return;
      throw CatalogueError{twice[1].inFile, "the source text has an entry already"};
    }
    const auto kept = std::unique(m_places.rbegin(), m_places.rend(), sameKey);
    m_places.erase(m_places.begin(), kept.base());
  }

  EDetectErrorFlags m_flags;
  WideText m_units;
  std::vector<Place> m_places;
};

}  // namespace detail

namespace {

// "path:12: what", and for a .mo file "path: entry 12: what".
CSarnStringT<WChar> Message(const CSarnStringT<WChar>& path, const detail::CatalogueError& error,
                            bool binary) {
  WideText message(path.c_str());
  if (error.place != 0) {
    message += Widen((binary ? ": entry " : ":") + std::to_string(error.place));
  }
  message += Widen(": " + error.what);
  return CSarnStringT<WChar>(message.c_str());
}

}  // namespace

CXlateTable::~CXlateTable() {
  Clear();
}

void CXlateTable::Clear() noexcept {
  static_assert(HasItsLayout());
  delete[] m_first;
  delete[] m_units;
  m_first = m_last = nullptr;
  m_units = nullptr;
  m_unitCount = 0;
  m_flags = eDetectNone;
  m_loaded = 0;
}

bool LoadTranslateFile(const CSarnStringT<WChar>& path, EDetectErrorFlags flags) {
  detail::TableBuilder::Clear(table);
  loadError = CSarnStringT<WChar>();
  bool binary = false;
  try {
    const std::string bytes = ReadFile(path.c_str());
    binary = detail::IsMoCatalogue(bytes);
    detail::TableBuilder builder(flags);
    builder.Add(binary ? detail::ReadMoCatalogue(bytes) : detail::ReadPoCatalogue(bytes));
    builder.Fill(table);
  } catch (const detail::CatalogueError& error) {
    loadError = Message(path, error, binary);
    return false;
  }
  return true;
}

void UnloadTranslateFile() {
  detail::TableBuilder::Clear(table);
}

const CXlateTable* GetXlateTable() {
  return &table;
}

const WChar* GetLoadError() {
  return loadError.c_str();
}

}  // namespace xlate
