#include "kernel32/ProfileText.h"

#include <cstring>
#include <type_traits>

#include "kernel32/PathName.h"

namespace winapi {
namespace {

constexpr std::string_view kMark = "\xFF\xFE";

template <class Unit>
bool IsBlank(Unit unit) {
  return static_cast<std::make_unsigned_t<Unit>>(unit) <= ' ';
}

// Blanks of the text of a system that counts no control characters among its letters.
template <>
bool IsBlank(char16_t unit) {
  return unit <= ' ';
}

std::u16string Wide(std::u16string_view text) {
  return std::u16string(text);
}

std::u16string Wide(std::string_view text) {
  return FromUtf8(text);
}

template <class Unit>
std::basic_string<Unit> As(std::u16string_view text) {
  if constexpr (std::is_same_v<Unit, char>) {
    return ToUtf8(text);
  } else {
    return std::u16string(text);
  }
}

// With the line feed. The C library looks for a byte much faster than a loop for a unit.
template <class Unit>
std::size_t LineSize(std::basic_string_view<Unit> text) {
  const auto* const begin = reinterpret_cast<const char*>(text.data());
  const std::size_t size = text.size() * sizeof(Unit);
  for (std::size_t at = 0; at < size; ++at) {
    const void* const found = std::memchr(begin + at, '\n', size - at);
    if (found == nullptr) break;
    at = static_cast<std::size_t>(static_cast<const char*>(found) - begin);
    if (text[at / sizeof(Unit)] == '\n') return at / sizeof(Unit) + 1;
  }
  return text.size();
}

// A piece of the text and what takes its place.
template <class Unit>
struct Change {
  std::size_t begin;
  std::size_t size;
  std::basic_string<Unit> text;
};

// Where a section and a key stand in a text.
template <class Unit>
struct Place {
  std::optional<std::size_t> sectionBegin;
  std::size_t sectionEnd = 0;
  std::size_t contentEnd = 0;  // before the empty lines at the section's end
  std::optional<ProfileLine<Unit>> key;
};

template <class Unit>
Place<Unit> Find(std::basic_string_view<Unit> text, std::u16string_view section,
                 const char16_t* key) {
  const std::u16string wantedSection = FoldedName(section);
  const std::u16string wantedKey = key == nullptr ? std::u16string() : FoldedName(key);
  Place<Unit> place;
  std::basic_string_view<Unit> rest = text;
  while (!rest.empty()) {
    const auto line = TakeProfileLine(rest);
    const auto begin = static_cast<std::size_t>(line.whole.data() - text.data());
    const std::size_t end = begin + line.whole.size();
    if (line.kind == ProfileLineKind::kSection) {
      if (place.sectionBegin) break;
      if (FoldedName(Wide(line.name)) == wantedSection) place.sectionBegin = begin;
    }
    if (!place.sectionBegin) continue;
    place.sectionEnd = end;
    if (!line.text.empty()) place.contentEnd = end;
    if (key != nullptr && line.kind == ProfileLineKind::kKey &&
        FoldedName(Wide(line.name)) == wantedKey) {
      place.key = line;
      break;
    }
  }
  return place;
}

// The ends of lines are those that the file has, or those of Windows in one that has none.
template <class Unit>
std::basic_string<Unit> LineEnd(std::basic_string_view<Unit> text) {
  const std::size_t end = text.find(Unit('\n'));
  if (end != text.npos && (end == 0 || text[end - 1] != '\r')) return {Unit('\n')};
  return {Unit('\r'), Unit('\n')};
}

template <class Unit>
Change<Unit> Replacement(std::basic_string_view<Unit> text, const ProfileLine<Unit>& line,
                         const char16_t* value) {
  const auto begin = static_cast<std::size_t>(line.whole.data() - text.data());
  if (value == nullptr) return {begin, line.whole.size(), {}};
  const std::size_t valueBegin = line.whole.find(Unit('=')) + 1;
  std::size_t end = line.whole.size();
  if (line.whole.ends_with(Unit('\n'))) --end;
  if (end > valueBegin && line.whole[end - 1] == '\r') --end;
  return {begin + valueBegin, end - valueBegin, As<Unit>(value)};
}

template <class Unit>
Change<Unit> Insertion(std::basic_string_view<Unit> text, const Place<Unit>& place,
                       std::u16string_view section, const char16_t* key, const char16_t* value) {
  const std::basic_string<Unit> lineEnd = LineEnd(text);
  const std::size_t at = place.sectionBegin ? place.contentEnd : text.size();
  std::basic_string<Unit> lines;
  if (at > 0 && text[at - 1] != '\n') lines += lineEnd;
  if (!place.sectionBegin) {
    lines += Unit('[') + As<Unit>(section) + Unit(']') + lineEnd;
  }
  lines += As<Unit>(key) + Unit('=') + As<Unit>(value) + lineEnd;
  return {at, 0, std::move(lines)};
}

// False where nothing is to be done.
template <class Unit>
bool Apply(std::basic_string<Unit>& text, std::u16string_view section, const char16_t* key,
           const char16_t* value) {
  const std::basic_string_view<Unit> view = text;
  const Place<Unit> place = Find(view, section, key);
  Change<Unit> change{};
  if (key == nullptr) {
    if (!place.sectionBegin) return false;
    change = {*place.sectionBegin, place.sectionEnd - *place.sectionBegin, {}};
  } else if (place.key) {
    change = Replacement(view, *place.key, value);
    if (value != nullptr && view.substr(change.begin, change.size) == change.text) return false;
  } else if (value != nullptr) {
    change = Insertion(view, place, section, key, value);
  } else {
    return false;
  }
  text.replace(change.begin, change.size, change.text);
  return true;
}

}  // namespace

std::optional<std::u16string> ProfileUnits(std::string_view bytes) {
  if (!bytes.starts_with(kMark)) return std::nullopt;
  bytes.remove_prefix(kMark.size());
  std::u16string units((bytes.size() + 1) / 2, u'\0');
  std::memcpy(units.data(), bytes.data(), bytes.size());
  return units;
}

template <class Unit>
std::basic_string_view<Unit> WithoutBlanks(std::basic_string_view<Unit> text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

template <class Unit>
ProfileLine<Unit> TakeProfileLine(std::basic_string_view<Unit>& text) {
  ProfileLine<Unit> line;
  line.whole = text.substr(0, LineSize(text));
  text.remove_prefix(line.whole.size());
  line.text = WithoutBlanks(line.whole);
  if (line.text.empty() || line.text[0] == ';') return line;
  if (line.text[0] == '[') {
    const std::size_t close = line.text.find(Unit(']'));
    if (close == line.text.npos) return line;
    line.kind = ProfileLineKind::kSection;
    line.name = WithoutBlanks(line.text.substr(1, close - 1));
    return line;
  }
  const std::size_t equals = line.text.find(Unit('='));
  if (equals == line.text.npos || equals == 0) return line;
  line.kind = ProfileLineKind::kKey;
  line.name = WithoutBlanks(line.text.substr(0, equals));
  line.value = WithoutBlanks(line.text.substr(equals + 1));
  return line;
}

template std::u16string_view WithoutBlanks(std::u16string_view);
template ProfileLine<char> TakeProfileLine(std::string_view&);
template ProfileLine<char16_t> TakeProfileLine(std::u16string_view&);

std::optional<std::string> ChangedProfile(const std::string& bytes, std::u16string_view section,
                                          const char16_t* key, const char16_t* value) {
  std::optional<std::u16string> units = ProfileUnits(bytes);
  if (!units) {
    std::string text = bytes;
    if (!Apply(text, section, key, value)) return std::nullopt;
    return text;
  }
  if (!Apply(*units, section, key, value)) return std::nullopt;
  std::string changed(kMark);
  changed.append(reinterpret_cast<const char*>(units->data()), 2 * units->size());
  return changed;
}

}  // namespace winapi
