#include "kelp0lang/StringLoader.h"

#include <windows.h>

#include <algorithm>

#include "kelptext/Characters.h"
#include "sarnutils/CharacterWidth.h"

namespace kelp {

WString CStringLoader::GetModuleName() const {
  DWORD size = MAX_PATH;
  for (;; size *= 2) {
    WString name;
    WChar* const buffer = name.GetBufferAsCString(static_cast<int>(size));
    const DWORD length = GetModuleFileNameW(static_cast<HMODULE>(m_module), buffer, size);
    name.ReleaseBuffer(static_cast<int>(length));
    if (length < size) return name;
  }
}

unsigned int CStringLoader::GetStringLength(unsigned int id) const {
  // 16 counted strings in a row, the length before the units.
  constexpr unsigned int kBlockSize = 16;
  const auto module = static_cast<HMODULE>(m_module);
  const auto block = static_cast<WORD>(id / kBlockSize + 1);
  const HRSRC resource = FindResourceW(module, MAKEINTRESOURCEW(block), RT_STRING);
  if (resource == nullptr) return 0;
  const auto* string = static_cast<const WChar*>(LockResource(LoadResource(module, resource)));
  if (string == nullptr) return 0;
  for (unsigned int before = id % kBlockSize; before > 0; --before) string += 1 + *string;
  return *string;
}

void CStringLoader::LoadStr(unsigned int id, WChar* target, int size) const {
  if (size > 0) target[0] = 0;
  LoadStringW(static_cast<HINSTANCE>(m_module), id, target, size);
}

void CStringLoader::LoadStr(unsigned int id, char* target, int size) const {
  constexpr int kSize = 1024;
  WChar text[kSize];
  LoadStr(id, text, kSize);
  char character[detail::kMaxCharacterUnits];
  for (const WChar* next = text; *next != 0;) {
    const int count = sarn_text::ConvertCharacter(next, character);
    if (count < 0) break;
    if (count > size) return;
    target = std::copy_n(character, count, target);
    size -= count;
  }
  if (size > 0) *target = 0;
}

}  // namespace kelp
