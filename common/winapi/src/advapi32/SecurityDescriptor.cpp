// Descriptors of who may do what.
#include <windows.h>

#include <cstring>

#include "Fail.h"

namespace {

constexpr WORD kListBits = SE_DACL_PRESENT | SE_DACL_DEFAULTED;

}  // namespace

BOOL WINAPI InitializeSecurityDescriptor(PSECURITY_DESCRIPTOR descriptor, DWORD revision) {
  if (revision != SECURITY_DESCRIPTOR_REVISION) return Fail(ERROR_UNKNOWN_REVISION);
  *static_cast<SECURITY_DESCRIPTOR*>(descriptor) = {
      SECURITY_DESCRIPTOR_REVISION, 0, 0, nullptr, nullptr, nullptr, nullptr};
  return TRUE;
}

BOOL WINAPI SetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL isPresent, PACL list,
                                      BOOL isDefaulted) {
  auto& record = *static_cast<SECURITY_DESCRIPTOR*>(descriptor);
  if (record.Revision != SECURITY_DESCRIPTOR_REVISION) return Fail(ERROR_UNKNOWN_REVISION);
  if ((record.Control & SE_SELF_RELATIVE) != 0) return Fail(ERROR_INVALID_SECURITY_DESCR);
  record.Control &= static_cast<WORD>(~kListBits);
  record.Dacl = nullptr;
  if (!isPresent) return TRUE;
  record.Control |= SE_DACL_PRESENT;
  if (isDefaulted) record.Control |= SE_DACL_DEFAULTED;
  record.Dacl = list;
  return TRUE;
}

BOOL WINAPI GetSecurityDescriptorDacl(PSECURITY_DESCRIPTOR descriptor, BOOL* isPresent, PACL* list,
                                      BOOL* isDefaulted) {
  // What both forms begin with.
  SECURITY_DESCRIPTOR_RELATIVE head;
  std::memcpy(&head, descriptor, sizeof head);
  if (head.Revision != SECURITY_DESCRIPTOR_REVISION) return Fail(ERROR_UNKNOWN_REVISION);
  *isPresent = (head.Control & SE_DACL_PRESENT) != 0;
  if (!*isPresent) return TRUE;
  *isDefaulted = (head.Control & SE_DACL_DEFAULTED) != 0;
  if ((head.Control & SE_SELF_RELATIVE) == 0) {
    *list = static_cast<SECURITY_DESCRIPTOR*>(descriptor)->Dacl;
  } else {
    char* const start = static_cast<char*>(descriptor);
    *list = head.Dacl == 0 ? nullptr : reinterpret_cast<PACL>(start + head.Dacl);
  }
  return TRUE;
}
