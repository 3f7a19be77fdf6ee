#include "kernel32/CodePageTable.h"

#include <iconv.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <mutex>
#include <type_traits>

namespace winapi {

// Bytes that iconv doesn't know have the control character of their number up to 0x9F, and above
// private ones, one after the other, as in Windows' own tables.
struct CodePageTable::Page {
  UINT number;
  const char* name;       // iconv's
  char16_t firstPrivate;  // of the bytes above 0x9F that are no character
  unsigned char firstLead = 0, lastLead = 0, otherFirstLead = 0, otherLastLead = 0;
  char16_t substitute = u'?';
};

namespace {

constexpr CodePageTable::Page kPages[] = {
    {437, "CP437", 0},
    {850, "CP850", 0},
    {932, "CP932", 0xF8F0, 0x81, 0x9F, 0xE0, 0xFC, u'\u30FB'},
    {936, "CP936", 0xF8F5, 0x81, 0xFE},
    {949, "CP949", 0xF8F7, 0x81, 0xFE},
    {950, "CP950", 0xF8F8, 0x81, 0xFE},
    {1250, "CP1250", 0},
    {1251, "CP1251", 0},
    {1252, "CP1252", 0},
    {1253, "CP1253", 0xF8F9},
    {1254, "CP1254", 0},
    {1255, "CP1255", 0xF88D},
    {1256, "CP1256", 0},
    {1257, "CP1257", 0xF8FC},
    {1258, "CP1258", 0},
    {28592, "ISO-8859-2", 0},
    {28593, "ISO-8859-3", 0xF7F5},
    {28594, "ISO-8859-4", 0},
    {28595, "ISO-8859-5", 0},
    {28596, "ISO-8859-6", 0xF7C8},
    {28597, "ISO-8859-7", 0xF7C2},
    {28598, "ISO-8859-8", 0xF79C},
    {28599, "ISO-8859-9", 0},
    {28603, "ISO-8859-13", 0},
    {28605, "ISO-8859-15", 0},
};

// Where Windows kept to older editions of a standard than iconv, or has a character that iconv
// lacks. kNone is a byte that is private on Windows.
struct Difference {
  UINT page;
  unsigned char byte;
  char16_t unit;
};

constexpr Difference kDifferences[] = {
    {1255, 0xCA, 0x05BA},
    {28597, 0xA1, 0x02BD},
    {28597, 0xA2, 0x02BC},
    {28597, 0xA4, CodePageTable::kNone},
    {28597, 0xA5, CodePageTable::kNone},
    {28597, 0xAA, CodePageTable::kNone},
    {28598, 0xAF, 0x203E},
    {28598, 0xFD, CodePageTable::kNone},
    {28598, 0xFE, CodePageTable::kNone},
};

// Characters that a user may define stand one after the other in the private area. The trails have
// the gaps of their page.
struct UserArea {
  UINT page;
  unsigned firstLead, lastLead, firstTrail, lastTrail;
  unsigned gapBegin, gapEnd;  // trails that aren't
  char16_t first;
};

constexpr UserArea kUserAreas[] = {
    {936, 0xAA, 0xAF, 0xA1, 0xFE, 0, 0, 0xE000},
    {936, 0xF8, 0xFE, 0xA1, 0xFE, 0, 0, 0xE234},
    {936, 0xA1, 0xA7, 0x40, 0xA0, 0x7F, 0x80, 0xE4C6},
    {949, 0xC9, 0xC9, 0xA1, 0xFE, 0, 0, 0xE000},
    {949, 0xFE, 0xFE, 0xA1, 0xFE, 0, 0, 0xE05E},
    {950, 0xFA, 0xFE, 0x40, 0xFE, 0x7F, 0xA1, 0xE000},
    {950, 0x8E, 0xA0, 0x40, 0xFE, 0x7F, 0xA1, 0xE311},
    {950, 0x81, 0x8D, 0x40, 0xFE, 0x7F, 0xA1, 0xEEB8},
};

using Converter = std::unique_ptr<std::remove_pointer_t<iconv_t>, int (*)(iconv_t)>;

Converter Open(const char* to, const char* from) {
  const iconv_t opened = iconv_open(to, from);
  const auto none = reinterpret_cast<iconv_t>(-1);
  return {opened == none ? nullptr : opened, iconv_close};
}

// Bytes through a converter, from its first state on; how many came out, 0 where it refuses them.
std::size_t Convert(iconv_t converter, const char* bytes, std::size_t size, char (&result)[8]) {
  char* source = const_cast<char*>(bytes);
  char* target = result;
  std::size_t room = sizeof(result);
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  if (iconv(converter, &source, &size, &target, &room) != 0) return 0;
  // Some pages hold a letter back, to join it with the accent that may follow.
  iconv(converter, nullptr, nullptr, &target, &room);
  return sizeof(result) - room;
}

char16_t ToUnit(iconv_t decoder, const char* bytes, std::size_t size) {
  char result[8];
  if (Convert(decoder, bytes, size, result) != 2) return CodePageTable::kNone;
  return static_cast<char16_t>(static_cast<unsigned char>(result[0]) |
                               static_cast<unsigned char>(result[1]) << 8);
}

std::uint16_t ToCode(iconv_t encoder, char16_t unit) {
  const char bytes[] = {static_cast<char>(unit), static_cast<char>(unit >> 8)};
  char result[8];
  const std::size_t size = Convert(encoder, bytes, 2, result);
  const unsigned first = static_cast<unsigned char>(result[0]);
  if (size == 1) return static_cast<std::uint16_t>(first);
  const unsigned second = static_cast<unsigned char>(result[1]);
  return static_cast<std::uint16_t>(size == 2 ? first << 8 | second : 0);
}

bool HasLead(const CodePageTable::Page& page, unsigned byte) {
  return (byte >= page.firstLead && byte <= page.lastLead && page.firstLead != 0) ||
         (byte >= page.otherFirstLead && byte <= page.otherLastLead && page.otherFirstLead != 0);
}

}  // namespace

CodePageTable::CodePageTable(const Page& page) : m_substitute(page.substitute) {
  const Converter decoder = Open("UTF-16LE", page.name), encoder = Open(page.name, "UTF-16LE");
  if (decoder == nullptr || encoder == nullptr) return;
  SetSingles(page, decoder.get());
  if (page.firstLead != 0) SetPairs(page, decoder.get());
  SetCodes(encoder.get());
}

void CodePageTable::SetSingles(const Page& page, void* decoder) {
  m_single.resize(256);
  char16_t nextPrivate = page.firstPrivate;
  for (unsigned byte = 0; byte < m_single.size(); ++byte) {
    char16_t& unit = m_single[byte];
    const char text = static_cast<char>(byte);
    const auto* const difference =
        std::find_if(std::begin(kDifferences), std::end(kDifferences),
                     [&](const Difference& d) { return d.page == page.number && d.byte == byte; });
    if (HasLead(page, byte)) {
      unit = kLead;
      continue;
    }
    unit = difference != std::end(kDifferences) ? difference->unit : ToUnit(decoder, &text, 1);
    if (unit == kNone) unit = byte < 0xA0 ? static_cast<char16_t>(byte) : nextPrivate++;
  }
}

void CodePageTable::SetPairs(const Page& page, void* decoder) {
  m_pairs.assign((256 - kFirstLead) * 256, kNone);
  for (unsigned lead = kFirstLead; lead < 256; ++lead) {
    if (!HasLead(page, lead)) continue;
    for (unsigned trail = 0x40; trail < 256; ++trail) {
      const char text[] = {static_cast<char>(lead), static_cast<char>(trail)};
      m_pairs[PlaceOf(lead, trail)] = ToUnit(decoder, text, 2);
    }
  }
  for (const UserArea& area : kUserAreas) {
    if (area.page != page.number) continue;
    char16_t next = area.first;
    for (unsigned lead = area.firstLead; lead <= area.lastLead; ++lead) {
      for (unsigned trail = area.firstTrail; trail <= area.lastTrail; ++trail) {
        if (trail >= area.gapBegin && trail < area.gapEnd) continue;
        m_pairs[PlaceOf(lead, trail)] = next++;
      }
    }
  }
}

// Of two codes of a character iconv says which one is written.
void CodePageTable::SetCodes(void* encoder) {
  m_codes.resize(0x10000);
  const auto set = [this, encoder](char16_t unit, unsigned code) {
    if (unit == kNone || unit == kLead) return;
    std::uint16_t& known = m_codes[unit];
    known = known == 0 ? static_cast<std::uint16_t>(code) : ToCode(encoder, unit);
  };
  for (unsigned byte = 1; byte < m_single.size(); ++byte) set(m_single[byte], byte);
  for (std::size_t place = 0; place < m_pairs.size(); ++place) {
    set(m_pairs[place], static_cast<unsigned>(place) + (kFirstLead << 8));
  }
}

const CodePageTable* CodePageTable::Find(UINT codePage) {
  const auto* const page = std::find_if(std::begin(kPages), std::end(kPages),
                                        [=](const Page& p) { return p.number == codePage; });
  if (page == std::end(kPages)) return nullptr;
  struct Slot {
    std::once_flag once;
    const CodePageTable* table = nullptr;
  };
  // They outlive all threads and static objects.
  static constinit Slot slots[std::size(kPages)];
  Slot& slot = slots[page - std::begin(kPages)];
  std::call_once(slot.once, [&] { slot.table = new CodePageTable(*page); });
  return slot.table->IsComplete() ? slot.table : nullptr;
}

}  // namespace winapi
