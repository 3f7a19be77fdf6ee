// Typed settings in a file of sections and keys that a program keeps for its user.
//
//   CIniFile settings(KTEXT("survey"));                      // survey.ket in the data folder
//   settings.WriteDist(KTEXT("Draw"), KTEXT("Step"), 0.25);  // metres
//   const double step = settings.GetDist(KTEXT("Draw"), KTEXT("Step"), 1.0);
//   const kelp::WString last = settings.GetString(KTEXT("Draw"), KTEXT("Style"), KTEXT("plain"));
//
// The file is a profile file of the system in UTF-16: "[section]" and "key=value" lines, names
// without regard to case. Nothing is kept in memory: each call goes to the file, so what another
// program has written is seen by the next read, and a value that was written is on the disk.
//
// Numbers and colours are stored as texts that don't depend on the locale. The default of a read
// passes through the same text as a stored value.
//
// Nothing throws: a failed write gives false and leaves the file as it was, a failed read gives the
// default. Threads: any may use an object, and several their own of one file. The first
// default-constructed object of the process is made before threads race for it.
//
// A file with one of the 8-bit encodings is converted once, when an object is made for it; a
// missing one is made. Both go well where several programs do it at once.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/MeasUnit.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

class KELP0LANG_API CIniFile {
 public:
  // The settings of the running program: its name with ".ket", in the data folder of the product
  // (GetProgramDataFolderPath), which must be set by then. Decided once for the process.
  CIniFile();
  // The file in the folder that the name has, or in the data folder of the product. What stands
  // behind the name's last "." gives way to ".ket", and the path goes to lower case (A to Z).
  explicit CIniFile(const WChar* name);
  CIniFile(const CIniFile& other) = default;
  CIniFile& operator=(const CIniFile& other) = default;
  virtual ~CIniFile();

  const kelp::WString& GetIniFilePath() const { return m_sPath; }

  // Any number but 0 is true. What isn't a number reads as false.
  bool GetBool(const WChar* section, const WChar* key, bool def) const;
  // The low 16 bits of the stored number.
  short GetShort(const WChar* section, const WChar* key, short def) const;
  // 32 bits; a number beyond gives the nearest that fits. At most 19 characters are read.
  long GetLong(const WChar* section, const WChar* key, long def) const;
  // The same; so a stored number above 2147483647 reads as 2147483647.
  unsigned long GetDWORD(const WChar* section, const WChar* key, unsigned long def) const;
  unsigned int GetUINT32(const WChar* section, const WChar* key, unsigned int def) const;
  // At most 29 characters are read, of the default too. The not-set value reads back as itself.
  double GetDouble(const WChar* section, const WChar* key, double def) const;
  // A distance without units: GetDouble.
  double GetDistMM(const WChar* section, const WChar* key, double def) const;
  // A length in metres or a volume in cubic metres, of the entry for the unit system in force
  // (CCurrMeasUnitInfo): "<key>_mt", or "<key>_in" under both systems of feet, where the value is
  // stored in feet or cubic feet. There the default is as many metres that it shows a round number:
  // 3 times as many feet, 50 times as many cubic feet.
  double GetDist(const WChar* section, const WChar* key, double def) const;
  double GetVol(const WChar* section, const WChar* key, double def) const;
  // Red in bits 0 to 7, green in 8 to 15, blue in 16 to 23. A component that is missing, or isn't
  // within 0 to 255, is that of the default.
  long GetColor(const WChar* section, const WChar* key, unsigned char red, unsigned char green,
                unsigned char blue) const;

  // Text into a buffer of size units; gives its length. In the program's own settings (the default
  // file) a network path ("\\server\...") of the section "PERSIST" whose folder is out of reach
  // reads as the empty text.
  int GetString(const WChar* section, const WChar* key, const WChar* def, WChar* buffer,
                int size) const;
  // At most 1022 characters.
  kelp::WString GetString(const WChar* section, const WChar* key, const WChar* def) const;
  // The same without the look at network paths.
  kelp::WString GetKelpString(const WChar* section, const WChar* key, const WChar* def) const;
  // The first of four texts that isn't empty (GetString); the empty text where all are.
  void GetLastFile(const WChar* section, const WChar* key1, const WChar* key2, const WChar* key3,
                   const WChar* key4, WChar* buffer, int size) const;

  bool WriteBool(const WChar* section, const WChar* key, bool value) const;
  bool WriteShort(const WChar* section, const WChar* key, short value) const;
  bool WriteLong(const WChar* section, const WChar* key, long value) const;
  bool WriteDWORD(const WChar* section, const WChar* key, unsigned long value) const;
  bool WriteUINT32(const WChar* section, const WChar* key, unsigned int value) const;
  // 6 decimals; from 8.5e199 up, and for a NaN, an exponent with 9.
  bool WriteDouble(const WChar* section, const WChar* key, double value) const;
  bool WriteDistMM(const WChar* section, const WChar* key, double value) const;
  bool WriteDist(const WChar* section, const WChar* key, double value) const;
  bool WriteVol(const WChar* section, const WChar* key, double value) const;
  bool WriteColor(const WChar* section, const WChar* key, long color) const;
  // One line, as it is given. Reading takes off the blanks around it and one pair of quotes.
  bool WriteString(const WChar* section, const WChar* key, const WChar* value) const;
  bool WriteString(const WChar* section, const WChar* key, const kelp::WString& value) const;

  // Removes an entry, or a section with all that is in it. True also where there is none.
  bool Erase(const WChar* section, const WChar* key) const;
  bool Erase(const WChar* section) const;

 protected:
  // Makes the file where there is none, and a Unicode file of one that isn't. Where a file can't be
  // opened for that, or a second one in the temporary folder, all stays as it is.
  void CheckFileUnicode();
  // The key for the unit system in force, and which that is.
  kelp::WString GetUnitEntryName(const WChar* key, enumUnitSystem& system) const;

  static kelp::WString s_sDefaultIniFileName;

 private:
  kelp::WString m_sPath;
};
