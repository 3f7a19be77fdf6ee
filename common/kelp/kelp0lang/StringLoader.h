// The strings that a module has in its resources. Those of this library are in StringTable.inc.
//
//   const CStringLoader& loader = GetGlobalStringLoader();
//   WString text;
//   const int length = static_cast<int>(loader.GetStringLength(103));
//   loader.LoadStr(103, text.GetBufferSetLength(length), length + 1);
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

namespace kelp {

// A plain value. It doesn't keep the module in the process.
class KELP0LANG_API CStringLoader {
 public:
  // Reads the program's main module.
  CStringLoader() = default;

  // Takes a module's handle; null means the program.
  void Init(void* module) { m_module = module; }

  // The full path of the module, empty for a handle of none.
  WString GetModuleName() const;

  // Strings are numbered by 16 bits. One that the module doesn't have is empty.
  //
  // In units.
  unsigned int GetStringLength(unsigned int id) const;
  // Cut to size - 1 units and terminated. Size 0 makes target, then that of a pointer, point to the
  // string within the module, where nothing terminates it.
  void LoadStr(unsigned int id, WChar* target, int size) const;
  // At most 1023 units of the string as multibyte text of the process locale: as many whole
  // characters as size bytes hold, terminated if there is room behind them. The text ends before a
  // character that the locale can't express.
  void LoadStr(unsigned int id, char* target, int size) const;

 private:
  void* m_module = nullptr;
};

// That of this library; set when the library is loaded and whenever it is told of a thread.
KELP0LANG_API CStringLoader& GetGlobalStringLoader();

}  // namespace kelp
