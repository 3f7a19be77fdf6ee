// Libraries that only some machines have, bound when they are first needed.
//
//   struct Calls {
//     decltype(&::xcb_connect) xcb_connect;
//   };
//   RunTimeLibrary library("libxcb.so.1");
//   const bool isThere = library.Bind("xcb_connect", calls.xcb_connect);
#pragma once

#include <dlfcn.h>

class RunTimeLibrary {
 public:
  // Loads it. It is never given back: others may have bound it too, and it may keep what belongs to
  // threads.
  explicit RunTimeLibrary(const char* file) : m_library(dlopen(file, RTLD_NOW | RTLD_LOCAL)) {}

  // A function or an object of it by name; false, and null, where it isn't there.
  template <class Pointer>
  bool Bind(const char* name, Pointer& pointer) const {
    pointer = m_library == nullptr ? nullptr : reinterpret_cast<Pointer>(dlsym(m_library, name));
    return pointer != nullptr;
  }

 private:
  void* const m_library;
};
