// Roots of the class world: Object, and IRefCounter, an object that lives as long as it has
// holders.
//
//   class Layer : public kelp::IRefCounter { ... };
//   Layer* layer = new Layer;         // one reference, the creator's
//   layer->AddReference();            // a second holder
//   layer->SubReference();            // ... which lets go
//   layer->SubReference();            // the last one: the layer deletes itself
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>

#include "kelp0lang/Export.h"

namespace kelp {

// The polymorphic root.
class KELP0LANG_API Object {
 public:
  Object() = default;
  Object(const Object&) = default;
  Object& operator=(const Object&) { return *this; }
  virtual ~Object();
};

// An intrusive reference count. A new object, and a copy, counts 1; assignment leaves the target's
// count alone. AddReference and SubReference are safe from any thread; nothing else in the object
// is protected by them.
class KELP0LANG_API IRefCounter : public Object {
 public:
  IRefCounter() noexcept = default;
  IRefCounter(const IRefCounter& other) noexcept : Object(other) {}
  IRefCounter& operator=(const IRefCounter&) noexcept { return *this; }

  void AddReference() noexcept;
  // Deletes the object with the last reference; after a call the caller no longer touches it.
  void SubReference() noexcept;

  // From the allocator of sarnutils, whose blocks the global heap's release takes back.
  static void* operator new(std::size_t size);
  static void* operator new[](std::size_t size);
  // For a class that asks for more alignment than every block has: from the global heap.
  static void* operator new(std::size_t size, std::align_val_t alignment);
  static void* operator new[](std::size_t size, std::align_val_t alignment);
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void* operator new[](std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* block) noexcept;
  static void operator delete[](void* block) noexcept;
  static void operator delete(void* block, std::align_val_t alignment) noexcept;
  static void operator delete[](void* block, std::align_val_t alignment) noexcept;
  static void operator delete(void*, void*) noexcept {}
  static void operator delete[](void*, void*) noexcept {}

 protected:
  ~IRefCounter() override;

 private:
  std::int32_t m_referenceCount = 1;
};

// Keeps an object alive across a stretch of code in which it may lose its last other reference,
// above all while it notifies others. The pointer isn't null.
class KELP0LANG_API CRefCounterSentinel {
 public:
  explicit CRefCounterSentinel(IRefCounter* object) noexcept : m_object(object) {
    m_object->AddReference();
  }
  ~CRefCounterSentinel() { m_object->SubReference(); }
  CRefCounterSentinel(const CRefCounterSentinel&) = delete;
  CRefCounterSentinel& operator=(const CRefCounterSentinel&) = delete;

 private:
  IRefCounter* m_object;
};

}  // namespace kelp
