// The digest SHA-1, as FIPS 180-1 defines it.
//
//   CSha sha;
//   sha.Update(size, data);
//   unsigned char digest[20];
//   sha.Result(sizeof digest, digest);
//
// A message comes in pieces of any size, and may be longer than 4 GB. A copy of an object that has
// taken a part goes its own way from there. What the object held of a message is wiped when it is
// reset, has given its result or ends.
//
// SHA-1 tells whether data are still the ones that were, where nobody wishes to deceive: two
// messages of the same digest can be made. The processor's own instructions are used where it has
// them.
//
// Threads: one at a time for each object.
#pragma once

#include "kelp0lang/Export.h"

class KELP0LANG_API CSha {
 public:
  CSha() { Reset(); }
  CSha(const CSha&) = default;
  CSha& operator=(const CSha&) = default;
  ~CSha();

  // Bytes of a block, and of the digest.
  static unsigned GetBlockSize() { return 64; }
  static unsigned GetDigestSize() { return 20; }

  // Back to the start, without what was taken.
  void Reset();
  // Takes size bytes. Of size 0 nothing is read.
  void Update(unsigned size, const void* data);
  // Gives the first size bytes of the digest and starts the next message. False for a size above
  // 20: then nothing is written, and the message goes on.
  bool Result(unsigned size, void* digest);

  // The bits taken since the start, the lower and the upper 32 bits of their number. Modulo 2^64.
  unsigned GetBitCountLo() const { return m_byteCountLow << 3; }
  unsigned GetBitCountHi() const { return m_byteCountHigh << 3 | m_byteCountLow >> 29; }

 private:
  void HashBlock(const void* block);
  // Takes the whole blocks; gives the bytes that are left behind them.
  unsigned HashMultipleBlocks(unsigned size, const void* blocks);
  // Puts the byte behind the message and zeros up to the offset in a block; that may be the next.
  void PadLastBlock(unsigned offset, unsigned char first);

  unsigned m_state[5];
  unsigned m_byteCountLow;
  unsigned m_byteCountHigh;
  unsigned m_data[16];  // the block being filled, as bytes
};
