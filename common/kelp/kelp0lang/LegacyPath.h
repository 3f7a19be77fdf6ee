// File names and paths as text, and whether files and folders exist.
//
//   WString name(KTEXT("D:\\jobs\\survey.dat"));
//   EstraiIlNomeFile(name);   // "survey"
//
// Separators are "\" and "/", the last of either; ":" counts where neither is in the text. The
// extension stands behind the last "." of the text, wherever that is. Functions without a result
// work in place on their argument. None throws or has state; all run on any thread.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/String.h"
#include "kelptext/WideChar.h"

// Keeps all up to and including the last separator; without one the text becomes empty.
KELP0LANG_API void EstraiIlPathFile(kelp::WString& text);
// Keeps what follows the last separator.
KELP0LANG_API void EstraiNomeEdEstensFile(kelp::WString& text);
// The same without the extension.
KELP0LANG_API void EstraiIlNomeFile(kelp::WString& text);
// Keeps what follows the last "."; text without one stays.
KELP0LANG_API void EstraiEstensFile(kelp::WString& text);
// Cuts the text at the last ".".
KELP0LANG_API void EliminaEstensioneFile(kelp::WString& text);

// Whether the file opens for reading. An empty name, or null, gives false.
KELP0LANG_API bool FEsisteIlFile(const WChar* name);
// Whether the system finds an entry of that path: a folder, but also a file. A path that ends in a
// separator isn't found. An empty path, or null, gives false.
KELP0LANG_API bool FEsisteIlDir(const WChar* path);
// True if the system finds the path; else makes the folder, with all missing parents. Where that
// fails, true if a folder stands there all the same, made by another meanwhile.
KELP0LANG_API bool CheckSeDirExist(const kelp::WString& path);

// "name (exts)", or name where exts is empty.
KELP0LANG_API kelp::WString ComposeFileFilterFromNameAndExts(const kelp::WString& name,
                                                             const kelp::WString& exts);
