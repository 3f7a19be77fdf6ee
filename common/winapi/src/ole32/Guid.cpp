#include <objbase.h>
#include <sys/random.h>

#include <cerrno>

HRESULT WINAPI CoCreateGuid(GUID* id) {
  if (id == nullptr) return E_POINTER;
  while (getrandom(id, sizeof *id, 0) != sizeof *id) {
    if (errno != EINTR) return E_FAIL;
  }
  // Version 4, made of random bits.
  id->Data3 = static_cast<uint16_t>((id->Data3 & 0x0FFF) | 0x4000);
  id->Data4[0] = static_cast<uint8_t>((id->Data4[0] & 0x3F) | 0x80);
  return S_OK;
}
