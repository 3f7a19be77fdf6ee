#include "kelp0lang/Object.h"

#include <atomic>
#include <cstdlib>

#include "sarnutils/Memory.h"

namespace kelp {

Object::~Object() = default;

IRefCounter::~IRefCounter() = default;

void IRefCounter::AddReference() noexcept {
  std::atomic_ref(m_referenceCount).fetch_add(1);
}

void IRefCounter::SubReference() noexcept {
  // Only the value that the decrement itself returned decides: once another thread holds the last
  // reference, this object may be gone.
  if (std::atomic_ref(m_referenceCount).fetch_sub(1) < 2) delete this;
}

void* IRefCounter::operator new(std::size_t size) {
  return sarn_operator_new(size);
}
void* IRefCounter::operator new[](std::size_t size) {
  return sarn_operator_new(size);
}
void* IRefCounter::operator new(std::size_t size, std::align_val_t alignment) {
  return ::operator new(size, alignment);
}
void* IRefCounter::operator new[](std::size_t size, std::align_val_t alignment) {
  return ::operator new[](size, alignment);
}
void IRefCounter::operator delete(void* block) noexcept {
  std::free(block);
}
void IRefCounter::operator delete[](void* block) noexcept {
  std::free(block);
}
void IRefCounter::operator delete(void* block, std::align_val_t alignment) noexcept {
  ::operator delete(block, alignment);
}
void IRefCounter::operator delete[](void* block, std::align_val_t alignment) noexcept {
  ::operator delete[](block, alignment);
}

}  // namespace kelp
