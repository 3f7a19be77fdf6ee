// A whole file in memory, for reading or for writing.
//
//   const CMemoryMappedFile file(path, false, false, 0);
//   if (file.isLoaded()) parse(file.getData(), file.getLength());
//
//   const CMemoryMappedFile grid(path, true, true, 1 << 20);   // made, or grown, to 1 MiB
//
// The mapping is up from the constructor to the end of the object, or it isn't there at all; no
// failure throws, and the reason of one is in GetLastError. Other programs may read the file
// meanwhile, none may write it.
//
// Threads: an object has no lock; the bytes are memory that any thread reads.
#pragma once

#include <cstdint>

#include "kelp0lang/Export.h"
#include "kelptext/WideChar.h"

class KELP0LANG_API CMemoryMappedFile {
 public:
  // Maps the file; isLoaded tells whether that went well. A missing file is made if create says so,
  // else it is a failure. With write, a file of fewer than size bytes grows to size, by zeros, and
  // the bytes can be written (const_cast of getData). A size below the file's maps all of it: no
  // file is ever cut. Without write, size is 0 or at most the file's length.
  //
  // A file that is empty and stays so can't be mapped; one that was made for it stays.
  CMemoryMappedFile(const WChar* fileName, bool create, bool write, std::int64_t size);
  ~CMemoryMappedFile();

  // The mapping has one owner: it moves, and isn't copied. Assigning ends the target's own.
  CMemoryMappedFile(CMemoryMappedFile&& other) noexcept;
  CMemoryMappedFile& operator=(CMemoryMappedFile&& other) noexcept;
  CMemoryMappedFile(const CMemoryMappedFile&) = delete;
  CMemoryMappedFile& operator=(const CMemoryMappedFile&) = delete;

  // The first byte; null where nothing is mapped.
  const char* getData() const { return m_pData; }
  // Bytes; the low 32 bits of the file's length, of which all are mapped.
  unsigned long getLength() const { return m_nLength; }
  // The system's handle of the file, which stays this object's.
  void* getHandle() const { return m_hFile; }
  // Whether the file is mapped.
  bool isLoaded() const { return m_bLoaded; }
  // Whether this opening made the file.
  bool isCreated() const { return m_bCreated; }

 private:
  bool load(const WChar* fileName, bool create, bool write, std::int64_t size);
  void try_load(const WChar* fileName, bool create, bool write, std::int64_t size);
  void unload();
  void reset();

  void* m_hFile;
  void* m_hMapping;
  char* m_pData;
  std::uint32_t m_nLength;
  bool m_bLoaded;
  bool m_bCreated;
};
