#include "console/Language.h"

#include "kelp0lang/Translate.h"

namespace console {
namespace {

// The catalogue beside the program for a language such as "it" or "it_IT"; an empty path where
// there is none.
Argument ShippedCatalogue(const WString& language, const WString& program) {
  const WideView code = ViewOf(language).substr(0, ViewOf(language).find_first_of(KTEXT("_.@-")));
  if (code.empty() ||
      code.find_first_not_of(KTEXT("abcdefghijklmnopqrstuvwxyz")) != WideView::npos) {
    return {};
  }
  std::string name;
  AppendUtf8(name, (program + KTEXT('.')).Concat(ToWString(code)));
  const std::filesystem::path path = Console::ProgramFolder() / (name + ".po");
  std::error_code ignored;
  if (!std::filesystem::exists(path, ignored)) return {};
  const std::u8string text = path.u8string();
  return {Decode({reinterpret_cast<const char*>(text.data()), text.size()}, true), path};
}

void Load(const Argument& catalogue) {
  RequireReadable(catalogue);
  if (!kelp::LoadTranslateFile(catalogue.text)) {
    throw Failure({KTEXT("--lang: {1}"), {Shown(kelp::GetTranslateFileError())}});
  }
}

}  // namespace

Language::Language(const Argument* given, const Console& console) {
  if (given != nullptr && given->text == WString(KTEXT("en"))) return;  // the texts themselves
  const WString name = given != nullptr ? given->text : Console::EnvironmentLanguage();
  const Argument shipped = ShippedCatalogue(name, console.ProgramName());
  if (!shipped.path.empty()) {
    Load(shipped);
  } else if (given != nullptr) {
    Load(*given);
  }
}

Language::~Language() {
  kelp::UnloadTranslateFile();
}

}  // namespace console
