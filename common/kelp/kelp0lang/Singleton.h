// Process-wide objects: each enrols itself in one list when it is built, and all are deleted
// together, the last enrolled first.
//
//   class LayerTable : public kelp::ISingleton {
//    public:
//     static LayerTable& GetInstance() {
//       if (s_instance == nullptr) s_instance = new LayerTable;
//       return *s_instance;
//     }
//    private:
//     static LayerTable* s_instance;
//   };
//
// The list is deleted when the library is unloaded, or earlier by the host. The pointers through
// which the classes reach their objects aren't cleared: behind that point no singleton is reached.
//
// Threads: enrolment takes no lock, so the first use of every singleton happens on one thread.
#pragma once

#include "kelp0lang/Export.h"

namespace kelp {

// Base of every process-wide object. It is built with new, and the list deletes it.
class KELP0LANG_API ISingleton {
 public:
  // Takes the object out of the list. So one whose constructor throws leaves nothing there, and a
  // host may delete one before its turn.
  virtual ~ISingleton();
  // For callers; the list doesn't ask.
  virtual bool CanDestroy();
  // Whether this object goes behind all others. One object of a program may answer true: of
  // several only the earliest enrolled is deleted.
  virtual bool DestroyForLast();

  ISingleton(const ISingleton&) = delete;
  ISingleton& operator=(const ISingleton&) = delete;

 protected:
  // Enrols this object at the end of the list.
  ISingleton();
};

class KELP0LANG_API CSingletonManager {
 public:
  // Deletes all that have enrolled and leaves an empty list. For the very end of a host's work, on
  // one thread.
  static void DeleteSingletons();
};

namespace detail {

// What DeleteSingletons does, and the list itself; for the unloading of the library.
void DeleteSingletonList();

}  // namespace detail
}  // namespace kelp
