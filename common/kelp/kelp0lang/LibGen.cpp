#include "kelp0lang/LibGen.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace kelp {
namespace {

constexpr short kRecordFileVersion = 1909;
constexpr unsigned char kUnfinishedMarker = 0;
constexpr int kRecordMark = 1;
constexpr int kEndOfRecords = 0;

// Onto the closing 0; a file that holds nothing behind its header has none.
void SeekToEndOfRecords(ofpstream& file) {
  constexpr long kFirstRecord = detail::kStreamHeaderSize;
  file.Seek(0, SEEK_END);
  const long end = file.Tell() - static_cast<long>(sizeof kEndOfRecords);
  file.Seek(std::max(end, kFirstRecord), SEEK_SET);
}

}  // namespace

CLibGen::~CLibGen() = default;

void CLibGen::SetModifiedFlag(bool modified) {
  m_modified = modified;
  if (modified) m_autoSaved = false;
}

bool CLibGen::IsModified() {
  return m_modified;
}

void CLibGen::SetAutoSaved() {
  m_autoSaved = true;
}

bool CLibGen::IsAutoSaved() {
  return m_autoSaved;
}

void CLibGen::SalvaInFile(ofpstream&, short) {}

void CLibGen::LeggeDaFile(ifpstream&, short) {}

ofpstream* CLibGen::GetFileOutTmp(const WChar* path, int recordType) {
  auto file = std::make_unique<ofpstream>(path, kRecordFileVersion, KTEXT("CE"), 0, kUpdateBinary);
  if (file->GetState() != kStreamGood) return nullptr;
  file->Seek(0, SEEK_SET);
  file->WriteBytes(&kUnfinishedMarker, sizeof kUnfinishedMarker);
  SeekToEndOfRecords(*file);
  *file << kRecordMark << recordType << file->GetVersion();
  return file.release();
}

void CLibGen::CloseFileOutTmp(ofpstream* file) {
  if (file == nullptr) return;
  *file << kEndOfRecords;
  file->Close();
  delete file;
}

}  // namespace kelp
