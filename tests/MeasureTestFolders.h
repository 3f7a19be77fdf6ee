// The folders that the measurement tests run in; they vanish with the run.
#pragma once

#include <filesystem>

#include "tests/TempFolder.h"

const TempFolder& Folders();

// Where the settings files are saved.
std::filesystem::path DataSupportFolder();
