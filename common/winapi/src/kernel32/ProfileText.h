// The text of a profile file, by its lines; internal to the layer.
//
// A file with the mark of UTF-16 holds 16-bit units, any other the bytes of CP_ACP. Both are read
// and changed in their own units, so that what isn't understood stays as it is.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace winapi {

// The units behind the mark; an odd byte at the end counts as a unit. Not set for a file of bytes.
std::optional<std::u16string> ProfileUnits(std::string_view bytes);

enum class ProfileLineKind { kOther, kSection, kKey };

// The views lie in the text. Comments, empty lines and what is neither a section nor a key are
// kOther.
template <class Unit>
struct ProfileLine {
  std::basic_string_view<Unit> whole;  // with its end
  std::basic_string_view<Unit> text;   // without the blanks around it
  ProfileLineKind kind = ProfileLineKind::kOther;
  std::basic_string_view<Unit> name;   // of the section, or the key
  std::basic_string_view<Unit> value;  // of the key, without the blanks around it
};

template <class Unit>
std::basic_string_view<Unit> WithoutBlanks(std::basic_string_view<Unit> text);

// Takes the next line off a text, which isn't empty.
template <class Unit>
ProfileLine<Unit> TakeProfileLine(std::basic_string_view<Unit>& text);

// A new content of the file: with the key's value in the section, both made where they aren't
// there; without the key where value is null, without the section where key is null too. Not set
// where nothing is to be done.
std::optional<std::string> ChangedProfile(const std::string& bytes, std::u16string_view section,
                                          const char16_t* key, const char16_t* value);

}  // namespace winapi
