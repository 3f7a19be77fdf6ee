// The block cipher triple DES, as FIPS 46-3 defines it: encrypt, decrypt and encrypt under three
// keys of 8 bytes each.
//
//   CDes3 cipher;
//   cipher.SetKey(true, 24, key);
//   cipher.ProcessBlock(plain, nullptr, secret);
//
// A block has 8 bytes; a mode of operation is the caller's. It is here for data that stand in this
// cipher already: its blocks are small, and one key is good for no more than some megabytes. The
// schedules are wiped when the object ends.
//
// Threads: ProcessBlock from several at a time, SetKey from one alone.
#pragma once

#include "kelp0lang/Export.h"

class KELP0LANG_API CDes3 {
 public:
  // Without a key: its blocks have no meaning.
  CDes3() = default;
  CDes3(const CDes3&) = default;
  CDes3& operator=(const CDes3&) = default;
  ~CDes3();

  // The key has 24 bytes, whatever the size says. Forward encrypts what the reverse direction of
  // the same key decrypts.
  void SetKey(bool forward, unsigned size, const void* key);
  // One block of 8 bytes, and behind it, where there is such a block, XORed with xorBlock. All
  // three may be the same.
  void ProcessBlock(const void* in, const void* xorBlock, void* out) const;

 private:
  // For the three operations of DES in their order.
  unsigned m_first[32] = {};
  unsigned m_second[32] = {};
  unsigned m_third[32] = {};
};

// Single DES, in its parts.
//
// The schedule of a key of 8 bytes, 32 words: a pair for each round, of the 16 in order, or in
// reverse order for the direction that isn't forward. Parity bits of the key aren't looked at, and
// weak keys are taken like others.
KELP0LANG_API void RawDES_UncheckedSetKey(bool forward, const unsigned char* key,
                                          unsigned* schedule);
// The 16 rounds on the two words of a block behind the initial permutation. They come out as the
// last round leaves them; in front of the final permutation the right one is the first.
KELP0LANG_API void RawDES_RawProcessBlock(const unsigned* schedule, unsigned& left,
                                          unsigned& right);
