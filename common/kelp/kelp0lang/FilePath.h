// Between CFile and std::filesystem::path, for programs that use both. Stands outside the umbrella
// header, since <filesystem> is long to compile.
//
//   std::ofstream out(kelp::FileToPath(job));
//   const kelp::CFile settings = kelp::PathToFile(std::filesystem::current_path() / "my.ini");
#pragma once

#include <filesystem>

#include "kelp0lang/Export.h"
#include "kelp0lang/File.h"

namespace kelp {

// The file that is opened for this one, by its absolute path: elsewhere than on Windows "\" is "/"
// there, and names that are there in another case are spelt as on the disk. Empty where it can't
// be a file's path, as with "*" in a name.
KELP0LANG_API std::filesystem::path FileToPath(const CFile& file);

// The absolute path ("C:\..." on each system), whether it is there or not. Elsewhere than on
// Windows a "\" within a name, and bytes that aren't UTF-8, become U+FFFD; the file is found by
// that too. Empty for an empty path, and for a relative one where the current folder has gone.
KELP0LANG_API CFile PathToFile(const std::filesystem::path& path);

}  // namespace kelp
