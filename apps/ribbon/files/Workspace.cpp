#include "ribbon/files/Workspace.h"

#include <random>

namespace ribbon {

namespace fs = std::filesystem;

namespace {

constexpr const char* kOutputName = "written.xml";
// The library takes a layout's name from that of its file.
constexpr const char* kInputName = "-.xml";

WString TextOf(const fs::path& path) {
  const std::u8string text = path.u8string();
  return Decode({reinterpret_cast<const char*>(text.data()), text.size()}, true);
}

Argument ArgumentOf(const fs::path& path) {
  return {TextOf(path), path};
}

// Nobody else's, and closed to others: a layout may be private.
fs::path NewFolder() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  std::random_device random;
  for (int tries = 0; !error && tries < 100; ++tries) {
    const fs::path folder = parent / ("ribbon-" + std::to_string(random()));
    if (!fs::create_directory(folder, error)) continue;
    fs::permissions(folder, fs::perms::owner_all, error);
    return folder;
  }
  FailOnFile(ArgumentOf(parent), error.default_error_condition().value());
}

}  // namespace

Workspace::~Workspace() {
  std::error_code ignored;
  if (!m_folder.empty()) fs::remove_all(m_folder, ignored);
}

WString Workspace::Input(const Argument& file) {
  std::error_code ignored;
  if (!IsStandardStream(file) && fs::is_regular_file(file.path, ignored)) {
    RequireReadable(file);
    return file.text;
  }
  const Argument copy = ArgumentOf(Folder() / kInputName);
  WriteAll(copy, ReadAll(file));
  return copy.text;
}

WString Workspace::NewOutput() {
  return TextOf(Folder() / kOutputName);
}

void Workspace::Deliver(const WString& written, const Argument& output, Console& console) {
  const kelp::String utf8 = written.ToUtf8();
  const fs::path path(std::u8string(utf8.c_str(), utf8.c_str() + utf8.length()));
  std::error_code ignored;
  if (!fs::exists(path, ignored)) {
    throw Failure({KTEXT("{1}: the output can't be made there"), {Shown(written)}});
  }
  const std::string bytes = ReadAll({written, path});
  if (IsStandardStream(output)) {
    console.Print(bytes);
  } else {
    WriteAll(output, bytes);
  }
}

const fs::path& Workspace::Folder() {
  if (m_folder.empty()) m_folder = NewFolder();
  return m_folder;
}

}  // namespace ribbon
