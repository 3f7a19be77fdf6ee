// Source texts into the user's language.
//
//   kelp::Xlate(KTEXT("E@@East (1 char)"));  // the translation, or "E" where there is none
//
// Source texts are English. Behind the last "@@" a text may carry a note for the translator; the
// note is part of the key, so one short text can have several translations, and is never shown.
//
// Threads: Xlate may run on any thread.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"

namespace kelp {

// The text to show for a source text: without its note, where there is no translation. Null gives
// the empty text.
//
// The note begins at the last at sign of the text, if another one stands directly before it: of
// "a@@b@@c" is shown "a@@b", of "@@x" nothing, and "a@@b@c" and "a@b" stay as they are.
KELP0LANG_API WString Xlate(const WChar* text);

}  // namespace kelp
