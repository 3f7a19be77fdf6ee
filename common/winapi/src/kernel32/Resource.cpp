// The resources of modules: string tables.
#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <map>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "Fail.h"
#include "winapi_host.h"

namespace {

// A string table is stored in blocks of strings with consecutive ids: for each its length, then its
// units. Block 1 begins with the string 0.
constexpr UINT kBlockSize = 16;
constexpr WORD kStringType = 6;

using Block = std::vector<WCHAR>;
using Languages = std::map<WORD, Block>;
using Blocks = std::map<WORD, Languages>;

struct Resources {
  std::mutex mutex;
  std::map<HMODULE, Blocks> modules;
};

// It outlives all static objects.
Resources& All() {
  static Resources* const resources = new Resources;
  return *resources;
}

HMODULE ModuleOrProgram(HMODULE module) {
  return module != nullptr ? module : GetModuleHandleW(nullptr);
}

WORD BlockOf(UINT id) {
  return static_cast<WORD>((id & 0xFFFF) / kBlockSize + 1);
}

// The strings of one block; those that it lacks are empty.
Block MakeBlock(WORD name, const std::map<WORD, std::u16string_view>& strings) {
  Block block;
  const UINT first = (name - 1u) * kBlockSize;
  for (UINT id = first; id < first + kBlockSize; ++id) {
    const auto found = strings.find(static_cast<WORD>(id));
    const std::u16string_view text = found != strings.end() ? found->second : u"";
    block.push_back(static_cast<WCHAR>(text.size()));
    block.insert(block.end(), text.begin(), text.end());
  }
  return block;
}

// A type or name as a number; nothing where it is another text.
std::optional<WORD> NumberOf(LPCWSTR name) {
  if (IS_INTRESOURCE(name)) return static_cast<WORD>(reinterpret_cast<ULONG_PTR>(name));
  if (name[0] != u'#') return std::nullopt;
  unsigned number = 0;
  for (++name; *name >= u'0' && *name <= u'9'; ++name) number = number * 10 + (*name - u'0');
  return static_cast<WORD>(number);
}

HRSRC HandleOf(const Block& block) {
  return reinterpret_cast<HRSRC>(const_cast<Block*>(&block));
}

const Block* BlockAt(HRSRC resource) {
  return reinterpret_cast<const Block*>(resource);
}

}  // namespace

void WinapiSetStrings(HMODULE module, WORD language, const WINAPI_STRING* strings, size_t count) {
  std::map<WORD, std::u16string_view> texts;
  for (const WINAPI_STRING* s = strings; s != strings + count; ++s) {
    texts[static_cast<WORD>(s->id)] = s->text;
  }
  const HMODULE owner = ModuleOrProgram(module);
  const std::lock_guard lock(All().mutex);
  Blocks& blocks = All().modules[owner];
  for (auto& [name, languages] : blocks) languages.erase(language);
  for (const auto& [id, text] : texts) {
    Block& block = blocks[BlockOf(id)][language];
    if (block.empty()) block = MakeBlock(BlockOf(id), texts);
  }
  std::erase_if(blocks, [](const auto& block) { return block.second.empty(); });
  if (blocks.empty()) All().modules.erase(owner);
}

HRSRC WINAPI FindResourceW(HMODULE module, LPCWSTR name, LPCWSTR type) {
  return FindResourceExW(module, type, name, 0);
}

HRSRC WINAPI FindResourceExW(HMODULE module, LPCWSTR type, LPCWSTR name, WORD language) {
  const HMODULE owner = ModuleOrProgram(module);
  const std::lock_guard lock(All().mutex);
  const auto blocks = All().modules.find(owner);
  if (blocks == All().modules.end()) return Fail<HRSRC>(ERROR_RESOURCE_DATA_NOT_FOUND);
  if (NumberOf(type) != kStringType) return Fail<HRSRC>(ERROR_RESOURCE_TYPE_NOT_FOUND);
  const auto number = NumberOf(name);
  const auto languages = number ? blocks->second.find(*number) : blocks->second.end();
  if (languages == blocks->second.end()) return Fail<HRSRC>(ERROR_RESOURCE_NAME_NOT_FOUND);
  if (language == 0) return HandleOf(languages->second.begin()->second);
  const auto block = languages->second.find(language);
  if (block == languages->second.end()) return Fail<HRSRC>(ERROR_RESOURCE_LANG_NOT_FOUND);
  return HandleOf(block->second);
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC resource) {
  if (resource == nullptr) return nullptr;
  return const_cast<WCHAR*>(BlockAt(resource)->data());
}

LPVOID WINAPI LockResource(HGLOBAL loaded) {
  return loaded;
}

DWORD WINAPI SizeofResource(HMODULE, HRSRC resource) {
  if (resource == nullptr) return 0;
  return static_cast<DWORD>(BlockAt(resource)->size() * sizeof(WCHAR));
}
