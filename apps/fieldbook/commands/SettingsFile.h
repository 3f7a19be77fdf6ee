// fieldbook.ket: the settings that the program keeps beside those of units, which have a file of
// their own.
//
//   SettingsFile file;                                   // once the folder of the settings is set
//   file.WriteText(KTEXT("Files"), KTEXT("Units"), KTEXT("us-ft"));
//   const WString unit = file.ReadText(KTEXT("Files"), KTEXT("Units"));
//
// Reading makes no file. One that can't be read, or that isn't whole, is complained of by whoever
// asks Damage(), and all its entries read as if they weren't there; the first entry that is written
// then puts it aside as fieldbook.ket.bak, so that what somebody wrote into it by hand isn't lost.
#pragma once

#include "console/Console.h"
#include "fieldbook/values/Number.h"

namespace fieldbook {

class SettingsFile {
 public:
  SettingsFile();

  // What is wrong with the file as a whole, without what follows from it; empty for nothing. A file
  // that isn't there is sound.
  const WString& Damage() const { return m_damage; }
  // Whether it was read and isn't whole.
  bool IsBroken() const { return m_isBroken; }

  // The empty text where there is none.
  WString ReadText(const WChar* section, const WChar* key) const;
  // A length, metres, of the entry for the unit system in force; what isn't a length gives a fault
  // and the preset. Under feet the preset is three times as many feet as it has metres.
  Reading ReadLength(const WChar* section, const WChar* key, double preset) const;
  // Throw Failure if they can't be written.
  void WriteText(const WChar* section, const WChar* key, const WString& text);
  void WriteLength(const WChar* section, const WChar* key, double metres);

 private:
  bool IsReadable() const;
  // Makes the file fit for an entry.
  void Prepare();

  WString m_path;  // as the library has it
  Argument m_file;
  bool m_isThere = false;
  bool m_isBroken = false;
  WString m_damage;
};

// Throws Failure, with the folder in which nothing can be saved.
[[noreturn]] void FailOnSaving();

// The complaint of a file of settings that isn't whole, without what follows from it.
WString NotWhole(const WString& shownPath);
// A path of the library's as an argument of the program's own.
Argument ToArgument(const WString& libraryPath);

}  // namespace fieldbook
