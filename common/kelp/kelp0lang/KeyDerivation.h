// A key and an initialisation vector from a pass phrase, by 100 passes of SHA-1.
//
//   unsigned char key[24], vector[8];
//   GenerateKeyIVWithSHA(length, pass, sizeof key, key, sizeof vector, vector);
//
// The same phrase always gives the same bytes: there is no salt, and 100 passes hold up nobody who
// tries phrases. It is here for data that were written under such keys.
#pragma once

#include "kelp0lang/Export.h"

// Lengths are in bytes; a length of 0 reads or writes nothing there. What is held on the way is
// wiped. std::bad_alloc where there is no memory for twice the key and the vector; then nothing is
// written. Blocks of 20 bytes bear their offset in two bytes, so beyond 65,536 bytes offsets come
// back, and with them no block that was there before: each takes all of the pass before.
KELP0LANG_API void GenerateKeyIVWithSHA(unsigned passLength, const void* pass, unsigned keyLength,
                                        void* key, unsigned ivLength, void* iv);
