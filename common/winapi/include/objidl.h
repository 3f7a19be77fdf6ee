// The memory allocator of COM and the interface under it.
#pragma once

#include "windef.h"

typedef int32_t HRESULT;
typedef size_t SIZE_T;

#define S_OK ((HRESULT)0)
#define E_NOINTERFACE ((HRESULT)0x80004002)
#define E_INVALIDARG ((HRESULT)0x80070057)
#define E_POINTER ((HRESULT)0x80004003)
#define E_FAIL ((HRESULT)0x80004005)

typedef struct _GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
} GUID, IID;
typedef const IID& REFIID;

extern "C" WINAPI_EXPORT const IID IID_IUnknown;
extern "C" WINAPI_EXPORT const IID IID_IMalloc;

struct IUnknown {
  virtual HRESULT WINAPI QueryInterface(REFIID id, void** object) = 0;
  virtual ULONG WINAPI AddRef() = 0;
  virtual ULONG WINAPI Release() = 0;
};

// Blocks of the C runtime's heap. DidAlloc doesn't know (-1) whose a block is.
struct IMalloc : IUnknown {
  virtual void* WINAPI Alloc(SIZE_T size) = 0;
  virtual void* WINAPI Realloc(void* block, SIZE_T size) = 0;
  virtual void WINAPI Free(void* block) = 0;
  virtual SIZE_T WINAPI GetSize(void* block) = 0;
  virtual int WINAPI DidAlloc(void* block) = 0;
  virtual void WINAPI HeapMinimize() = 0;
};
typedef IMalloc* LPMALLOC;
