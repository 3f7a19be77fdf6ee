// CLibGen, the base of objects that programs save in their files: whether an object has changed
// since it was saved, whether its present state was saved by itself, and the appending of one
// record to a file of records.
//
// A file of records, behind the header of FileStream.h: for each record the number 1, the number of
// its type (4 bytes each) and the version 1909 (2 bytes), then the record's body; a closing 4-byte
// 0.
#pragma once

#include "kelp0lang/Export.h"
#include "kelp0lang/FileStream.h"
#include "kelptext/WideChar.h"

namespace kelp {

class KELP0LANG_API CLibGen {
 public:
  CLibGen() = default;
  CLibGen(const CLibGen&) = default;
  CLibGen& operator=(const CLibGen&) = default;
  virtual ~CLibGen();

  // A modification makes the automatic save out of date; false leaves it.
  virtual void SetModifiedFlag(bool modified);
  virtual bool IsModified();
  // The present state was saved automatically; the object still counts as modified.
  virtual void SetAutoSaved();
  virtual bool IsAutoSaved();

  // Write and read the object's own data; nothing here.
  virtual void SalvaInFile(ofpstream& file, short version);
  virtual void LeggeDaFile(ifpstream& file, short version);

 protected:
  // Begins a record of a type at the end of an existing file of records, and marks the file as
  // unfinished. An empty file gets its header first. The caller writes the body, to be ended by
  // CloseFileOutTmp. Null where the file can't be opened; a later failure shows in the stream's
  // state.
  ofpstream* GetFileOutTmp(const WChar* path, int recordType);
  // Ends the record and the records, closes and deletes the stream; null does nothing.
  void CloseFileOutTmp(ofpstream* file);

 private:
  bool m_modified = false;
  bool m_autoSaved = false;
};

}  // namespace kelp
