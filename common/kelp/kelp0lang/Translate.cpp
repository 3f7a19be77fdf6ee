#include "kelp0lang/Translate.h"

namespace kelp {
namespace {

WString StripNote(const WString& text) {
  const int last = text.rfind(KTEXT('@'));
  if (last < 1 || text.ReadChar(last - 1) != KTEXT('@')) return text;
  return text.Substring(0, last - 1);
}

}  // namespace

WString Xlate(const WChar* text) {
  return StripNote(WString(text));
}

}  // namespace kelp
