#include "fieldbook/commands/EditedFile.h"

#include <algorithm>
#include <utility>

#include "fieldbook/points/OpenBytes.h"
#include "kelp0lang/Translate.h"

namespace fieldbook {

namespace fs = std::filesystem;

EditedFile::EditedFile(const Argument& file, bool keepsBackup, Console& console)
    : m_file(file),
      m_console(console),
      m_keepsBackup(keepsBackup),
      m_bytes(ReadRest(*OpenBytes(file))) {}

void EditedFile::Save(const PointList& list, const Argument& file) {
  std::error_code ignored;
  if (file.path == m_file.path || fs::equivalent(file.path, m_file.path, ignored)) {
    SaveOwn(list);
  } else {
    SaveOther(list, file);
  }
}

void EditedFile::SaveOwn(const PointList& list) {
  if (!list.IsWhole()) {
    throw Failure({KTEXT("{1} holds what can't be read and isn't written over; save under another "
                         "name"),
                   {Shown(m_file.text)}});
  }
  RequireUntouched();
  std::string bytes = list.Bytes();
  KeepBackup();
  WriteAll(m_file, bytes);
  m_bytes = std::move(bytes);
  if (list.Layout().separator != ',' && m_saysCommas) {
    m_console.PrintLine(kelp::Xlate(KTEXT("the fields are separated by commas now")));
    m_saysCommas = false;
  }
}

// The file as it was before this run, once a run.
void EditedFile::KeepBackup() {
  if (!m_keepsBackup) return;
  m_keepsBackup = false;
  std::error_code ignored;
  if (!fs::exists(m_file.path, ignored)) return;
  Argument backup = m_file;
  backup.text += KTEXT(".bak");
  backup.path += ".bak";
  WriteAll(backup, m_bytes);
}

void EditedFile::RequireUntouched() const {
  std::error_code ignored;
  if (!fs::exists(m_file.path, ignored) || ReadRest(*OpenBytes(m_file)) == m_bytes) return;
  throw Failure(
      {KTEXT("{1} has changed since it was read; save under another name"), {Shown(m_file.text)}});
}

void EditedFile::SaveOther(const PointList& list, const Argument& file) {
  RequireFree(file);
  WriteAll(file, list.Bytes());
  m_written.push_back(fs::absolute(file.path));
  if (!list.IsWhole()) {
    m_console.Complain(Message{KTEXT("{1} is without what couldn't be read in {2}"),
                               {Shown(file.text), Shown(m_file.text)}}
                           .Text());
  }
}

// An empty file holds nothing that could get lost.
void EditedFile::RequireFree(const Argument& file) const {
  std::error_code error;
  if (!fs::is_regular_file(file.path, error) || fs::file_size(file.path, error) == 0) return;
  const fs::path path = fs::absolute(file.path);
  if (std::find(m_written.begin(), m_written.end(), path) != m_written.end()) return;
  throw Failure({KTEXT("{1} is there already; save under another name"), {Shown(file.text)}});
}

}  // namespace fieldbook
