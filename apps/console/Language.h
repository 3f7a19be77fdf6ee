// The language that the user reads.
//
//   const Language language(line.Value(Option::Lang), console);
#pragma once

#include "console/Console.h"

namespace console {

// For as long as the object lives texts are in the language of --lang, a catalogue or the name of a
// language that comes with the program, or, without it, in that of the environment. The catalogues
// of a program stand beside it, as "fieldbook.it.po".
class Language {
 public:
  // Throws Failure if a catalogue that is given can't be read.
  Language(const Argument* given, const Console& console);
  ~Language();
  Language(const Language&) = delete;
  Language& operator=(const Language&) = delete;
};

}  // namespace console
