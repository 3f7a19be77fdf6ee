// What running fieldbook takes of the system: RunProcessWindows.cpp and RunProcessPosix.cpp.
#pragma once

#include "RunProgram.h"

// The path that a text in UTF-8 names.
std::filesystem::path FromUtf8(const std::string& text);
std::string ReadFile(const std::filesystem::path& path);

// The arguments behind --data and a folder without settings; an option that comes twice counts the
// last time.
std::vector<std::string> WithDefaultSettings(const std::vector<std::string>& arguments,
                                             const DataFolder& folder);

// Runs fieldbook with these files as its standard streams, and gives its exit status.
int RunProcess(const std::vector<std::string>& arguments, const std::filesystem::path& in,
               const std::filesystem::path& out, const std::filesystem::path& err);
